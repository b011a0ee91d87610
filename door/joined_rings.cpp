// Rings joined where they come within a tolerance of each other.
//
// Rings are taken up one after the other. A place of one goes to the nearest node of those before it that is within the
// tolerance, else to the nearest place on their edges, which becomes a node of these. An edge then runs through all
// nodes of the rings before it that lie within the tolerance of it, in the order in which they lie along it, as an edge
// runs through the pixels of snap rounding (John D. Hobby, Practical Segment Intersection with Finite Precision Output,
// 1999), and on the way from one to the next it follows edges that lead there along it. So what two rings have in
// common are whole edges between nodes, and the first of two stays as it was.
//
// Edges of several rings between two nodes are pieces of one line, so that a node on it is one for all of them.
#include "door/internal/joined_rings.h"

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>
#include <tuple>

#include "door/internal/runs.h"

namespace korvale::door {

namespace {

/// Whether two edges go through each other between their ends.
bool do_cross(const Edge& e, const Edge& f)
{
    return side(e.from, e.to, f.from) * side(e.from, e.to, f.to) < 0 &&
           side(f.from, f.to, e.from) * side(f.from, f.to, e.to) < 0;
}

class Joining {
public:
    Joining(const Rings& rings, double tolerance, const Telling& telling)
        : rings_(rings), tolerance_(tolerance), telling_(telling), tree_(rings), groups_(rings.size()),
          nodes_of_(rings.places.size(), -1), steps_(rings.places.size())
    {
        std::iota(groups_.begin(), groups_.end(), 0);
        tree_.grow([&](size_t k) { return !rings_[k].empty(); });
        tree_.for_each_near_pair(2 * tolerance_, false, telling.part(0.0, 0.5),
                                 [&](int32_t ring, int32_t i, int32_t other, int32_t k) {
                                     if (are_near(tree_.edge(ring, i), tree_.edge(other, k)))
                                         note_near_edges({ring, i, other, k});
                                 });
        std::sort(near_edges_.begin(), near_edges_.end(), [](const NearEdges& a, const NearEdges& b) {
            return std::tie(a.ring, a.edge, a.other, a.other_edge) < std::tie(b.ring, b.edge, b.other, b.other_edge);
        });
    }

    JoinedRings run(std::span<const uint8_t> is_joined)
    {
        Vector<uint8_t> is_group_joined(rings_.size(), 0);
        for (size_t k = 0; k < rings_.size(); ++k)
            if (is_joined[k] != 0)
                is_group_joined[group_of(k)] = 1;
        const auto takes_part = [&](size_t k) { return is_group_joined[group_of(k)] != 0; };
        Asking asking(telling_.part(0.5, 0.5), kPlacesPerQuestion);
        for (size_t k = 0; k < rings_.size(); ++k)
            if (takes_part(k))
                take_up(static_cast<int32_t>(k), asking);
        JoinedRings joined;
        for (size_t k = 0; k < rings_.size(); ++k) {
            if (takes_part(k))
                add_joined(static_cast<int32_t>(k), joined);
            else
                add_as_is(static_cast<int32_t>(k), joined);
            joined.rings.ends.push_back(static_cast<int32_t>(joined.rings.places.size()));
        }
        return joined;
    }

private:
    /// Edges of two rings that come within twice the tolerance of each other: that far apart edges may be that are
    /// within the tolerance of each other once the one of the earlier ring has moved.
    struct NearEdges {
        int32_t ring, edge, other, other_edge;
    };

    int32_t first_of(int32_t ring) const { return ring == 0 ? 0 : rings_.ends[static_cast<size_t>(ring) - 1]; }
    int32_t size(int32_t ring) const { return static_cast<int32_t>(rings_[static_cast<size_t>(ring)].size()); }
    const Place& place(int32_t i) const { return rings_.places[static_cast<size_t>(i)]; }
    const Place& node(int32_t i) const { return nodes_[static_cast<size_t>(i)]; }

