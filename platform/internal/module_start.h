#pragma once

#include "platform/layer.h"

// What every source file of the library does at load: set up the standard streams and register the layer's idle
// window message. Included once by each source file; the priority places it between the two stages of frame/.
namespace korvale::inside {

/// Holds the standard streams, as <iostream> does. What it calls stands in frame/, since <ios> would be half of what a
/// small source file has to compile.
struct StandardStreams {
    StandardStreams();
    ~StandardStreams();
};

namespace {

struct ModuleStart {
    StandardStreams streams;
    unsigned idle_message = RegisterWindowMessageA("MwIdleMessage");
};

ModuleStart module_start __attribute__((init_priority(1000)));

} // namespace
} // namespace korvale::inside
