#include "data/operations.h"

#include <algorithm>

#include "data/internal/elements.h"
#include "data/internal/record.h"
#include "data/internal/shape.h"
#include "data/internal/trees.h"

// The work of every operation is written once: over bare elements where the records do not matter, over either record
// where the output is reshaped. What the generations do differently stands in the overloads and doors.
namespace korvale::inside {
namespace {

template <class Array>
bool same_shape(const Array& a, const Array& b)
{
    return a.count == b.count && a.dim == b.dim && a.type == b.type;
}

/// Whether the elements of `d` can be read: an unknown kind has none and needs no buffer.
template <class Array>
bool is_readable(const Array& d)
{
    return d.count >= 1 && d.dim >= 1 && (!is_known_kind(d) || is_filled(d));
}

template <class Array>
int allocate_as(Array& d, int64_t count, int32_t dim, int32_t type)
{
    if (elements(count, dim) > kMostElements)
        return -1;
    d.count = static_cast<int32_t>(count);
    d.dim = dim;
    d.type = type;
    return allocate(d);
}

template <class Array>
int replace_as(Array& d, int64_t count, int32_t dim, int32_t type)
{
    if (elements(count, dim) > kMostElements)
        return -1;
    dispose(d);
    return allocate_as(d, count, dim, type);
}

template <class Array>
bool lacks_buffer(const Array& d)
{
    return is_known_kind(d) && !is_filled(d);
}

// Outputs. The first generation keeps an output that serves already; the second shapes it every time and leaves it to
// the capacity whether a new buffer is made.

int shape_for_cat(Data& output, int64_t count, int32_t dim, int32_t type)
{
    if (output.type == type && output.dim == dim && output.count == count && !lacks_buffer(output))
        return 1;
    return replace_as(output, count, dim, type);
}

int shape_for_cat(DATAstruct& output, int64_t count, int32_t dim, int32_t type)
{
    return allocate_as(output, count, dim, type);
}

int shape_for_copy(const Data& source, Data& output)
{
    if (source.dim > output.dim || source.count > output.count || source.type != output.type || lacks_buffer(output))
        return replace_as(output, source.count, source.dim, source.type);
    return 1; // Deliberate: a larger output keeps its shape
}

int shape_for_copy(const DATAstruct& source, DATAstruct& output)
{
    return allocate_as(output, source.count, source.dim, source.type);
}

int shape_for_bounds(const Data& source, Data& output)
{
    if (elements(2, source.dim) > kMostElements)
        return -1;
    if (source.dim > output.dim || output.count < 2 || source.type != output.type)
        dispose(output);
    return allocate_as(output, 2, source.dim, source.type); // Deliberate: a buffer that was kept is not released
}

int shape_for_bounds(const DATAstruct& source, DATAstruct& output)
{
    return allocate_as(output, 2, source.dim, source.type);
}

template <class Array>
int shape_for_mix(const Array& a, Array& output)
{
    if (same_shape(a, output) && !lacks_buffer(output))
        return 1;
    return replace_as(output, a.count, a.dim, a.type);
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
    const int64_t count = static_cast<int64_t>(first->count) + second->count;
    if (shape_for_cat(*output, count, first->dim, first->type) < 0)
        return -1;
    const size_t bytes = static_cast<size_t>(first->dim) * component_bytes(*first, first->type);
    if (bytes == 0)
        return 1;
    const size_t leading = static_cast<size_t>(first->count) * bytes;
    const size_t component = component_bytes(*first, first->type);
    auto* const to = static_cast<unsigned char*>(buffer_of(*output, output->type));
    copy_values(buffer_of(*first, first->type), leading, component, to);
    copy_values(buffer_of(*second, second->type), static_cast<size_t>(second->count) * bytes, component, to + leading);
    return 1;
}

template <class Array>
int copy(const Array* source, Array* output)
{
    if (source == nullptr || output == nullptr || output == source || !is_readable(*source))
        return -1;
    if (shape_for_copy(*source, *output) < 0)
        return -1;
    if (!is_known_kind(*source))
        return 1;
    if (source->type > last_copied_kind(*source))
        return -1;
    const size_t component = component_bytes(*source, source->type);
    const auto n = static_cast<size_t>(elements(source->count, source->dim));
    copy_values(buffer_of(*source, source->type), n * component, component, buffer_of(*output, output->type));
    return 1;
}

/// Whether every array can be read and has the shape of the first, and the output may be shaped for them.
template <class Array, size_t N>
bool can_mix(const Array* const (&inputs)[N], const Array* output)
{
    if (output == nullptr)
        return false;
    for (const Array* input : inputs)
        if (input == nullptr || !same_shape(*inputs[0], *input) || !is_readable(*input))
            return false;
    return true;
}

/// Shapes the output of a mix. 1 where doubles are now to be mixed, else the result of the call in `result`.
template <class Array>
bool wants_mixing(const Array& a, Array& output, int& result)
{
    result = shape_for_mix(a, output);
    if (result < 0 || !is_known_kind(a))
        return false;
    if (a.type != DATA_TYPE_DOUBLE)
        result = -1;
    return a.type == DATA_TYPE_DOUBLE;
}

template <class Array>
int mix(const Array* a, const Array* b, double wa, double wb, Array* output)
{
    const Array* const inputs[] = {a, b};
    int result = -1;
    if (!can_mix(inputs, output) || !wants_mixing(*a, *output, result))
        return result;
    mix_values(a->dvals, b->dvals, wa, wb, elements(a->count, a->dim), output->dvals);
    return 1;
}

template <class Array>
int mix_four(const Array* a, const Array* b, const Array* c, const Array* d, double wa, double wb, double wc, double wd,
             Array* output)
{
    const Array* const inputs[] = {a, b, c, d};
    int result = -1;
    if (!can_mix(inputs, output) || !wants_mixing(*a, *output, result))
        return result;
    const double weights[] = {wa, wb, wc, wd};
    mix_values(a->dvals, b->dvals, c->dvals, d->dvals, weights, elements(a->count, a->dim), output->dvals);
    return 1;
}

template <class Array>
int bounds(const Array* source, Array* output)
{
    if (source == nullptr || output == nullptr || output == source || !is_readable(*source))
        return -1;
    if (shape_for_bounds(*source, *output) < 0)
        return -1;
    if (!is_known_kind(*source))
        return 1;
    if (source->type != DATA_TYPE_DOUBLE)
        return -1;
    find_bounds(source->dvals, source->count, source->dim, output->dvals, output->dvals + source->dim);
    return 1;
}

/// Carries the points of one array to another where both have them.
template <class Array>
void carry_array(const double (*m)[4], const Array& source, Array& output)
{
    const int64_t n = elements(source.count, 3);
    if (source.dim != 3 || output.dim != 3 || !holds(source, DATA_TYPE_DOUBLE, n) ||
        !holds(output, DATA_TYPE_DOUBLE, n))
        return;
    carry_points(m, source.dvals, source.count, output.dvals);
}

/// A place in two trees of the same structure.
struct Pair {
    const DATAstruct* source;
    DATAstruct* output;
};

/// Carries the points of a pair of leaves. Returns how many pairs of children are to be visited.
int32_t carry_pair(const double (*m)[4], const Pair& pair)
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

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

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
    return mix(a, b, wa, wb, output);
}

int DATAMix(DATAstruct* a, DATAstruct* b, double wa, double wb, DATAstruct* output)
{
    return mix(a, b, wa, wb, output);
}

int Data4Mix(Data* a, Data* b, Data* c, Data* d, double wa, double wb, double wc, double wd, Data* output)
{
    return mix_four(a, b, c, d, wa, wb, wc, wd, output);
}

int DATA4Mix(DATAstruct* a, DATAstruct* b, DATAstruct* c, DATAstruct* d, double wa, double wb, double wc, double wd,
             DATAstruct* output)
{
    return mix_four(a, b, c, d, wa, wb, wc, wd, output);
}

int DataBounds(Data* source, Data* output)
{
    return bounds(source, output);
}

int DATABounds(DATAstruct* source, DATAstruct* output)
{
    return bounds(source, output);
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
    if (m == nullptr)
        return;
    walk_tree(
        Pair{source, output}, [m](const Pair& pair) { return carry_pair(m, pair); },
        [](const Pair& pair, int32_t slot) {
            return Pair{child(*pair.source, slot), child(*pair.output, slot)};
        });
}
