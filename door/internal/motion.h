#pragma once

#include <algorithm>

#include "border/internal/sweep.h"
#include "door/internal/offset.h"
#include "door/internal/side.h"

// A sweep of one outline or ring in the plane: how it is laid flat, run, and looked at.
namespace korvale::door {

/// The sign of the area of an outline that has been laid flat: it runs counter-clockwise.
constexpr double kCounterClockwise = 1.0;

/// How an outline has been laid flat to be swept.
struct Flattening {
    double scale; ///< from its own size to that of the sweep
    Planes planes;
    Point area; ///< twice that of the outline before it moves; only without splits

    /// Writes where the outline lies.
    void place(Outline outline, Point* places);
};

/// Lays an outline flat and writes where it lies.
Flattening lay_flat(Outline outline, const Motion& motion, Point* places);

/// Lifts points along the normal of a plane.
void lift(std::span<Point> points, Planes& planes, double height);

/// Whether nothing is left of an outline. Without splits a part that has shrunk to nothing goes on, inside out.
bool is_collapsed(Outline live, const Motion& motion, const Point& area);

/// A sweep of n vertices in these arrays.
border::Sweep sweep_in(SweepArrays& arrays, size_t n);

/// Runs a sweep that tells of its progress; throws where the heap is exhausted or the work has been stopped.
void run_to_end(border::Sweep& sweep, const Telling& telling);

/// Where the vertices are that are left.
Vector<Place> live_places(const border::Rows& rows);

/// Calls see(i, x, y) for the vertices of a piece, in their order.
template <class See>
void for_each_vertex(const border::DroppedPiece& piece, const border::Rows& rows, See see)
{
    const std::span dropped(piece.dropped, static_cast<size_t>(piece.count));
    const auto behind = std::upper_bound(dropped.begin(), dropped.end(), piece.vertex);
    for (auto i = dropped.begin(); i != dropped.end(); ++i) {
        if (i == behind)
            see(piece.vertex, piece.x, piece.y);
        see(*i, rows.flat[3 * int64_t{*i}], rows.flat[3 * int64_t{*i} + 1]);
    }
    if (behind == dropped.end())
        see(piece.vertex, piece.x, piece.y);
}

/// What a sweep may have made of a ring once a vertex has missed an edge: the pieces that it has dropped since.
struct Suspects {
    const border::Sweep& sweep;
    Vector<Vector<Place>> pieces = {};

    static void drop(const border::DroppedPiece& piece, void* receiver)
    {
        static_cast<Suspects*>(receiver)->see(piece);
    }

    void see(const border::DroppedPiece& piece);

    /// Whether they and what is left can be what has become of a ring that went round the area `before` and
    /// moved by `distance`. One that shrinks falls into parts that run as it does.
    bool are_sound(double before, double distance, const Telling& telling) const;

    static bool is_piece_sound(const Vector<Place>& piece, double before, double distance, const Telling& telling);
};

} // namespace korvale::door
