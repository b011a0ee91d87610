// Shape preservation of arbitrary meshes at arbitrary positions: any connectivity is refused or computed with, whether
// its arrays are the library's or wrap memory of the host, whatever lists and sizes say, and also when the heap runs
// out. What the heap leaves whole agrees bit for bit with the documented steps.
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/input.h"
#include "preserve/compute.h"
#include "preserve/evaluation.h"
#include "tests/reference/preserve.h"

using namespace korvale::fuzz;

namespace {

int32_t allocations_left = -1; // until the heap is exhausted; it never is below 0

} // namespace

// The linker sends every call of malloc here.
extern "C" void* __real_malloc(size_t bytes);
extern "C" void* __wrap_malloc(size_t bytes);

void* __wrap_malloc(size_t bytes)
{
    if (allocations_left == 0)
        return nullptr;
    allocations_left -= allocations_left > 0;
    return __real_malloc(bytes);
}

namespace {

bool one_in(Input& input, uint8_t n)
{
    return input.byte() % n == 1 % n;
}

/// An index, mostly of a point that exists.
int32_t index_of(Input& input, int32_t points)
{
    const int32_t index = input.byte() % (points + 1);
    return index - (input.byte() == 1);
}

/// A coordinate, mostly a small one.
double coordinate_of(Input& input)
{
    return input.byte() < 8 ? input.any<double>() : input.any<int16_t>() / 1000.0;
}

/// An array of the library's, or one around memory of the host that is exactly as long as the values.
class Array {
public:
    Array(Input& input, const std::vector<int32_t>& values, int32_t dim) : Array(values.size(), dim)
    {
        d_.type = DATA_TYPE_INT;
        wrapped_ints_ = std::make_unique<int32_t[]>(values.size());
        d_.ivals = wrapped_ints_.get();
        if (!one_in(input, 3)) {
            DATAstruct own = d_;
            own.ivals = nullptr;
            if (DATAAllocate(&own) == 1)
                d_ = own;
            wrapped_ints_.reset(is_own() ? nullptr : wrapped_ints_.release());
        } else {
            d_.dim = input.any<int8_t>() % 4;
        }
        if (!values.empty())
            std::memcpy(d_.ivals, values.data(), values.size() * sizeof values[0]);
        if (is_own() && one_in(input, 16)) // longer than its buffer
            d_.count += input.any<uint16_t>();
    }

    Array(const std::vector<double>& values, int32_t dim) : Array(values.size(), dim)
    {
        wrapped_doubles_ = std::make_unique<double[]>(values.size());
        d_.dvals = wrapped_doubles_.get();
        if (!values.empty())
            std::memcpy(d_.dvals, values.data(), values.size() * sizeof values[0]);
    }

    Array(const std::vector<uint8_t>& values) : Array(values.size(), 1)
    {
        d_.type = DATA_TYPE_BYTE;
        wrapped_bytes_ = std::make_unique<uint8_t[]>(values.size());
        d_.bvals = wrapped_bytes_.get();
        if (!values.empty())
            std::memcpy(d_.bvals, values.data(), values.size());
    }

    ~Array()
    {
        if (is_own())
            DATADispose(&d_);
    }

    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;

    DATAstruct* get() { return &d_; }
    DATAstruct* operator->() { return &d_; }

private:
    Array(size_t values, int32_t dim)
    {
        DATAInitialize(&d_);
        d_.dim = dim;
        d_.count = static_cast<int32_t>(values) / dim;
    }

    bool is_own() const { return d_.alloc_count > 0; }

    DATAstruct d_;
    std::unique_ptr<int32_t[]> wrapped_ints_;
    std::unique_ptr<double[]> wrapped_doubles_;
    std::unique_ptr<uint8_t[]> wrapped_bytes_;
};

/// A mesh of up to 24 points, mostly of triangles.
struct Mesh {
    int32_t points;
    std::vector<int32_t> ends, sizes, corners;

    explicit Mesh(Input& input) : points(input.byte() % 24)
    {
        const int32_t faces = input.byte() % 32;
        ends.resize(2 * (input.byte() % 12u));
        for (int32_t& end : ends)
            end = index_of(input, points);
        int32_t start = 0;
        for (int32_t f = 0; f < faces; ++f) {
            sizes.push_back(one_in(input, 8) ? input.any<int8_t>() % 9 : 3);
            start += sizes.back();
            while (static_cast<int32_t>(corners.size()) < start)
                corners.push_back(index_of(input, points));
            if (one_in(input, 128))
                sizes.back() = input.any<int32_t>();
        }
        for (int32_t extra = input.byte() % 16 - 12; extra > 0; --extra)
            corners.push_back(input.any<int32_t>());
        if (!corners.empty() && one_in(input, 32))
            corners.pop_back();
    }
};

/// A status and what it needs.
struct Solver {
    PreserveStatus status = {};
    Array edges, sizes, corners, reference, moved, tags;
    int result;

