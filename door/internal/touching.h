#pragma once

#include "door/internal/edges.h"

// Edges that lie on each other but for a slack: a tolerance, or rounding.
namespace korvale::door {

/// Lengths that count as nothing beside a tolerance.
inline double slack_of(double tolerance)
{
    return std::max(tolerance, kNegligible);
}

/// How far the middle of a piece of an edge may be from what it lies on: corners of edges side by side are farther
/// apart than the edges are, so short pieces may be twice as far.
inline double reach_of(double length, double reach)
{
    return length <= 2 * reach ? 2 * reach : reach;
}

/// Adds which share of edge e lies before each end of another one that lies on it.
inline void add_shares(const Edge& e, const Edge& f, double slack, Vector<double>& shares)
{
    const Place along = e.to - e.from;
    const double square = dot(along, along);
    for (const Place& p : {f.from, f.to})
        if (square > 0.0 && is_within(slack, e, p))
            shares.push_back(std::clamp(dot(p - e.from, along) / square, 0.0, 1.0));
}

} // namespace korvale::door
