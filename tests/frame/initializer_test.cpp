// The initialiser's stages, its refusals and its guard, called directly in a program that is linked with the library
// and the recording layer.
#include <cstdint>
#include <new>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/frame.h"
#include "tests/frame/recorder.h"

namespace korvale::test {
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char kConstructorRefused[] = "MwApplicationBugCheck *** Called constructor of DLL korvale more then once !!! ***";
const char kDestructorRefused[] = "MwApplicationBugCheck *** Called destructor of DLL korvale more then once !!! ***";

/// Room for an initialiser whose constructor and destructor are called by hand.
class Room {
public:
    void construct() { initializer_ = new (&bytes_) _Initializerkorvale; }
    void destruct()
    {
        initializer_ = reinterpret_cast<_Initializerkorvale*>(&bytes_);
        initializer_->~_Initializerkorvale();
    }

private:
    alignas(_Initializerkorvale) unsigned char bytes_[sizeof(_Initializerkorvale)];
    _Initializerkorvale* initializer_ = nullptr;
};

/// Each test starts and ends in the state of a loaded library.
class Initializer : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(_Initializerkorvale::ref, 2);
        ASSERT_EQ(_Initializerkorvale::infunc, 0);
        recorder::forget();
    }
    void TearDown() override
    {
        recorder::during_calls(nullptr);
        _Initializerkorvale::ref = 2;
        _Initializerkorvale::infunc = 0;
        _Initializerkorvale::handle = __ImageBasePtr = recorder::handle();
        _korvale_DllMain(recorder::instance(), 1, nullptr);
    }

    Room room;
};

TEST_F(Initializer, FirstConstructionRegisters)
{
    _Initializerkorvale::ref = 0;
    _Initializerkorvale::handle = __ImageBasePtr = nullptr;
    room.construct();
    EXPECT_THAT(recorder::calls(),
                ElementsAre("MwInitDLL korvale", "DisableThreadLibraryCalls instance", "entry point returns 1"));
    EXPECT_EQ(_Initializerkorvale::ref, 1);
    EXPECT_EQ(_Initializerkorvale::infunc, 0);
    EXPECT_EQ(_Initializerkorvale::handle, recorder::handle());
    EXPECT_EQ(__ImageBasePtr, recorder::handle());
}

TEST_F(Initializer, SecondConstructionAnnouncesTheEndOfConstruction)
{
    _Initializerkorvale::ref = 1;
    room.construct();
    EXPECT_THAT(recorder::calls(), ElementsAre("MwDllInPostConstruct handle"));
    EXPECT_EQ(_Initializerkorvale::ref, 2);
    EXPECT_EQ(_Initializerkorvale::infunc, 0);
}

TEST_F(Initializer, ThirdConstructionIsRefused)
{
    room.construct();
    EXPECT_THAT(recorder::calls(), ElementsAre(kConstructorRefused));
    EXPECT_EQ(_Initializerkorvale::ref, 2);
    EXPECT_EQ(_Initializerkorvale::infunc, 0);
    EXPECT_EQ(_Initializerkorvale::handle, recorder::handle());
}

TEST_F(Initializer, ConstructionInAnUnknownStageIsRefused)
{
    for (const int stage : {-1, 3, INT32_MIN, INT32_MAX}) {
        recorder::forget();
        _Initializerkorvale::ref = stage;
        room.construct();
        EXPECT_THAT(recorder::calls(), ElementsAre(kConstructorRefused));
        EXPECT_EQ(_Initializerkorvale::ref, stage);
    }
}

TEST_F(Initializer, FirstDestructionAnnouncesItsStart)
{
    room.destruct();
    EXPECT_THAT(recorder::calls(), ElementsAre("MwDllInPreDestruct handle"));
    EXPECT_EQ(_Initializerkorvale::ref, 1);
    EXPECT_EQ(_Initializerkorvale::infunc, 0);
}

TEST_F(Initializer, SecondDestructionAnnouncesItsEnd)
{
    _Initializerkorvale::ref = 1;
    room.destruct();
    EXPECT_THAT(recorder::calls(), ElementsAre("MwDllInPostDestruct handle"));
    EXPECT_EQ(_Initializerkorvale::ref, 0);
    EXPECT_EQ(_Initializerkorvale::infunc, 0);
}

