// Ears clipped through a tree of boxes, compared with a search through all corners for each of them.
#include <gtest/gtest.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

/// Ears clipped as they are documented to be found: the first corner from the one after the next on, in the order of
/// the ring, that turns left and whose triangle holds no other corner; else the first one on a straight way.
class PlainClipper {
public:
    explicit PlainClipper(const Ring& ring) : ring_(ring)
    {
        for (size_t i = 0; i < ring.size(); ++i)
            left_.push_back(static_cast<int32_t>(i));
    }

    std::vector<Triangle> run()
    {
        std::vector<Triangle> triangles;
        for (int32_t start = 0; left_.size() >= 3;) {
            const size_t at = corner_to_clip(start);
            start = number(at + 2);
            triangles.push_back({number(at + left_.size() - 1), left_[at], number(at + 1)});
            left_.erase(left_.begin() + static_cast<ptrdiff_t>(at));
        }
        return triangles;
    }

private:
    int32_t number(size_t at) const { return left_[at % left_.size()]; }
    const Place& place(size_t at) const { return ring_[static_cast<size_t>(number(at))]; }
    int turn(size_t at) const { return side(place(at + left_.size() - 1), place(at), place(at + 1)); }

    bool is_ear(size_t at) const
    {
        const Place &a = place(at + left_.size() - 1), &b = place(at), &c = place(at + 1);
        const auto is_held = [&](int32_t k) {
            const Place& p = ring_[static_cast<size_t>(k)];
            return p != a && p != b && p != c && side(a, b, p) >= 0 && side(b, c, p) >= 0 && side(c, a, p) >= 0;
        };
        return turn(at) > 0 && std::none_of(left_.begin(), left_.end(), is_held);
    }

    size_t corner_to_clip(int32_t start) const
    {
        const auto first = static_cast<size_t>(std::lower_bound(left_.begin(), left_.end(), start) - left_.begin());
        for (size_t step = 0; step < left_.size(); ++step)
            if (const size_t at = (first + step) % left_.size(); is_ear(at))
                return at;
        for (size_t at = 0; at < left_.size(); ++at)
            if (turn(at) == 0)
                return at;
        ADD_FAILURE() << "a ring without an ear";
        return 0;
    }

    const Ring& ring_;
    std::vector<int32_t> left_;
};

/// Towers of different heights side by side, with places on the ground between them and on some roofs.
Ring skyline(Random& random, int towers)
{
    Ring ring;
    for (int x = 0; x <= towers; ++x)
        ring.push_back({x / 64.0, 0});
    int height = 0;
    for (int x = towers; x > 0; --x) {
        height += random.between(1, 6);
        height = height % 7 + 1;
        ring.push_back({x / 64.0, height / 64.0});
        if (random.one_in(3))
            ring.push_back({(x - 0.5) / 64.0, height / 64.0});
        ring.push_back({(x - 1) / 64.0, height / 64.0});
    }
    return ring;
}

/// A ring around the origin, with long spikes. Of four corners and more no two are half a turn apart.
Ring spikes(Random& random, int corners)
{
    Ring ring;
    for (int i = 0; i < corners; ++i) {
        const double shift = random.uniform(0, 0.9), r = random.uniform(0.05, 0.9);
        const double angle = 6.283185307179586 * (i + shift) / corners;
        ring.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    return ring;
}

void compare(const Ring& ring)
{
    const Vector<Triangle> triangles = cut(rings_of({ring}));
    EXPECT_EQ(std::vector(triangles.begin(), triangles.end()), PlainClipper(ring).run());
}

TEST(Ears, OfSpikesAreThoseOfASearchThroughAllCorners)
{
    Random random(3);
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        compare(spikes(random, random.between(4, 80)));
    }
}

TEST(Ears, OfSkylinesAreThoseOfASearchThroughAllCorners)
{
    Random random(4);
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        compare(skyline(random, random.between(1, 40)));
    }
}

} // namespace
} // namespace korvale::test
