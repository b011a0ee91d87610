// How a tree of boxes grows. Triangles are sorted along a curve that keeps neighbours together and cut into leaves of
// up to four where the curve makes its largest steps. The row of leaves is divided again and again where the areas of
// the boxes on both sides, times what stands in them, are least. Nothing is moved after the sort, and in long parts of
// the row every 16th cut is looked at first, so most of the time goes into reading the triangles and sorting them.
//
// Codes along the curve have as many bits as a surface of that many triangles asks for. Triangles that share one, where
// a model is far finer in one place than elsewhere, are sorted anew by themselves in their own box.
//
// The curve: Morton, A Computer Oriented Geodetic Data Base and a New Technique in File Sequencing, 1966; growing by
// it: Lauterbach et al., Fast BVH Construction on GPUs, 2009; areas: MacDonald, Booth, Heuristics for Ray Tracing Using
// Space Subdivision, 1990.
#include "door/internal/tree.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "platform/internal/floats.h"
#include "platform/internal/lanes.h"

namespace korvale::door {

using platform::all_floats;
using platform::Floats;
using platform::greater;
using platform::lesser;
using platform::load;
using platform::Pair;

namespace {

/// How much wider the box of a triangle is, as a share of the sum of its sides; `tree.cpp` tells why.
constexpr double kTrianglePad = 1e-06;

/// How far off along the ray a triangle of that sum may be met, not rounded down.
float slack_of(double extent)
{
    return static_cast<float>(1.000001 * std::min(2 * extent, 4e-08 * extent * extent * extent));
}

/// Triangles of a leaf, at most. Measured: up to six take 16 % more instructions a ray.
constexpr int32_t kLeaf = 4;

/// Below this depth parts are halved by number, which takes up to 31 levels more. Chosen: twice those.
constexpr int32_t kDeepest = 64;
static_assert(kDeepest + 32 <= Tree::kMostDepth);

/// In parts of kManyLeaves and more, cuts between chunks of kChunk leaves are looked at first. Measured: half and
/// double of either change the instructions of growing by 3 % at most, and those of a ray by less than 0.1 %.
constexpr int32_t kManyLeaves = 256, kChunk = 16;

/// Bits of a code along an axis, at most: those of three axes stand in a lane of 32 bits.
constexpr int kMostBits = 10;

/// Bits of a digit that is sorted by, at most: three passes sort a code, and 8 KB of counts stay in the fastest cache.
/// Measured: 8 bits take 2 % more instructions of growing over 250,000 triangles, 15 bits 49 % more over 1,000.
constexpr int kDigit = 11;

/// Fewer keys are sorted by comparisons. Measured: half and double change growing by 0.5 % at most.
constexpr int32_t kManyKeys = 256;

/// Between two reports of progress so many triangles are measured, or leaves hung: some milliseconds. Chosen.
constexpr int32_t kReport = 100000;

/// The fourth lane of `high` is how far off along a ray the triangles in it may be met, at most.
struct FloatBox {
    Floats low = all_floats(std::numeric_limits<float>::infinity()),
           high = all_floats(-std::numeric_limits<float>::infinity());

    void include(const FloatBox& other)
    {
        low = lesser(low, other.low);
        high = greater(high, other.high);
    }
    Floats twice_centre() const { return low + high; }
    float area() const
    {
        const Floats d = high - low;
        return d[0] * d[1] + d[1] * d[2] + d[2] * d[0];
    }
};

FloatBox around(const FloatBox* first, const FloatBox* last)
{
    FloatBox box;
    for (; first != last; ++first)
        box.include(*first);
    return box;
}

/// Leaves in a row.
struct Part {
    int32_t first, last; ///< before `last`
    int32_t depth;
    FloatBox box;

    int32_t size() const { return last - first; }
};

typedef int32_t Integers __attribute__((vector_size(16)));

/// The places of points in a cube, as codes along the curve.
class Curve {
public:
    /// `low` and `extent` are twice those of the cube.
    Curve(Floats low, float extent, int32_t points)
        : bits_(std::clamp(static_cast<int>(std::bit_width(static_cast<uint32_t>(points))) / 2 + 1, 3, kMostBits)),
          low_(low), scale_(static_cast<float>(1 << bits_) / extent),
          most_(all_floats(static_cast<float>((1 << bits_) - 1)))
    {
    }

    /// False for a cube without extent.
    bool can_tell() const { return scale_ < std::numeric_limits<float>::max(); }

    int bits() const { return 3 * bits_; }

