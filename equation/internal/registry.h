#pragma once

#include <cstddef>
#include <cstdint>

#include "data/internal/buffers.h"
#include "equation/system.h"

// What the sources of the equation system ask of its function registry and of names in general.
namespace korvale::inside {

constexpr int32_t kNameBytes = 13;
constexpr size_t kLongestName = 12;

/// What a parser operator stands for: the indices the first built-in functions are registered under.
enum : int32_t { kAdd = 0, kSubtract = 1, kMultiply = 2, kDivide = 3, kPower = 4, kNegate = 5 };

using BinaryFunction = double (*)(double, double);
using UnaryFunction = double (*)(double);
using NoArgFunction = double (*)();

/// Elements of kind `type` that an array really has: 0 for a null record or buffer.
inline int64_t room(const DATAstruct* d, int32_t type)
{
    return d == nullptr || buffer_of(*d, type) == nullptr ? 0 : room(*d);
}

/// Changes an array to count * dim elements and clears those it gains; false where it has fewer then.
bool grow_cleared(DATAstruct& d);

/// Elements of a list of numbers or pointers that are both counted and really there, whatever the record looks like.
int32_t careful_length(const DATAstruct* d, int32_t type);

/// `careful_length`, at once for a list that the library allocated.
inline int32_t length(const DATAstruct* d, int32_t type)
{
    const bool is_common = d != nullptr && d->alloc_dim == 1 && d->alloc_count >= 0 && buffer_of(*d, type) != nullptr &&
                           static_cast<uint32_t>(d->count) <= static_cast<uint32_t>(d->alloc_count);
    return is_common ? d->count : careful_length(d, type);
}

inline bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The lowest index below `count` at which a 13-byte slot holds the `length` characters from `word` on, or -1.
int32_t find_name(const DATAstruct* names, int32_t count, const char* word, size_t length);

/// Functions that can be looked up: those counted and present in all arrays.
int32_t function_count(const EquationSystem& es);

/// The lowest index of the function of that name, or -1.
int32_t find_function(const EquationSystem& es, const char* word, size_t length);

/// The functions an equation can mean by a name: the lowest index for each number of arguments, or -1.
struct NamedFunctions {
    int32_t unary = -1;
    int32_t no_arg = -1;
    int32_t binary = -1;
};
NamedFunctions find_named_functions(const EquationSystem& es, const char* word, size_t length);

/// What a function slot points to; null for an index that is no function's.
inline void* function_at(const EquationSystem& es, int32_t f)
{
    return f >= 0 && f < length(es.funcs, DATA_TYPE_POINTER) ? es.funcs->pvals[f] : nullptr;
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

/// Registers a function of `nargs` arguments; 1 or -1.
int register_function(EquationSystem* es, const char* name, int32_t nargs, void* function);

/// Registers the eighteen built-in functions in order.
void register_built_ins(EquationSystem& es);

} // namespace korvale::inside
