// A host that opens the library by its path. Fails where opening it changes how the host calculates, or where a name is
// not found; prints what norm(double*) gives.
#include <cfloat>
#include <cstdio>
#include <dlfcn.h>

static bool keeps_small_numbers()
{
    volatile double least = DBL_MIN;
    least = least / 2;
    return least != 0;
}

int main(int, char** arguments)
{
    if (!keeps_small_numbers())
        return 2;
    void* library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::printf("%s\n", dlerror());
        return 3;
    }
    if (!keeps_small_numbers()) {
        std::printf("opening the library switched small numbers off\n");
        return 4;
    }
    double (*length)(double*) = reinterpret_cast<double (*)(double*)>(dlsym(library, "_Z4normPd")); // norm(double*)
    if (length == nullptr)
        return 5;
    double v[] = {3, 4, 12};
    std::printf("%g\n", length(v));
    return dlclose(library);
}