    uint64_t code(Floats twice_point) const
    {
        const Floats at = lesser(greater((twice_point - low_) * all_floats(scale_), all_floats(0)), most_);
        Integers v = __builtin_convertvector(at, Integers);
        v = (v | v << 16) & 0x030000ff; // two bits of others between its own
        v = (v | v << 8) & 0x0300f00f;
        v = (v | v << 4) & 0x030c30c3;
        v = (v | v << 2) & 0x09249249;
        return static_cast<uint32_t>(v[0] << 2 | v[1] << 1 | v[2]);
    }

private:
    int bits_;
    Floats low_;
    float scale_;
    Floats most_;
};

/// A code along the curve, and the number of a triangle below it.
using Key = uint64_t;
constexpr int kNumberBits = 32; // an int32_t

Key key_of(uint64_t code, int32_t t)
{
    return code << kNumberBits | static_cast<uint32_t>(t);
}
uint64_t code_of(Key key)
{
    return key >> kNumberBits;
}
uint32_t number_of(Key key)
{
    return static_cast<uint32_t>(key);
}

/// Sorts keys by codes of so many bits.
void sort(Key* keys, int32_t count, int bits, Key* spare)
{
    if (count < kManyKeys) {
        std::sort(keys, keys + count);
        return;
    }
    const int passes = (bits + kDigit - 1) / kDigit, digit = (bits + passes - 1) / passes;
    const uint64_t mask = (uint64_t{1} << digit) - 1;
    Key *from = keys, *to = spare;
    for (int pass = 0; pass < passes; ++pass) {
        const int shift = kNumberBits + pass * digit;
        int32_t starts[1 << kDigit] = {};
        for (int32_t i = 0; i < count; ++i)
            ++starts[from[i] >> shift & mask];
        int32_t sum = 0;
        for (uint64_t d = 0; d <= mask; ++d)
            sum += std::exchange(starts[d], sum);
        for (int32_t i = 0; i < count; ++i)
            to[starts[from[i] >> shift & mask]++] = from[i];
        std::swap(from, to);
    }
    if (from != keys)
        std::copy_n(from, count, keys);
}

} // namespace

/// A tree as it grows.
class Tree::Growing {
public:
    Growing(Tree& tree, const Telling& telling) : tree_(tree), telling_(telling), n_(tree.count_), most_leaves_(n_)
    {
        // One block for all arrays. Many small ones would go back to the system when they are freed, and the next tree
        // would take page faults on new ones. glibc keeps freed memory up to its trim threshold, twice the largest
        // mmapped block freed so far (mallopt(3), M_MMAP_THRESHOLD). So a block below a huge page is allocated up to
        // twice as large: freeing it raises the threshold.
        const auto n = static_cast<size_t>(n_), leaves = static_cast<size_t>(most_leaves_);
        const size_t bytes = n * sizeof(FloatBox) + leaves * (2 * sizeof(FloatBox) + sizeof(int32_t)) +
                             (leaves / kChunk + 1) * sizeof(FloatBox) + 5 * kAlignment;
        room_.make_room(std::max(bytes, std::min(2 * bytes, platform::kLargePage - 1)));
        next_ = room_.data();
        boxes_ = take<FloatBox>(n_);
        behind_ = take<FloatBox>(most_leaves_);
        // Keys share the memory of `behind_`: `cut_leaves` reads the last key before `hang_leaves` writes the first
        // box.
        static_assert(sizeof(FloatBox) >= 2 * sizeof(Key));
        keys_ = reinterpret_cast<Key*>(behind_);
        spare_ = keys_ + n_;
        leaves_ = take<FloatBox>(most_leaves_);
        codes_ = take<int32_t>(most_leaves_);
        chunks_ = take<FloatBox>(most_leaves_ / kChunk);
    }

    void run()
    {
        enter();
        telling_.tell(0.4);
        cut_leaves();
        telling_.tell(0.6);
        hang_leaves();
        telling_.tell(1);
    }

private:
    /// Measures the triangles and sorts them.
    void enter()
    {
        const auto half = static_cast<float>(tree_.half_);
        const Curve curve(all_floats(-2 * half), 4 * half, n_);
        const Pair centre = load<Pair>(tree_.centre_);
        const double centre_z = tree_.centre_[2], scale = tree_.scale_;
        for (int32_t t = 0; t < n_; ++t) {
            if (t % kReport == 0)
                telling_.tell(0.3 * t / n_);
            const double* const p = tree_.triangle(t);
            const Pair a = scale * load<Pair>(p), b = scale * load<Pair>(p + 3), c = scale * load<Pair>(p + 6); // x, y
            const Pair low = lesser(a, lesser(b, c)) - centre, high = greater(a, greater(b, c)) - centre;
            const double low_z = scale * std::min(p[2], std::min(p[5], p[8])) - centre_z;
            const double high_z = scale * std::max(p[2], std::max(p[5], p[8])) - centre_z;
            const Pair wide = high - low;
            const double extent = wide[0] + wide[1] + (high_z - low_z), pad = kTrianglePad * extent;
            FloatBox& box = boxes_[t];
            box.low = Floats{static_cast<float>(low[0] - pad), static_cast<float>(low[1] - pad),
                             static_cast<float>(low_z - pad), 0};
            box.high = Floats{static_cast<float>(high[0] + pad), static_cast<float>(high[1] + pad),
                              static_cast<float>(high_z + pad), slack_of(extent)};
            keys_[t] = key_of(curve.code(box.twice_centre()), t);
        }
        if (curve.can_tell())
            sort_by(curve, 0, n_);
    }

