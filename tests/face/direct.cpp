#include "direct.h"

#include <map>

namespace korvale::test {
namespace {

void release(BORDERStatus& s)
{
    for (DATAstruct* array :
         {s.path, s.output, s.flat, s.velocity, s.direction, s.line, s.dead, s.length, s.rate, s.merge}) {
        DATADispose(array);
        std::free(array);
    }
}

void fill(DATAstruct& record, const Outline& outline)
{
    record.type = DATA_TYPE_DOUBLE;
    record.count = static_cast<int32_t>(outline.size());
    record.dim = 3;
    ASSERT_EQ(DATAAllocate(&record), 1);
    std::copy_n(outline[0].data(), 3 * outline.size(), record.dvals);
}

std::vector<double> values_of(const DATAstruct& record)
{
    return {record.dvals, record.dvals + std::ptrdiff_t{record.count} * record.dim};
}

} // namespace

std::vector<double> coordinates(AnyPoints points)
{
    return {points.view().coordinates().begin(), points.view().coordinates().end()};
}

DirectBorder border_by_record(const Outline& outline, double distance, double height, int keep, int split)
{
    BORDERStatus s;
    BORDERInitialize(&s);
    fill(*s.path, outline);
    s.distance = distance;
    s.height = height;
    s.keep_collapsed = keep;
    s.split_events = split;
    EXPECT_EQ(BORDER(&s), 1);
    DirectBorder result = {values_of(*s.output), {}, {}};
    result.dead.assign(s.dead->bvals, s.dead->bvals + s.dead->count);
    result.merge.assign(s.merge->ivals, s.merge->ivals + s.merge->count);
    release(s);
    return result;
}

std::vector<std::vector<double>> borders_by_record(const std::vector<Outline>& outlines, double distance, double height,
                                                   int keep, int split)
{
    BORDERStatus s;
    BORDERInitialize(&s);
    s.path->type = DATA_TYPE_DATA;
    s.path->count = static_cast<int32_t>(outlines.size());
    s.path->dim = 1;
    EXPECT_EQ(DATAAllocate(s.path), 1);
    for (size_t i = 0; i < outlines.size(); ++i) {
        DATAstruct* const child = DATANew();
        fill(*child, outlines[i]);
        s.path->pvals[i] = child;
    }
    s.distance = distance;
    s.height = height;
    s.keep_collapsed = keep;
    s.split_events = split;
    EXPECT_EQ(BORDER(&s), 1);
    std::vector<std::vector<double>> borders;
    for (int32_t i = 0; i < s.output->count; ++i)
        borders.push_back(values_of(*static_cast<DATAstruct*>(s.output->pvals[i])));
    release(s);
    return borders;
}

std::vector<double> band_by_record(const Outline& line, double distance)
{
    BORDERStatus s;
    BORDERInitialize(&s);
    fill(*s.path, line);
    s.distance = distance;
    s.keep_collapsed = 1;
    s.split_events = 0;
    BORDERAddWings(&s);
    EXPECT_EQ(BORDER(&s), 1);
    BORDERRemoveWings(&s);
    BORDERMakePipe(&s);
    std::vector<double> band = values_of(*s.output);
    release(s);
    return band;
}

Outline random_outline(Random& random, int n, double x, double y, double size)
{
    Outline outline;
    for (int i = 0; i < n; ++i) {
        const double angle = 6.283185307179586 * i / n, r = size * random.uniform(0.5, 1.0);
        outline.push_back({x + r * std::cos(angle), y + r * std::sin(angle), 0.0});
    }
    return outline;
}

Transform random_placement(Random& random)
{
    const auto three = [&](double limit) {
        return Point{random.uniform(-limit, limit), random.uniform(-limit, limit), random.uniform(-limit, limit)};
    };
    return Transform::from({.rotation = three(3), .translation = three(20)});
}

std::string refusal_of(const std::function<void()>& call)
{
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

Mesh cube()
{
    Mesh mesh;
    for (int i = 0; i < 8; ++i)
        mesh.vertices.push_back({i & 1 ? 1.0 : -1.0, i & 2 ? 1.0 : -1.0, i & 4 ? 1.0 : -1.0});
    mesh.triangles = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                      {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
    return mesh;
}

bool is_closed(const Mesh& mesh)
{
    std::map<std::pair<int32_t, int32_t>, int> balance;
    for (const Triangle& t : mesh.triangles)
        for (size_t k = 0; k < 3; ++k) {
            balance[{t[k], t[(k + 1) % 3]}] += 1;
            balance[{t[(k + 1) % 3], t[k]}] -= 1;
        }
    return !balance.empty() && std::ranges::all_of(balance, [](const auto& edge) { return edge.second == 0; });
}

} // namespace korvale::test
