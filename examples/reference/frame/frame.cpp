#include "../example.h"

EXAMPLE("_Initializerkorvale pre_construct construct destruct post_destruct")
{
    // The stages follow each other while the library is loaded and unloaded. A host looks at where they stand.
    std::printf("stage %d, %s\n", _Initializerkorvale::ref, _Initializerkorvale::infunc ? "within one" : "at rest");
    std::printf("%s\n", _Initializerkorvale::handle == __ImageBasePtr ? "one handle" : "two handles");
    // > stage 2, at rest
    // > one handle
}

EXAMPLE("_korvale_DllMain Mw___korvale_wrapDllMain")
{
    // The layer calls the entry point. Reasons other than 1 change nothing.
    std::printf("%d %d\n", _korvale_DllMain(nullptr, 2, nullptr), Mw___korvale_wrapDllMain(nullptr, 3, nullptr));
    // > 1 1
}

EXAMPLE("GethKorvaleInstance GetKorvaleRefCount")
{
    void* const* instance = static_cast<void**>(GethKorvaleInstance());
    std::printf("%s, ", *instance == __ImageBasePtr ? "the handle of the image" : "another");
    std::printf("count %d\n", *static_cast<const int32_t*>(GetKorvaleRefCount()));
    // > the handle of the image, count 0
}
