#include "../example.h"

namespace {

// The least a host provides: a collection that is its own accessor. examples/tasks/exchange.cpp is a whole one.
struct Host : I3DVertexCollection, I3DVertexAccessor {
    int32_t QueryInterface(const void*, void**) override { return korvale::kStatusFailed; }
    uint32_t AddRef() override { return 1; }
    uint32_t Release() override { return 1; }
    int32_t GetVertexCount(uint32_t* count) override { return *count = 2, 0; }
    int32_t GetAccessor(uint32_t, I3DVertexAccessor** accessor) override { return *accessor = this, 0; }
    int32_t Seek(uint32_t vertex) override { return current = 3 * vertex, 0; }
    int32_t ReadPositions(uint32_t, double* to, uint32_t* number_read) override
    {
        std::copy_n(positions + current, 3, to);
        return *number_read = 1, 0;
    }
    int32_t WritePositions(uint32_t, const double* from, uint32_t* number_written) override
    {
        std::copy_n(from, 3, positions + current);
        return *number_written = 1, 0;
    }
    int32_t ReadNormals(uint32_t, double* to, void*, uint32_t* number_read) override
    {
        std::copy_n(normals + current, 3, to);
        return *number_read = 1, 0;
    }
    int32_t BeginEdit() override { return 0; }
    int32_t EndEdit() override { return 0; }

    double positions[6] = {1, 2, 3, 4, 5, 6}, normals[6] = {0, 0, 1, 0, 1, 0};
    uint32_t current = 0;
};

} // namespace

EXAMPLE("F3DKorvaleVertex2Data F3DKorvaleData2Vertex")
{
    Host host; // with two vertices; examples/tasks/exchange.cpp shows what such a class does
    Data points;
    DataInitialize(&points);
    std::printf("%d: ", F3DKorvaleVertex2Data(&host, &points));
    std::printf("%d vertices\n", points.count);
    points.dvals[2] = 30;
    std::printf("%d: ", F3DKorvaleData2Vertex(&points, &host));
    std::printf("z is %g\n", host.positions[2]);
    DataDispose(&points);
    // > 0: 2 vertices
    // > 0: z is 30
}

EXAMPLE("F3DKorvaleVertex2DATA F3DKorvaleDATA2Vertex")
{
    Host host; // with two vertices; examples/tasks/exchange.cpp shows what such a class does
    DATAstruct points;
    DATAInitialize(&points);
    std::printf("%d: ", F3DKorvaleVertex2DATA(&host, &points));
    std::printf("%d vertices\n", points.count);
    points.dvals[5] = 60;
    std::printf("%d: ", F3DKorvaleDATA2Vertex(&points, &host));
    std::printf("z is %g\n", host.positions[5]);
    DATADispose(&points);
    // > 0: 2 vertices
    // > 0: z is 60
}

EXAMPLE("F3DKorvaleNormal2Data F3DKorvale2DataNormal")
{
    Host host; // with two vertices; examples/tasks/exchange.cpp shows what such a class does
    Data normals;
    DataInitialize(&normals);
    std::printf("%d: ", F3DKorvaleNormal2Data(&host, &normals));
    std::printf("%g %g %g\n", normals.dvals[3], normals.dvals[4], normals.dvals[5]);
    std::printf("%08x: not back\n", static_cast<unsigned>(F3DKorvale2DataNormal(&normals, &host)));
    DataDispose(&normals);
    // > 0: 0 1 0
    // > 80004001: not back
}

EXAMPLE("F3DKorvaleNormal2DATA F3DKorvale2DATANormal")
{
    Host host; // with two vertices; examples/tasks/exchange.cpp shows what such a class does
    DATAstruct normals;
    DATAInitialize(&normals);
    std::printf("%d: ", F3DKorvaleNormal2DATA(&host, &normals));
    std::printf("%g %g %g\n", normals.dvals[3], normals.dvals[4], normals.dvals[5]);
    std::printf("%08x: not back\n", static_cast<unsigned>(F3DKorvale2DATANormal(&normals, &host)));
    DATADispose(&normals);
    // > 0: 0 1 0
    // > 80004001: not back
}
