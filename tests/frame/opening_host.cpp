// A host that opens the library named on its command line. Built with CLOSES it closes it again, otherwise it leaves
// that to the end of the process.
#include <dlfcn.h>

#include <cstdio>

int main(int, char** arguments)
{
    void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
#ifdef CLOSES
    if (dlclose(library) != 0 || dlopen(arguments[1], RTLD_NOW | RTLD_NOLOAD) != nullptr) {
        std::fprintf(stderr, "%s is still loaded\n", arguments[1]);
        return 1;
    }
#endif
    return 0;
}
