// Arbitrary sequences of array operations on three records of each generation. After every step each record must be
// usable over its whole shape, and results are compared with what a host could compute itself.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "data/internal/record.h"
#include "data/operations.h"
#include "data/sampling.h"
#include "fuzz/input.h"

using namespace korvale::fuzz;

namespace {

using korvale::data::dispose;

constexpr int kRecords = 3;

/// Mostly a small multiple of 1/16, now and then any number.
double value_of(Input& in)
{
    return in.below(4) == 0 ? in.any<double>() : in.below(256) / 16.0 - 8;
}

int64_t size(const Data& d)
{
    return static_cast<int64_t>(d.count) * d.dim;
}

int64_t size(const DATAstruct& d)
{
    return static_cast<int64_t>(d.count) * d.dim;
}

/// Writes every element there is, so that a buffer that is too small is caught.
template <class Array>
void fill(Array& d, Input& in)
{
    if (d.count < 1 || d.dim < 1)
        return;
    for (int64_t i = 0; i < size(d); ++i) {
        if (d.type == DATA_TYPE_DOUBLE && d.dvals != nullptr)
            d.dvals[i] = value_of(in);
        if (d.type == DATA_TYPE_INT && d.ivals != nullptr)
            d.ivals[i] = in.below(256);
        if (d.type == DATA_TYPE_BYTE && d.bvals != nullptr)
            d.bvals[i] = static_cast<uint8_t>(in.below(256));
    }
}

constexpr int kKinds[] = {DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_INT, DATA_TYPE_BYTE, 5, -1};

template <class Array>
void shape(Array& d, Input& in)
{
    d.type = kKinds[in.below(7)];
    d.count = in.below(40) - 1;
    d.dim = in.below(2) == 0 ? 3 : in.below(11) - 1;
}

void make(Data& d, Input& in)
{
    DataDispose(&d);
    shape(d, in);
    if (DataAllocate(&d) == 1)
        fill(d, in);
}

void make(DATAstruct& d, Input& in)
{
    shape(d, in);
    const int done = in.below(2) == 0 ? DATAAllocate(&d) : DATAReAllocate(&d);
    if (done == 1)
        fill(d, in);
    else // the shape was refused: leave the record as one that may be used
        DATADispose(&d);
}

void transform_checked(Xfm m, DATAstruct& from, DATAstruct& to)
{
    std::vector<double> before;
    const bool carries = from.type == DATA_TYPE_DOUBLE && to.type == DATA_TYPE_DOUBLE && from.dim == 3 && to.dim == 3 &&
                         from.count >= 1 && from.count == to.count;
    if (carries)
        before.assign(from.dvals, from.dvals + size(from));
    TransformDATA(m, &from, &to);
    for (size_t i = 0; carries && i < before.size(); i += 3) {
        double expected[3];
        TransformPoint(m, &before[i], expected);
        for (size_t k = 0; k < 3; ++k)
            require(is_same(expected[k], to.dvals[i + k]));
    }
}

void bounds_checked(DATAstruct& from, DATAstruct& to)
{
    if (&from == &to || DATABounds(&from, &to) != 1 || from.type != DATA_TYPE_DOUBLE)
        return;
    for (int64_t i = 0; i < size(from); ++i) {
        const double low = to.dvals[i % from.dim], high = to.dvals[from.dim + i % from.dim];
        require(!(from.dvals[i] < low) && !(from.dvals[i] > high));
    }
}

void reverse_checked(DATAstruct& d)
{
    std::vector<double> before;
    if (d.type == DATA_TYPE_DOUBLE && d.count >= 1 && d.dim >= 1)
        before.assign(d.dvals, d.dvals + size(d));
    DATAReverse(&d);
    for (size_t i = 0; i < before.size(); ++i) {
        const auto dim = static_cast<size_t>(d.dim), count = static_cast<size_t>(d.count);
        require(is_same(before[i], d.dvals[(count - 1 - i / dim) * dim + i % dim]));
    }
}

/// A list of points turned into an array, walked and released.
void walk_tree(Xfm m, Input& in)
{
    DATAstruct* first = nullptr;
    const int n = in.below(6);
    for (int i = 0; i < n; ++i) {
        DATAstruct* const d = DATANew();
        make(*d, in);
        d->next = first;
        first = d;
    }
    require(DATAListCount(first) == n);
    DATAstruct* const tree = DATAListToDATA(first);
    require((tree == nullptr) == (n == 0));
    if (tree == nullptr)
        return;
    TransformDATA(m, tree, tree);
    DATASubReverse(tree);
    DATAReverse(tree);
    require(DATACheckIfPatch(tree) == 1 && DATACheckIfMesh(tree) == 0);
    if (DATACheckIfFace(tree) == 1)
        for (int i = 0; i < n; ++i)
            require(DATACheckIfPoints(static_cast<DATAstruct*>(tree->pvals[i])) == 1);
    DATADispose(tree);
    std::free(tree);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    Data old[kRecords];
    DATAstruct now[kRecords];
    for (int i = 0; i < kRecords; ++i) {
        DataInitialize(&old[i]);
        DATAInitialize(&now[i]);
    }
    Xfm m;
    for (auto& row : m)
        for (double& value : row)
            value = value_of(in);
    if (in.below(2) == 0)
        m[3][0] = m[3][1] = m[3][2] = 0, m[3][3] = 1;

    for (int step = 0; step < 64 && !in.is_used_up(); ++step) {
        const int a = in.below(kRecords), b = in.below(kRecords), to = in.below(kRecords);
        const double wa = value_of(in), wb = value_of(in);
        switch (in.below(13)) {
        case 0:
            make(old[a], in);
            break;
        case 1:
            make(now[a], in);
            break;
        case 2:
            DataCat(&old[a], &old[b], &old[to]);
            DATACat(&now[a], &now[b], &now[to]);
            break;
        case 3:
            DataCopy(&old[a], &old[to]);
            DATACopy(&now[a], &now[to]);
            break;
        case 4:
            DataMix(&old[a], &old[b], wa, wb, &old[to]);
            DATAMix(&now[a], &now[b], wa, wb, &now[to]);
            break;
        case 5:
            Data4Mix(&old[a], &old[b], &old[b], &old[a], wa, wb, wb, wa, &old[to]);
            DATA4Mix(&now[a], &now[b], &now[b], &now[a], wa, wb, wb, wa, &now[to]);
            break;
        case 6:
            if (a != to) {
                DataDispose(&old[to]); // a buffer that is kept would be lost
                DataBounds(&old[a], &old[to]);
            }
            bounds_checked(now[a], now[to]);
            break;
        case 7:
            DataBBox(&old[a], &old[to]);
            DATABBox(&now[a], &now[to]);
            break;
        case 8:
            TransformData(m, &old[a], &old[to]);
            transform_checked(m, now[a], now[to]);
            break;
        case 9:
            DataReverse(&old[a]);
            reverse_checked(now[a]);
            break;
        case 10:
            DataTriSample(&old[a], 7, &old[b], &old[to], &old[to]);
            DATATriSample(&now[a], 7, &now[b], &now[to], &now[to]);
            break;
        case 11:
            walk_tree(m, in);
            break;
        default:
            dispose(old[a]);
            dispose(now[b]);
            break;
        }
        if (in.below(4) == 0)
            for (int i = 0; i < kRecords; ++i) {
                fill(old[i], in);
                fill(now[i], in);
            }
    }
    for (int i = 0; i < kRecords; ++i) {
        dispose(old[i]);
        dispose(now[i]);
    }
    return 0;
}
