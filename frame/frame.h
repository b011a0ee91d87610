#pragma once

#include "../platform/export.h"
#include "../platform/layer.h"

/// The frame around the library: registration with the platform layer at load and unload, the entry point, and the
/// exported instance handle and reference count. The names are looked up by the layer and by hosts.

/// Registers the library in two stages. Two static instances exist, one constructed before every other initialiser of
/// the library and one after all of them; they are destroyed in the reverse order.
class KORVALE_API _Initializerkorvale {
public:
    /// Runs the next stage of loading; a third construction is reported to the layer and changes nothing. Ignored while
    /// a constructor or destructor is running.
    _Initializerkorvale();
    /// Runs the next stage of unloading, likewise.
    ~_Initializerkorvale() noexcept(false);

    /// Registers the library with the layer and keeps its handle, also as the image base.
    static void pre_construct();
    /// Announces the end of static construction.
    static void construct();
    /// Announces the start of static destruction.
    static void destruct();
    /// Announces the end of static destruction; only at stage 0.
    static void post_destruct();

    static int ref;      ///< load stage: 0 before load, 1 after the first stage, 2 after the second
    static int infunc;   ///< 1 while a constructor or destructor runs
    static void* handle; ///< the layer's handle for the library
};

extern "C" {

/// The layer's handle again, published as the image base.
KORVALE_API extern void* __ImageBasePtr;

/// The raw entry point handed to the layer; null.
KORVALE_API extern MwEntryPoint _pRawDllMain;

/// The library's place in the layer's dependency list.
KORVALE_API extern const MwDependancyNode Mw___korvale_DependancyNode;

/// The entry point: at reason 1 keeps the instance and switches thread notifications off. Always returns 1.
KORVALE_API int _korvale_DllMain(void* instance, unsigned reason, void* reserved);

/// `_korvale_DllMain`, as it is handed to the layer.
KORVALE_API int Mw___korvale_wrapDllMain(void* instance, unsigned reason, void* reserved);

/// The address of the stored instance handle.
KORVALE_API void* GethKorvaleInstance();

/// The address of a 32-bit reference count, which nothing in the library changes from 0.
KORVALE_API void* GetKorvaleRefCount();
}
