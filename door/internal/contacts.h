#pragma once

#include "door/internal/contours.h"
#include "door/internal/self_crossing.h"

namespace korvale::door {

/// Two rings that cross, or twice one that crosses itself, and where.
struct Crossing {
    int32_t first, second;
    Place place;
};

/// Where rings that take part come within a tolerance of each other, or meet themselves, and whether they cross there.
class Contacts {
public:
    /// With `allows_crossing` nobody will ask whether rings cross.
    Contacts(Contours& contours, double tolerance, bool allows_crossing, const Telling& telling);

    /// The two rings with the least numbers that cross; one may cross itself.
    std::optional<Crossing> find_crossing(const Telling& telling);

    /// For each ring 1 if it crosses another, once crossings have been looked for.
    std::span<const uint8_t> crosses() const { return crosses_; }

    /// For each ring 1 if it touches another.
    Vector<uint8_t> touches() const;

private:
    /// An edge of a ring that comes within the slack of another ring.
    struct Contact {
        int32_t ring, other, edge, other_edge;
    };

    /// Places of a ring that do not lie on another one which it touches.
    struct Sides {
        int32_t ring, other;
        std::optional<Place> in, out; ///< of the other
    };

    void compare(int32_t ring, int32_t i, int32_t other, int32_t k);
    void compare_own(int32_t ring, int32_t i, int32_t k);
    void note_crossing(int32_t a, int32_t b, const Place& p);

    void find_self_crossings(const Telling& telling);
    size_t end_of_pair(size_t first) const;
    Sides look_at_sides(std::span<const Contact> contacts) const;
    Vector<Place> free_places(std::span<const Contact> contacts) const;
    void compare_sides(const Sides& a, const Sides& b);
    bool lies_well_inside(int32_t ring, int32_t other);

    Contours& contours_;
    double slack_;
    Vector<Contact> contacts_;                      ///< by rings
    Vector<std::pair<int32_t, EdgePair>> meetings_; ///< of edges of one ring, by rings
    Vector<int32_t> meetings_of_;                   ///< each ring, counted
    Vector<uint8_t> crosses_;
    std::optional<Crossing> crossing_;
};

} // namespace korvale::door
