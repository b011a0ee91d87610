// Arbitrary sequences of array operations on three records of each generation. After every step each record must be
// usable over its whole shape, and results are compared with what a host could compute itself.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "data/internal/record.h"
#include "data/operations.h"
#include "data/sampling.h"

namespace {

using korvale::inside::dispose;

constexpr int kRecords = 3;

/// The input, byte by byte; zeros when it is used up.
struct Input {
    const uint8_t* bytes;
    size_t left;

    int next(int below)
    {
        if (left == 0)
            return 0;
        --left;
        return *bytes++ % below;
    }

    double value()
    {
        double d = 0.0;
        if (left >= sizeof d && next(4) == 0 && left >= sizeof d) {
            std::memcpy(&d, bytes, sizeof d);
            bytes += sizeof d;
            left -= sizeof d;
            return d;
        }
        return next(256) / 16.0 - 8;
    }
};

void must(bool holds)
{
    if (!holds)
        std::abort();
}

bool is_same(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
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
            d.dvals[i] = in.value();
        if (d.type == DATA_TYPE_INT && d.ivals != nullptr)
            d.ivals[i] = in.next(256);
        if (d.type == DATA_TYPE_BYTE && d.bvals != nullptr)
            d.bvals[i] = static_cast<uint8_t>(in.next(256));
    }
}

constexpr int kKinds[] = {DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_INT, DATA_TYPE_BYTE, 5, -1};

template <class Array>
void shape(Array& d, Input& in)
{
    d.type = kKinds[in.next(7)];
    d.count = in.next(40) - 1;
    d.dim = in.next(2) == 0 ? 3 : in.next(11) - 1;
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
    const int done = in.next(2) == 0 ? DATAAllocate(&d) : DATAReAllocate(&d);
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
            must(is_same(expected[k], to.dvals[i + k]));
    }
}

void bounds_checked(DATAstruct& from, DATAstruct& to)
{
    if (&from == &to || DATABounds(&from, &to) != 1 || from.type != DATA_TYPE_DOUBLE)
        return;
    for (int64_t i = 0; i < size(from); ++i) {
        const double low = to.dvals[i % from.dim], high = to.dvals[from.dim + i % from.dim];
        must(!(from.dvals[i] < low) && !(from.dvals[i] > high));
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
        must(is_same(before[i], d.dvals[(count - 1 - i / dim) * dim + i % dim]));
    }
}

/// A list of points turned into an array, walked and released.
void walk_tree(Xfm m, Input& in)
{
    DATAstruct* first = nullptr;
    const int n = in.next(6);
    for (int i = 0; i < n; ++i) {
        DATAstruct* const d = DATANew();
        make(*d, in);
        d->next = first;
        first = d;
    }
    must(DATAListCount(first) == n);
    DATAstruct* const tree = DATAListToDATA(first);
    must((tree == nullptr) == (n == 0));
    if (tree == nullptr)
        return;
    TransformDATA(m, tree, tree);
    DATASubReverse(tree);
    DATAReverse(tree);
    must(DATACheckIfPatch(tree) == 1 && DATACheckIfMesh(tree) == 0);
    if (DATACheckIfFace(tree) == 1)
        for (int i = 0; i < n; ++i)
            must(DATACheckIfPoints(static_cast<DATAstruct*>(tree->pvals[i])) == 1);
    DATADispose(tree);
    std::free(tree);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in = {bytes, count};
    Data old[kRecords];
    DATAstruct now[kRecords];
    for (int i = 0; i < kRecords; ++i) {
        DataInitialize(&old[i]);
        DATAInitialize(&now[i]);
    }
    Xfm m;
    for (auto& row : m)
        for (double& value : row)
            value = in.value();
    if (in.next(2) == 0)
        m[3][0] = m[3][1] = m[3][2] = 0, m[3][3] = 1;

    for (int step = 0; step < 64 && in.left > 0; ++step) {
        const int a = in.next(kRecords), b = in.next(kRecords), to = in.next(kRecords);
        const double wa = in.value(), wb = in.value();
        switch (in.next(13)) {
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
        if (in.next(4) == 0)
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