    /// Sorts keys whose codes are from `curve`, and those that share one anew.
    void sort_by(const Curve& curve, int32_t first, int32_t last)
    {
        sort(keys_ + first, last - first, curve.bits(), spare_);
        for (int32_t i = first; i < last;) {
            int32_t end = i + 1;
            while (end < last && code_of(keys_[end]) == code_of(keys_[i]))
                ++end;
            if (end - i > kLeaf)
                sort_anew(i, end);
            i = end;
        }
    }

    void sort_anew(int32_t first, int32_t last)
    {
        Key* const keys = keys_;
        FloatBox centres;
        for (int32_t i = first; i < last; ++i) {
            const Floats c = boxes_[number_of(keys[i])].twice_centre();
            centres.include({c, c});
        }
        const Floats wide = centres.high - centres.low;
        const Curve curve(centres.low, std::max(wide[0], std::max(wide[1], wide[2])), last - first);
        if (!curve.can_tell())
            return;
        for (int32_t i = first; i < last; ++i) {
            const uint32_t t = number_of(keys[i]);
            keys[i] = key_of(curve.code(boxes_[t].twice_centre()), static_cast<int32_t>(t));
        }
        sort_by(curve, first, last);
    }

    /// Up to four triangles each. A leaf ends before the neighbours whose codes differ in the highest bit: between them
    /// the curve leaves the largest cube.
    void cut_leaves()
    {
        const Key* const keys = keys_;
        tree_.numbers_.make_room(static_cast<size_t>(n_));
        for (int32_t first = 0, last = 0; first < n_; first = last) {
            last = std::min(n_, first + kLeaf);
            uint64_t most = last == n_ ? ~uint64_t{0} : code_of(keys[last - 1]) ^ code_of(keys[last]);
            for (int32_t cut = last - 1; cut > first; --cut)
                if (const uint64_t step = code_of(keys[cut - 1]) ^ code_of(keys[cut]); step > most) {
                    most = step;
                    last = cut;
                }
            FloatBox box;
            for (int32_t i = first; i < last; ++i) {
                const uint32_t t = number_of(keys[i]);
                tree_.numbers_.data()[i] = static_cast<int32_t>(t);
                box.include(boxes_[t]);
            }
            leaves_[count_] = box;
            codes_[count_++] = Tree::packed({first, last - first});
        }
        for (int32_t i = 0; i < count_ / kChunk; ++i)
            chunks_[i] = around(leaves_ + i * kChunk, leaves_ + (i + 1) * kChunk);
    }

    /// The box around leaves, whole chunks at a time.
    FloatBox box_of(int32_t first, int32_t last) const
    {
        const int32_t low = (first + kChunk - 1) / kChunk, high = last / kChunk;
        if (low >= high)
            return around(leaves_ + first, leaves_ + last);
        FloatBox box = around(leaves_ + first, leaves_ + low * kChunk);
        box.include(around(chunks_ + low, chunks_ + high));
        box.include(around(leaves_ + high * kChunk, leaves_ + last));
        return box;
    }

    /// A cut of the row before a leaf.
    struct Cut {
        int32_t leaf;
        float cost;
        FloatBox before, behind;
    };

    /// Looks at the cuts before `step` times each number from `low` to `high` for one that costs less than `best`.
    void look(const Part& whole, int32_t step, int32_t low, int32_t high, Cut& best)
    {
        const FloatBox* const boxes = step == 1 ? leaves_ : chunks_;
        FloatBox box = box_of(high * step, whole.last);
        behind_[high] = box;
        for (int32_t i = high - 1; i >= low; --i) {
            box.include(boxes[i]);
            behind_[i] = box;
        }
        box = box_of(whole.first, low * step);
        for (int32_t i = low; i <= high; ++i) {
            const float cost = box.area() * static_cast<float>(i * step - whole.first) +
                               behind_[i].area() * static_cast<float>(whole.last - i * step);
            if (cost < best.cost)
                best = {i * step, cost, box, behind_[i]};
            box.include(boxes[i]);
        }
    }

