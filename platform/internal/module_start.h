#pragma once

#include <ios>

#include "platform/layer.h"

// What every source file of the library does at load: set up the standard streams and register the layer's idle
// window message. Included once by each source file; the priority places it between the two stages of frame/.
namespace korvale::inside {
namespace {

struct ModuleStart {
    std::ios_base::Init streams;
    unsigned idle_message = RegisterWindowMessageA("MwIdleMessage");
};

ModuleStart module_start __attribute__((init_priority(1000)));

} // namespace
} // namespace korvale::inside
