#include "tests/ray/without_four_lanes.h"

#include <utility>

#include "platform/internal/widest.h"

namespace {

#ifdef KORVALE_HAS_WIDE_LANES
// What the compiler's own library found out about the processor, which `__builtin_cpu_supports` asks. No file may name
// both: to clang the builtin has declared this already.
extern "C" struct {
    unsigned vendor, type, subtype, features;
} __cpu_model;
unsigned& features = __cpu_model.features;
#else
unsigned features;
#endif

} // namespace

namespace korvale::test {

WithoutFourLanes::WithoutFourLanes() : features_(std::exchange(features, 0))
{
}

WithoutFourLanes::~WithoutFourLanes()
{
    features = features_;
}

} // namespace korvale::test
