#include "door/internal/boxes.h"

namespace korvale::door {

namespace {

/// The bits of a number of 32 bits, spread to every other bit.
uint64_t spread(uint64_t bits)
{
    bits = (bits | bits << 16) & 0x0000ffff0000ffffu;
    bits = (bits | bits << 8) & 0x00ff00ff00ff00ffu;
    bits = (bits | bits << 4) & 0x0f0f0f0f0f0f0f0fu;
    bits = (bits | bits << 2) & 0x3333333333333333u;
    return (bits | bits << 1) & 0x5555555555555555u;
}

} // namespace

Vector<size_t> order_along_curve(const Vector<Place>& places)
{
    constexpr double kSteps = 4294967295.0; // 2^32 - 1
    constexpr double kLeastExtent = 1e-300; // of one place, or of places that are one
    Box all = kNowhere;
    for (const Place& p : places)
        all.cover(p);
    const double extent = std::max({all.high_x - all.low_x, all.high_y - all.low_y, kLeastExtent});
    const auto step = [&](double distance) { return spread(static_cast<uint64_t>(distance / extent * kSteps)); };
    struct Key {
        uint64_t code;
        size_t number;
    };
    Vector<Key> keys(places.size());
    for (size_t i = 0; i < keys.size(); ++i)
        keys[i] = {step(places[i].x - all.low_x) | step(places[i].y - all.low_y) << 1, i};
    std::sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) { return a.code < b.code; });
    Vector<size_t> order(keys.size());
    std::transform(keys.begin(), keys.end(), order.begin(), [](const Key& key) { return key.number; });
    return order;
}

void raise(Vector<Box>& nodes)
{
    for (size_t i = nodes.size() / 2 - 1; i > 0; --i) {
        nodes[i] = nodes[2 * i];
        nodes[i].cover(nodes[2 * i + 1]);
    }
}

} // namespace korvale::door
