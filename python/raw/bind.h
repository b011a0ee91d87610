#pragma once

#include <tuple>
#include <type_traits>

#include "records.h"

/// @file
/// A function of the library as a row: its name, and what each of its parameters is.
///
///     bind(m, NAMED(cross_product), in<3>("a"), in<3>("b"), out<3>());
///
/// A parameter has three parts: `argument()`, what Python calls it; `Given<C>`, the type that Python passes where the
/// function takes a C; and `take<C>(call, given)`, which checks what is given and keeps it for the call. What it keeps
/// is `handed()` to the function and comes `back()` after it. Python gets the result of the function and then all that
/// comes back: nothing, one value or a tuple.
///
/// A function with steps of its own is a lambda of the same form. It may take a record as the object that Python has
/// (`Tree&` instead of `DATAstruct*`) and the `Call` before everything else.

namespace korvale::raw {

#define NAMED(function) #function, &function

using Array = py::array_t<double>;

inline double* doubles(const Array& array)
{
    return const_cast<double*>(array.data()); // the library takes its inputs by plain pointers
}

// --- What comes after the name ---------------------------------------------------------------------------------------

/// For an argument that is always passed, for one that may be None, and for one that may be left out.
struct Required {};
constexpr struct OrNone {
} or_none;
constexpr struct Optional {
} optional;

inline py::arg argument_named(const char* name, Required)
{
    return py::arg(name);
}

inline py::arg argument_named(const char* name, OrNone)
{
    return py::arg(name);
}

inline py::arg_v argument_named(const char* name, Optional)
{
    return py::arg(name) = py::none();
}

template <class Value>
py::arg_v argument_named(const char* name, const Value& value)
{
    return py::arg(name) = value;
}

// --- Numbers and texts -----------------------------------------------------------------------------------------------

/// What needs no look: a number, or an object as it is.
template <class Default>
struct Plain {
    const char* name;
    Default value;

    template <class C>
    using Given = C;
    template <class C>
    struct Taken {
        C given;
        C handed() const { return given; }
        std::tuple<> back() const { return {}; }
    };
    auto argument() const { return argument_named(name, value); }
    template <class C>
    Taken<C> take(const Call&, C given) const
    {
        return {given};
    }
};

/// A number that the function takes by its address and changes.
template <class Default>
struct Addressed {
    const char* name;
    Default value;

    template <class C>
    using Given = std::remove_pointer_t<C>;
    template <class C>
    struct Taken {
        Given<C> number;
        C handed() { return &number; }
        std::tuple<Given<C>> back() const { return number; }
    };
    auto argument() const { return argument_named(name, value); }
    template <class C>
    Taken<C> take(const Call&, Given<C> given) const
    {
        return {given};
    }
};

/// A text that the library may write to.
struct Text {
    const char* name;

    template <class C>
    using Given = std::string;
    struct Taken {
        std::string text;
        char* handed() { return text.data(); }
        std::tuple<> back() const { return {}; }
    };
    py::arg argument() const { return py::arg(name); }
    template <class C>
    Taken take(const Call& call, std::string given) const
    {
        if (given.find('\0') != std::string::npos)
            call.refuse("a text cannot hold a zero character");
        return {std::move(given)};
    }
};

/// Numbers of a vector or a matrix.
template <class C>
struct ArrayTaken {
    Array array;
    C handed() const { return reinterpret_cast<C>(doubles(array)); }
    std::tuple<> back() const { return {}; }
};

/// Those that are read: anything that NumPy takes.
struct In {
    const char* name;
    py::ssize_t count;

    template <class C>
    using Given = const py::object&;
    py::arg argument() const { return py::arg(name); }
    template <class C>
    ArrayTaken<C> take(const Call& call, const py::object& given) const
    {
        return {numbers(given, count, call.function(), name)};
    }
};

/// Those that are changed: an array.
struct InPlace : In {
    template <class C>
    ArrayTaken<C> take(const Call& call, const py::object& given) const
    {
        if (given.is_none())
            throw py::type_error(std::string(call.function()) + ": " + name + " has to be an array of float64");
        return {place(given, {count}, call.function(), name)};
    }
};

/// Those that are written and come back: an array, or a new one.
struct Out {
    const char* name;
    std::vector<py::ssize_t> shape;

    template <class C>
    using Given = const py::object&;
    template <class C>
    struct Taken : ArrayTaken<C> {
        std::tuple<Array> back() const { return this->array; }
    };
    py::arg_v argument() const { return argument_named(name, optional); }
    template <class C>
    Taken<C> take(const Call& call, const py::object& given) const
    {
        return {{place(given, shape, call.function(), name)}};
    }
};

// --- Records and statuses --------------------------------------------------------------------------------------------

/// What holds a record or a status of the library in Python.
template <class R>
struct ObjectOf {
    using type = R; // a lambda may name it itself
};
template <>
struct ObjectOf<Data> {
    using type = Table;
};
template <>
struct ObjectOf<data_list_struct> {
    using type = ListNode;
};
template <>
struct ObjectOf<DATAstruct> {
    using type = Tree;
};
template <class C>
using Object = typename ObjectOf<std::remove_pointer_t<std::remove_reference_t<C>>>::type;
template <class C>
using Held = std::shared_ptr<Object<C>>;

/// An object, handed on as itself or as what it holds.
template <class C>
struct ObjectTaken {
    const Held<C>& object;
    C handed() const
    {
        if constexpr (std::is_reference_v<C>)
            return *object;
        else if constexpr (std::is_base_of_v<Whole, Object<C>>)
            return &object->status;
        else
            return object == nullptr ? nullptr : static_cast<C>(object->record);
    }
    std::tuple<> back() const { return {}; }
};

template <class Default>
struct Record {
    const char* name;
    Call::Use use;
    Default value;