    Solver(Input input, const Mesh& mesh, const std::vector<double>& at, const std::vector<double>& to,
           const std::vector<uint8_t>& tagged)
        : edges(input, mesh.ends, 2), sizes(input, mesh.sizes, 1), corners(input, mesh.corners, 1), reference(at, 3),
          moved(to, 3), tags(tagged)
    {
        result = PreserveInitialize(&status, reference.get(), edges.get(), sizes.get(), corners.get());
        require(result == 1 || (status.force == nullptr && status.edges == nullptr));
    }

    ~Solver()
    {
        DATAstruct* const built = status.edges;
        PreserveDispose(&status);
        if (built != edges.get()) {
            DATADispose(built);
            std::free(built);
        }
    }
};

void require_same(const DATAstruct* a, const DATAstruct* b)
{
    require((a == nullptr) == (b == nullptr));
    for (int64_t i = 0; a != nullptr && a->dvals != nullptr && i < int64_t{a->count} * a->dim; ++i)
        require(std::bit_cast<uint64_t>(a->dvals[i]) == std::bit_cast<uint64_t>(b->dvals[i]) ||
                (a->dvals[i] != a->dvals[i] && b->dvals[i] != b->dvals[i]));
}

/// Whether every term that is switched on has its arrays, and no array is longer than it really is: what the documented
/// steps expect.
bool is_plain(Solver& s)
{
    const PreserveStatus& status = s.status;
    if (status.force == nullptr || status.force->dvals == nullptr)
        return false;
    const bool has_edges = status.edges != nullptr && status.point_edges != nullptr;
    const bool has_faces = status.face_sizes != nullptr && status.face_points != nullptr;
    return ((status.flags & PRESERVE_LENGTH) == 0 || (has_edges && status.olen != nullptr)) &&
           ((status.flags & ~PRESERVE_LENGTH) == 0 || has_faces) &&
           ((status.flags & PRESERVE_FACE_ANGLE) == 0 || status.ofang != nullptr);
}

/// Zeros in the corners that no face has.
void clear_measures(PreserveStatus& s)
{
    for (DATAstruct* d : {s.nlen, s.nfang})
        if (d != nullptr && d->dvals != nullptr)
            std::memset(d->dvals, 0, static_cast<size_t>(d->count) * sizeof(double));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input input(bytes, count);
    const int32_t fails_at = one_in(input, 4) ? input.byte() % 32 : -1;
    const uint8_t terms = input.byte(), iterations = input.byte() % 4;
    const bool has_tags = one_in(input, 2), has_odd_terms = one_in(input, 8);
    const Mesh mesh(input);
    std::vector<double> reference(3 * static_cast<size_t>(mesh.points)), moved(reference.size());
    for (double& x : reference)
        x = coordinate_of(input);
    for (double& x : moved)
        x = coordinate_of(input);
    std::vector<uint8_t> tagged(static_cast<size_t>(mesh.points));
    for (uint8_t& tag : tagged)
        tag = input.byte() % 4 == 1;
    double weights[4];
    for (double& weight : weights)
        weight = coordinate_of(input);
    const int32_t odd_term = input.any<int8_t>();

    allocations_left = fails_at;
    Solver s(input, mesh, reference, moved, tagged);
    const auto switch_on = [&](Solver& solver) {
        if (has_tags)
            require(PreserveSetTag(&solver.status, solver.tags.get()) == 1);
        for (int slot = 0; slot < 4; ++slot)
            if ((terms & 1 << slot) == 0)
                PreservePreserve(&solver.status, 1 << slot, weights[slot]);
        if (has_odd_terms)
            PreservePreserve(&solver.status, odd_term, 1.0);
    };
    if (s.result == 1)
        switch_on(s);
    allocations_left = -1;
    if (s.result < 0)
        return 0;

    clear_measures(s.status);
    require(PreserveCompute(&s.status, s.moved.get(), iterations) == 1);
    for (size_t i = 0; i < tagged.size(); ++i) // a tagged point only moves by becoming NaN
        if (s.status.tags != nullptr && tagged[i] != 0)
            for (size_t q = 3 * i; q < 3 * i + 3; ++q)
                require(s.moved->dvals[q] == moved[q] || s.moved->dvals[q] != s.moved->dvals[q]);
    DATAstruct force;
    DATAInitialize(&force);
    require(PreserveGetForce(&s.status, s.moved.get(), &force) == 1);
    require(mesh.points == 0 || s.status.force == nullptr || force.count == mesh.points);
    DATADispose(&force);

    if (!is_plain(s) || fails_at >= 0)
        return 0;
    Solver plain(input, mesh, reference, moved, tagged);
    switch_on(plain);
    clear_measures(plain.status);
    korvale::reference::compute(plain.status, *plain.moved.get(), iterations);
    korvale::reference::find_energy(plain.status);
    korvale::reference::find_force(plain.status);
    require_same(plain.moved.get(), s.moved.get());
    require_same(plain.status.force, s.status.force);
    require_same(plain.status.nlen, s.status.nlen);
    require_same(plain.status.nfang, s.status.nfang);
    require(plain.status.energy == s.status.energy || s.status.energy != s.status.energy);
    return 0;
}