    // --- Edges that are near -----------------------------------------------------------------------------------------

    bool are_near(const Edge& e, const Edge& f) const
    {
        const double reach = 2 * tolerance_;
        return is_within(reach, e, f.from) || is_within(reach, e, f.to) || is_within(reach, f, e.from) ||
               is_within(reach, f, e.to) || do_cross(e, f);
    }

    void note_near_edges(NearEdges c)
    {
        if (c.ring < c.other)
            c = {c.other, c.other_edge, c.ring, c.edge};
        near_edges_.push_back(c);
        const size_t a = group_of(static_cast<size_t>(c.ring)), b = group_of(static_cast<size_t>(c.other));
        groups_[std::max(a, b)] = std::min(a, b);
    }

    /// The first ring of those that hang together.
    size_t group_of(size_t ring)
    {
        for (; groups_[ring] != ring; ring = groups_[ring])
            groups_[ring] = groups_[groups_[ring]];
        return ring;
    }

    std::span<const NearEdges> near_edges_of(int32_t ring, int32_t edge) const
    {
        const std::span all(near_edges_);
        const std::pair wanted(ring, edge);
        const auto first = std::partition_point(all.begin(), all.end(),
                                                [&](const NearEdges& c) { return std::pair(c.ring, c.edge) < wanted; });
        const auto last = std::partition_point(first, all.end(),
                                               [&](const NearEdges& c) { return std::pair(c.ring, c.edge) == wanted; });
        return {first, last};
    }

    // --- Nodes -------------------------------------------------------------------------------------------------------

    int32_t node_at(const Place& p)
    {
        const auto [at, is_new] = numbers_.try_emplace(p, static_cast<int32_t>(nodes_.size()));
        if (is_new)
            nodes_.push_back(p);
        return at->second;
    }

    void take_up(int32_t ring, Asking& asking)
    {
        const int32_t first = first_of(ring);
        for (int32_t i = 0; i < size(ring); ++i) {
            nodes_of_[static_cast<size_t>(first + i)] = nearest_node(ring, i);
            asking.step(static_cast<double>(first + i) / static_cast<double>(rings_.places.size()));
        }
        for (int32_t i = 0; i < size(ring); ++i)
            find_route(ring, i);
    }

    /// The node that a place of a ring goes to.
    int32_t nearest_node(int32_t ring, int32_t i)
    {
        const Place p = place(first_of(ring) + i);
        const auto away = [&](const Place& q) { return dot(q - p, q - p); };
        const double reach = tolerance_ * tolerance_;
        int32_t nearest = -1;
        double least = std::nextafter(reach, 2.0 * reach);
        Piece piece = {};
        Place best = p;
        for_each_piece_near(ring, i, {p, p}, [&](const Piece& at) {
            for (const int32_t n : {at.from, at.to})
                if (const double d = away(node(n)); d < least || (d == least && n < nearest)) {
                    nearest = n;
                    least = d;
                }
        });
        if (nearest >= 0)
            return nearest;
        for_each_piece_near(ring, i, {p, p}, [&](const Piece& at) {
            const Place q = nearest_of({node(at.from), node(at.to)}, p);
            if (const double d = away(q); d < least) {
                piece = at;
                least = d;
                best = q;
            }
        });
        const int32_t n = node_at(best);
        if (piece.from != piece.to && n != piece.from && n != piece.to)
            split(piece, n);
        return n;
    }

