// Operations on whole arrays. The work of each is written once: over bare values where the records do not matter, over
// either record where the output is shaped. What the generations do differently stands in overloads and doors.
//
// Hot path: the output already has the shape. Comparing sizes shows it, and with everything inlined (always_inline)
// small arrays cost no more than a plain loop. The cold rest (allocate, refuse, dispose) is in functions marked
// noinline.
#include "data/operations.h"

#include <algorithm>

#include "data/internal/buffers.h"
#include "data/internal/kernels.h"
#include "data/internal/record.h"
#include "data/internal/trees.h"

namespace korvale::data {
namespace {

template <class Array>
bool same_shape(const Array& a, const Array& b)
{
    return shape_of(a) == shape_of(b) && a.type == b.type;
}

/// Whether the elements of `d` can be read: an unknown kind has none and needs no buffer.
template <class Array>
bool is_readable(const Array& d)
{
    if (!is_known_kind(d))
        return d.count >= 1 && d.dim >= 1 && components(d.count, d.dim) <= kMostElements;
    return is_filled(d);
}

template <class Array>
bool lacks_buffer(const Array& d)
{
    return is_known_kind(d) && !is_filled(d);
}

template <class Array>
bool replace_as(Array& d, int32_t type, int32_t count, int32_t dim)
{
    dispose(d);
    return allocate_as(d, type, count, dim);
}

// Outputs. The first generation keeps an output that has the shape already. The second sets the shape every time, and
// its capacity decides whether a new buffer is made.

bool shape_for_cat(Data& output, int32_t type, int32_t count, int32_t dim)
{
    if (output.type == type && output.dim == dim && output.count == count && !lacks_buffer(output))
        return true;
    return replace_as(output, type, count, dim);
}

bool shape_for_cat(DATAstruct& output, int32_t type, int32_t count, int32_t dim)
{
    return allocate_as(output, type, count, dim);
}

inline bool shape_for_copy(const Data& source, Data& output, int32_t type)
{
    if (source.dim > output.dim || source.count > output.count || type != output.type || lacks_buffer(output))
        return replace_as(output, type, source.count, source.dim);
    return true; // Deliberate: a larger output keeps its shape
}

inline bool shape_for_copy(const DATAstruct& source, DATAstruct& output, int32_t type)
{
    return allocate_as(output, type, source.count, source.dim);
}

inline bool shape_for_bounds(const Data& source, Data& output, int32_t type)
{
    if (source.dim > output.dim || output.count < 2 || type != output.type)
        dispose(output);
    return allocate_as(output, type, 2, source.dim); // Deliberate: a buffer that was kept is not released
}

inline bool shape_for_bounds(const DATAstruct& source, DATAstruct& output, int32_t type)
{
    return allocate_as(output, type, 2, source.dim);
}

template <class Array>
bool shape_for_mix(const Array& a, Array& output)
{
    if (same_shape(a, output) && !lacks_buffer(output))
        return true;
    return replace_as(output, a.type, a.count, a.dim);
}

/// The last kind that a copy of the generation moves.
int32_t last_copied_kind(const Data&)
{
    return DATA_TYPE_INT;
}

int32_t last_copied_kind(const DATAstruct&)
{
    return DATA_TYPE_DATA;
}

// Work.

template <class Array>
int cat(const Array* first, const Array* second, Array* output)
{
    if (first == nullptr || second == nullptr || output == nullptr || output == first || output == second)
        return -1;
    if (first->dim != second->dim || first->type != second->type || !is_readable(*first) || !is_readable(*second))
        return -1;
    const int64_t count = int64_t{first->count} + second->count;
    if (components(count, first->dim) > kMostElements ||
        !shape_for_cat(*output, first->type, static_cast<int32_t>(count), first->dim))
        return -1;
    const size_t bytes = component_bytes(*first, first->type);
    if (bytes == 0)
        return 1;
    const int64_t leading = components(first->count, first->dim), others = components(second->count, first->dim);
    auto* const to = static_cast<unsigned char*>(buffer_of(*output, output->type));
    copy_components(buffer_of(*first, first->type), leading, bytes, to);
    copy_components(buffer_of(*second, second->type), others, bytes, to + static_cast<size_t>(leading) * bytes);
    return 1;
}

/// Copies a source of kind `type`. Inlined where the caller names the kind, so the compiler removes the choice between
/// buffers.
template <class Array>
[[gnu::always_inline]] inline int copy_kind(const Array& source, Array& output, int32_t type)
{
    const bool is_known = component_bytes(source, type) != 0;
    const int64_t n = components(source.count, source.dim);
    if (source.count < 1 || source.dim < 1 || n > kMostElements || (is_known && !holds(source, type, n)))
        return -1;
    if (!shape_for_copy(source, output, type))
        return -1;
    if (!is_known)
        return 1;
    if (type > last_copied_kind(source))
        return -1;
    copy_components(buffer_of(source, type), n, component_bytes(source, type), buffer_of(output, type));
    return 1;
}

template <class Array>
[[gnu::always_inline]] inline int copy(const Array* source, Array* output)
{
    if (source == nullptr || output == nullptr || output == source)
        return -1;
    if (source->type == DATA_TYPE_DOUBLE)
        return copy_kind(*source, *output, DATA_TYPE_DOUBLE);
    return copy_kind(*source, *output, source->type);
}

/// An array of a mix and its weight.
template <class Array>
struct Input {
    const Array* array;
    double weight;

