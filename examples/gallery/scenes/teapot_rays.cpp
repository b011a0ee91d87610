// The teapot as rays see it: how far away the nearest triangle is, and how many each ray goes through. The same rays
// are cast at grids of several sizes, and timed.

#include "mesh.h"
#include "plot.h"
#include "scene.h"

#include <algorithm>
#include <ctime>

namespace gallery {
namespace {

constexpr int kRaysAcross = 320, kRaysDown = 240;

struct Hit {
    int triangles = 0;
    double distance = 0; // to the nearest
};

struct Cast {
    std::vector<Hit> hits;           // a row after the other
    double sorting = 0, per_ray = 0; // seconds of the processor
};

// A pinhole camera in front of the teapot, spout to the right, y upwards.
Cast cast_rays(Gallery& hall, const Mesh& mesh, int cells, double done, double share)
{
    const Vec3 eye{13, 17, 38}, target{1.6, -1.3, 0}, back = unit(eye - target);
    const Vec3 right = unit(cross({0, 1, 0}, back)), up = cross(back, right);
    const double half_height = std::tan(0.285);

    Cast cast;
    const std::clock_t start = std::clock();
    korvale::RayGrid grid(mesh.points, mesh.triangles, korvale::GridSize{cells, cells, cells});
    const std::clock_t sorted = std::clock();
    std::vector<Vec3> row(kRaysAcross);
    std::vector<double> distances(kRaysAcross);
    std::vector<int> counts(kRaysAcross);
    for (int j = 0; j < kRaysDown; j++) {
        for (int i = 0; i < kRaysAcross; i++) {
            const double x = half_height * (2 * i + 1 - kRaysAcross) / kRaysDown;
            const double y = half_height * (kRaysDown - 2 * j - 1) / kRaysDown;
            row[size_t(i)] = x * right + y * up - back;
        }
        grid.cast({{eye.x, eye.y, eye.z}}, row, {.distances = distances, .counts = counts});
        for (size_t i = 0; i < row.size(); i++)
            cast.hits.push_back({counts[i], distances[i]});
        hall.progress(done + share * (j + 1) / kRaysDown);
    }
    cast.sorting = double(sorted - start) / CLOCKS_PER_SEC;
    cast.per_ray = double(std::clock() - sorted) / CLOCKS_PER_SEC / (kRaysAcross * kRaysDown);
    return cast;
}

Picture depth_picture(const std::vector<Hit>& hits)
{
    double near = 1e300, far = 0;
    for (const Hit& hit : hits) {
        if (hit.triangles > 0) {
            near = std::min(near, hit.distance);
            far = std::max(far, hit.distance);
        }
    }
    Picture picture(kRaysAcross, kRaysDown);
    for (int j = 0; j < kRaysDown; j++) {
        for (int i = 0; i < kRaysAcross; i++) {
            const Hit& hit = hits[size_t(j * kRaysAcross + i)];
            if (hit.triangles > 0)
                picture.set(i, j, scale_colour((far - hit.distance) / (far - near)));
        }
    }
    return picture;
}

Colour count_colour(int count)
{
    static const Colour colours[] = {hex(0xfbfaf6), hex(0xd8dee6), hex(0xa9c4dd), hex(0x7d9fc9), hex(0xf3c677),
                                     hex(0xe59a4c), hex(0xd96a3b), hex(0xb03a48), hex(0x5b2a55)};
    return colours[std::min(count, 8)];
}

Picture count_picture(const std::vector<Hit>& hits)
{
    Picture picture(kRaysAcross, kRaysDown);
    for (int j = 0; j < kRaysDown; j++)
        for (int i = 0; i < kRaysAcross; i++)
            picture.set(i, j, count_colour(hits[size_t(j * kRaysAcross + i)].triangles));
    return picture;
}

// Enlarged, each new pixel a blend of the four old ones around it.
Picture enlarged(const Picture& small, double factor)
{
    Picture large(int(small.width() * factor), int(small.height() * factor));
    const auto old = [&](int x, int y) {
        return small.at(std::clamp(x, 0, small.width() - 1), std::clamp(y, 0, small.height() - 1));
    };
    for (int j = 0; j < large.height(); j++) {
        for (int i = 0; i < large.width(); i++) {
            const double x = (i + 0.5) / factor - 0.5, y = (j + 0.5) / factor - 0.5;
            const int x0 = int(std::floor(x)), y0 = int(std::floor(y));
            large.set(i, j,
                      mix(mix(old(x0, y0), old(x0 + 1, y0), x - x0), mix(old(x0, y0 + 1), old(x0 + 1, y0 + 1), x - x0),
                          y - y0));
        }
    }
    return large;
}

void draw_teapot_rays(Gallery& hall)
{
    const Mesh teapot = read_obj(hall.data("teapot.obj"));
    const int sizes[] = {1, 4, 16, 32};
    std::vector<Cast> casts;
    for (int n : sizes)
        casts.push_back(cast_rays(hall, teapot, n, 0.25 * double(casts.size()), 0.25));

    constexpr double kFactor = 1.875;
    Picture depth = enlarged(depth_picture(casts[2].hits), kFactor);
    Picture counts = enlarged(count_picture(casts[2].hits), kFactor);
    int most = 0;
    for (const Hit& hit : casts[2].hits)
        most = std::max(most, hit.triangles);
    for (int count = 1; count <= most; count++) {
        const double x = 0.5 * counts.width() + 34.0 * (count - 0.5 * (most + 1)), y = 408;
        counts.fill({{{x - 14, y - 9}, {x + 14, y - 9}, {x + 14, y + 9}, {x - 14, y + 9}}}, count_colour(count));
        draw_text(counts, hall.sans(), {x, y + 26}, 14, std::to_string(count), kGrey, Align::middle);
    }
    hall.show("teapot-depth.png", depth,
              "The distance to the nearest triangle along 320 x 240 rays, paler where it is near.");
    hall.show("teapot-hits.png", counts,
              "How many triangles each ray goes through: outer and inner walls, handle, spout and lid.");

    double slowest = 0;
    for (const Cast& cast : casts)
        slowest = std::max(slowest, cast.per_ray * 1e6);
    Picture times(kWidth, 230);
    for (size_t i = 0; i < casts.size(); i++) {
        const double y = 34 + 48.0 * double(i), length = 700 * casts[i].per_ray * 1e6 / slowest;
        const std::string n = std::to_string(sizes[i]);
        draw_text(times, hall.sans(), {190, y + 18}, 17, n + " x " + n + " x " + n + " cells", kInk, Align::right);
        times.fill({{{210, y}, {210 + length, y}, {210 + length, y + 26}, {210, y + 26}}},
                   scale_colour(0.3 + 0.15 * double(i)));
        char note[96];
        std::snprintf(note, sizeof note, "%.2f us a ray, %.1f ms to sort", casts[i].per_ray * 1e6,
                      casts[i].sorting * 1e3);
        draw_text(times, hall.sans(), {222 + length, y + 19}, 15, note, kGrey);
    }
    hall.show("teapot-times.png", times,
              "The time of a ray with grids of 1, 4, 16 and 32 cells in each direction, and the time to sort the "
              "triangles into them, on this machine.");
}

} // namespace

Scene teapot_rays()
{
    return {"Teapot by rays",
            "A thousand triangles sorted into a grid of cells, and rays cast at them: each tells how many triangles it "
            "meets and how far away the nearest is.",
            draw_teapot_rays, "teapot_rays.cpp", "ray.md"};
}

} // namespace gallery
