// Equation systems call functions by plain pointers, which have no place for anything to call them with. So the process
// has a fixed number of functions for each number of arguments, of which function k calls whatever slot k holds. These
// slots are the one state that the door keeps: no record and no handle is at hand where a plain pointer is called.
//
// Systems that use the same function with the same user share a slot. A slot changes only under the lock and only while
// nobody uses it, so calls read it without one: who calls has been given the pointer by the thread that took the slot.
#include "door/internal/host_functions.h"

#include <cstddef>
#include <mutex>
#include <utility>

#include "door/internal/failure.h"

namespace korvale::door {
namespace {

constexpr int32_t kSlots = 512; ///< for each number of arguments

struct Slot {
    korvale_function function;
    void* user;
    int64_t uses;
};

std::mutex lock KORVALE_MADE_AT_LOAD;
constinit Slot slots[3][kSlots] = {}; // by the number of arguments

template <size_t k>
double call_none()
{
    const Slot& slot = slots[0][k];
    return slot.function(nullptr, slot.user);
}

template <size_t k>
double call_one(double a)
{
    const Slot& slot = slots[1][k];
    return slot.function(&a, slot.user);
}

template <size_t k>
double call_two(double a, double b)
{
    const Slot& slot = slots[2][k];
    const double arguments[] = {a, b};
    return slot.function(arguments, slot.user);
}

/// The functions that call the slots.
template <class>
struct Callers;

template <size_t... k>
struct Callers<std::index_sequence<k...>> {
    static constexpr equation::NoArgFunction kNone[] = {call_none<k>...};
    static constexpr equation::UnaryFunction kOne[] = {call_one<k>...};
    static constexpr equation::BinaryFunction kTwo[] = {call_two<k>...};
};
using AllCallers = Callers<std::make_index_sequence<kSlots>>;

equation::Function caller_of(int32_t arguments, int32_t slot)
{
    equation::Function plain;
    if (arguments == 0)
        plain.none = AllCallers::kNone[slot];
    else if (arguments == 1)
        plain.one = AllCallers::kOne[slot];
    else
        plain.two = AllCallers::kTwo[slot];
    return plain;
}

/// Takes the slot that holds this already, or else a free one; -1 where there is neither.
int32_t take_slot(Slot (&places)[kSlots], korvale_function function, void* user)
{
    const std::lock_guard<std::mutex> hold(lock);
    int32_t free = -1;
    for (int32_t i = 0; i < kSlots; ++i) {
        Slot& slot = places[i];
        if (slot.uses > 0 && slot.function == function && slot.user == user) {
            slot.uses += 1;
            return i;
        }
        if (free < 0 && slot.uses == 0)
            free = i;
    }
    if (free >= 0)
        places[free] = {function, user, 1};
    return free;
}

} // namespace

HostFunction::HostFunction(int32_t arguments, korvale_function function, void* user)
    : arguments_(arguments), slot_(take_slot(slots[arguments], function, user)), plain_{}
{
    if (slot_ < 0)
        throw Refusal("function",
                      Text() << "be one of " << kSlots << " of " << counted(arguments, "argument") << " in the process",
                      "there are as many");
    plain_ = caller_of(arguments, slot_);
}

HostFunction::~HostFunction()
{
    if (slot_ < 0)
        return;
    const std::lock_guard<std::mutex> hold(lock);
    slots[arguments_][slot_].uses -= 1;
}

} // namespace korvale::door
