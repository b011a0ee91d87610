// Tubes: a section carried to the points of a path.
#include "door/internal/mesh.h"
#include "door/internal/planes.h"

namespace korvale::door {
namespace {

/// Points between two questions whether to go on.
constexpr size_t kPointsPerQuestion = 16384;

/// Rings of `section` along a path, joined by strips.
void add_wall(korvale_mesh& mesh, std::span<const Point> path, std::span<const Point> section, bool closed, bool turned,
              const Telling& telling)
{
    const auto each = static_cast<int32_t>(std::max<size_t>(1, kPointsPerQuestion / section.size()));
    const auto share = [&](size_t i) { return static_cast<double>(i) / static_cast<double>(path.size()); };
    Asking moving(telling.part(0.0, 0.5), each), joining(telling.part(0.5, 0.5), each);
    Vector<double> numbers(16 * path.size());
    auto* const frames = reinterpret_cast<Xfm*>(numbers.data());
    find_frames(path, closed, frames);
    mesh.points.resize(path.size() * section.size());
    for (size_t i = 0; i < path.size(); ++i) {
        carry(frames[i], section, mesh.points.data() + i * section.size());
        moving.step(share(i));
    }

    mesh.triangles.reserve(2 * (mesh.points.size() + section.size())); // with caps
    const auto n = static_cast<int32_t>(section.size()), rings = static_cast<int32_t>(path.size());
    for (int32_t i = 0; i + 1 < rings; ++i) {
        add_strip(mesh, i * n, (i + 1) * n, n, turned);
        joining.step(share(static_cast<size_t>(i)));
    }
    if (closed)
        add_strip(mesh, (rings - 1) * n, 0, n, turned);
}

void require_room(int64_t path, int64_t section)
{
    if (path * section > kMostMeshPoints)
        throw Refusal("path times section", Text() << "have at most " << kMostMeshPoints << " elements",
                      Text() << "it has " << path * section);
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

void korvale_tube_defaults(korvale_tube_options* options, size_t size)
{
    give_defaults(options, size, korvale_tube_options{sizeof *options, 0, 1, 0, nullptr, nullptr});
}

korvale_status korvale_tube(const korvale_points* path, const korvale_points* section,
                            const korvale_tube_options* options, korvale_mesh** mesh, korvale_error* error)
{
    return answer(error, "korvale_tube", [&] {
        require(mesh, "mesh");
        *mesh = nullptr;
        const korvale_tube_options how = options_of(options, korvale_tube_defaults);
        const PointsIn along(path, "path"), around(section, "section");
        require_points(along, "path", how.closed != 0 ? 3 : 2);
        require_points(around, "section", 3);
        require_room(along.size(), around.size());

        Handle<korvale_mesh> made(make_handle<korvale_mesh>());
        Rings ring;
        ring.add(around.points(), {0, 1, scale_to_one(largest_of(around.points()))});
        // z points back along the path, so the strips are seen from behind.
        const Telling telling = {how.progress, how.user};
        add_wall(*made, along.points(), around.points(), how.closed != 0, !is_mostly_clockwise(ring[0]), telling);
        if (how.caps != 0 && how.closed == 0) {
            const auto last = static_cast<int32_t>((along.size() - 1) * around.size());
            for (const Triangle& t : cut(ring, telling.part(1.0, 0.0))) {
                (*made).triangles.push_back(t);
                (*made).triangles.push_back({last + t[0], last + t[2], last + t[1]});
            }
        }
        *mesh = made.release();
    });
}