    Weighted values() const { return {array->dvals, weight}; }
};

/// The hot path of a mix: the number of doubles in each array, when all are of one shape and complete, the output
/// included; else 0.
template <class Array, class... Arrays>
[[gnu::always_inline]] inline int64_t doubles_to_mix(const Array* a, const Arrays*... others)
{
    const int64_t n = a == nullptr ? 0 : doubles_in(*a);
    const auto is_like = [=](const Array* d) {
        return d != nullptr && shape_of(*d) == shape_of(*a) && d->type == DATA_TYPE_DOUBLE && d->dvals != nullptr &&
               has_room(*d, n);
    };
    return n > 0 && (is_like(others) && ...) ? n : 0;
}

/// The cold path of a mix: shapes the output. Its arguments come in the order of those of the exported functions, so
/// they stay in their registers.
template <class Array, class... Others>
[[gnu::noinline]] int mix_into_another(Input<Array> first, Others... others, Array* output)
{
    const auto is_like_first = [=](const Array* d) {
        return d != nullptr && same_shape(*first.array, *d) && is_readable(*d);
    };
    if (output == nullptr || first.array == nullptr || !is_readable(*first.array) ||
        !(is_like_first(others.array) && ...))
        return -1;
    const Array& a = *first.array;
    if (!shape_for_mix(a, *output))
        return -1;
    if (a.type != DATA_TYPE_DOUBLE)
        return is_known_kind(a) ? -1 : 1;
    mix_values(components(a.count, a.dim), output->dvals, first.values(), others.values()...);
    return 1;
}

template <class Array, class... Others>
[[gnu::always_inline]] inline int mix(Array* output, Input<Array> first, Others... others)
{
    const int64_t n = doubles_to_mix<Array>(first.array, others.array..., output);
    if (n == 0)
        return mix_into_another<Array, Others...>(first, others..., output);
    mix_values(n, output->dvals, first.values(), others.values()...);
    return 1;
}

/// The cold path of bounds: a source that is not doubles, or lacks them.
template <class Array>
[[gnu::noinline]] int bounds_of_none(const Array& source, Array& output)
{
    if (!is_readable(source) || components(2, source.dim) > kMostElements ||
        !shape_for_bounds(source, output, source.type))
        return -1;
    return is_known_kind(source) ? -1 : 1;
}

template <class Array>
[[gnu::always_inline]] inline int bounds(const Array* source, Array* output)
{
    if (source == nullptr || output == nullptr || output == source)
        return -1;
    if (doubles_in(*source) == 0)
        return bounds_of_none(*source, *output);
    if (components(2, source->dim) > kMostElements || !shape_for_bounds(*source, *output, DATA_TYPE_DOUBLE))
        return -1;
    find_bounds(source->dvals, source->count, source->dim, output->dvals);
    return 1;
}

template <class Array>
[[gnu::always_inline]] inline int box_around(const Array* src, Array* box)
{
    if (src == nullptr || box == nullptr || doubles_in(*src) == 0)
        return -1;
    const int64_t corners = components(2, src->dim);
    if (components(box->count, box->dim) != corners || box->type != DATA_TYPE_DOUBLE ||
        !holds(*box, DATA_TYPE_DOUBLE, corners))
        return -1;
    find_bounds(src->dvals, src->count, src->dim, box->dvals);
    return 1;
}

/// Carries the points of one array to another where both have them.
template <class Array>
[[gnu::always_inline]] inline void carry_array(const double (*m)[4], const Array& source, Array& output)
{
    const int64_t n = components(source.count, 3);
    if (source.dim != 3 || output.dim != 3 || !holds(source, DATA_TYPE_DOUBLE, n) ||
        !holds(output, DATA_TYPE_DOUBLE, n))
        return;
    carry_points(m, source.dvals, source.count, output.dvals);
}

/// A place in two trees of the same structure.
struct Twins {
    const DATAstruct* source;
    DATAstruct* output;
};

/// Carries the points of a pair of leaves. Returns how many pairs of children are to be visited.
int32_t carry_pair(const double (*m)[4], const Twins& pair)
{
    const auto& [source, output] = pair;
    if (source == nullptr || output == nullptr || source->count < 1 || source->count != output->count ||
        source->type != output->type)
        return 0;
    if (source->type == DATA_TYPE_DOUBLE)
        carry_array(m, *source, *output);
    if (source->type != DATA_TYPE_DATA)
        return 0;
    return std::min(children_by_count(*source), children_by_count(*output)); // equal, or 0
}

[[gnu::noinline]] void carry_tree(const double (*m)[4], const DATAstruct* source, DATAstruct* output)
{
    walk_tree(
        Twins{source, output}, [m](const Twins& pair) { return carry_pair(m, pair); },
        [](const Twins& pair, int32_t slot) {
            return Twins{child(*pair.source, slot), child(*pair.output, slot)};
        });
}

} // namespace
} // namespace korvale::data

