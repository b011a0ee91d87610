// The Python module `korvale._raw`, of which `korvale.raw` is the public name.
#include "module.h"
#include "korvale.h"

namespace korvale::raw {
namespace {

#define NUMBER(constant) std::pair(#constant, int{constant})

void add_constants(py::module_& m)
{
    for (const auto& [name, value] :
         {NUMBER(DATA_TYPE_DOUBLE), NUMBER(DATA_TYPE_INT), NUMBER(DATA_TYPE_BYTE), NUMBER(DATA_TYPE_POINTER),
          NUMBER(DATA_TYPE_DATA), NUMBER(EQ_ITEM_END), NUMBER(EQ_ITEM_CONSTANT), NUMBER(EQ_ITEM_VARIABLE),
          NUMBER(EQ_ITEM_SAMPLE), NUMBER(EQ_ITEM_UNARY), NUMBER(EQ_ITEM_BINARY), NUMBER(EQ_ITEM_TARGET),
          NUMBER(PRESERVE_LENGTH), NUMBER(PRESERVE_FACE_ANGLE), NUMBER(PRESERVE_VOLUME), NUMBER(PRESERVE_AREA),
          NUMBER(kStatusFailed), NUMBER(kStatusNotImplemented)})
        m.attr(name) = value;
    m.attr("KORVALE_VERSION") = KORVALE_VERSION;
}

} // namespace
} // namespace korvale::raw

PYBIND11_MODULE(_raw, m)
{
    m.doc() = "What korvale.raw is made of.";
    korvale::raw::add_constants(m);
    korvale::raw::add_records(m);
    korvale::raw::add_frame(m);
    korvale::raw::add_math(m);
    korvale::raw::add_arrays(m);
    korvale::raw::add_path(m);
    korvale::raw::add_border(m);
    korvale::raw::add_equation(m);
    korvale::raw::add_preserve(m);
    korvale::raw::add_ray(m);
    korvale::raw::add_exchange(m);
    pybind11::list names;
    for (const auto& entry : pybind11::dict(m.attr("__dict__")))
        if (const auto name = entry.first.cast<std::string>(); name.rfind("__", 0) != 0 || name == "__ImageBasePtr")
            if (name != "_Status")
                names.append(entry.first);
    m.attr("__all__") = names;
}