    /// Finds what an edge of a ring becomes.
    void find_route(int32_t ring, int32_t i)
    {
        const int32_t first = first_of(ring), start = nodes_of_[static_cast<size_t>(first + i)],
                      end = nodes_of_[static_cast<size_t>(i + 1 < size(ring) ? first + i + 1 : first)];
        Vector<int32_t> route = {start};
        Vector<int32_t> ahead = {end}; // the next node last
        is_on_way_.resize(nodes_.size(), 0);
        is_on_way_[static_cast<size_t>(start)] = is_on_way_[static_cast<size_t>(end)] = 1;
        while (!ahead.empty()) {
            const int32_t from = route.back(), to = ahead.back();
            const size_t known = ahead.size();
            add_nodes_between(ring, i, from, to, ahead);
            if (ahead.size() == known) {
                if (from != to)
                    route.push_back(to);
                ahead.pop_back();
            }
        }
        for (const int32_t n : route)
            is_on_way_[static_cast<size_t>(n)] = 0;
        Vector<int32_t> along = {start};
        for (size_t k = 1; k < route.size(); ++k)
            follow(ring, i, route[k], along);
        Vector<Step>& steps = steps_[static_cast<size_t>(first + i)];
        for (size_t k = 1; k < along.size(); ++k)
            steps.push_back({chain_through(along[k - 1], along[k]), along[k - 1], along[k]});
    }

    /// Goes on from the last node to another one, on the fewest pieces of rings before this one that lead there along
    /// the edge, or straight.
    void follow(int32_t ring, int32_t i, int32_t to, Vector<int32_t>& along) const
    {
        const int32_t from = along.back();
        const Edge edge = tree_.edge(ring, i), way = {node(from), node(to)};
        const auto lies_along = [&](int32_t n) {
            return n == from || n == to ||
                   (is_within(2 * tolerance_, way, node(n)) && is_within(2 * tolerance_, edge, node(n)));
        };
        Vector<std::pair<int32_t, int32_t>> pieces; // both ways
        if (!chains_of_.contains(key_of(from, to)))
            for_each_piece_near(ring, i, way, [&](const Piece& at) {
                if (lies_along(at.from) && lies_along(at.to)) {
                    pieces.emplace_back(at.from, at.to);
                    pieces.emplace_back(at.to, at.from);
                }
            });
        std::sort(pieces.begin(), pieces.end());
        Vector<std::pair<int32_t, int32_t>> reached = {{to, to}}; // each with the next one on the way there
        const auto find = [&](int32_t n) {
            return std::find_if(reached.begin(), reached.end(), [n](const auto& r) { return r.first == n; });
        };
        for (size_t k = 0; k < reached.size() && find(from) == reached.end(); ++k)
            for (auto piece = std::lower_bound(pieces.begin(), pieces.end(), std::pair(reached[k].first, 0));
                 piece != pieces.end() && piece->first == reached[k].first; ++piece)
                if (find(piece->second) == reached.end())
                    reached.emplace_back(piece->second, piece->first);
        if (find(from) == reached.end())
            return along.push_back(to);
        while (along.back() != to)
            along.push_back(find(along.back())->second);
    }

    /// Adds the nodes that lie along the way between two nodes and along the edge itself, the first of them last.
    void add_nodes_between(int32_t ring, int32_t i, int32_t from, int32_t to, Vector<int32_t>& ahead)
    {
        const Edge edge = tree_.edge(ring, i), way = {node(from), node(to)};
        const Place along = way.to - way.from;
        const double square = dot(along, along);
        Vector<std::pair<double, int32_t>> found;
        for_each_piece_near(ring, i, way, [&](const Piece& at) {
            for (const int32_t n : {at.from, at.to})
                if (const double share = dot(node(n) - way.from, along);
                    share > 0.0 && share < square && is_within(tolerance_, way, node(n)) &&
                    is_within(tolerance_, edge, node(n)) && is_on_way_[static_cast<size_t>(n)] == 0)
                    found.emplace_back(share, n);
        });
        std::sort(found.begin(), found.end(), std::greater());
        for (const auto& [share, n] : found)
            if (std::exchange(is_on_way_[static_cast<size_t>(n)], uint8_t{1}) == 0)
                ahead.push_back(n);
    }

    // --- Chains ------------------------------------------------------------------------------------------------------

    /// Nodes on one line, in their order.
    using Chain = Vector<int32_t>;

    /// From one node of a chain to another.
    struct Step {
        int32_t chain, from, to;
    };

    /// Between neighbours on a chain.
    struct Piece {
        int32_t chain, from, to;
    };