TEST_F(Initializer, ThirdDestructionIsRefused)
{
    _Initializerkorvale::ref = 0;
    room.destruct();
    EXPECT_THAT(recorder::calls(), ElementsAre(kDestructorRefused));
    EXPECT_EQ(_Initializerkorvale::ref, 0);
    EXPECT_EQ(_Initializerkorvale::infunc, 0);
}

TEST_F(Initializer, DestructionInAnUnknownStageIsRefused)
{
    for (const int stage : {-1, 3, INT32_MIN, INT32_MAX}) {
        recorder::forget();
        _Initializerkorvale::ref = stage;
        room.destruct();
        EXPECT_THAT(recorder::calls(), ElementsAre(kDestructorRefused));
        EXPECT_EQ(_Initializerkorvale::ref, stage);
    }
}

// --- The guard -------------------------------------------------------------------------------------------------------

TEST_F(Initializer, IsIgnoredWhileAnotherRuns)
{
    _Initializerkorvale::infunc = 1;
    for (const int stage : {0, 1, 2}) {
        _Initializerkorvale::ref = stage;
        room.construct();
        room.destruct();
        EXPECT_EQ(_Initializerkorvale::ref, stage);
        EXPECT_EQ(_Initializerkorvale::infunc, 1);
    }
    EXPECT_THAT(recorder::calls(), IsEmpty());
}

int guard_during_call = 0;

void construct_and_destruct_again()
{
    guard_during_call = _Initializerkorvale::infunc;
    Room other;
    other.construct();
    other.destruct();
}

TEST_F(Initializer, LayerThatCallsBackIsIgnored)
{
    recorder::during_calls(construct_and_destruct_again);

    _Initializerkorvale::ref = 0;
    room.construct();
    EXPECT_EQ(_Initializerkorvale::ref, 1);
    room.construct();
    EXPECT_EQ(_Initializerkorvale::ref, 2);
    room.construct();
    EXPECT_EQ(_Initializerkorvale::ref, 2);
    room.destruct();
    EXPECT_EQ(_Initializerkorvale::ref, 1);
    room.destruct();
    EXPECT_EQ(_Initializerkorvale::ref, 0);

    EXPECT_EQ(guard_during_call, 1);
    EXPECT_EQ(_Initializerkorvale::infunc, 0);
    EXPECT_THAT(recorder::calls(),
                ElementsAre("MwInitDLL korvale", "DisableThreadLibraryCalls instance", "entry point returns 1",
                            "MwDllInPostConstruct handle", kConstructorRefused, "MwDllInPreDestruct handle",
                            "MwDllInPostDestruct handle"));
}

void throw_from_the_layer()
{
    throw std::runtime_error("the layer gave up");
}

TEST_F(Initializer, ClearsItsGuardWhenTheLayerThrowsInAConstructor)
{
    recorder::during_calls(throw_from_the_layer);
    const int stages[][2] = {{0, 1}, {1, 2}, {2, 2}}; // before, after
    for (const auto& [before, after] : stages) {
        _Initializerkorvale::ref = before;
        EXPECT_THROW(room.construct(), std::runtime_error);
        EXPECT_EQ(_Initializerkorvale::infunc, 0);
        EXPECT_EQ(_Initializerkorvale::ref, after);
    }
}

TEST_F(Initializer, ClearsItsGuardWhenTheLayerThrowsInADestructor)
{
    recorder::during_calls(throw_from_the_layer);
    const int stages[][2] = {{2, 1}, {1, 0}, {0, 0}}; // before, after
    for (const auto& [before, after] : stages) {
        _Initializerkorvale::ref = before;
        EXPECT_THROW(room.destruct(), std::runtime_error);
        EXPECT_EQ(_Initializerkorvale::infunc, 0);
        EXPECT_EQ(_Initializerkorvale::ref, after);
    }
}

// --- The single operations -------------------------------------------------------------------------------------------

