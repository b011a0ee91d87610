#pragma once

#include <tuple>
#include <type_traits>

#include "call.h"
#include "module.h"
#include "numbers.h"

/// @file
/// A function of the library as a row: its name, and what each of its parameters is.
///
///     def(m, NAMED(cross_product), in<3>("a"), in<3>("b"), out<3>());
///
/// A parameter says what Python calls it (`argument()`), what Python passes where the function takes a C (`Given<C>`),
/// and how that is looked at and kept for the call (`take<C>`). What it keeps is `handed()` to the function, and may
/// have something to give `back()` after it. Python gets the result of the function and then all that is given back, as
/// one value or a tuple.
///
/// A function with steps of its own is bound in the same way. It may take the object that Python has (`Tree&`) instead
/// of its record (`DATAstruct*`), and the `Call` before everything else.

namespace korvale::raw {

#define NAMED(function) #function, &function
#define FIELD(record, field) #field, &record::field

using Array = py::array_t<double>;

inline double* doubles(const Array& array)
{
    return const_cast<double*>(array.data()); // the library takes its inputs by plain pointers
}

// --- Parameters ------------------------------------------------------------------------------------------------------

/// One that is always passed, one that may be None, and one that may be left out, which is None as well. Any other
/// value stands for what is left out.
struct Required {};
constexpr struct OrNone {
} or_none;
constexpr struct Optional {
} optional;

template <class Default = Required>
struct Parameter {
    const char* name;
    Default value = {};

    auto argument() const
    {
        if constexpr (std::is_same_v<Default, Optional>)
            return py::arg(name) = py::none();
        else if constexpr (std::is_empty_v<Default>)
            return py::arg(name);
        else
            return py::arg(name) = value;
    }
};

/// What needs no look: a number, or an object as it is.
template <class Default>
struct Plain : Parameter<Default> {
    template <class C>
    using Given = C;
    template <class C>
    struct Taken {
        C given;
        C handed() const { return given; }
    };
    template <class C>
    Taken<C> take(const Call&, C given) const
    {
        return {given};
    }
};

/// A number that the function takes by its address and changes.
template <class Default>
struct Addressed : Parameter<Default> {
    template <class C>
    using Given = std::remove_pointer_t<C>;
    template <class C>
    struct Taken {
        Given<C> number;
        C handed() { return &number; }
        auto back() const { return std::make_tuple(number); }
    };
    template <class C>
    Taken<C> take(const Call&, Given<C> given) const
    {
        return {given};
    }
};

/// A text that the library may write to.
template <class Default>
struct Text : Parameter<Default> {
    template <class C>
    using Given = std::string;
    struct Taken {
        std::string text;
        char* handed() { return text.data(); }
    };
    template <class C>
    Taken take(const Call& call, std::string given) const
    {
        if (given.find('\0') != std::string::npos)
            call.refuse("a text cannot hold a zero character");
        return {std::move(given)};
    }
};

/// Numbers of a vector or a matrix that are read: anything that NumPy takes.
struct In : Parameter<> {
    py::ssize_t count;

    template <class C>
    using Given = const py::object&;
    template <class C>
    struct Taken {
        Array array;
        C handed() const { return reinterpret_cast<C>(doubles(array)); }
    };
    template <class C>
    Taken<C> take(const Call& call, const py::object& given) const
    {
        return {numbers(given, count, call.function(), name)};
    }
};

/// Numbers that are changed in place: an array.
struct InPlace : In {
    template <class C>
    Taken<C> take(const Call& call, const py::object& given) const
    {
        if (given.is_none())
            throw py::type_error(std::string(call.function()) + ": " + name + " has to be an array of float64");
        return {place(given, {count}, call.function(), name)};
    }
};

/// Numbers that are written and given back: an array, or a new one.
struct Out : Parameter<Optional> {
    std::vector<py::ssize_t> shape;

    template <class C>
    using Given = const py::object&;
    template <class C>
    struct Taken : In::Taken<C> {
        auto back() const { return std::make_tuple(this->array); }
    };
    template <class C>
    Taken<C> take(const Call& call, const py::object& given) const
    {
        return {{place(given, shape, call.function(), name)}};
    }
};

/// What holds a record or a status of the library in Python; functions may name it themselves.
template <class R>
struct ObjectOf : std::type_identity<R> {
};
template <>
struct ObjectOf<Data> : std::type_identity<Table> {
};
template <>
struct ObjectOf<data_list_struct> : std::type_identity<ListNode> {
};
template <>
struct ObjectOf<DATAstruct> : std::type_identity<Tree> {
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
};

template <class Default = Required>
struct Record : Parameter<Default> {
    Use use;

    template <class C>
    using Given = const Held<C>&;
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        if (std::is_same_v<Default, Required> || given != nullptr)
            call.take(given, this->name, use);
        return {given};
    }
};

/// A status. Before a call it looks at what it borrows, unless the call sets it up or ends it, and leaves its buffers
/// to their views where the function may move them.
struct Status : Parameter<> {
    bool looks = true, may_nest = false, may_move = false;

