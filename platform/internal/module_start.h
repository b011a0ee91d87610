#pragma once

#include "platform/internal/namespaces.h"
#include "platform/layer.h"

// What every source file of the library does at load: set up the standard streams and register the layer's idle window
// message. Included once by each source file.

/// Marks a static object that is made at load. Its priority lies between the two stages of frame/: the first has 101,
/// and the second has none, which comes last.
#define KORVALE_MADE_AT_LOAD __attribute__((init_priority(1000)))

namespace korvale::platform {

/// Holds the standard streams, as <iostream> does. Its functions are defined in frame/: including <ios> here would be
/// half of what a small source file has to compile.
struct StandardStreams {
    StandardStreams();
    ~StandardStreams();
};

namespace {

struct ModuleStart {
    StandardStreams streams;
    unsigned idle_message = RegisterWindowMessageA("MwIdleMessage");
};

ModuleStart module_start KORVALE_MADE_AT_LOAD;

} // namespace
} // namespace korvale::platform
