#pragma once

/// korvale for C++20, beside the records and functions of korvale.h: all of `korvale/face.hpp`, which says what there
/// is, and korvale.h, whose records `RayGrid::status`, `Relaxer::status` and `Equations::system` give. It adds no
/// symbol to the library.

#include "korvale.h"
#include "korvale/face.hpp"

namespace korvale::detail {

template <>
struct RecordBehind<korvale_grid> {
    using type = RayStatus;
};

template <>
struct RecordBehind<korvale_relaxer> {
    using type = PreserveStatus;
};

template <>
struct RecordBehind<korvale_equations> {
    using type = EquationSystem;
};

} // namespace korvale::detail
