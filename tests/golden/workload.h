#pragma once

#include <cstdint>
#include <vector>

#include "tests/golden/hash.h"

namespace korvale::test {

/// Calls of the library whose results are the same everywhere, all of them made by plain arithmetic.
struct Workload {
    const char* name;
    int rounds;      ///< that lead to the number
    uint64_t number; ///< pinned: it never changes
    int calls;       ///< in a round, at the least; a call over many rows or outlines counts each
    void (*run)(int rounds, Hash& hash);
};

/// The workloads of the program, in no order.
inline std::vector<Workload>& workloads()
{
    static std::vector<Workload> all;
    return all;
}

struct AddWorkload {
    explicit AddWorkload(const Workload& added) { workloads().push_back(added); }
};

/// Defines a workload. Its body follows: it makes `rounds` rounds and adds all their results to `hash`.
#define WORKLOAD(name, rounds_, number_, calls_)                                                                       \
    static void run_##name(int, Hash&);                                                                                \
    static const AddWorkload add_##name(Workload{#name, rounds_, number_, calls_, run_##name});                        \
    static void run_##name(int rounds, Hash& hash)

} // namespace korvale::test