    /// Divides a part of the row: it keeps the first leaves, and the rest is returned. In the middle, unless a cut
    /// makes areas less.
    Part divide(Part& whole)
    {
        Cut best = {0, whole.box.area() * static_cast<float>(whole.size()), {}, {}};
        if (whole.depth < kDeepest && whole.size() < kManyLeaves) {
            look(whole, 1, whole.first + 1, whole.last - 1, best);
        } else if (whole.depth < kDeepest) {
            look(whole, kChunk, whole.first / kChunk + 1, (whole.last - 1) / kChunk, best);
            if (best.leaf > 0) // and around it
                look(whole, 1, std::max(whole.first + 1, best.leaf - kChunk),
                     std::min(whole.last - 1, best.leaf + kChunk), best);
        }
        if (best.leaf == 0) {
            best.leaf = whole.first + whole.size() / 2;
            best.before = box_of(whole.first, best.leaf);
            best.behind = box_of(best.leaf, whole.last);
        }
        const Part rest = {best.leaf, whole.last, whole.depth + 1, best.behind};
        whole = {whole.first, best.leaf, whole.depth + 1, best.before};
        return rest;
    }

    /// Makes the nodes. Of the parts that become the children of one, those with the largest boxes are divided first.
    void hang_leaves()
    {
        struct Waiting {
            Part part;
            int32_t node, child; ///< where it hangs
        };
        tree_.nodes_.reserve(static_cast<size_t>(count_) / 2 + 1);
        Vector<Waiting> waiting;
        waiting.push_back({{0, count_, 0, around(leaves_, leaves_ + count_)}, -1, 0});
        int32_t hung = 0, told = 0;
        while (!waiting.empty()) {
            const Waiting at = waiting.back();
            waiting.pop_back();
            Part parts[kWidth] = {at.part};
            int32_t n = 1;
            if (at.part.size() <= kWidth) {
                n = at.part.size();
                for (int32_t i = 0; i < n; ++i)
                    parts[i] = {at.part.first + i, at.part.first + i + 1, 0, leaves_[at.part.first + i]};
            }
            while (n < kWidth && at.part.size() > kWidth) {
                Part* largest = nullptr;
                for (Part* part = parts; part < parts + n; ++part)
                    if (part->size() > 1 && (largest == nullptr || part->box.area() > largest->box.area()))
                        largest = part;
                parts[n++] = divide(*largest);
            }
            const auto number = static_cast<int32_t>(tree_.nodes_.size());
            if (at.node >= 0)
                tree_.nodes_[static_cast<size_t>(at.node)].children[at.child] = number;
            Node node;
            for (int32_t c = 0; c < kWidth; ++c) {
                const FloatBox box = c < n ? parts[c].box : FloatBox();
                for (int k = 0; k < 3; ++k) {
                    node.low[k][c] = box.low[k];
                    node.high[k][c] = box.high[k];
                }
                node.slack[c] = box.high[3];
                node.children[c] = -1;
                if (c < n && parts[c].size() > 1) {
                    waiting.push_back({parts[c], number, c});
                } else if (c < n) {
                    node.children[c] = codes_[parts[c].first];
                    ++hung;
                }
            }
            tree_.nodes_.push_back(node);
            if (hung - told >= kReport) {
                told = hung;
                telling_.tell(0.6 + 0.4 * static_cast<double>(hung) / count_);
            }
        }
    }

    /// Takes memory for so many elements from the room that is left.
    template <class T>
    T* take(int32_t n)
    {
        unsigned char* const taken = next_;
        next_ += (static_cast<size_t>(n) * sizeof(T) + kAlignment - 1) / kAlignment * kAlignment;
        return reinterpret_cast<T*>(taken);
    }

    static constexpr size_t kAlignment = 64; // a cache line

    Tree& tree_;
    const Telling& telling_;
    int32_t n_, most_leaves_;
    int32_t count_ = 0; ///< of leaves
    Block<unsigned char> room_;
    unsigned char* next_ = nullptr;
    FloatBox* boxes_; ///< of triangles
    Key *keys_, *spare_;
    FloatBox* leaves_;
    int32_t* codes_;   ///< of leaves, as nodes have them
    FloatBox* chunks_; ///< of kChunk leaves each
    FloatBox* behind_; ///< a cut, and all to the end of the part
};

void Tree::grow(const Telling& telling)
{
    Growing(*this, telling).run();
}

} // namespace korvale::door
