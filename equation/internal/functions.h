#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "data/internal/lists.h"
#include "equation/functions.h"
#include "equation/internal/names.h"

namespace korvale::inside {

/// What a parser operator stands for: the indices the first built-in functions are registered under.
enum : int32_t { kAdd = 0, kSubtract = 1, kMultiply = 2, kDivide = 3, kPower = 4, kNegate = 5, kSquareRoot = 9 };

using BinaryFunction = double (*)(double, double);
using UnaryFunction = double (*)(double);
using NoArgFunction = double (*)();

/// Functions that can be looked up: those counted and present in all arrays.
int32_t function_count(const EquationSystem& es);

/// The lowest index of the function of that name, or -1.
int32_t find_function(const EquationSystem& es, Word name);

/// The functions an equation can mean by a name: the lowest index below `count` for each number
/// of arguments, or -1.
struct NamedFunctions {
    int32_t unary = -1;
    int32_t no_arg = -1;
    int32_t binary = -1;
};
NamedFunctions find_named_functions(const EquationSystem& es, int32_t count, const NamePattern& name);

/// What a function slot points to; null for an index that is no function's.
inline void* function_at(const EquationSystem& es, int32_t f)
{
    return f >= 0 && f < usable_count(es.funcs, DATA_TYPE_POINTER) ? es.funcs->pvals[f] : nullptr;
}

/// A call through the registry, 0.0 where there is no function.
inline double call(const EquationSystem& es, int32_t f, double x)
{
    const auto function = reinterpret_cast<UnaryFunction>(function_at(es, f));
    return function == nullptr ? 0.0 : function(x);
}

inline double call(const EquationSystem& es, int32_t f, double a, double b)
{
    const auto function = reinterpret_cast<BinaryFunction>(function_at(es, f));
    return function == nullptr ? 0.0 : function(a, b);
}

/// A call through the registry, 0.0 where there is no function or one with arguments.
double call_no_arg(const EquationSystem& es, int32_t f);

/// Registers the eighteen built-in functions in order.
void register_built_ins(EquationSystem& es);

// The built-in functions where they stand in the registry: ADD to POWER, NEGATE to ATAN, RAND and GAUSS, ANGLE.
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
