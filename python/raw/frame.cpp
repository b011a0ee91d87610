// The frame around the library and the platform layer. Handles and addresses are integers; only handles that were given
// out are taken back.
#include <unordered_set>

#include "records.h"

namespace korvale::raw {
namespace {

uintptr_t number_of(const void* address)
{
    return reinterpret_cast<uintptr_t>(address);
}

void* address_of(uintptr_t number)
{
    return reinterpret_cast<void*>(number); // NOLINT: a handle that Python has kept
}

std::unordered_set<void*>& handles()
{
    static auto* const given_out = new std::unordered_set<void*>; // outlives the interpreter
    return *given_out;
}

void* known(uintptr_t handle, const char* function)
{
    void* const address = address_of(handle);
    if (handles().count(address) == 0)
        throw py::value_error(std::string(function) + ": there is no such handle");
    return address;
}

void add_library_frame(py::module_& m)
{
    struct Stages {};
    py::class_<Stages> stages(m, "_Initializerkorvale", described("_Initializerkorvale"));
    stages
        .def_property_readonly_static(
            "ref", [](const py::object&) { return _Initializerkorvale::ref; },
            "The load stage: 2 once the library is loaded.")
        .def_property_readonly_static(
            "infunc", [](const py::object&) { return _Initializerkorvale::infunc; },
            "1 while a constructor or destructor runs.")
        .def_property_readonly_static(
            "handle", [](const py::object&) { return number_of(_Initializerkorvale::handle); },
            "The layer's handle for the library.")
        .def_static("pre_construct", &_Initializerkorvale::pre_construct,
                    "Registers the library with the layer again and keeps the new handle.")
        .def_static("construct", &_Initializerkorvale::construct, "Announces the end of static construction.")
        .def_static("destruct", &_Initializerkorvale::destruct, "Announces the start of static destruction.")
        .def_static("post_destruct", &_Initializerkorvale::post_destruct,
                    "Announces the end of static destruction; only at stage 0, so nothing while Python runs.");
    m.def(
        "_korvale_DllMain",
        [](uintptr_t instance, unsigned reason) { return _korvale_DllMain(address_of(instance), reason, nullptr); },
        py::arg("instance"), py::arg("reason"), described("_korvale_DllMain"));
    m.def(
        "Mw___korvale_wrapDllMain",
        [](uintptr_t instance, unsigned reason) {
            return Mw___korvale_wrapDllMain(address_of(instance), reason, nullptr);
        },
        py::arg("instance"), py::arg("reason"), described("Mw___korvale_wrapDllMain"));
    m.def(
        "GethKorvaleInstance", [] { return number_of(*static_cast<void**>(GethKorvaleInstance())); },
        "The stored instance handle.");
    m.def(
        "GetKorvaleRefCount", [] { return *static_cast<int32_t*>(GetKorvaleRefCount()); }, "The reference count.");
    m.def(
        "__ImageBasePtr", [] { return number_of(__ImageBasePtr); }, described("__ImageBasePtr"));
    m.def(
        "_pRawDllMain", [] { return number_of(reinterpret_cast<void*>(_pRawDllMain)); }, described("_pRawDllMain"));
    m.def(
        "Mw___korvale_DependancyNode",
        [] {
            py::list names;
            for (const auto& library : Mw___korvale_DependancyNode.libraries)
                names.append(py::make_tuple(library.name, number_of(library.node)));
            return names;
        },
        "The libraries that the library asks for, and the address of the node of each; 0 where there is none.");
}

void add_layer(py::module_& m)
{
    m.def(
        "MwInitDLL",
        [](const std::string& name) {
            void* const handle = MwInitDLL(name.c_str(), nullptr, nullptr, nullptr);
            handles().insert(handle);
            return number_of(handle);
        },
        py::arg("name"), "Registers a library without an entry point. Returns the handle.");
    m.def(
        "MwDllInPostConstruct", [](uintptr_t handle) { MwDllInPostConstruct(known(handle, "MwDllInPostConstruct")); },
        py::arg("handle"), described("MwDllInPostConstruct"));
    m.def(
        "MwDllInPreDestruct", [](uintptr_t handle) { MwDllInPreDestruct(known(handle, "MwDllInPreDestruct")); },
        py::arg("handle"), described("MwDllInPreDestruct"));
    m.def(
        "MwDllInPostDestruct",
        [](uintptr_t handle) {
            void* const address = known(handle, "MwDllInPostDestruct");
            handles().erase(address);
            MwDllInPostDestruct(address);
        },
        py::arg("handle"), described("MwDllInPostDestruct"));
    m.def(
        "MwApplicationBugCheck", [](const std::string& message) { MwApplicationBugCheck(message.c_str()); },
        py::arg("message"), "Reports a fatal programming error: ends the process.");
    m.def(
        "DisableThreadLibraryCalls", [](uintptr_t instance) { return DisableThreadLibraryCalls(address_of(instance)); },
        py::arg("instance"), described("DisableThreadLibraryCalls"));
    m.def(
        "RegisterWindowMessageA", [](const std::string& name) { return RegisterWindowMessageA(name.c_str()); },
        py::arg("name"), described("RegisterWindowMessageA"));
    m.def("Mwsrand", &Mwsrand, py::arg("seed"), described("Mwsrand"));
    m.def("Mwrand", &Mwrand, described("Mwrand"));
    m.def(
        "korvale_draw_many",
        [](int count) {
            if (count < 0)
                throw py::value_error("korvale_draw_many: count is below 0");
            py::array_t<int> drawn(count);
            const int result = korvale_draw_many(&Mwrand, &Mwsrand, drawn.mutable_data(), count);
            return py::make_tuple(result, result == 1 ? drawn : py::array_t<int>(0));
        },
        py::arg("count"),
        "1 and the numbers that the next `count` calls of Mwrand would give, or 0 and none where a host stands in for "
        "the generator.");
}

} // namespace

void add_frame(py::module_& m)
{
    add_library_frame(m);
    add_layer(m);
}

} // namespace korvale::raw
