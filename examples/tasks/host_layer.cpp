// A host with a platform layer of its own that loads the library at run time: the program exports the layer's functions
// (it is linked with -rdynamic), so the library finds them before those of libkorvale-platform. Its functions are
// looked up by the names that the linker sees. host_layer [library]

#include <cstdio>
#include <dlfcn.h>
#include <korvale.h>

namespace {

int idle_messages = 0;
unsigned generator = 1;

} // namespace

void* MwInitDLL(const char* name, MwEntryPoint entry, MwEntryPoint, const MwDependancyNode* node)
{
    static int instance;
    std::printf("layer: %s registers and asks for %s\n", name, node->libraries[0].name);
    entry(&instance, 1, nullptr); // attach
    return &instance;
}

void MwDllInPostConstruct(void*)
{
    std::printf("layer: loaded, idle message registered: %s\n", idle_messages > 0 ? "yes" : "no");
}

void MwDllInPreDestruct(void*)
{
    std::printf("layer: unloading\n");
}

void MwDllInPostDestruct(void*)
{
    std::printf("layer: unloaded\n");
}

void MwApplicationBugCheck(const char* message)
{
    std::fprintf(stderr, "layer: %s\n", message);
}
int DisableThreadLibraryCalls(void*)
{
    return 1;
}

unsigned RegisterWindowMessageA(const char*)
{
    ++idle_messages;
    return 0xC000;
}

void Mwsrand(unsigned seed)
{
    generator = seed;
}

int Mwrand()
{
    generator = generator * 1103515245u + 12345u;
    return static_cast<int>(generator >> 16 & 0x7fff);
}

int main(int argc, char** argv)
{
    void* const library = dlopen(argc > 1 ? argv[1] : "libkorvale.so.1", RTLD_NOW);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto length = reinterpret_cast<double (*)(double*)>(dlsym(library, "_Z4normPd")); // norm(double*)
    const auto random = reinterpret_cast<double (*)()>(dlsym(library, "_Z10EqFuncRandv"));  // EqFuncRand()
    double v[] = {3, 4, 12};
    std::printf("host: length %g\n", length(v));
    Mwsrand(1);
    std::printf("host: random %.6f of our own generator\n", random());
    dlclose(library);
}