using namespace korvale::data;

int DataCat(Data* first, Data* second, Data* output)
{
    return cat(first, second, output);
}

int DATACat(DATAstruct* first, DATAstruct* second, DATAstruct* output)
{
    return cat(first, second, output);
}

int DataCopy(Data* source, Data* output)
{
    return copy(source, output);
}

int DATACopy(DATAstruct* source, DATAstruct* output)
{
    return copy(source, output);
}

int DataMix(Data* a, Data* b, double wa, double wb, Data* output)
{
    return mix(output, Input<Data>{a, wa}, Input<Data>{b, wb});
}

int DATAMix(DATAstruct* a, DATAstruct* b, double wa, double wb, DATAstruct* output)
{
    return mix(output, Input<DATAstruct>{a, wa}, Input<DATAstruct>{b, wb});
}

int Data4Mix(Data* a, Data* b, Data* c, Data* d, double wa, double wb, double wc, double wd, Data* output)
{
    return mix(output, Input<Data>{a, wa}, Input<Data>{b, wb}, Input<Data>{c, wc}, Input<Data>{d, wd});
}

int DATA4Mix(DATAstruct* a, DATAstruct* b, DATAstruct* c, DATAstruct* d, double wa, double wb, double wc, double wd,
             DATAstruct* output)
{
    return mix(output, Input<DATAstruct>{a, wa}, Input<DATAstruct>{b, wb}, Input<DATAstruct>{c, wc},
               Input<DATAstruct>{d, wd});
}

int DataBounds(Data* source, Data* output)
{
    return bounds(source, output);
}

int DATABounds(DATAstruct* source, DATAstruct* output)
{
    return bounds(source, output);
}

int DataBBox(Data* src, Data* box)
{
    return box_around(src, box);
}

int DATABBox(DATAstruct* src, DATAstruct* box)
{
    return box_around(src, box);
}

// TransformData looks at counts and dims only; TransformDATA also wants equal kinds and walks trees of arrays.

void TransformData(Xfm m, Data* source, Data* output)
{
    if (m == nullptr || source == nullptr || output == nullptr || source->count < 1 || source->count != output->count)
        return;
    carry_array(m, *source, *output);
}

void TransformDATA(Xfm m, DATAstruct* source, DATAstruct* output)
{
    if (m == nullptr || source == nullptr || output == nullptr || source->count < 1 || source->count != output->count ||
        source->type != output->type)
        return;
    if (source->type == DATA_TYPE_DOUBLE)
        carry_array(m, *source, *output);
    else
        carry_tree(m, source, output);
}
