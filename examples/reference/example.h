#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <korvale.h>
#include <korvale.hpp>

// An example that the reference shows with the entries it names, one or several between blanks. Lines of its body that
// begin with "// >" are what it prints.
struct Example {
    const char* entries;
    void (*run)();
};

inline std::vector<Example>& all_examples()
{
    static std::vector<Example> examples;
    return examples;
}

struct AddExample {
    AddExample(const char* entries, void (*run)()) { all_examples().push_back({entries, run}); }
};

#define EXAMPLE_NUMBERED(entries, number)                                                                              \
    static void example_##number();                                                                                    \
    static const AddExample add_example_##number(entries, example_##number);                                           \
    static void example_##number()
#define EXAMPLE_EXPANDED(entries, number) EXAMPLE_NUMBERED(entries, number)
#define EXAMPLE(entries) EXAMPLE_EXPANDED(entries, __COUNTER__)

// Releases what a record for borders holds, as the example of BORDERInitialize does.
inline void release(BORDERStatus& s)
{
    for (DATAstruct* array :
         {s.path, s.output, s.flat, s.velocity, s.direction, s.line, s.dead, s.length, s.rate, s.merge}) {
        DATADispose(array);
        std::free(array);
    }
}
