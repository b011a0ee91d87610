// Real loads and unloads of the library, seen from the platform layer: inside this process, and in small host programs
// that end in different ways.
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/frame/recorder.h"

namespace korvale::test {
using testing::IsEmpty;

namespace {

// KORVALE_LIBRARY, RECORDER_FOLDER, HOSTS and SOURCE_COUNT come from the build.
using Lines = std::vector<std::string>;

const Lines kUnload = {"MwDllInPreDestruct handle", "MwDllInPostDestruct handle"};

Lines load_lines()
{
    Lines lines = {"MwInitDLL korvale", "DisableThreadLibraryCalls instance", "entry point returns 1"};
    lines.insert(lines.end(), SOURCE_COUNT, "RegisterWindowMessageA MwIdleMessage");
    lines.push_back("MwDllInPostConstruct handle");
    return lines;
}

Lines load_and_unload_lines()
{
    Lines lines = load_lines();
    lines.insert(lines.end(), kUnload.begin(), kUnload.end());
    return lines;
}

/// The library, loaded for the life of the object.
class Loaded {
public:
    Loaded() : library_(dlopen(KORVALE_LIBRARY, RTLD_NOW | RTLD_LOCAL))
    {
        if (library_ == nullptr)
            ADD_FAILURE() << dlerror();
    }
    ~Loaded() { unload(); }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

    void unload()
    {
        if (library_ != nullptr)
            dlclose(library_);
        library_ = nullptr;
    }

    template <typename T>
    T* find(const char* name) const
    {
        void* const address = dlsym(library_, name);
        EXPECT_NE(address, nullptr) << name;
        return reinterpret_cast<T*>(address);
    }

private:
    void* library_;
};

bool is_loaded()
{
    void* const library = dlopen(KORVALE_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr)
        dlclose(library);
    return library != nullptr;
}

class Load : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(is_loaded());
        recorder::forget();
    }
};

TEST_F(Load, RegistersThenInitialisesEveryModuleThenAnnouncesTheEnd)
{
    const Loaded library;
    EXPECT_EQ(recorder::calls(), load_lines());
}

TEST_F(Load, CloseAnnouncesTheStartAndTheEndOfDestructionOnceEach)
{
    Loaded library;
    recorder::forget();
    library.unload();
    EXPECT_EQ(recorder::calls(), kUnload);
}

TEST_F(Load, CloseReallyUnloads)
{
    Loaded library;
    EXPECT_TRUE(is_loaded());
    library.unload();
    EXPECT_FALSE(is_loaded());
}

TEST_F(Load, EveryFurtherLoadStartsAfresh)
{
    for (int round = 0; round < 3; ++round) {
        recorder::forget();
        Loaded library;
        EXPECT_EQ(*library.find<int>("_ZN19_Initializerkorvale3refE"), 2);
        library.unload();
        EXPECT_EQ(recorder::calls(), load_and_unload_lines()) << "round " << round;
    }
}

TEST_F(Load, OpeningALoadedLibraryRegistersNothing)
{
    const Loaded library;
    recorder::forget();
    {
        const Loaded again;
    }
    EXPECT_THAT(recorder::calls(), IsEmpty());
}

TEST_F(Load, HandsOverItsEntryPointsAndItsNode)
{
    const Loaded library;
    EXPECT_EQ(recorder::registration().entry, library.find<int(void*, unsigned, void*)>("Mw___korvale_wrapDllMain"));
    EXPECT_EQ(recorder::registration().raw_entry, nullptr);
    EXPECT_EQ(recorder::registration().node, library.find<MwDependancyNode>("Mw___korvale_DependancyNode"));
}

