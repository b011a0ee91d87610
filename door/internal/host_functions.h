#pragma once

#include <utility>

#include "equation/internal/functions.h"
#include "include/korvale_c.h"

namespace korvale::door {

/// A function of a host and what it is called with, as the plain pointer that an equation system keeps.
class HostFunction {
public:
    /// Refuses where the process has no room for another one.
    HostFunction(int32_t arguments, korvale_function function, void* user);
    ~HostFunction();
    HostFunction(HostFunction&& other) noexcept
        : arguments_(other.arguments_), slot_(std::exchange(other.slot_, kNone)), plain_(other.plain_)
    {
    }
    HostFunction& operator=(HostFunction&&) = delete;

    /// Calls the function for as long as this value lives.
    equation::Function plain() const { return plain_; }

private:
    static constexpr int32_t kNone = -1;

    int32_t arguments_, slot_;
    equation::Function plain_;
};

} // namespace korvale::door
