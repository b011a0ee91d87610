#pragma once

#include "export.h"

/// What korvale asks of the system around it. libkorvale-platform.so.1 is a thin answer for systems without a
/// compatibility layer; a host with its own layer replaces it by exporting the same names.
extern "C" {

/// The entry point a library registers: instance, reason (1 is process attach), reserved.
typedef int (*MwEntryPoint)(void* instance, unsigned reason, void* reserved);

/// A library's place in the layer's dependency list: the libraries it needs, each with its own node (null where the
/// layer has none).
struct MwDependancyNode {
    struct {
        const char* name;
        const MwDependancyNode* node;
    } libraries[5]; ///< in the order in which the library asks for them
};

/// Registers a library and calls `entry` with reason 1 and the handle as its instance. Returns the handle.
KORVALE_API void* MwInitDLL(const char* name, MwEntryPoint entry, MwEntryPoint raw_entry, const MwDependancyNode* node);

/// Announces the end of the library's static construction.
KORVALE_API void MwDllInPostConstruct(void* handle);

/// Announces the start of the library's static destruction.
KORVALE_API void MwDllInPreDestruct(void* handle);

/// Announces the end of the library's static destruction; the handle is invalid afterwards.
KORVALE_API void MwDllInPostDestruct(void* handle);

/// Reports a fatal programming error.
KORVALE_API void MwApplicationBugCheck(const char* message);

/// Switches thread attach and detach notifications off. Returns 1.
KORVALE_API int DisableThreadLibraryCalls(void* instance);

/// The identifier of a window message, 0xC000 to 0xFFFF, the same for the same name; 0 for a null name, when none is
/// left, and when the heap is exhausted.
KORVALE_API unsigned RegisterWindowMessageA(const char* name);

/// Sets the state of the process's random generator.
KORVALE_API void Mwsrand(unsigned seed);

/// The next number of the process's random generator, 0 to 32767. A host's own calls nothing of korvale.
KORVALE_API int Mwrand();

/// Writes the numbers that the next `count` calls of `Mwrand` would give and returns 1, where `rand` and `srand` are
/// this layer's `Mwrand` and `Mwsrand`; returns 0 and draws nothing where a host stands in for either.
///
/// The thin layer's alone: no other layer needs it, and without it numbers are drawn one by one.
KORVALE_API int korvale_draw_many(int (*rand)(), void (*srand)(unsigned), int* numbers, int count);
}
