// The Python module `korvale._raw`, of which `korvale.raw` is the public name.
#include "records.h"

namespace korvale::raw {
namespace {

void add_constants(py::module_& m)
{
    m.attr("DATA_TYPE_DOUBLE") = int{DATA_TYPE_DOUBLE};
    m.attr("DATA_TYPE_INT") = int{DATA_TYPE_INT};
    m.attr("DATA_TYPE_BYTE") = int{DATA_TYPE_BYTE};
    m.attr("DATA_TYPE_POINTER") = int{DATA_TYPE_POINTER};
    m.attr("DATA_TYPE_DATA") = int{DATA_TYPE_DATA};
    m.attr("EQ_ITEM_END") = int{EQ_ITEM_END};
    m.attr("EQ_ITEM_CONSTANT") = int{EQ_ITEM_CONSTANT};
    m.attr("EQ_ITEM_VARIABLE") = int{EQ_ITEM_VARIABLE};
    m.attr("EQ_ITEM_SAMPLE") = int{EQ_ITEM_SAMPLE};
    m.attr("EQ_ITEM_UNARY") = int{EQ_ITEM_UNARY};
    m.attr("EQ_ITEM_BINARY") = int{EQ_ITEM_BINARY};
    m.attr("EQ_ITEM_TARGET") = int{EQ_ITEM_TARGET};
    m.attr("PRESERVE_LENGTH") = int{PRESERVE_LENGTH};
    m.attr("PRESERVE_FACE_ANGLE") = int{PRESERVE_FACE_ANGLE};
    m.attr("PRESERVE_VOLUME") = int{PRESERVE_VOLUME};
    m.attr("PRESERVE_AREA") = int{PRESERVE_AREA};
    m.attr("kStatusFailed") = kStatusFailed;
    m.attr("kStatusNotImplemented") = kStatusNotImplemented;
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
