#!/usr/bin/env bash
# usage: lifetimes.sh SOURCE COMPILER
# Views of what is gone by then do not compile, or, where only a compiler that knows lifetimes can tell, are warned of.
# Nor does a call that may mean two things.
# SOURCE is the library's source tree.
set -euo pipefail
source=$1 compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

flags=(-std=c++20 -Wall -Wextra -Werror -Wno-unused -I"$source/include")

# What every line stands behind, compiled once.
cat >"$work/before.hpp" <<'CODE'
#include <korvale/face.hpp>

struct Node {
    int id;
    korvale::Point place;
};
std::vector<korvale::Point> make();
std::vector<std::vector<korvale::Point>> make_all();
std::vector<Node> make_nodes();
std::vector<double> make_numbers();
extern std::vector<korvale::Point> kept;
extern std::vector<std::vector<korvale::Point>> all_kept;
extern std::vector<double> numbers;
extern std::vector<korvale::Triangle> triangles;
void use(const void*);
CODE
if [[ $compiler == *clang* ]]; then
    "$compiler" "${flags[@]}" -x c++-header "$work/before.hpp" -o "$work/before.pch"
    before=(-include-pch "$work/before.pch")
else
    "$compiler" "${flags[@]}" -x c++-header "$work/before.hpp" -o "$work/before.hpp.gch"
    before=(-include "$work/before.hpp")
fi

# Compiles a program around one line, every warning an error.
compiles() {
    echo "void line() { $1 }" >"$work/line.cpp"
    "$compiler" "${flags[@]}" "${before[@]}" -fsyntax-only "$work/line.cpp" >"$work/said" 2>&1
}

wrong=0
is_right() {
    compiles "$1" || { echo "lifetimes: this should compile with $compiler: $1"; cat "$work/said"; wrong=1; }
}
is_refused() {
    ! compiles "$1" || { echo "lifetimes: this compiles with $compiler without a word: $1"; wrong=1; }
    if ! grep -qE "${2:-deleted}" "$work/said"; then
        echo "lifetimes: $compiler refuses this for another reason: $1"
        cat "$work/said"
        wrong=1
    fi
}
is_warned_of() {
    if [[ $compiler == *clang* ]]; then
        is_refused "$1" 'Wdangling|Wreturn-stack'
    fi
}

is_right 'korvale::PointView v = kept; use(&v);'
is_right 'korvale::PointView v = std::span<const korvale::Point>(kept); use(&v);'
is_right 'korvale::ShapeView v = all_kept; use(&v);'
is_right 'korvale::ShapeView v = {kept, kept}; use(&v);'
is_right 'korvale::offset(make(), 1); korvale::offset(make_all(), 1); korvale::offset({{0, 0, 0}, {1, 0, 0}}, 1);'
is_right 'korvale::BevelStep wall[2] = {}; korvale::bevel(make(), wall); korvale::bevel(make_all(), wall);'
is_right 'korvale::RayGrid grid(make(), triangles); korvale::RayGrid soup(make()); use(&grid); use(&soup);'
is_right 'korvale::RayGrid grid = korvale::RayGrid::over(kept); use(&grid);'
is_right 'auto band = korvale::band(kept, 1); auto border = band.border(); use(border.data());'
is_right 'for (const auto& p : korvale::band(kept, 1).outline) use(&p);'

is_refused 'korvale::PointView v = make(); use(&v);'
is_refused 'korvale::PointView v(make_nodes(), &Node::place); use(&v);' 'no matching'
is_refused 'korvale::PointView v = korvale::offset(kept, 1).points; use(&v);'
is_refused 'korvale::PointSpan v = make(); use(&v);'
is_refused 'korvale::PointView v = {{0, 0, 0}, {1, 0, 0}}; use(&v);' 'could not convert|no matching'
is_refused 'korvale::ShapeView v = make_all(); use(&v);'
is_refused 'korvale::TriangleView v = make(); use(&v);'
is_refused 'korvale::RayGrid grid = korvale::RayGrid::over(make()); use(&grid);'
is_refused 'korvale::AnyPoints v = make(); korvale::offset(v, 1);'
is_refused 'korvale::AnyShape v = make_all(); korvale::offset(v, 1);'
is_right 'auto border = korvale::band(kept, 1).border(); use(border.data());'
is_right 'auto other = korvale::band(kept, 1).other_side(); use(other.data());'
is_refused 'auto view = korvale::RayGrid(kept).triangles(); use(&view);'
is_right 'auto edges = korvale::Relaxer(kept, triangles).edges(); use(&edges);'
is_refused 'korvale::Column column("x", make_numbers()); use(&column);'
is_right 'korvale::Column column("x", numbers); korvale::Column part("y", std::span(numbers)); use(&column); use(&part);'

# One triangle between braces looks like a size of the grid.
is_right 'korvale::RayGrid grid(kept, {{0, 1, 2}, {0, 2, 3}}); korvale::RayGrid other(kept, korvale::GridSize{4, 4, 4});'
is_right 'korvale::RayGrid grid(kept, triangles, {{4, 4, 4}}); use(&grid);'
is_refused 'korvale::RayGrid grid(kept, {{0, 1, 3}});' 'ambiguous'
is_refused 'korvale::RayGrid::try_make(kept, {{0, 1, 3}});' 'ambiguous'

# Whole numbers could be those of points, or one for each.
is_right 'korvale::Relaxer(kept, triangles).hold(std::vector<bool>(4)).hold(std::vector<std::uint8_t>(4));'
is_right 'const bool mask[4] = {}; korvale::Relaxer(kept, triangles).hold(std::span<const bool>(mask)).hold(mask);'
is_refused 'korvale::Relaxer(kept, triangles).hold(std::vector<int>{0, 1, 2, 3});' 'a mask is one bool'
is_refused 'korvale::Relaxer(kept, triangles).try_hold(std::vector<std::size_t>{0, 1});' 'a mask is one bool'
is_refused 'korvale::Relaxer(kept, triangles).hold(numbers);' 'a mask is one bool'

is_warned_of 'const korvale::Point& p = korvale::offset(kept, 1).points[0]; use(&p);'
is_warned_of 'auto numbers = korvale::offset(kept, 1).points.coordinates(); use(&numbers);'
is_warned_of 'auto first = korvale::offset(kept, 1).points.begin(); use(first);'
is_warned_of 'auto removed = korvale::offset(kept, 1).removed.data(); use(removed);'
is_warned_of 'auto points = korvale::Offsetter()(kept, 1).points(); use(&points);'
is_warned_of 'auto rows = korvale::Transform().rows(); use(&rows);'
exit $wrong