    static std::pair<int32_t, int32_t> key_of(int32_t a, int32_t b) { return {std::min(a, b), std::max(a, b)}; }

    /// The chain of which the way between two nodes is a piece: a new one if there is none.
    int32_t chain_through(int32_t a, int32_t b)
    {
        const auto [at, is_new] = chains_of_.try_emplace(key_of(a, b), static_cast<int32_t>(chains_.size()));
        if (is_new)
            chains_.push_back({a, b});
        return at->second;
    }

    void split(const Piece& piece, int32_t n)
    {
        Chain& chain = chains_[static_cast<size_t>(piece.chain)];
        chain.insert(chain.begin() + static_cast<ptrdiff_t>(index_of(chain, piece.to)), n);
        chains_of_.erase(key_of(piece.from, piece.to));
        chains_of_.try_emplace(key_of(piece.from, n), piece.chain);
        chains_of_.try_emplace(key_of(n, piece.to), piece.chain);
    }

    double place_on(const Chain& chain, const Place& p) const
    {
        return dot(p - node(chain.front()), node(chain.back()) - node(chain.front()));
    }

    size_t index_of(const Chain& chain, int32_t n) const
    {
        const double place = place_on(chain, node(n));
        auto found = std::partition_point(chain.begin(), chain.end(),
                                          [&](int32_t k) { return place_on(chain, node(k)) < place; });
        if (found == chain.end() || *found != n)
            found = std::find(chain.begin(), chain.end(), n); // rounding may swap nodes
        return static_cast<size_t>(found - chain.begin());
    }

    /// Calls `see` for those pieces of rings before this one that may be near part of an edge.
    template <class See>
    void for_each_piece_near(int32_t ring, int32_t i, const Edge& part, See see) const
    {
        const double reach = 4 * tolerance_; // of what has moved by twice the tolerance and of what is as far from it
        Box box = box_of(part);
        box = {box.low_x - reach, box.low_y - reach, box.high_x + reach, box.high_y + reach};
        for (const NearEdges& c : near_edges_of(ring, i)) {
            if (!box.meets(box_of(tree_.edge(c.other, c.other_edge))))
                continue;
            for (const Step& step : steps_[static_cast<size_t>(first_of(c.other) + c.other_edge)]) {
                const Chain& chain = chains_[static_cast<size_t>(step.chain)];
                const auto [low, high] = std::minmax({index_of(chain, step.from), index_of(chain, step.to)});
                const Place along = node(chain.back()) - node(chain.front());
                const double far = 2 * tolerance_ * std::sqrt(dot(along, along));
                const auto [begin, end] = std::minmax({place_on(chain, part.from), place_on(chain, part.to)});
                size_t k = low;
                if (high - low > kFew) {
                    const auto is_before_part = [&, least = begin - far](int32_t n) {
                        return place_on(chain, node(n)) < least;
                    };
                    const auto at = chain.begin();
                    k = static_cast<size_t>(std::partition_point(at + static_cast<ptrdiff_t>(low) + 1,
                                                                 at + static_cast<ptrdiff_t>(high), is_before_part) -
                                            at) -
                        1;
                }
                for (; k < high && place_on(chain, node(chain[k])) <= end + far; ++k)
                    see({step.chain, chain[k], chain[k + 1]});
            }
        }
    }

    // --- Rings -------------------------------------------------------------------------------------------------------

    void add_as_is(int32_t ring, JoinedRings& joined) const
    {
        for (int32_t i = first_of(ring); i < first_of(ring) + size(ring); ++i) {
            joined.rings.places.push_back(place(i));
            joined.origins.push_back({i - first_of(ring), 0.0});
        }
    }

    /// The nodes of a joined ring, each with where it comes from.
    struct Stop {
        int32_t node;
        Origin origin;
    };

