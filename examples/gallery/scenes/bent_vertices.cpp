// A host with vertices of its own kind, of which the library sees only a collection. It reads them into an array,
// equations move them, and it writes them back.

#include "mesh.h"
#include "scene.h"
#include "shade.h"

#include <stdexcept>

namespace gallery {
namespace {

constexpr int32_t kDone = 0;
constexpr int32_t kRefused = static_cast<int32_t>(0x80070057);

// The host's mesh, offered as a collection that is its own accessor.
class HostMesh : public I3DVertexCollection, private I3DVertexAccessor {
public:
    explicit HostMesh(Mesh mesh) : mesh_(std::move(mesh)) {}

    const Mesh& mesh() const { return mesh_; }

    int32_t QueryInterface(const void*, void**) override { return kRefused; }
    uint32_t AddRef() override { return ++references_; }
    uint32_t Release() override { return --references_; }
    void Unused4() override {}
    int32_t GetVertexCount(uint32_t* count) override
    {
        *count = uint32_t(mesh_.points.size());
        return kDone;
    }
    int32_t GetAccessor(uint32_t, I3DVertexAccessor** accessor) override
    {
        AddRef();
        *accessor = this;
        return kDone;
    }

private:
    int32_t Seek(uint32_t vertex) override
    {
        if (vertex >= mesh_.points.size())
            return kRefused;
        vertex_ = vertex;
        return kDone;
    }
    int32_t ReadPositions(uint32_t, double* positions, uint32_t* number_read) override
    {
        const Vec3 p = mesh_.points[vertex_];
        positions[0] = p.x;
        positions[1] = p.y;
        positions[2] = p.z;
        *number_read = 1;
        return kDone;
    }
    int32_t WritePositions(uint32_t, const double* positions, uint32_t* number_written) override
    {
        mesh_.points[vertex_] = {positions[0], positions[1], positions[2]};
        *number_written = 1;
        return kDone;
    }
    int32_t ReadNormals(uint32_t, double*, void*, uint32_t*) override { return kRefused; }
    int32_t BeginEdit() override { return kDone; }
    int32_t EndEdit() override { return kDone; }

    Mesh mesh_;
    size_t vertex_ = 0;
    uint32_t references_ = 1;
};

// Moves every point by equations in x, y, z and whatever else they name in `names`.
void move_by_equations(DATAstruct& points, const std::string& names, const std::vector<std::string>& texts)
{
    korvale::Equations equations;
    equations.declare("x y z " + names);
    for (const std::string& text : texts)
        equations.add(text);
    std::vector<korvale::Column> sources;
    std::vector<korvale::ResultColumn> results;
    const char* const axes[] = {"x", "y", "z"};
    for (int k = 0; k < 3; k++) {
        sources.emplace_back(axes[k], points.dvals + k, size_t(points.count), 3);
        results.emplace_back(axes[k], points.dvals + k, size_t(points.count), 3);
    }
    equations.evaluate_all(sources, results);
}

void edit(HostMesh& host, const std::string& names, const std::vector<std::string>& equations)
{
    DATAstruct points;
    DATAInitialize(&points);
    if (F3DKorvaleVertex2DATA(&host, &points) != kDone)
        throw std::runtime_error("the host's vertices cannot be read");
    move_by_equations(points, names, equations);
    const int32_t status = F3DKorvaleDATA2Vertex(&points, &host);
    DATADispose(&points);
    if (status != kDone)
        throw std::runtime_error("the host's vertices cannot be written");
}

Picture shade(const Mesh& mesh, Colour colour)
{
    const Vec3 middle = bounds_of(mesh).middle();
    Stage stage({middle + Vec3{6, 12, 30}, middle, {0, 1, 0}, 0, 31});
    stage.add(mesh, {colour, 0.4, 40, 60});
    return stage.render(kWidth / 3, 360);
}

struct Edit {
    std::string names;
    std::vector<std::string> equations;
    Colour colour;
};

void draw_bent_vertices(Gallery& hall)
{
    const Mesh teapot = read_obj(hall.data("teapot.obj"));
    const Edit edits[] = {
        {"", {}, hex(0xc9b27c)},
        {"turn u v",
         {"turn = y / 10", "u = x * COS turn - z * SIN turn", "v = x * SIN turn + z * COS turn", "x = u", "z = v"},
         hex(0x3a7cc4)},
        {"turn arm", {"turn = x / 16", "arm = 16 - y", "x = arm * SIN turn", "y = 16 - arm * COS turn"}, hex(0xb0574a)},
    };
    Picture picture(kWidth, 520);
    int left = 0;
    for (const Edit& e : edits) {
        HostMesh host(teapot);
        if (!e.equations.empty())
            edit(host, e.names, e.equations);
        picture.put(shade(host.mesh(), e.colour), left, 0);
        double line = 385;
        for (const std::string& equation : e.equations) {
            draw_text(picture, hall.sans(), {left + kWidth / 6.0, line}, 18, equation, kInk, Align::middle);
            line += 25;
        }
        if (e.equations.empty())
            draw_text(picture, hall.sans(), {left + kWidth / 6.0, line}, 18, "as the host has it", kGrey,
                      Align::middle);
        left += kWidth / 3;
        hall.progress(double(left) / kWidth);
    }
    hall.show("bent-vertices.png", picture,
              "The host's teapot, and two edits of its vertices: read into an array, moved by the equations below, and "
              "written back.");
}

} // namespace

Scene bent_vertices()
{
    return {"Bent vertices",
            "The exchange functions know a host's mesh only as a vertex collection: they ask for its count, then read "
            "or write one vertex after the other.",
            draw_bent_vertices, "bent_vertices.cpp", "exchange.md"};
}

} // namespace gallery
