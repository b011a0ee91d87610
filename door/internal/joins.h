#pragma once

#include "border/internal/sweep.h"
#include "door/internal/edges.h"
#include "door/internal/views.h"

// What stands at the corners of an outline that open where it moves: those that stick out where it grows, the others
// where it shrinks.
namespace korvale::door {

/// The cosine of half a turn whose corner outside an arc is as far from it as a tolerance allows; 0 is a part of the
/// distance.
double least_cosine(double tolerance, double distance);

/// How often a turn has to be halved until half of it has no smaller cosine than the least.
int halvings_to(double cos_half_turn, double least);

/// Directions from one to another, up to half a turn to its left where `side` is 1 and else to its right, after that
/// turn has been halved so often.
Vector<Place> halved(const Place& from, const Place& to, double side, int times);

/// The joins asked for, once they have been found sound.
struct Joins {
    int32_t kind = KORVALE_JOIN_MITER;        ///< of all corners
    double miter_limit = 0.0;                 ///< or 0 for none
    double tolerance = 0.0;                   ///< or 0 for a part of the distance
    std::span<const int32_t> of_corners = {}; ///< the kind of each, or empty

    /// Whether any corner could be other than sharp.
    bool are_some() const { return kind != KORVALE_JOIN_MITER || miter_limit > 0.0 || !of_corners.empty(); }

    int32_t kind_of(size_t corner) const { return of_corners.empty() ? kind : of_corners[corner]; }

    /// Those of `count` corners from `first` on.
    Joins part(size_t first, size_t count) const
    {
        Joins joins = *this;
        if (!of_corners.empty())
            joins.of_corners = of_corners.subspan(first, count);
        return joins;
    }
};

/// The joins of a call, kept while it runs.
class JoinsIn {
public:
    /// Refuses kinds that there are not, other than one for each of `corners` corners, and numbers out of range.
    JoinsIn(const korvale_offset_options& options, int64_t corners);

    const Joins& joins() const { return joins_; }

private:
    IndicesIn of_corners_;
    Joins joins_;
};

/// An outline in its plane whose corners are cut by edges so short that they count as nothing, and which grow into
/// joins when it moves. It is as large as suits them: so large that the shortest edge that the sweep leaves alone is a
/// billionth of it.
class JoinedOutline {
public:
    /// Of an outline that runs counter-clockwise and will move by `distance`.
    JoinedOutline(std::span<const Point> outline, double distance, const Joins& joins);

    /// Whether every corner stays sharp. There are no vertices then.
    bool is_sharp() const { return vertices_.empty(); }

    /// How many times as large it is as the outline: a power of two, and 1 where it is sharp.
    double zoom() const { return zoom_; }

    size_t size() const { return vertices_.size(); }
    Point place(size_t i) const { return {vertices_[i].place.x, vertices_[i].place.y, 0.0}; }

    /// The corner of the outline that vertex i belongs to.
    int32_t corner(size_t i) const { return is_sharp() ? static_cast<int32_t>(i) : vertices_[i].corner; }

    /// Puts the vertices of joins that are left of a ring, once it has been swept, where they belong: rounding of the
    /// short edges is taken out, and what is swept for a bevel is cut off at it. `numbers` are those that the vertices
    /// of the ring have here.
    void settle(border::Rows& swept, std::span<const int32_t> numbers) const;

    /// Tells what has become of the corners of the outline, once all of it has been swept: 1 for each of which no
    /// vertex is left, and the corner that each one merged into, itself while it stayed.
    void follow(const border::Rows& swept, uint8_t* removed, int32_t* merged_into) const;

private:
    /// The line that an edge lies in.
    struct Line {
        Place anchor;    ///< a corner on the line where the outline has not moved yet
        Place direction; ///< of length 1
        double start;    ///< how far the edge starts to the right of the anchor
        double cut;      ///< how far it should end to the right of where it does by itself, but for `start`
        bool is_join;    ///< the edge has grown out of a corner
        bool is_known;   ///< else no more than its vertices say
    };
    struct Vertex {
        Place place;
        int32_t corner;
        Line line; ///< of the edge that starts here
    };
    struct Corner;
    struct Ring;
    struct Bevel;
    struct End;

    void cut(Corner& corner, const Joins& joins) const;
    Vector<Corner> cut_all(std::span<const Place> places, std::span<const size_t> corners, const Joins& joins) const;
    void lay_vertices(const Corner& corner, int32_t source);
    bool is_on(const Line& line, const Place& p) const;
    void find_line(Ring& ring, size_t at) const;
    void place_on_lines(Ring& ring, size_t at) const;
    bool find_end(const Ring& ring, size_t at, const Bevel& bevel, bool is_ahead, size_t limit, End& end) const;
    void replace_corner(Ring& ring, size_t at, const End& start, const End& end) const;
    void cut_off(Ring& ring, size_t at) const;

    double zoom_ = 1.0;
    double distance_ = 0.0; ///< in the size of this outline
    Vector<Vertex> vertices_;
};

} // namespace korvale::door
