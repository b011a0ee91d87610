// The Python module `korvale._raw`: what `korvale.raw` is made of.
#include <pybind11/pybind11.h>

#include "korvale.h"

PYBIND11_MODULE(_raw, m)
{
    m.doc() = "Every exported function by its own name.";
}
