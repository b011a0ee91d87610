#include "tests/reference/arrays.h"

#include <type_traits>
#include <utility>

#include "data/internal/record.h"

namespace korvale::reference {

void bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest)
{
    for (int64_t k = 0; k < dim; ++k)
        least[k] = greatest[k] = values[k];
    for (int64_t i = 1; i < count; ++i)
        for (int64_t k = 0; k < dim; ++k) {
            const double value = values[i * dim + k];
            if (least[k] > value)
                least[k] = value;
            if (value > greatest[k])
                greatest[k] = value;
        }
}

void carry_points(const double (*m)[4], const double* from, int64_t count, double* to)
{
    for (int64_t i = 0; i < count; ++i) {
        const double x = from[3 * i], y = from[3 * i + 1], z = from[3 * i + 2];
        double h[4];
        for (int r = 0; r < 4; ++r)
            h[r] = m[r][0] * x + m[r][1] * y + m[r][2] * z + m[r][3];
        for (int r = 0; r < 3; ++r)
            to[3 * i + r] = h[3] == 1.0 ? h[r] : h[r] / h[3];
    }
}

void mix(const double* a, const double* b, double wa, double wb, int64_t n, double* to)
{
    for (int64_t j = 0; j < n; ++j)
        to[j] = wa * a[j] + wb * b[j];
}

void mix_four(const double* a, const double* b, const double* c, const double* d, const double* weights, int64_t n,
              double* to)
{
    for (int64_t j = 0; j < n; ++j)
        to[j] = ((weights[0] * a[j] + weights[1] * b[j]) + weights[2] * c[j]) + weights[3] * d[j];
}

namespace {

using data::allocate_as;
using data::dispose;

template <class Array>
bool differ(const Array* a, const Array* b)
{
    return a->count != b->count || a->dim != b->dim || a->type != b->type;
}

template <class T>
void copy_values(const T* from, int64_t n, T* to)
{
    for (int64_t j = 0; j < n; ++j)
        to[j] = from[j];
}

/// Copies n values of the kind of `from`, which exist, from the start of its buffer to place `at` of the other.
void copy_values(const Data* from, int64_t n, Data* to, int64_t at)
{
    if (from->type == DATA_TYPE_DOUBLE)
        copy_values(from->dvals, n, to->dvals + at);
    else if (from->type == DATA_TYPE_INT)
        copy_values(from->ivals, n, to->ivals + at);
    else if (from->type == DATA_TYPE_BYTE)
        copy_values(from->bvals, n, to->bvals + at);
}

void copy_values(const DATAstruct* from, int64_t n, DATAstruct* to, int64_t at)
{
    if (from->type == DATA_TYPE_DOUBLE)
        copy_values(from->dvals, n, to->dvals + at);
    else if (from->type == DATA_TYPE_INT)
        copy_values(from->ivals, n, to->ivals + at);
    else if (from->type == DATA_TYPE_BYTE)
        copy_values(from->bvals, n, to->bvals + at);
    else if (from->type == DATA_TYPE_POINTER || from->type == DATA_TYPE_DATA)
        copy_values(from->pvals, n, to->pvals + at);
}

bool is_known(const Data* d)
{
    return d->type >= DATA_TYPE_DOUBLE && d->type <= DATA_TYPE_BYTE;
}

bool is_known(const DATAstruct* d)
{
    return d->type >= DATA_TYPE_DOUBLE && d->type <= DATA_TYPE_DATA;
}

/// Shapes the output of a mix. 1 where doubles are to be mixed, else 0 with the result of the call.
template <class Array>
int shape_for_mix(const Array* a, Array* output, int& result)
{
    result = -1;
    if (a->count < 1 || a->dim < 1)
        return 0;
    if (differ(a, output)) {
        dispose(*output);
        if (!allocate_as(*output, a->type, a->count, a->dim))
            return 0;
    }
    result = is_known(a) ? -1 : 1;
    return a->type == DATA_TYPE_DOUBLE;
}

template <class Array>
int mix_records(const Array* a, const Array* b, double wa, double wb, Array* output)
{
    int result = -1;
    if (differ(a, b) || !shape_for_mix(a, output, result))
        return result;
    mix(a->dvals, b->dvals, wa, wb, int64_t{a->count} * a->dim, output->dvals);
    return 1;
}

template <class Array>
int mix_four_records(const Array* a, const Array* b, const Array* c, const Array* d, const double* weights,
                     Array* output)
{
    int result = -1;
    if (differ(a, b) || differ(a, c) || differ(a, d) || !shape_for_mix(a, output, result))
        return result;
    mix_four(a->dvals, b->dvals, c->dvals, d->dvals, weights, int64_t{a->count} * a->dim, output->dvals);
    return 1;
}

template <class Array>
int bbox_of(const Array* source, Array* box)
{
    if (source->count < 1 || source->dim < 1 || int64_t{box->count} * box->dim != 2 * int64_t{source->dim} ||
        box->type != source->type || source->type != DATA_TYPE_DOUBLE)
        return -1;
    bounds(source->dvals, source->count, source->dim, box->dvals, box->dvals + source->dim);
    return 1;
}

template <class Array>
int fill_bounds(const Array* source, Array* output)
{
    if (source->type != DATA_TYPE_DOUBLE)
        return is_known(source) ? -1 : 1;
    bounds(source->dvals, source->count, source->dim, output->dvals, output->dvals + source->dim);
    return 1;
}

template <class Array>
void reverse_record(Array* d)
{
    if (d->count / 2 < 1 || d->dim < 1 || !is_known(d))
        return;
    for (int32_t i = 0; i < d->count / 2; ++i)
        for (int32_t k = 0; k < d->dim; ++k) {
            const int64_t low = int64_t{i} * d->dim + k, high = int64_t{d->count - 1 - i} * d->dim + k;
            if (d->type == DATA_TYPE_DOUBLE)
                std::swap(d->dvals[low], d->dvals[high]);
            else if (d->type == DATA_TYPE_INT)
                std::swap(d->ivals[low], d->ivals[high]);
            else if (d->type == DATA_TYPE_BYTE)
                std::swap(d->bvals[low], d->bvals[high]);
            else if constexpr (std::is_same_v<Array, DATAstruct>)
                std::swap(d->pvals[low], d->pvals[high]);
        }
}

template <class Array>
bool can_cat(const Array* first, const Array* second)
{
    return first->dim == second->dim && first->count >= 1 && second->count >= 1 && first->type == second->type;
}

template <class Array>
void append(const Array* first, const Array* second, Array* output)
{
    const int64_t n = int64_t{first->count} * first->dim;
    copy_values(first, n, output, 0);
    copy_values(second, int64_t{second->count} * second->dim, output, n);
}

} // namespace

