// Prints a hash of the bits that each part of korvale.hpp gives for some thousands of calls on random input, for
// same_bits.sh: compiled once with plain flags and once with all that lets a compiler calculate as it likes. Numbers of
// the input are multiples of 1/64 that need no rounding, and results are looked at as bits alone.
#include <korvale.hpp>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <numeric>

namespace {

using korvale::Point;
using korvale::Transform;
using korvale::Triangle;

/// Knuth's linear congruential generator.
class Random {
public:
    int below(int n)
    {
        return static_cast<int>((state_ = state_ * 6364136223846793005u + 1442695040888963407u) >> 33) % n;
    }
    double number(int limit) { return (below(128 * limit + 1) - 64 * limit) * 0x1p-6; }
    Point point(int limit) { return {number(limit), number(limit), number(limit)}; }
    std::vector<Point> points(int n, int limit)
    {
        std::vector<Point> made(static_cast<std::size_t>(n));
        for (Point& p : made)
            p = point(limit);
        return made;
    }

private:
    std::uint64_t state_ = 1;
};

/// FNV-1a over words.
class Hash {
public:
    void add(std::uint64_t word)
    {
        for (int k = 0; k < 8; ++k)
            value_ = (value_ ^ (word >> (8 * k) & 255)) * 1099511628211u;
    }
    void add(double number) { add(std::bit_cast<std::uint64_t>(number)); }
    void add(std::int32_t number) { add(static_cast<std::uint64_t>(number)); }
    void add(bool is) { add(std::uint64_t{is}); }
    void add(const Point& p) { all(p); }
    void add(const Triangle& corners) { all(corners); }
    void add(const Transform& t) { all(t.rows()); }
    template <class Range>
    void all(const Range& range)
    {
        for (const auto& element : range)
            add(element);
    }

    std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 14695981039346656037u;
};

/// An outline that does not cross itself: a star around the origin.
std::vector<Point> star(Random& random, int n)
{
    std::vector<Point> outline;
    for (int i = 0; i < n; ++i) {
        const int side = 4 * i / n, along = 64 * (4 * i % n) / n; // around a square
        const int x[] = {32 - along, -32, along - 32, 32}, y[] = {32, 32 - along, -32, along - 32};
        const int radius = 1 + random.below(4);
        outline.push_back({x[side] * radius * 0x1p-4, y[side] * radius * 0x1p-4, 0});
    }
    return outline;
}

/// Triangles on shared points.
std::vector<Triangle> triangles(Random& random, int n, int points)
{
    std::vector<Triangle> made(static_cast<std::size_t>(n));
    for (Triangle& corners : made)
        for (std::int32_t& corner : corners)
            corner = random.below(points);
    return made;
}

void transforms(Random& random, Hash& hash)
{
    const korvale::Srt srt = {random.point(3), random.point(4), random.point(50)};
    const Transform t = Transform::from(srt), turn = Transform::rotation_in_degrees(random.point(360));
    hash.add(t);
    hash.add(Transform::inverse_of(srt));
    hash.add(turn * t);
    hash.add(turn.inverse());
    hash.add(t * random.point(9));
    hash.add(t.vector(random.point(9)));
    const korvale::Srt parts = t.take_apart();
    hash.add(parts.scale);
    hash.add(parts.rotation);
    hash.add(parts.translation);
    std::vector<Point> points = random.points(1 + random.below(20), 9);
    t.apply(points);
    hash.all(points);
}

void outlines(Random& random, Hash& hash)
{
    std::vector<Point> outline = star(random, 3 + random.below(30));
    Transform::rotation(random.point(3)).apply(outline);
    const korvale::Offset moved = korvale::offset(outline, random.number(2), {.height = random.number(1)});
    hash.all(moved.points);
    hash.add(moved.collapsed);
    const korvale::Borders many = korvale::offset_many({outline, moved.points}, {random.number(1), random.number(1)});
    hash.all(many.points);
    hash.all(many.sources);
    const korvale::Flattening way = korvale::flatten(outline);
    hash.add(way.to_plane);
    hash.add(way.from_plane);
    hash.all(korvale::frames(outline, random.below(2) == 0));
    const korvale::Band band = korvale::band(outline, random.number(2) + 3, {.up = Point{1, 2, 3}});
    hash.all(band.outline);
    hash.all(korvale::thin(outline, 1));
}

void meshes(Random& random, Hash& hash)
{
    const std::vector<Point> outline = star(random, 8 + random.below(30));
    hash.all(korvale::triangulate({outline}));
    const korvale::Mesh solid = korvale::bevel({outline}, std::vector<korvale::BevelStep>{{0, 0}, {0, 8}, {-0.5, 9}});
    hash.all(solid.vertices);
    hash.all(solid.triangles);
    hash.all(solid.normals());
    hash.all(solid.areas());
    hash.add(solid.volume());
    const korvale::Mesh pipe = korvale::tube(random.points(2 + random.below(6), 20), outline);
    hash.all(pipe.vertices);
    hash.all(pipe.triangles);
}

void scatter(Random& random, Hash& hash)
{
    const int n = 3 + random.below(20);
    const std::vector<Point> points = random.points(n, 9);
    std::vector<double> heights(points.size());
    for (double& height : heights)
        height = random.number(9);
    std::vector<Triangle> surface = triangles(random, n, n);
    surface[0] = {0, 1, 2}; // others may have no area
    const korvale::Scattered made =
        korvale::scatter(points, surface, 40, static_cast<unsigned>(random.below(1000)), heights);
    hash.all(made.points);
    hash.all(made.attributes);
    hash.all(made.triangles);
}

void hit(const korvale::RayHit& met, Hash& hash)
{
    hash.add(met.distance);
    hash.add(met.triangle);
    hash.all(met.weights);
}

void rays(Random& random, Hash& hash)
{
    const int n = 3 + random.below(40);
    const std::vector<Point> points = random.points(n, 5), origins = random.points(20, 8), along = random.points(20, 2);
    const korvale::RayGrid grid(points, triangles(random, 4 * n, n));
    std::vector<double> distances(20);
    std::vector<std::int32_t> nearest(20), counts(20);
    std::vector<Point> weights(20);
    grid.cast(origins, along, {distances, nearest, counts, weights});
    hash.all(distances);
    hash.all(nearest);
    hash.all(counts);
    hash.all(weights);
    for (std::size_t k = 0; k < 20; ++k) {
        for (const korvale::RayHit& met : grid.hits(origins[k], along[k]))
            hit(met, hash);
        if (const auto met = grid.nearest(origins[k], along[k]))
            hit(*met, hash);
        hash.add(grid.any(origins[k], along[k], 5));
        hash.add(grid.distance(origins[k], along[k]).value_or(-1));
    }
    const std::vector<korvale::Triangle> tetrahedron = {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}};
    for (const bool is_inside : korvale::RayGrid(random.points(4, 9), tetrahedron).contains(origins))
        hash.add(is_inside);
    std::vector<Point> moving = random.points(3 * n, 5);
    const korvale::RayGrid over = korvale::RayGrid::over(moving);
    for (std::size_t k = 0; k < 20; ++k)
        hash.add(over.count(origins[k], along[k]));
}