    /// Adds a ring node by node, without ways there and back; one with fewer than three is nothing.
    void add_joined(int32_t ring, JoinedRings& joined) const
    {
        Vector<Stop> stops;
        const auto stop_at = [&](const Stop& stop) {
            const size_t n = stops.size();
            if (n > 1 && stops[n - 2].node == stop.node)
                stops.pop_back();
            else if (n == 0 || stops[n - 1].node != stop.node)
                stops.push_back(stop);
        };
        for (int32_t i = 0; i < size(ring); ++i) {
            const int32_t number = first_of(ring) + i;
            stop_at({nodes_of_[static_cast<size_t>(number)], {i, 0.0}});
            for_each_between(number, [&](int32_t n) {
                const auto [from, to] = tree_.edge(ring, i);
                const Place along = to - from;
                stop_at({n, {i, std::clamp(dot(node(n) - from, along) / dot(along, along), 0.0, 1.0)}});
            });
        }
        size_t first = 0, end = stops.size();
        while (end - first > 2) {
            if (stops[first].node == stops[end - 1].node || stops[first].node == stops[end - 2].node)
                --end;
            else if (stops[first + 1].node == stops[end - 1].node)
                ++first;
            else
                break;
        }
        if (end - first < 3)
            return;
        for (size_t k = first; k < end; ++k) {
            joined.rings.places.push_back(node(stops[k].node));
            joined.origins.push_back(stops[k].origin);
        }
    }

    /// Calls `see` for the nodes on what the edge from a place has become, but for its two ends.
    template <class See>
    void for_each_between(int32_t number, See see) const
    {
        const Vector<Step>& steps = steps_[static_cast<size_t>(number)];
        for (size_t k = 0; k < steps.size(); ++k) {
            const auto [number_of_chain, from, to] = steps[k];
            const Chain& chain = chains_[static_cast<size_t>(number_of_chain)];
            const size_t last = index_of(chain, to);
            for (size_t i = index_of(chain, from); i != last;) {
                i = i < last ? i + 1 : i - 1;
                if (i != last || k + 1 < steps.size())
                    see(chain[i]);
            }
        }
    }

    static constexpr int32_t kPlacesPerQuestion = 256;
    static constexpr size_t kFew = 8; // pieces that are looked at one by one. Chosen

    struct IsBefore {
        bool operator()(const Place& a, const Place& b) const { return is_before(a, b); }
    };
    template <class Key, class Less>
    using Numbers = std::map<Key, int32_t, Less, HeapAllocator<std::pair<const Key, int32_t>>>;

    const Rings& rings_;
    double tolerance_;
    Telling telling_;
    RunTree tree_;
    Vector<size_t> groups_;
    Vector<NearEdges> near_edges_; // of each ring with those before it
    Vector<Place> nodes_;
    Numbers<Place, IsBefore> numbers_; // of nodes
    Vector<Chain> chains_;
    Numbers<std::pair<int32_t, int32_t>, std::less<>> chains_of_; // of pieces, by their nodes
    Vector<int32_t> nodes_of_;                                    // of each place
    Vector<Vector<Step>> steps_;                                  // of the edge from each place
    Vector<uint8_t> is_on_way_;                                   // nodes, while the way of an edge is found
};

/// Rings without small loops: where edges cross and the places between them lie within `reach` of the crossing, the
/// first of these moves there and the others go.
class Loops {
public:
    Loops(const JoinedRings& from, double reach, const Telling& telling) : from_(from), tree_(from.rings)
    {
        tree_.grow([&](size_t k) { return !from.rings[k].empty(); });
        tree_.for_each_near_pair(0.0, true, telling, [&](int32_t ring, int32_t i, int32_t other, int32_t k) {
            if (ring == other)
                note_loop(ring, std::min(i, k), std::max(i, k), reach);
        });
        std::sort(loops_.begin(), loops_.end(), [](const Loop& a, const Loop& b) {
            return std::tie(a.ring, a.places, a.first) < std::tie(b.ring, b.places, b.first);
        });
    }

    bool empty() const { return loops_.empty(); }

