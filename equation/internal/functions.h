#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "equation/functions.h"
#include "equation/system.h"
#include "platform/internal/bit_cast.h"

namespace korvale::equation {

/// Built-in functions by the index they are registered under: the parser's operators and some others.
enum : int32_t {
    kAdd = 0,
    kSubtract = 1,
    kMultiply = 2,
    kDivide = 3,
    kPower = 4,
    kNegate = 5,
    kSquareRoot = 9,
    kRand = 15,
    kGauss = 16
};

using BinaryFunction = double (*)(double, double);
using UnaryFunction = double (*)(double);
using NoArgFunction = double (*)();

/// A call of what a function slot points to, 0.0 where that is nothing.
inline double call(void* slot)
{
    return slot == nullptr ? 0.0 : reinterpret_cast<NoArgFunction>(slot)();
}

inline double call(void* slot, double x)
{
    return slot == nullptr ? 0.0 : reinterpret_cast<UnaryFunction>(slot)(x);
}

inline double call(void* slot, double a, double b)
{
    return slot == nullptr ? 0.0 : reinterpret_cast<BinaryFunction>(slot)(a, b);
}

/// About a standard normal value from the sum of four draws in [0, 1].
double normal_of(double sum);

/// Registers the eighteen built-in functions in order.
void register_built_ins(EquationSystem& es);

/// A function as the registry holds it: called by its number of arguments, compared as a pointer.
union Function {
    BinaryFunction two;
    UnaryFunction one;
    NoArgFunction none;

    void* slot() const { return bit_cast<void*>(*this); }
};

struct BuiltIn {
    const char* name;
    int32_t nargs;
    Function function;
};

/// The built-in functions where they stand in the registry. They change nothing but the random generator: `Mwrand`, a
/// host's own one too, calls nothing of the library.
inline constexpr BuiltIn kBuiltIns[] = {{"ADD", 2, {.two = EqFuncAdd}},
                                        {"SUBTRACT", 2, {.two = EqFuncSubtract}},
                                        {"MULTIPLY", 2, {.two = EqFuncMultiply}},
                                        {"DIVIDE", 2, {.two = EqFuncDivide}},
                                        {"POWER", 2, {.two = std::pow}},
                                        {"NEGATE", 1, {.one = EqFuncNegate}},
                                        {"SIN", 1, {.one = std::sin}},
                                        {"COS", 1, {.one = std::cos}},
                                        {"TAN", 1, {.one = std::tan}},
                                        {"SQRT", 1, {.one = std::sqrt}},
                                        {"EXP", 1, {.one = std::exp}},
                                        {"LOG", 1, {.one = std::log}},
                                        {"ASIN", 1, {.one = std::asin}},
                                        {"ACOS", 1, {.one = std::acos}},
                                        {"ATAN", 1, {.one = std::atan}},
                                        {"RAND", 0, {.none = EqFuncRand}},
                                        {"GAUSS", 0, {.none = gauss}},
                                        {"ANGLE", 2, {.two = std::atan2}}};
constexpr int32_t kBuiltInCount = std::size(kBuiltIns);
static_assert(kBuiltInCount == 18);

/// Whether slot `f` holds its built-in function.
inline bool is_built_in(int32_t f, const void* slot)
{
    const auto i = static_cast<uint32_t>(f);
    return i < kBuiltInCount && slot == kBuiltIns[i].function.slot();
}

} // namespace korvale::equation
