// A host with a vertex collection of its own: the library reads the vertices, moves them, and writes them back.

#include <cstdint>
#include <cstdio>
#include <vector>

#include <korvale.h>

namespace {

constexpr int32_t kDone = 0, kRefused = static_cast<int32_t>(0x80070057); // a status of this host's own

// One class is both the collection and its accessor, which the library walks vertex by vertex.
struct Vertices : I3DVertexCollection, I3DVertexAccessor {
    int32_t QueryInterface(const void*, void**) override { return kRefused; }
    uint32_t AddRef() override { return ++references; }
    uint32_t Release() override { return --references; }

    int32_t GetVertexCount(uint32_t* count) override
    {
        *count = static_cast<uint32_t>(xyz.size() / 3);
        return kDone;
    }
    int32_t GetAccessor(uint32_t, I3DVertexAccessor** accessor) override
    {
        AddRef();
        *accessor = this;
        return kDone;
    }

    int32_t Seek(uint32_t vertex) override
    {
        current = &xyz[3 * size_t{vertex}];
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
    int32_t ReadNormals(uint32_t, double*, void*, uint32_t*) override { return kRefused; } // it has none
    int32_t BeginEdit() override { return kDone; }
    int32_t EndEdit() override { return kDone; }

    std::vector<double> xyz = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    double* current = nullptr;
    uint32_t references = 0;
};

} // namespace

int main()
{
    Vertices host;
    Data points;
    DataInitialize(&points);
    int32_t status = F3DKorvaleVertex2Data(&host, &points);
    if (status == kDone) {
        Xfm twice;
        double scale[] = {2, 2, 2}, turn[] = {0, 0, 0}, move[] = {10, 0, 0};
        SRT2Transform(scale, turn, move, twice);
        TransformData(twice, &points, &points);
        status = F3DKorvaleData2Vertex(&points, &host);
    }
    std::printf("status %d, references held %u\n", status, host.references);
    for (size_t i = 0; i < host.xyz.size(); i += 3)
        std::printf("%g %g %g\n", host.xyz[i], host.xyz[i + 1], host.xyz[i + 2]);
    std::printf("normals: status %08x\n", static_cast<unsigned>(F3DKorvaleNormal2Data(&host, &points)));
    DataDispose(&points);
}
