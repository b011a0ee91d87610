// The frame around the library and the platform layer. Handles and addresses are integers; only handles that were given
// out are taken back.
#include <unordered_set>

#include "bind.h"

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

/// A number that stands for an address; or only for a handle that was given out.
struct Address : Parameter<> {
    bool is_handle;

    template <class C>
    using Given = uintptr_t;
    struct Taken {
        void* address;
        void* handed() const { return address; }
    };
    template <class C>
    Taken take(const Call& call, uintptr_t given) const
    {
        if (is_handle && handles().count(address_of(given)) == 0)
            throw py::value_error(std::string(call.function()) + ": there is no such handle");
        return {address_of(given)};
    }
};
constexpr Address instance{{"instance"}, false}, handle{{"handle"}, true};

void end_destruction(void* address)
{
    handles().erase(address);
    MwDllInPostDestruct(address);
}

template <auto EntryPoint>
int notify(void* instance, unsigned reason)
{
    return EntryPoint(instance, reason, nullptr);
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
    def(m, "_korvale_DllMain", notify<_korvale_DllMain>, instance, plain("reason"));
    def(m, "Mw___korvale_wrapDllMain", notify<Mw___korvale_wrapDllMain>, instance, plain("reason"));
    def(
        m, "__ImageBasePtr", +[] { return number_of(__ImageBasePtr); });
    def(
        m, "_pRawDllMain", +[] { return number_of(reinterpret_cast<void*>(_pRawDllMain)); });
    m.def(
        "GethKorvaleInstance", [] { return number_of(*static_cast<void**>(GethKorvaleInstance())); },
        "The stored instance handle.");
    m.def(
        "GetKorvaleRefCount", [] { return *static_cast<int32_t*>(GetKorvaleRefCount()); }, "The reference count.");
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
    def(m, NAMED(MwDllInPostConstruct), handle);
    def(m, NAMED(MwDllInPreDestruct), handle);
    def(m, "MwDllInPostDestruct", end_destruction, handle);
    m.def(
        "MwApplicationBugCheck", [](const std::string& message) { MwApplicationBugCheck(message.c_str()); },
        py::arg("message"), "Reports a fatal programming error: ends the process.");
    def(m, NAMED(DisableThreadLibraryCalls), instance);
    def(
        m, "RegisterWindowMessageA", +[](const std::string& name) { return RegisterWindowMessageA(name.c_str()); },
        plain("name"));
    def(m, NAMED(Mwsrand), plain("seed"));
    def(m, NAMED(Mwrand));
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