void equations(Random& random, Hash& hash)
{
    korvale::Equations e;
    e.declare("x y z");
    e.declare("r", true);
    e.function("GIVE", [](double x) { return x; });
    e.add("y = (x * 0.1 + 0.2) / (x - x / 3) + x ^ 3 - SQRT(x * x + 0.7)");
    e.add("z = SIN(x * y) * EXP(0.1 * GIVE x) + y * z");
    e.add("r = z * 0.3 + RAND * GAUSS");
    e.seed(static_cast<std::uint32_t>(random.below(1000)));
    std::vector<double> x(60), y(60), z(60);
    for (double& number : x)
        number = random.number(3);
    const korvale::Column column = {"x", x};
    for (int k = 0; k < e.size(); ++k) {
        e.evaluate(k, {&column, 1}, y);
        hash.all(y);
    }
    const korvale::ResultColumn results[] = {{"y", y}, {"r", z}};
    e.evaluate_all({&column, 1}, results);
    hash.all(y);
    hash.all(z);
    e.make_table("RAND", 5);
    e.set_table_position(2.5);
    hash.add(e.evaluate(2));
    hash.add(e.get("z"));
}

void relaxation(Random& random, Hash& hash)
{
    const int n = 5 + random.below(20);
    std::vector<Point> points = random.points(n, 5);
    std::vector<Triangle> faces; // two tips over a ring
    for (int i = 2; i < n; ++i) {
        const int next = i + 1 < n ? i + 1 : 2;
        faces.insert(faces.end(), {{0, i, next}, {1, next, i}});
    }
    korvale::Relaxer relaxer(points, faces);
    relaxer.keep("lengths").keep("angles", 0.25).keep("area", 0.001).keep("volume", 0.001);
    std::vector<std::uint8_t> held(points.size());
    held[0] = 1;
    relaxer.hold(held);
    for (Point& p : points)
        p[0] *= 0.5;
    hash.add(relaxer.energy(points));
    hash.all(relaxer.forces(points));
    hash.add(relaxer.step(points, 3));
    const korvale::Relaxation came_to = relaxer.run(points, {.steps = 20, .least_drop = 0.001});
    hash.add(std::int32_t{came_to.steps});
    hash.add(came_to.energy);
    hash.all(points);
}

void print(const char* name, void (*family)(Random&, Hash&))
{
    Random random;
    Hash hash;
    for (int round = 0; round < 300; ++round)
        family(random, hash);
    std::printf("%s %016llx\n", name, static_cast<unsigned long long>(hash.value()));
}

} // namespace

int main()
{
    print("transforms", transforms);
    print("outlines", outlines);
    print("meshes", meshes);
    print("scatter", scatter);
    print("rays", rays);
    print("equations", equations);
    print("relaxation", relaxation);
}
