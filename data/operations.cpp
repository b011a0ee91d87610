#include "data/operations.h"

#include <algorithm>

#include "data/internal/buffers.h"
#include "data/internal/kernels.h"
#include "data/internal/record.h"
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

// Outputs. The first generation keeps an output that serves already; the second shapes it every time and leaves it to
// the capacity whether a new buffer is made.

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

bool shape_for_copy(const Data& source, Data& output)
{
    if (source.dim > output.dim || source.count > output.count || source.type != output.type || lacks_buffer(output))
        return replace_as(output, source.type, source.count, source.dim);
    return true; // Deliberate: a larger output keeps its shape
}

bool shape_for_copy(const DATAstruct& source, DATAstruct& output)
{
    return allocate_as(output, source.type, source.count, source.dim);
}

bool shape_for_bounds(const Data& source, Data& output)
{
    if (source.dim > output.dim || output.count < 2 || source.type != output.type)
        dispose(output);
    return allocate_as(output, source.type, 2, source.dim); // Deliberate: a buffer that was kept is not released
}

bool shape_for_bounds(const DATAstruct& source, DATAstruct& output)
{
    return allocate_as(output, source.type, 2, source.dim);
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
    if (!shape_for_copy(*source, *output))
        return -1;
    if (!is_known_kind(*source))
        return 1;
    if (source->type > last_copied_kind(*source))
        return -1;
    const size_t component = component_bytes(*source, source->type);
    const auto n = static_cast<size_t>(components(source->count, source->dim));
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
    const bool is_shaped = shape_for_mix(a, output);
    result = is_shaped && !is_known_kind(a) ? 1 : -1;
    return is_shaped && a.type == DATA_TYPE_DOUBLE;
}

template <class Array>
int mix(const Array* a, const Array* b, double wa, double wb, Array* output)
{
    const Array* const inputs[] = {a, b};
    int result = -1;
    if (!can_mix(inputs, output) || !wants_mixing(*a, *output, result))
        return result;
    mix_values(a->dvals, b->dvals, wa, wb, components(a->count, a->dim), output->dvals);
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
    mix_values(a->dvals, b->dvals, c->dvals, d->dvals, weights, components(a->count, a->dim), output->dvals);
    return 1;
}

template <class Array>
int bounds(const Array* source, Array* output)
{
    if (source == nullptr || output == nullptr || output == source || !is_readable(*source))
        return -1;
    if (components(2, source->dim) > kMostElements || !shape_for_bounds(*source, *output))
        return -1;
    if (!is_known_kind(*source))
        return 1;
    if (source->type != DATA_TYPE_DOUBLE)
        return -1;
    find_bounds(source->dvals, source->count, source->dim, output->dvals, output->dvals + source->dim);
    return 1;
}

template <class Array>
int box_around(const Array* src, Array* box)
{
    if (src == nullptr || box == nullptr || src->count < 1 || src->dim < 1)
        return -1;
    const int64_t corners = components(2, src->dim);
    if (components(box->count, box->dim) != corners || box->type != src->type || src->type != DATA_TYPE_DOUBLE)
        return -1;
    if (!is_filled(*src) || !holds(*box, DATA_TYPE_DOUBLE, corners))
        return -1;
    find_bounds(src->dvals, src->count, src->dim, box->dvals, box->dvals + src->dim);
    return 1;
}

/// Carries the points of one array to another where both have them.
template <class Array>
void carry_array(const double (*m)[4], const Array& source, Array& output)
{
    const int64_t n = components(source.count, 3);
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
    if (m == nullptr)
        return;
    walk_tree(
        Pair{source, output}, [m](const Pair& pair) { return carry_pair(m, pair); },
        [](const Pair& pair, int32_t slot) {
            return Pair{child(*pair.source, slot), child(*pair.output, slot)};
        });
}