int cat(const Data* first, const Data* second, Data* output)
{
    if (!can_cat(first, second))
        return -1;
    const int32_t count = first->count + second->count;
    if (output->type != first->type || output->dim != first->dim || output->count != count) {
        dispose(*output);
        allocate_as(*output, first->type, count, first->dim);
    }
    append(first, second, output);
    return 1;
}

int cat(const DATAstruct* first, const DATAstruct* second, DATAstruct* output)
{
    if (!can_cat(first, second))
        return -1;
    allocate_as(*output, first->type, first->count + second->count, first->dim);
    append(first, second, output);
    return 1;
}

int copy(const Data* source, Data* output)
{
    if (source->dim < 1 || source->count < 1)
        return -1;
    if (source->dim > output->dim || source->count > output->count || source->type != output->type) {
        dispose(*output);
        allocate_as(*output, source->type, source->count, source->dim);
    }
    if (source->type == DATA_TYPE_BYTE)
        return -1;
    copy_values(source, int64_t{source->count} * source->dim, output, 0);
    return 1;
}

int copy(const DATAstruct* source, DATAstruct* output)
{
    if (source->dim < 1 || source->count < 1)
        return -1;
    allocate_as(*output, source->type, source->count, source->dim);
    copy_values(source, int64_t{source->count} * source->dim, output, 0);
    return 1;
}

int mix(const Data* a, const Data* b, double wa, double wb, Data* output)
{
    return mix_records(a, b, wa, wb, output);
}

int mix(const DATAstruct* a, const DATAstruct* b, double wa, double wb, DATAstruct* output)
{
    return mix_records(a, b, wa, wb, output);
}

int mix_four(const Data* a, const Data* b, const Data* c, const Data* d, const double* weights, Data* output)
{
    return mix_four_records(a, b, c, d, weights, output);
}

int mix_four(const DATAstruct* a, const DATAstruct* b, const DATAstruct* c, const DATAstruct* d, const double* weights,
             DATAstruct* output)
{
    return mix_four_records(a, b, c, d, weights, output);
}

int bounds(const Data* source, Data* output)
{
    if (source->dim < 1 || source->count < 1)
        return -1;
    if (source->dim > output->dim || output->count < 2 || source->type != output->type)
        dispose(*output);
    allocate_as(*output, source->type, 2, source->dim);
    return fill_bounds(source, output);
}

int bounds(const DATAstruct* source, DATAstruct* output)
{
    if (source->dim < 1 || source->count < 1)
        return -1;
    allocate_as(*output, source->type, 2, source->dim);
    return fill_bounds(source, output);
}

int bbox(const Data* source, Data* box)
{
    return bbox_of(source, box);
}

int bbox(const DATAstruct* source, DATAstruct* box)
{
    return bbox_of(source, box);
}

void transform(const double (*m)[4], const Data* source, Data* output)
{
    if (source->count >= 1 && source->count == output->count && source->dim == 3 && output->dim == 3)
        carry_points(m, source->dvals, source->count, output->dvals);
}

void transform(const double (*m)[4], const DATAstruct* source, DATAstruct* output)
{
    if (source->count < 1 || source->count != output->count || source->type != output->type)
        return;
    if (source->type == DATA_TYPE_DOUBLE && source->dim == 3 && output->dim == 3)
        carry_points(m, source->dvals, source->count, output->dvals);
    if (source->type == DATA_TYPE_DATA)
        for (int32_t i = 0; i < source->count; ++i)
            transform(m, static_cast<const DATAstruct*>(source->pvals[i]), static_cast<DATAstruct*>(output->pvals[i]));
}

void reverse(Data* d)
{
    reverse_record(d);
}

void reverse(DATAstruct* d)
{
    reverse_record(d);
}

} // namespace korvale::reference
