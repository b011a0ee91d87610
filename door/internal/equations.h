#pragma once

#include "door/internal/heap.h"
#include "door/internal/host_functions.h"
#include "equation/system.h"

namespace korvale::door {

/// A function that equations of a system call, and what is called with its user at the end.
struct Registration {
    HostFunction function;
    void* user;
    void (*release)(void* user);
};

} // namespace korvale::door

/// A system with what its functions need.
struct korvale_equations {
    EquationSystem record = {};
    korvale::door::Vector<korvale::door::Registration> functions;
    bool has_generator = false; ///< of its own, for RAND and GAUSS
    uint32_t generator = 0;     ///< its state
    bool is_stopped = false;    ///< by a function of the host
    bool ran_in_blocks = false; ///< the last call over columns

    korvale_equations();
    ~korvale_equations();
    korvale_equations(const korvale_equations&) = delete;
    korvale_equations& operator=(const korvale_equations&) = delete;
};