    template <class C>
    using Given = const Held<C>&;
    auto argument() const { return argument_named(name, value); }
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        if (std::is_same_v<Default, Required> || given != nullptr)
            call.take(given, name, use);
        return {given};
    }
};

/// A status, which looks at what it borrows before it is used, and leaves its buffers to their views where the function
/// may move them.
struct Status {
    const char* name;
    bool may_nest = false;
    bool may_move = false;

    template <class C>
    using Given = const Held<C>&;
    py::arg argument() const { return py::arg(name); }
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        call.use(given, name, may_nest);
        given->look(call);
        if (may_move)
            given->parts_stand_apart();
        return {given};
    }
};

/// A status whatever its state.
struct AnyStatus : Status {
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        call.use(given, name);
        return {given};
    }
};

// --- The vocabulary --------------------------------------------------------------------------------------------------

template <class Default = Required>
Plain<Default> plain(const char* name, Default value = {})
{
    return {name, value};
}

template <class Default = Required>
Addressed<Default> address(const char* name, Default value = {})
{
    return {name, value};
}

inline Text text(const char* name)
{
    return {name};
}

template <py::ssize_t Count>
In in(const char* name)
{
    return {name, Count};
}

template <py::ssize_t Count>
InPlace in_place(const char* name)
{
    return {{name, Count}};
}

template <py::ssize_t... Shape>
Out out(const char* name = "out")
{
    return {name, {Shape...}};
}

template <class Default = Required>
Record<Default> read(const char* name, Default value = {})
{
    return {name, Call::Use::read, value};
}

template <class Default = Required>
Record<Default> write(const char* name, Default value = {})
{
    return {name, Call::Use::write, value};
}

template <class Default = Required>
Record<Default> shape(const char* name, Default value = {})
{
    return {name, Call::Use::shape, value};
}

inline Record<Required> remake(const char* name)
{
    return {name, Call::Use::remake, {}};
}

inline Record<Required> empty(const char* name)
{
    return {name, Call::Use::empty, {}};
}

// --- The row ---------------------------------------------------------------------------------------------------------

/// What Python gets.
template <class... Parts>
auto as_result(std::tuple<Parts...> parts)
{
    if constexpr (sizeof...(Parts) == 1)
        return std::get<0>(std::move(parts));
    else if constexpr (sizeof...(Parts) > 1)
        return std::apply([](const auto&... part) { return py::make_tuple(part...); }, parts);
}

/// Binds `work`, which is called with the call and with what the parameters hand on, as a C each.
template <class... C, class Work, class... Parameters>
void bind_work(py::module_& m, const char* name, Work work, const Parameters&... parameters)
{
    static_assert(sizeof...(C) == sizeof...(Parameters), "one parameter each");
    m.def(
        name,
        [=](typename Parameters::template Given<C>... given) {
            Call call(name);
            std::tuple taken = {parameters.template take<C>(call, given)...};
            return std::apply(
                [&](auto&... one) {
                    if constexpr (std::is_void_v<std::invoke_result_t<Work, Call&, C...>>) {
                        work(call, one.handed()...);
                        return as_result(std::tuple_cat(one.back()...));
                    } else {
                        const auto result = std::make_tuple(work(call, one.handed()...));
                        return as_result(std::tuple_cat(result, one.back()...));
                    }
                },
                taken);
        },
        parameters.argument()..., described(name));
}

/// Binds a function that is over in no time: it keeps the interpreter lock.
template <class Result, class... C, class... Parameters>
void bind(py::module_& m, const char* name, Result (*function)(C...), const Parameters&... parameters)
{
    bind_work<C...>(
        m, name, [function](Call&, C... c) { return function(c...); }, parameters...);
}

/// Binds a function that lets other threads run.
template <class Result, class... C, class... Parameters>
void bind_unlocked(py::module_& m, const char* name, Result (*function)(C...), const Parameters&... parameters)
{
    bind_work<C...>(
        m, name, [function](Call& call, C... c) { return call.run([&] { return function(c...); }); }, parameters...);
}

/// Binds a function that takes the call, and may run a part of itself without the lock.
template <class Result, class... C, class... Parameters>
void bind(py::module_& m, const char* name, Result (*function)(Call&, C...), const Parameters&... parameters)
{
    bind_work<C...>(m, name, function, parameters...);
}

} // namespace korvale::raw