TEST_F(Initializer, PreConstructStoresTheHandleTwice)
{
    _Initializerkorvale::handle = __ImageBasePtr = nullptr;
    _Initializerkorvale::pre_construct();
    EXPECT_EQ(_Initializerkorvale::handle, recorder::handle());
    EXPECT_EQ(__ImageBasePtr, recorder::handle());
    EXPECT_EQ(recorder::registration().entry, Mw___korvale_wrapDllMain);
    EXPECT_EQ(recorder::registration().raw_entry, nullptr);
    EXPECT_EQ(recorder::registration().node, &Mw___korvale_DependancyNode);
    EXPECT_EQ(_Initializerkorvale::ref, 2);
}

int no_entry_point(void*, unsigned, void*)
{
    return 0;
}

TEST_F(Initializer, PreConstructHandsOverTheRawEntryPointAsItIsThen)
{
    _pRawDllMain = no_entry_point;
    _Initializerkorvale::pre_construct();
    _pRawDllMain = nullptr;
    EXPECT_EQ(recorder::registration().raw_entry, no_entry_point);
}

TEST_F(Initializer, PostDestructDoesNothingBeforeTheLastStage)
{
    for (const int stage : {2, 1, -1}) {
        _Initializerkorvale::ref = stage;
        _Initializerkorvale::post_destruct();
    }
    EXPECT_THAT(recorder::calls(), IsEmpty());
    _Initializerkorvale::ref = 0;
    _Initializerkorvale::post_destruct();
    EXPECT_THAT(recorder::calls(), ElementsAre("MwDllInPostDestruct handle"));
}

TEST_F(Initializer, ConstructAndDestructAnnounceInAnyStage)
{
    _Initializerkorvale::ref = 0;
    _Initializerkorvale::construct();
    _Initializerkorvale::destruct();
    EXPECT_THAT(recorder::calls(), ElementsAre("MwDllInPostConstruct handle", "MwDllInPreDestruct handle"));
    EXPECT_EQ(_Initializerkorvale::ref, 0);
}

// --- The entry point -------------------------------------------------------------------------------------------------

void* stored_instance()
{
    return *static_cast<void**>(GethKorvaleInstance());
}

class EntryPoint : public Initializer {};

TEST_F(EntryPoint, AttachStoresTheInstanceAndEndsThreadNotifications)
{
    int other;
    EXPECT_EQ(_korvale_DllMain(&other, 1, nullptr), 1);
    EXPECT_EQ(stored_instance(), &other);
    EXPECT_EQ(_korvale_DllMain(recorder::instance(), 1, &other), 1);
    EXPECT_EQ(stored_instance(), recorder::instance());
    EXPECT_THAT(recorder::calls(),
                ElementsAre("DisableThreadLibraryCalls something else", "DisableThreadLibraryCalls instance"));
}

TEST_F(EntryPoint, OtherReasonsReturnOneAndChangeNothing)
{
    int other;
    for (const unsigned reason : {0u, 2u, 3u, 4u, 0xFFFFFFFFu}) {
        EXPECT_EQ(_korvale_DllMain(&other, reason, nullptr), 1);
        EXPECT_EQ(Mw___korvale_wrapDllMain(&other, reason, nullptr), 1);
        EXPECT_EQ(stored_instance(), recorder::instance());
    }
    EXPECT_THAT(recorder::calls(), IsEmpty());
}

TEST_F(EntryPoint, WrapperForwards)
{
    int other;
    EXPECT_EQ(Mw___korvale_wrapDllMain(&other, 1, nullptr), 1);
    EXPECT_EQ(stored_instance(), &other);
    EXPECT_THAT(recorder::calls(), ElementsAre("DisableThreadLibraryCalls something else"));
}

TEST_F(EntryPoint, InstanceAndReferenceCountKeepTheirAddresses)
{
    EXPECT_EQ(GethKorvaleInstance(), GethKorvaleInstance());
    EXPECT_EQ(GetKorvaleRefCount(), GetKorvaleRefCount());
    EXPECT_NE(GethKorvaleInstance(), GetKorvaleRefCount());
    EXPECT_EQ(*static_cast<int32_t*>(GetKorvaleRefCount()), 0);
}

} // namespace

} // namespace korvale::test
