// What the library remembers of cells that nobody declassified goes with it. Opens the library itself.
#include <cstdlib>

#include <dlfcn.h>

#include <gtest/gtest.h>

#include "ray/grid.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

template <class Function>
Function* find(void* library, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(library, name));
}

/// Loads the library, has it make cells, releases them by hand, and unloads it.
void load_classify_unload()
{
    void* const library = dlopen(KORVALE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto initialize = find<int(RayStatus*)>(library, "_Z14ray_initializeP9RayStatus");
    const auto divide = find<void(RayStatus*)>(library, "_Z17ray_make_sub_bboxP9RayStatus");
    ASSERT_TRUE(initialize != nullptr && divide != nullptr);
    RayStatus s;
    ASSERT_EQ(initialize(&s), 1);
    divide(&s);
    ASSERT_NE(s.cells, nullptr);
    dlclose(library);
    ASSERT_EQ(dlopen(KORVALE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    for (int c = 0; c < 64; ++c)
        std::free(s.cells[c].dvals);
    std::free(s.cells);
    std::free(s.bbox.dvals);
}

TEST(RayCells, LeaveNothingBehindInAnUnloadedLibrary)
{
    NEEDS_HEAP_COUNTS();
    load_classify_unload(); // what the loader and the platform layer keep, they keep once
    const HeapWatch heap;
    load_classify_unload();
    EXPECT_EQ(heap.live_blocks(), 0);
}

} // namespace
} // namespace korvale::test
