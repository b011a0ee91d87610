// Shape preservation of arbitrary meshes at arbitrary positions: any connectivity is refused or computed with.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "preserve/compute.h"
#include "preserve/evaluation.h"

namespace {

void require(bool fact)
{
    if (!fact)
        std::abort();
}

/// Takes the input apart; zeros once it is used up.
class Bytes {
public:
    Bytes(const uint8_t* bytes, size_t count) : bytes_(bytes), count_(count) {}

    template <class T>
    T next()
    {
        T value = {};
        const size_t n = count_ < sizeof value ? count_ : sizeof value;
        if (n > 0)
            std::memcpy(&value, bytes_, n);
        bytes_ += n;
        count_ -= n;
        return value;
    }

    /// An index, mostly of a point that exists.
    int32_t index(int32_t points) { return next<uint8_t>() % (points + 1) - (next<uint8_t>() == 0); }

    /// A coordinate, mostly a small one.
    double coordinate() { return next<uint8_t>() < 8 ? next<double>() : next<int16_t>() / 1000.0; }

private:
    const uint8_t* bytes_;
    size_t count_;
};

template <class T>
DATAstruct array_around(std::vector<T>& values, int32_t dim, T* DATAstruct::*buffer, int32_t type)
{
    DATAstruct d;
    DATAInitialize(&d);
    d.dim = dim;
    d.count = static_cast<int32_t>(values.size()) / dim;
    d.type = type;
    d.*buffer = values.data();
    return d;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Bytes input(bytes, count);
    const int32_t points = input.next<uint8_t>() % 24, faces = input.next<uint8_t>() % 32;
    std::vector<int32_t> edge_ends(2 * (input.next<uint8_t>() % 12u)), sizes, corners;
    for (int32_t& end : edge_ends)
        end = input.index(points);
    for (int32_t f = 0; f < faces; ++f) {
        sizes.push_back(input.next<uint8_t>() % 8 == 0 ? input.next<int8_t>() : 3);
        for (int32_t k = 0; k < sizes.back(); ++k)
            corners.push_back(input.index(points));
    }
    corners.resize(corners.size() - corners.size() % (1 + input.next<uint8_t>() % 2u));
    std::vector<double> reference(3 * static_cast<size_t>(points)), moved(reference.size());
    for (double& x : reference)
        x = input.coordinate();
    for (double& x : moved)
        x = input.coordinate();
    std::vector<uint8_t> tagged(static_cast<size_t>(points));
    for (uint8_t& tag : tagged)
        tag = input.next<uint8_t>() % 4 == 0;

    DATAstruct p = array_around(reference, 3, &DATAstruct::dvals, DATA_TYPE_DOUBLE);
    DATAstruct m = array_around(moved, 3, &DATAstruct::dvals, DATA_TYPE_DOUBLE);
    DATAstruct e = array_around(edge_ends, 2, &DATAstruct::ivals, DATA_TYPE_INT);
    DATAstruct s = array_around(sizes, 1, &DATAstruct::ivals, DATA_TYPE_INT);
    DATAstruct c = array_around(corners, 1, &DATAstruct::ivals, DATA_TYPE_INT);
    DATAstruct t = array_around(tagged, 1, &DATAstruct::bvals, DATA_TYPE_BYTE);

    PreserveStatus status = {};
    if (PreserveInitialize(&status, &p, &e, &s, &c) < 0) {
        require(status.force == nullptr && status.edges == nullptr);
        return 0;
    }
    if (input.next<uint8_t>() % 2 == 0)
        require(PreserveSetTag(&status, &t) == 1);
    for (int term = PRESERVE_LENGTH; term <= PRESERVE_AREA; term *= 2)
        PreservePreserve(&status, input.next<uint8_t>() % 8 == 0 ? input.next<int8_t>() : term, input.coordinate());

    const std::vector<double> before = moved;
    require(PreserveCompute(&status, &m, input.next<uint8_t>() % 4) == 1);
    for (size_t i = 0; i < tagged.size(); ++i) // a tagged point only moves by becoming NaN
        if (status.tags != nullptr && tagged[i] != 0)
            for (size_t q = 3 * i; q < 3 * i + 3; ++q)
                require(moved[q] == before[q] || moved[q] != moved[q]);
    DATAstruct force;
    DATAInitialize(&force);
    require(PreserveGetForce(&status, &m, &force) == 1);
    require(points == 0 || force.count == points);
    DATADispose(&force);

    DATAstruct* const edges = status.edges;
    PreserveDispose(&status);
    if (edges != &e) {
        DATADispose(edges);
        std::free(edges);
    }
    return 0;
}
