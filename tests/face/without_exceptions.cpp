// A host compiled without exceptions: its calls compile, and `try_` functions tell of failures. Prints what is wrong.
#include <cstdio>

#include <korvale.hpp>

#ifdef __cpp_exceptions
#error "compiled with exceptions"
#endif

namespace {

int wrong = 0;

void expect(bool is_right, const char* what)
{
    if (is_right)
        return;
    std::printf("wrong: %s\n", what);
    ++wrong;
}

} // namespace

int main()
{
    const std::vector<korvale::Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const std::vector<std::uint16_t> triangles = {0, 1, 2, 0, 2, 3};
    const auto border = korvale::try_offset(square, 0.5);
    expect(border && border->points[2] == korvale::Point{4.5, 4.5, 0}, "offset");
    expect(korvale::offset(square, 0.5) == *border, "offset without try_");
    const auto refused = korvale::try_offset({{0, 0, 0}}, 0.5);
    expect(!refused && refused.error().argument() == "outline", "what offset refuses");
    const auto grid = korvale::RayGrid::try_make(square, triangles);
    expect(grid && grid->distance({1, 2, -1}, {0, 0, 1}) == 1.0, "RayGrid");
    auto equations = korvale::Equations::try_make();
    expect(equations && equations->try_declare("y"), "Equations");
    equations->function("TWO", [] { return 2.0; });
    const auto number = equations->try_add("y = 3 * TWO");
    expect(number && equations->try_evaluate(*number).value_or(0.0) == 6.0, "a function of the host");
    expect(equations->try_add("y = nothing").error().word() == "nothing", "what equations refuse");
    auto relaxer = korvale::Relaxer::try_make(square, triangles);
    auto points = square;
    expect(relaxer && relaxer->try_keep("lengths") && relaxer->try_run(points)->stop == korvale::Stop::energy,
           "Relaxer");
    return wrong;
}
