// What outlives an unloaded library: the thin layer's state belongs to the process.
#include <dlfcn.h>

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

template <typename T>
T* find(void* library, const char* name)
{
    return reinterpret_cast<T*>(dlsym(library, name));
}

TEST(ThinLayer, KeepsItsGeneratorAndItsMessagesAcrossLoads)
{
    void* library = dlopen(KORVALE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    find<void(unsigned)>(library, "Mwsrand")(1);
    EXPECT_EQ(find<int()>(library, "Mwrand")(), 41);
    const unsigned message = find<unsigned(const char*)>(library, "RegisterWindowMessageA")("kept");
    dlclose(library);

    ASSERT_EQ(dlopen(KORVALE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    library = dlopen(KORVALE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(find<int()>(library, "Mwrand")(), 18467);
    EXPECT_EQ(find<unsigned(const char*)>(library, "RegisterWindowMessageA")("kept"), message);
    dlclose(library);
}

} // namespace
} // namespace korvale::test