TEST_F(Load, NodeNamesFiveLibrariesInOrderWithTheLayersNodes)
{
    const Loaded library;
    const MwDependancyNode& node = *library.find<MwDependancyNode>("Mw___korvale_DependancyNode");
    EXPECT_STREQ(node.libraries[0].name, "gdiuser32");
    EXPECT_STREQ(node.libraries[1].name, "advapi32");
    EXPECT_STREQ(node.libraries[2].name, "kernel32");
    EXPECT_STREQ(node.libraries[3].name, "stub");
    EXPECT_STREQ(node.libraries[4].name, "msvcrt");
    EXPECT_EQ(node.libraries[0].node, nullptr);
    EXPECT_EQ(node.libraries[1].node, nullptr);
    EXPECT_EQ(node.libraries[2].node, dlsym(RTLD_DEFAULT, "Mw___kernel32_DependancyNode"));
    EXPECT_EQ(node.libraries[3].node, nullptr);
    EXPECT_EQ(node.libraries[4].node, nullptr);
}

TEST_F(Load, LeavesItsStateAtTheSecondStage)
{
    const Loaded library;
    EXPECT_EQ(*library.find<int>("_ZN19_Initializerkorvale3refE"), 2);
    EXPECT_EQ(*library.find<int>("_ZN19_Initializerkorvale6infuncE"), 0);
    EXPECT_EQ(*library.find<void*>("_ZN19_Initializerkorvale6handleE"), recorder::handle());
    EXPECT_EQ(*library.find<void*>("__ImageBasePtr"), recorder::handle());
    EXPECT_EQ(*library.find<MwEntryPoint>("_pRawDllMain"), nullptr);
}

TEST_F(Load, KeepsTheInstanceThatTheLayerPassed)
{
    const Loaded library;
    auto* const address = library.find<void*()>("GethKorvaleInstance");
    EXPECT_EQ(*static_cast<void**>(address()), recorder::instance());
}

TEST_F(Load, ReferenceCountReadsZero)
{
    const Loaded library;
    auto* const address = library.find<void*()>("GetKorvaleRefCount");
    ASSERT_NE(address(), nullptr);
    EXPECT_EQ(*static_cast<int32_t*>(address()), 0);
    {
        const Loaded again;
        EXPECT_EQ(*static_cast<int32_t*>(address()), 0);
    }
}

// --- Host programs ---------------------------------------------------------------------------------------------------

/// What the layer was asked while a host program ran; `environment` is prefixed to the command.
Lines calls_of(const std::string& environment, const std::string& host)
{
    char path[] = "/tmp/korvale_calls_XXXXXX";
    const int file = mkstemp(path);
    if (file < 0)
        return {"no temporary file"};
    close(file);
    const std::string command = "KORVALE_CALLS=" + std::string(path) + " " + environment + " " HOSTS "/" + host;
    const int status = std::system(command.c_str());
    EXPECT_EQ(status, 0) << command;
    Lines lines;
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    unlink(path);
    return lines;
}

// A preloaded library comes before the address sanitizer's runtime, which would refuse to start.
const char kLayerPreloaded[] =
    "ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD=" RECORDER_FOLDER "/libkorvale-platform.so.1";
const char kLayerOnPath[] = "LD_LIBRARY_PATH=" RECORDER_FOLDER;

TEST(Host, LinkedAtStartLoadsBeforeMainAndUnloadsAtExit)
{
    EXPECT_EQ(calls_of("", "linked_host"), load_and_unload_lines());
}

TEST(Host, ThatEndsWithoutClosingStillUnloads)
{
    EXPECT_EQ(calls_of(kLayerOnPath, "leaving_host " KORVALE_LIBRARY), load_and_unload_lines());
}

TEST(Host, MayPreloadItsLayer)
{
    EXPECT_EQ(calls_of(kLayerPreloaded, "plain_host " KORVALE_LIBRARY), load_and_unload_lines());
}

TEST(Host, MayPutItsLayerOnTheLibraryPath)
{
    EXPECT_EQ(calls_of(kLayerOnPath, "plain_host " KORVALE_LIBRARY), load_and_unload_lines());
}

TEST(Host, MayExportTheLayerItself)
{
    EXPECT_EQ(calls_of("", "exporting_host " KORVALE_LIBRARY), load_and_unload_lines());
}

TEST(Host, WithoutALayerOfItsOwnGetsTheThinOne)
{
    EXPECT_THAT(calls_of("", "plain_host " KORVALE_LIBRARY), IsEmpty());
}

} // namespace

} // namespace korvale::test
