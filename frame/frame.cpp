// Loading in two stages. Two objects of one class frame all other static objects of the library: the one at the end of
// this file is made before them, the one in last.cpp after them. A constructor moves `ref` one step up and a destructor
// one step down; each step tells the layer of one stage.
//
// All state is constant-initialised: the layer may call the entry point while the library registers itself.
#include "frame/frame.h"

#include <cstdint>
#include <ios>
#include <new>

int _Initializerkorvale::ref = 0;
int _Initializerkorvale::infunc = 0;
void* _Initializerkorvale::handle = nullptr;

void* __ImageBasePtr = nullptr;
MwEntryPoint _pRawDllMain = nullptr;

// The layer's own libraries; each node is null where the layer has no such library.
extern "C" {
extern const MwDependancyNode Mw___gdiuser32_DependancyNode __attribute__((weak));
extern const MwDependancyNode Mw___advapi32_DependancyNode __attribute__((weak));
extern const MwDependancyNode Mw___kernel32_DependancyNode __attribute__((weak));
extern const MwDependancyNode Mw___stub_DependancyNode __attribute__((weak));
extern const MwDependancyNode Mw___msvcrt_DependancyNode __attribute__((weak));
}

const MwDependancyNode Mw___korvale_DependancyNode = {{{"gdiuser32", &Mw___gdiuser32_DependancyNode},
                                                       {"advapi32", &Mw___advapi32_DependancyNode},
                                                       {"kernel32", &Mw___kernel32_DependancyNode},
                                                       {"stub", &Mw___stub_DependancyNode},
                                                       {"msvcrt", &Mw___msvcrt_DependancyNode}}};

namespace korvale::frame {
namespace {

constexpr unsigned kProcessAttach = 1;

void* instance_handle = nullptr;
int32_t reference_count = 0;

/// Marks a constructor or destructor of the initialiser as running, also when it is left by an exception.
struct Running {
    Running() { _Initializerkorvale::infunc = 1; }
    ~Running() { _Initializerkorvale::infunc = 0; }
};

} // namespace
} // namespace korvale::frame

using namespace korvale::frame;

korvale::platform::StandardStreams::StandardStreams()
{
    static_assert(sizeof(StandardStreams) == sizeof(std::ios_base::Init));
    new (this) std::ios_base::Init;
}

korvale::platform::StandardStreams::~StandardStreams()
{
    reinterpret_cast<std::ios_base::Init*>(this)->~Init();
}

_Initializerkorvale::_Initializerkorvale()
{
    if (infunc == 1)
        return;
    const Running running;
    switch (ref) {
    case 0:
        ref = 1;
        pre_construct();
        break;
    case 1:
        ref = 2;
        construct();
        break;
    default:
        MwApplicationBugCheck(" *** Called constructor of DLL korvale more then once !!! ***");
    }
}

_Initializerkorvale::~_Initializerkorvale() noexcept(false)
{
    if (infunc == 1)
        return;
    const Running running;
    switch (ref) {
    case 2:
        ref = 1;
        destruct();
        break;
    case 1:
        ref = 0;
        post_destruct();
        break;
    default:
        MwApplicationBugCheck(" *** Called destructor of DLL korvale more then once !!! ***");
    }
}

void _Initializerkorvale::pre_construct()
{
    handle = MwInitDLL("korvale", Mw___korvale_wrapDllMain, _pRawDllMain, &Mw___korvale_DependancyNode);
    __ImageBasePtr = handle;
}

void _Initializerkorvale::construct()
{
    MwDllInPostConstruct(handle);
}

void _Initializerkorvale::destruct()
{
    MwDllInPreDestruct(handle);
}

void _Initializerkorvale::post_destruct()
{
    if (ref == 0)
        MwDllInPostDestruct(handle);
}

int _korvale_DllMain(void* instance, unsigned reason, void*)
{
    if (reason == kProcessAttach) {
        instance_handle = instance;
        DisableThreadLibraryCalls(instance);
    }
    return 1;
}

int Mw___korvale_wrapDllMain(void* instance, unsigned reason, void* reserved)
{
    return _korvale_DllMain(instance, reason, reserved);
}

void* GethKorvaleInstance()
{
    return &instance_handle;
}

void* GetKorvaleRefCount()
{
    return &reference_count;
}

// The first stage: before every module's initialiser.
static _Initializerkorvale first __attribute__((init_priority(101)));
