// Transforms: composed, applied, taken apart, and what is lost at the pole.

#include <cstdio>

#include <korvale.hpp>

using korvale::Point, korvale::Srt, korvale::Transform;

namespace {

void print(const char* what, const Point& p)
{
    std::printf("%-10s %7.3f %7.3f %7.3f\n", what, p[0] + 0.0, p[1] + 0.0, p[2] + 0.0);
}

} // namespace

int main()
{
    const Transform arm = Transform::translation({10, 0, 0}) * Transform::scaling({2, 2, 2}); // scales first
    print("point", arm.point({1, 2, 3}));
    print("vector", arm.vector({1, 2, 3}));

    const Srt parts = {.scale = {1, 2, 3}, .rotation = {0.1, 0.2, 0.3}, .translation = {4, 5, 6}};
    const Transform whole = Transform::from(parts);
    const Srt again = whole.take_apart();
    print("scale", again.scale);
    print("rotation", again.rotation);
    print("there", whole.point({1, 1, 1}));
    print("and back", Transform::inverse_of(parts).point(whole.point({1, 1, 1})));

    // A quarter turn about y lets x and z turn about the same axis: only their difference can be told.
    const Transform pole = Transform::rotation({0.5, 1.5707963267948966, 0.2});
    const Srt told = pole.take_apart();
    print("at pole", told.rotation);
    std::printf("pole: %s\n", korvale::at_pole(told) ? "yes" : "no");
    print("made by", pole.point({1, 2, 3}));
    print("told", Transform::from(told).point({1, 2, 3}));
}
