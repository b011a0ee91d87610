// Operations on whole arrays, and the random generator of the process.
#include "data/operations.h"
#include "door/internal/views.h"
#include "equation/functions.h"

namespace korvale::door {
namespace {

/// A record over rows that has their shape already, so that the library writes where they are.
DATAstruct shaped_record(const double* values, int64_t count, int64_t width)
{
    DATAstruct d = record_over(values, count, width);
    d.alloc_type = d.type;
    d.alloc_count = d.count;
    d.alloc_dim = d.dim;
    return d;
}

/// The arrays of a mix, each of the shape of the output.
class Sources {
public:
    Sources(const korvale_numbers* arrays, int64_t count, const NumbersOut& output)
    {
        constexpr std::string_view kNames[kMost] = {"arrays[0]", "arrays[1]", "arrays[2]", "arrays[3]"};
        for (int64_t k = 0; k < count; ++k) {
            const NumbersIn& array = arrays_[k].emplace(&arrays[k], kNames[k]);
            if (array.size() != output.size() || array.width() != output.width())
                throw Refusal(kNames[k], Text() << "be " << output.size() << " x " << output.width() << " like output",
                              Text() << "it is " << array.size() << " x " << array.width());
            records_[k] = record_over(array.data(), array.size(), array.width());
        }
    }

    DATAstruct* operator[](size_t k) { return &records_[k]; }

private:
    static constexpr int64_t kMost = 4; // that DATAMixFour takes
    std::optional<NumbersIn> arrays_[kMost];
    DATAstruct records_[kMost];
};

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_mix(const korvale_numbers* arrays, const double* weights, int64_t count,
                           const korvale_numbers_out* output, korvale_error* error)
{
    return answer(error, "korvale_mix", [&] {
        if (count != 2 && count != 4)
            throw Refusal("count", "be 2 or 4", Text() << "it is " << count);
        require(arrays, "arrays");
        require(weights, "weights");
        NumbersOut to(output, "output", PointsOut::Use::write);
        Sources from(arrays, count, to);
        if (to.size() == 0 || to.width() == 0)
            return;
        DATAstruct record = shaped_record(to.data(), to.size(), to.width());
        require_done(count == 2 ? DATAMix(from[0], from[1], weights[0], weights[1], &record)
                                : DATA4Mix(from[0], from[1], from[2], from[3], weights[0], weights[1], weights[2],
                                           weights[3], &record));
        to.give_back();
    });
}

korvale_status korvale_bounds(const korvale_numbers* array, double* least, double* greatest, korvale_error* error)
{
    return answer(error, "korvale_bounds", [&] {
        require(least, "least");
        require(greatest, "greatest");
        const NumbersIn from(array, "array");
        if (from.size() == 0)
            throw Refusal("array", "have at least 1 row", "it has 0");
        const auto width = static_cast<size_t>(from.width());
        Vector<double> box(2 * width);
        DATAstruct record = record_over(from.data(), from.size(), from.width());
        DATAstruct bounds = shaped_record(box.data(), 2, from.width());
        require_done(DATABBox(&record, &bounds));
        std::memcpy(least, box.data(), width * sizeof(double));
        std::memcpy(greatest, box.data() + width, width * sizeof(double));
    });
}

korvale_status korvale_reverse(const korvale_numbers_out* array, korvale_error* error)
{
    return answer(error, "korvale_reverse", [&] {
        NumbersOut rows(array, "array", PointsOut::Use::change);
        DATAstruct record = shaped_record(rows.data(), rows.size(), rows.width());
        DATAReverse(&record);
        rows.give_back();
    });
}

void korvale_seed(int32_t seed)
{
    EqSeed(seed);
}
