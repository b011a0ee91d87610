#pragma once

#include <cmath>
#include <cstddef>

#include "equation/internal/registry.h"

// The built-in functions where they stand in the registry: ADD to POWER, NEGATE to ATAN, RAND and GAUSS, ANGLE.
namespace korvale {

constexpr BinaryFunction kOperators[] = {EqFuncAdd, EqFuncSubtract, EqFuncMultiply, EqFuncDivide, std::pow};
constexpr UnaryFunction kUnaryFunctions[] = {EqFuncNegate, std::sin, std::cos,  std::tan,  std::sqrt,
                                             std::exp,     std::log, std::asin, std::acos, std::atan};
constexpr NoArgFunction kDraws[] = {EqFuncRand, gauss};
constexpr BinaryFunction kAngle = std::atan2;

constexpr uint32_t kFirstUnary = 5;
constexpr uint32_t kFirstDraw = 15;
constexpr uint32_t kAngleIndex = 17;

template <class Function, size_t N>
bool is_one_of(const Function (&functions)[N], uint32_t i, const void* slot)
{
    return i < N && slot == reinterpret_cast<const void*>(functions[i]);
}

/// Whether slot `f` holds its built-in function of two, one or no arguments. Those change nothing but the random
/// generator.
inline bool is_built_in_binary(int32_t f, const void* slot)
{
    const auto i = static_cast<uint32_t>(f);
    return is_one_of(kOperators, i, slot) || (i == kAngleIndex && slot == reinterpret_cast<const void*>(kAngle));
}

inline bool is_built_in_unary(int32_t f, const void* slot)
{
    return is_one_of(kUnaryFunctions, static_cast<uint32_t>(f) - kFirstUnary, slot);
}

inline bool is_built_in_draw(int32_t f, const void* slot)
{
    return is_one_of(kDraws, static_cast<uint32_t>(f) - kFirstDraw, slot);
}

} // namespace korvale