    JoinedRings cut_off() const
    {
        JoinedRings left;
        auto loop = loops_.begin();
        for (size_t k = 0, first = 0; k < from_.rings.size(); first = static_cast<size_t>(from_.rings.ends[k++])) {
            const std::span<const Place> ring = from_.rings[k];
            Vector<Place> places(ring.begin(), ring.end());
            Vector<uint8_t> is_taken(ring.size(), 0), is_left(ring.size(), 1);
            for (; loop != loops_.end() && loop->ring == static_cast<int32_t>(k); ++loop)
                cut_off(*loop, places, is_taken, is_left);
            for (size_t i = 0; i < ring.size(); ++i)
                if (is_left[i] != 0) {
                    left.rings.places.push_back(places[i]);
                    left.origins.push_back(from_.origins[first + i]);
                }
            left.rings.ends.push_back(static_cast<int32_t>(left.rings.places.size()));
        }
        return left;
    }

private:
    struct Loop {
        int32_t ring, places, first;
        Place crossing;
    };

    void note_loop(int32_t ring, int32_t i, int32_t k, double reach)
    {
        const Edge e = tree_.edge(ring, i), f = tree_.edge(ring, k);
        if (!do_cross(e, f))
            return;
        const Place crossing = crossing_of(e, f);
        const auto n = static_cast<int32_t>(from_.rings[static_cast<size_t>(ring)].size());
        for (const Loop& loop : {Loop{ring, k - i, i + 1, crossing}, Loop{ring, n - k + i, (k + 1) % n, crossing}}) {
            bool is_small = true;
            for (int32_t step = 0; step < loop.places && is_small; ++step) {
                const Place away = tree_.edge(ring, (loop.first + step) % n).from - crossing;
                is_small = dot(away, away) <= reach * reach;
            }
            if (is_small)
                loops_.push_back(loop);
        }
    }

    /// Cuts a loop off if no other one has been that has places in common with it.
    static void cut_off(const Loop& loop, Vector<Place>& places, Vector<uint8_t>& is_taken, Vector<uint8_t>& is_left)
    {
        const size_t n = places.size();
        const auto place = [&](int32_t step) { return static_cast<size_t>(loop.first + step) % n; };
        for (int32_t step = 0; step < loop.places; ++step)
            if (is_taken[place(step)] != 0)
                return;
        for (int32_t step = 0; step < loop.places; ++step) {
            is_taken[place(step)] = 1;
            is_left[place(step)] = step == 0;
        }
        places[place(0)] = loop.crossing;
    }

    const JoinedRings& from_;
    RunTree tree_;
    Vector<Loop> loops_;
};

/// The origin of a place on the edge from place i of a ring whose places have origins of their own.
Origin origin_of(std::span<const Origin> origins, const Origin& on)
{
    const auto i = static_cast<size_t>(on.place);
    const Origin& begin = origins[i];
    const Origin& end = origins[i + 1 < origins.size() ? i + 1 : 0];
    const double last = end.place == begin.place && end.share > begin.share ? end.share : 1.0;
    return {begin.place, on.share == 0.0 ? begin.share : begin.share + on.share * (last - begin.share)};
}

} // namespace

void join_rings(JoinedRings& joined, std::span<const uint8_t> is_joined, double tolerance, const Telling& telling)
{
    if (const Loops loops(joined, 2 * tolerance, telling.part(0.0, 0.3)); !loops.empty())
        joined = loops.cut_off();
    JoinedRings now = Joining(joined.rings, tolerance, telling.part(0.3, 0.7)).run(is_joined);
    for (size_t k = 0, first = 0, old = 0; k < now.rings.size(); ++k) {
        const std::span before(joined.origins.data() + old, joined.rings[k].size());
        for (; first < static_cast<size_t>(now.rings.ends[k]); ++first)
            now.origins[first] = origin_of(before, now.origins[first]);
        old = static_cast<size_t>(joined.rings.ends[k]);
    }
    joined = std::move(now);
}

} // namespace korvale::door
