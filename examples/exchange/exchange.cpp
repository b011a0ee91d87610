// A host with a vertex collection of its own: the library reads the vertices, equations bend them, and the library
// writes them back.

#include <cstdint>
#include <cstdio>
#include <vector>

#include <korvale.h>

namespace {

constexpr int32_t kDone = 0;
constexpr int32_t kOutOfRange = static_cast<int32_t>(0x80070057); // a status of this host's own

/// The host's vertices, which the library only reaches through the accessor.
struct Vertices : I3DVertexCollection {
    struct Cursor : I3DVertexAccessor {
        explicit Cursor(std::vector<double>& all) : xyz(all) {}

        int32_t QueryInterface(const void*, void**) override { return kOutOfRange; }
        uint32_t AddRef() override { return ++references; }
        uint32_t Release() override { return --references; }
        int32_t Seek(uint32_t vertex) override
        {
            if (vertex >= xyz.size() / 3)
                return kOutOfRange;
            current = &xyz[3 * static_cast<size_t>(vertex)];
            return kDone;
        }
        int32_t ReadPositions(uint32_t, double* positions, uint32_t* number_read) override
        {
            for (int k = 0; k < 3; ++k)
                positions[k] = current[k];
            *number_read = 1;
            return kDone;
        }
        int32_t WritePositions(uint32_t, const double* positions, uint32_t* number_written) override
        {
            for (int k = 0; k < 3; ++k)
                current[k] = positions[k];
            *number_written = 1;
            return kDone;
        }
        int32_t ReadNormals(uint32_t, double*, void*, uint32_t*) override { return kOutOfRange; } // it has none
        int32_t BeginEdit() override { return kDone; }
        int32_t EndEdit() override { return kDone; }

        std::vector<double>& xyz;
        double* current = nullptr;
        uint32_t references = 0;
    };

    int32_t QueryInterface(const void*, void**) override { return kOutOfRange; }
    uint32_t AddRef() override { return 1; }
    uint32_t Release() override { return 1; }
    int32_t GetVertexCount(uint32_t* count) override
    {
        *count = static_cast<uint32_t>(xyz.size() / 3);
        return kDone;
    }
    int32_t GetAccessor(uint32_t, I3DVertexAccessor** accessor) override
    {
        cursor.AddRef();
        *accessor = &cursor;
        return kDone;
    }

    std::vector<double> xyz;
    Cursor cursor{xyz};
};

/// Bends the points about the y axis: what stands upright ends up along an arc of radius 2. False when an equation does
/// not parse.
bool bend(Data& points)
{
    char names[] = "x z angle arm";
    char equations[][40] = {"angle = z / 2", "arm = 2 - x", "x = 2 - arm * COS angle", "z = arm * SIN angle"};
    EquationSystem system;
    bool parsed = EqSystemInitialize(&system) == 1 && EqParseVariables(&system, names, 0) > 0;
    for (char* const text : equations)
        parsed = parsed && EqParseEquation(&system, text) > 0;
    if (parsed) {
        char x_name[] = "x", z_name[] = "z";
        const int x = EqLookupVariable(&system, x_name), z = EqLookupVariable(&system, z_name);
        for (int i = 0; i < points.count; ++i) {
            double* const p = points.dvals + 3 * i;
            EqSetVariable(&system, x, p[0]);
            EqSetVariable(&system, z, p[2]);
            EqSystemEvaluate(&system);
            p[0] = EqReadVariable(&system, x);
            p[2] = EqReadVariable(&system, z);
        }
    }
    EqSystemDispose(&system);
    return parsed;
}

} // namespace

int main()
{
    Vertices host;
    for (int i = 0; i <= 6; ++i)
        host.xyz.insert(host.xyz.end(), {0, 0, 0.5 * i}); // an upright rod

    Data points;
    DataInitialize(&points);
    int32_t status = F3DKorvaleVertex2Data(&host, &points);
    if (status == kDone && bend(points))
        status = F3DKorvaleData2Vertex(&points, &host);
    DataDispose(&points);
    if (status != kDone) {
        std::fprintf(stderr, "exchange: status %08x\n", static_cast<unsigned>(status));
        return 1;
    }
    for (size_t i = 0; i < host.xyz.size(); i += 3)
        std::printf("%8.4f %8.4f %8.4f\n", host.xyz[i], host.xyz[i + 1], host.xyz[i + 2]);
}
