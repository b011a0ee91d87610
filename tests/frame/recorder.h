#pragma once

#include <string>
#include <vector>

#include "platform/layer.h"

/// A platform layer that writes down what is asked of it. It has the soname of korvale's own layer, so it can be
/// linked, preloaded or put first on the library path. Each call is one line: the function's name and what tells calls
/// apart. Where the environment names a file in KORVALE_CALLS, the lines are appended there as they come.
namespace recorder {

/// What MwInitDLL was given last.
struct Registration {
    MwEntryPoint entry = nullptr;
    MwEntryPoint raw_entry = nullptr;
    const MwDependancyNode* node = nullptr;
};

/// All calls since the start or the last `forget`.
KORVALE_API const std::vector<std::string>& calls();
KORVALE_API void forget();

KORVALE_API const Registration& registration();

/// What MwInitDLL returns, and the instance it hands to the entry point.
KORVALE_API void* handle();
KORVALE_API void* instance();

/// Has `action` run inside every call from now on, after the call is written down; null ends that.
KORVALE_API void during_calls(void (*action)());

} // namespace recorder
