#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "equation/internal/registry.h"

// The built-in functions where they stand in the registry: ADD to POWER, NEGATE to ATAN, RAND and GAUSS, ANGLE.
namespace korvale::inside {

template <class Function>
struct BuiltIn {
    const char* name;
    Function function;
};

inline constexpr BuiltIn<BinaryFunction> kOperators[] = {{"ADD", EqFuncAdd},
                                                         {"SUBTRACT", EqFuncSubtract},
                                                         {"MULTIPLY", EqFuncMultiply},
                                                         {"DIVIDE", EqFuncDivide},
                                                         {"POWER", std::pow}};
inline constexpr BuiltIn<UnaryFunction> kUnaryFunctions[] = {
    {"NEGATE", EqFuncNegate}, {"SIN", std::sin}, {"COS", std::cos},   {"TAN", std::tan},   {"SQRT", std::sqrt},
    {"EXP", std::exp},        {"LOG", std::log}, {"ASIN", std::asin}, {"ACOS", std::acos}, {"ATAN", std::atan}};
inline constexpr BuiltIn<NoArgFunction> kDraws[] = {{"RAND", EqFuncRand}, {"GAUSS", gauss}};
inline constexpr BuiltIn<BinaryFunction> kAngle[] = {{"ANGLE", std::atan2}};

constexpr uint32_t kFirstUnary = std::size(kOperators);
constexpr uint32_t kFirstDraw = kFirstUnary + std::size(kUnaryFunctions);
constexpr uint32_t kAngleIndex = kFirstDraw + std::size(kDraws);
static_assert(kFirstUnary == kNegate && kAngleIndex == 17);

template <class Function, size_t N>
bool is_one_of(const BuiltIn<Function> (&functions)[N], uint32_t i, const void* slot)
{
    return i < N && slot == reinterpret_cast<const void*>(functions[i].function);
}

/// Whether slot `f` holds its built-in function of two, one or no arguments. Those change nothing but the random
/// generator.
inline bool is_built_in_binary(int32_t f, const void* slot)
{
    const auto i = static_cast<uint32_t>(f);
    return is_one_of(kOperators, i, slot) || is_one_of(kAngle, i - kAngleIndex, slot);
}

inline bool is_built_in_unary(int32_t f, const void* slot)
{
    return is_one_of(kUnaryFunctions, static_cast<uint32_t>(f) - kFirstUnary, slot);
}

inline bool is_built_in_draw(int32_t f, const void* slot)
{
    return is_one_of(kDraws, static_cast<uint32_t>(f) - kFirstDraw, slot);
}

} // namespace korvale::inside
