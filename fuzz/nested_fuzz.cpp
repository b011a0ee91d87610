// Arrays of arrays in which records stand in several slots and lists, on any level, with sizes of every kind and
// buffers that the library or the host has made. Reversal and transforms are compared with a recursive walk; disposal,
// also of records that contain each other in a circle, has to release every record once.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "data/operations.h"
#include "fuzz/input.h"

using namespace korvale::fuzz;

namespace {

constexpr int kMostRecords = 40;
/// A walk that visits more leaves than this is not made: shared levels multiply.
constexpr double kMostVisits = 20000;

/// The records of a tree from the heap; record 0 is the root, and slots lead to records of a higher number.
struct Tree {
    std::vector<DATAstruct*> records;
    std::vector<double> visits; // leaves that a walk from a record reaches

    DATAstruct* root() const { return records[0]; }
};

int32_t odd_size(Input& in)
{
    constexpr int32_t kSizes[] = {
        -1, 0, 1, 2, 5, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};
    return kSizes[in.below(7)];
}

/// Leaves the buffer of `d` as one that a host has made.
void wrap(DATAstruct& d, Input& in)
{
    d.alloc_count = d.alloc_dim = in.below(2) - 1;
}

void make_leaf(DATAstruct& d, Input& in)
{
    constexpr int32_t kKinds[] = {
        DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_INT, DATA_TYPE_BYTE, DATA_TYPE_POINTER, 7};
    d.type = kKinds[in.below(7)];
    d.count = in.below(12);
    d.dim = in.below(3) == 0 ? in.below(5) : 3;
    if (DATAAllocate(&d) != 1)
        return;
    for (int32_t i = 0; i < d.count * d.dim; ++i)
        if (d.type == DATA_TYPE_DOUBLE)
            d.dvals[i] = in.below(256) / 16.0 - 8;
        else if (d.type == DATA_TYPE_INT)
            d.ivals[i] = in.below(256);
        else if (d.type == DATA_TYPE_BYTE)
            d.bvals[i] = static_cast<uint8_t>(in.below(256));
    if (in.below(4) == 0)
        wrap(d, in);
}

/// Slots that lead to records behind `number` or nowhere.
void make_parent(Tree& tree, size_t number, Input& in)
{
    DATAstruct& d = *tree.records[number];
    const auto behind = static_cast<int>(tree.records.size() - number - 1);
    d.type = DATA_TYPE_DATA;
    d.count = 1 + in.below(6);
    d.dim = 1 + in.below(2);
    require(DATAAllocate(&d) == 1);
    double visits = 0;
    for (int32_t i = 0; i < d.count * d.dim; ++i) {
        const int to = in.below(behind + 1);
        if (to == 0)
            continue;
        d.pvals[i] = tree.records[number + static_cast<size_t>(to)];
        if (i < d.count)
            visits += tree.visits[number + static_cast<size_t>(to)];
    }
    tree.visits[number] = 1 + visits;
    if (in.below(5) == 0)
        wrap(d, in);
}

Tree make_tree(Input& in)
{
    const size_t n = 2 + static_cast<size_t>(in.below(kMostRecords - 1));
    Tree tree = {std::vector<DATAstruct*>(n), std::vector<double>(n, 1.0)};
    for (DATAstruct*& record : tree.records) {
        record = DATANew();
        require(record != nullptr);
    }
    for (size_t i = n; i-- > 1;) {
        if (in.below(2) == 0)
            make_leaf(*tree.records[i], in);
        else
            make_parent(tree, i, in);
    }
    DATAstruct& root = *tree.root(); // reaches every record, so all are released
    root.type = DATA_TYPE_DATA;
    root.count = static_cast<int32_t>(n) - 1;
    root.dim = 1;
    require(DATAAllocate(&root) == 1);
    for (size_t i = 1; i < n; ++i) {
        root.pvals[i - 1] = tree.records[i];
        tree.visits[0] += tree.visits[i];
    }
    return tree;
}

/// Another tree of the same structure, with slots and leaves of its own but for a few.
Tree make_twin(const Tree& tree, Input& in)
{
    const size_t n = tree.records.size();
    Tree twin = {std::vector<DATAstruct*>(n), tree.visits};
    for (DATAstruct*& record : twin.records)
        record = DATANew();
    for (size_t i = n; i-- > 0;) {
        const DATAstruct& from = *tree.records[i];
        DATAstruct& to = *twin.records[i];
        to.type = from.type;
        to.count = from.count;
        to.dim = from.dim;
        const bool is_parent = from.type == DATA_TYPE_DATA;
        if (DATAAllocate(&to) != 1)
            continue;
        if (to.type == DATA_TYPE_DOUBLE)
            std::memset(to.dvals, 0, static_cast<size_t>(to.count) * static_cast<size_t>(to.dim) * sizeof(double));
        for (int32_t k = 0; is_parent && k < to.count * to.dim; ++k)
            for (size_t j = i + 1; j < n; ++j)
                if (from.pvals[k] == tree.records[j])
                    to.pvals[k] = twin.records[j];
        if (!is_parent && in.below(8) == 0)
            to.dim = in.below(to.dim + 1);
    }
    return twin;
}

/// The doubles of all records, to be carried on by the walks below.
using Values = std::vector<std::pair<const DATAstruct*, std::vector<double>>>;

Values values_of(const Tree& tree)
{
    Values all;
    for (const DATAstruct* d : tree.records)
        if (d->type == DATA_TYPE_DOUBLE && d->dvals != nullptr && d->count > 0 && d->dim > 0)
            all.emplace_back(d, std::vector<double>(d->dvals, d->dvals + int64_t{d->count} * d->dim));
    return all;
}

std::vector<double>* find(Values& values, const DATAstruct* d)
{
    for (auto& [record, numbers] : values)
        if (record == d)
            return &numbers;
    return nullptr;
}

void expect_same(const Values& values)
{
    for (const auto& [record, numbers] : values)
        for (size_t i = 0; i < numbers.size(); ++i) {
            const double found = record->dvals[i];
            require(std::memcmp(&found, &numbers[i], sizeof found) == 0 ||
                    (std::isnan(found) && std::isnan(numbers[i])));
        }
}

void reverse_plainly(const DATAstruct* d, Values& values)
{
    if (d == nullptr)
        return;
    if (d->type == DATA_TYPE_DATA) {
        for (int32_t i = 0; i < d->count; ++i)
            reverse_plainly(static_cast<const DATAstruct*>(d->pvals[i]), values);
        return;
    }
    std::vector<double>* const numbers = find(values, d);
    if (numbers == nullptr)
        return;
    const auto dim = static_cast<size_t>(d->dim), count = static_cast<size_t>(d->count);
    for (size_t i = 0; i < count / 2; ++i)
        for (size_t k = 0; k < dim; ++k)
            std::swap((*numbers)[i * dim + k], (*numbers)[(count - 1 - i) * dim + k]);
}

void carry_plainly(Xfm m, const DATAstruct* from, const DATAstruct* to, Values& sources, Values& outputs)
{
    if (from == nullptr || to == nullptr || from->count < 1 || from->count != to->count || from->type != to->type)
        return;
    if (from->type == DATA_TYPE_DATA)
        for (int32_t i = 0; i < from->count; ++i)
            carry_plainly(m, static_cast<const DATAstruct*>(from->pvals[i]),
                          static_cast<const DATAstruct*>(to->pvals[i]), sources, outputs);
    if (from->type != DATA_TYPE_DOUBLE || from->dim != 3 || to->dim != 3)
        return;
    std::vector<double>*const in = find(sources, from), *const out = find(outputs, to);
    if (in == nullptr || out == nullptr || out->size() < in->size())
        return;
    for (size_t i = 0; i < in->size(); i += 3)
        TransformPoint(m, &(*in)[i], &(*out)[i]);
}

/// Makes circles and sizes that mean nothing: only disposal has to cope with them.
void tangle(Tree& tree, Input& in)
{
    const auto n = static_cast<int>(tree.records.size());
    for (int i = in.below(6); i > 0; --i) {
        DATAstruct& d = *tree.records[static_cast<size_t>(in.below(n))];
        if (d.next == nullptr)
            d.next = tree.records[static_cast<size_t>(in.below(n))];
    }
    for (int i = in.below(4); i > 0; --i) {
        DATAstruct& d = *tree.records[static_cast<size_t>(in.below(n))];
        if (d.type == DATA_TYPE_DATA && d.pvals != nullptr)
            d.pvals[0] = in.below(3) == 0 ? d.pvals[0] : tree.records[static_cast<size_t>(in.below(n))];
    }
    for (int i = in.below(6); i > 0; --i) {
        DATAstruct& d = *tree.records[static_cast<size_t>(in.below(n))];
        d.count = odd_size(in);
        d.dim = odd_size(in);
    }
    DATAstruct& root = *tree.root(); // a slot was its record's only place, perhaps
    for (int i = 1; i < n; ++i)
        root.pvals[i - 1] = tree.records[static_cast<size_t>(i)];
}

void dispose(Tree& tree, Input& in)
{
    if (in.below(2) == 0)
        tangle(tree, in);
    require(DATADispose(tree.root()) == 1);
    require(tree.root()->pvals == nullptr && tree.root()->next == nullptr && tree.root()->count == -1);
    std::free(tree.root());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    Xfm m;
    for (auto& row : m)
        for (double& value : row)
            value = in.below(64) / 8.0 - 4;
    if (in.below(2) == 0)
        m[3][0] = m[3][1] = m[3][2] = 0, m[3][3] = 1;
    Tree tree = make_tree(in), twin = make_twin(tree, in);
    if (tree.visits[0] <= kMostVisits) {
        Values expected = values_of(tree);
        reverse_plainly(tree.root(), expected);
        DATASubReverse(tree.root());
        expect_same(expected);
        carry_plainly(m, tree.root(), tree.root(), expected, expected);
        TransformDATA(m, tree.root(), tree.root());
        expect_same(expected);
        Values outputs = values_of(twin);
        carry_plainly(m, tree.root(), twin.root(), expected, outputs);
        TransformDATA(m, tree.root(), twin.root());
        expect_same(outputs);
        expect_same(expected);
    }
    DATAReverse(tree.root());
    DATACheckIfFace(tree.root());
    DATACheckIfMesh(tree.root());
    DATAstruct shared;
    DATAInitialize(&shared);
    require(DATACopy(tree.root(), &shared) == 1);
    require(DATACat(tree.root(), twin.root(), &shared) == 1);
    require(shared.pvals[0] == tree.root()->pvals[0]);
    DATANodeDispose(&shared);
    dispose(tree, in);
    dispose(twin, in);
    return 0;
}