    template <class C>
    using Given = const Held<C>&;
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        call.use(given, name, may_nest);
        if (looks)
            given->look(call);
        if (may_move)
            given->parts_stand_apart();
        return {given};
    }
};

// --- The vocabulary --------------------------------------------------------------------------------------------------

/// How a row calls a kind of parameter: `plain("closed", 1)`.
template <template <class> class Kind>
struct Word {
    template <class Default = Required>
    Kind<Default> operator()(const char* name, Default value = {}) const
    {
        return {{name, value}};
    }
};
constexpr Word<Plain> plain;
constexpr Word<Addressed> address;
constexpr Word<Text> text;

template <py::ssize_t Count>
In in(const char* name)
{
    return {{name}, Count};
}

template <py::ssize_t Count>
InPlace in_place(const char* name)
{
    return {in<Count>(name)};
}

template <py::ssize_t... Shape>
Out out(const char* name = "out")
{
    return {{name}, {Shape...}};
}

struct RecordWord {
    Use use;
    template <class Default = Required>
    Record<Default> operator()(const char* name, Default value = {}) const
    {
        return {{name, value}, use};
    }
};
constexpr RecordWord read{Use::read}, write{Use::write}, shape{Use::shape}, remake{Use::remake}, empty{Use::empty};

struct StatusWord {
    bool looks = true, may_nest = false, may_move = false;
    Status operator()(const char* name) const { return {{name}, looks, may_nest, may_move}; }
};
constexpr StatusWord status, in_any_state{.looks = false}, nested{.may_nest = true}, moving{.may_move = true};

// --- The row ---------------------------------------------------------------------------------------------------------

template <class Taken>
auto back_from(const Taken& taken)
{
    if constexpr (requires { taken.back(); })
        return taken.back();
    else
        return std::tuple<>();
}

template <class First, class... More>
auto as_result(const std::tuple<First, More...>& parts)
{
    if constexpr (sizeof...(More) == 0)
        return std::get<0>(parts);
    else
        return std::apply([](const auto&... part) { return py::make_tuple(part...); }, parts);
}

/// Binds `work`, which takes the call and, for each parameter, a C.
template <class... C, class Work, class... Parameters>
void def_work(py::module_& m, const char* name, Work work, const Parameters&... parameters)
{
    const auto function = [=](typename Parameters::template Given<C>... given) {
        Call call(name);
        std::tuple taken = {parameters.template take<C>(call, given)...};
        return std::apply(
            [&](auto&... one) {
                constexpr bool gives_back = (requires { one.back(); } || ...);
                if constexpr (!gives_back) {
                    return work(call, one.handed()...);
                } else if constexpr (std::is_void_v<std::invoke_result_t<Work, Call&, C...>>) {
                    work(call, one.handed()...);
                    return as_result(std::tuple_cat(back_from(one)...));
                } else {
                    const auto result = std::make_tuple(work(call, one.handed()...));
                    return as_result(std::tuple_cat(result, back_from(one)...));
                }
            },
            taken);
    };
    m.def(name, function, parameters.argument()..., described(name));
}

/// A function that keeps the interpreter lock.
template <class Result, class... C, class... Parameters>
void def(py::module_& m, const char* name, Result (*function)(C...), const Parameters&... parameters)
{
    const auto work = [function](Call&, C... c) { return function(c...); };
    def_work<C...>(m, name, work, parameters...);
}

/// A member of what holds a status, which is the first parameter.
template <class Result, class Class, class... C, class... Parameters>
void def(py::module_& m, const char* name, Result (Class::*function)(C...), const Parameters&... parameters)
{
    const auto work = [function](Call&, Class& object, C... c) { return (object.*function)(c...); };
    def_work<Class&, C...>(m, name, work, parameters...);
}

/// A function that takes the call, and may run a part of itself without the lock.
template <class Result, class... C, class... Parameters>
void def(py::module_& m, const char* name, Result (*function)(Call&, C...), const Parameters&... parameters)
{
    def_work<C...>(m, name, function, parameters...);
}

/// A function that lets other threads run.
template <class Result, class... C, class... Parameters>
void def_unlocked(py::module_& m, const char* name, Result (*function)(C...), const Parameters&... parameters)
{
    const auto work = [function](Call& call, C... c) { return call.run([&] { return function(c...); }); };
    def_work<C...>(m, name, work, parameters...);
}

// --- Fields of statuses ----------------------------------------------------------------------------------------------

/// A number that Python reads and writes.
template <class Class, class R, class Number>
void def_number(Class& type, const char* name, Number R::*field, const char* text)
{
    using Status = typename Class::type;
    const auto get = [field](const Status& s) { return s.status.*field; };
    const auto set = [field](Status& s, Number value) { s.status.*field = value; };
    type.def_property(name, get, set, text);
}

/// An array that is part of the status; the elements of a locked one cannot be written.
template <class Class, class R, class... Text>
void def_part(Class& type, const char* name, DATAstruct* R::*field, bool is_locked, const Text&... text)
{
    const auto get = [=](typename Class::type& s) { return s.part(s.status.*field, is_locked); };
    type.def_property_readonly(name, get, text...);
}

} // namespace korvale::raw
