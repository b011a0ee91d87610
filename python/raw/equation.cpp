// Equations. A Python function that equations call takes one of a number of entry points: the library hands its
// functions nothing but numbers, so each needs an address of its own.
#include <functional>
#include <utility>

#include "records.h"

namespace korvale::raw {
namespace {

// --- Python functions as addresses -----------------------------------------------------------------------------------

constexpr size_t kEntries = 128; ///< Python functions of one number of arguments, in all systems together

PyObject* callables[3][kEntries] = {}; // by number of arguments; owned, null where free

template <class... Numbers>
double call_python(size_t entry, Numbers... values)
{
    const py::gil_scoped_acquire lock;
    PyObject* const callable = callables[sizeof...(values)][entry];
    if (callable == nullptr || has_raised())
        return 0.0;
    try {
        return py::reinterpret_borrow<py::object>(callable)(values...).template cast<double>();
    } catch (...) {
        keep_raised();
        return 0.0;
    }
}

template <size_t Entry>
double enter()
{
    return call_python(Entry);
}

template <size_t Entry>
double enter(double a)
{
    return call_python(Entry, a);
}

template <size_t Entry>
double enter(double a, double b)
{
    return call_python(Entry, a, b);
}

template <class Function, size_t... Entry>
constexpr std::array<Function, sizeof...(Entry)> entry_points(std::index_sequence<Entry...>)
{
    return {static_cast<Function>(&enter<Entry>)...};
}

template <class Function>
constexpr auto kEntryPoints = entry_points<Function>(std::make_index_sequence<kEntries>());

/// A Python function's place among the entry points, given back at the end.
class Entrance {
public:
    Entrance(int arguments, const py::object& callable, const char* function) : arguments_(arguments)
    {
        while (entry_ < kEntries && callables[arguments][entry_] != nullptr)
            ++entry_;
        if (entry_ == kEntries)
            throw std::runtime_error(std::string(function) + ": there are " + std::to_string(kEntries) +
                                     " Python functions of that many arguments already, in all systems together");
        callables[arguments][entry_] = callable.inc_ref().ptr();
    }
    Entrance(Entrance&& other) noexcept : arguments_(other.arguments_), entry_(std::exchange(other.entry_, kEntries)) {}
    Entrance& operator=(Entrance&&) = delete;
    ~Entrance()
    {
        if (entry_ < kEntries)
            Py_XDECREF(std::exchange(callables[arguments_][entry_], nullptr));
    }
    size_t entry() const { return entry_; }

private:
    const int arguments_;
    size_t entry_ = 0;
};

// --- The system ------------------------------------------------------------------------------------------------------

/// An `EquationSystem` and the Python functions it calls.
class System : public Whole {
public:
    EquationSystem status = {};

    System() { initialize(); }
    ~System() override { dispose(); }

    int initialize()
    {
        dispose();
        return EqSystemInitialize(&status);
    }

    void dispose()
    {
        parts_die();
        EqSystemDispose(&status);
        entrances_.clear();
    }

    /// Before the library may free or move arrays.
    void stand_apart() { parts_stand_apart(); }

    /// The address of `given`, a Python function or an address.
    template <class Function>
    Function address(int arguments, const py::object& given, const char* function)
    {
        if (py::isinstance<py::int_>(given))
            return reinterpret_cast<Function>(given.cast<uintptr_t>());
        if (given.is_none())
            return nullptr;
        if (!PyCallable_Check(given.ptr()))
            throw py::type_error(std::string(function) + ": function has to be callable, or an address");
        return kEntryPoints<Function>[entrances_.emplace_back(arguments, given, function).entry()];
    }

    /// Takes back what a registration that failed has taken.
    void forget_last(size_t count)
    {
        while (entrances_.size() > count)
            entrances_.pop_back();
    }
    size_t entrance_count() const { return entrances_.size(); }

private:
    std::vector<Entrance> entrances_;
};

using Held = std::shared_ptr<System>;

/// A text that the library may write to.
class Text {
public:
    Text(std::string text, const char* function) : text_(std::move(text))
    {
        if (text_.find('\0') != std::string::npos)
            throw py::value_error(std::string(function) + ": a text cannot hold a zero character");
    }
    operator char*() { return text_.data(); }

private:
    std::string text_;
};

EquationSystem* used(Call& call, const Held& es, bool may_nest = false)
{
    call.use(es, "es", may_nest);
    if (es->status.funcs == nullptr)
        call.refuse("es has been disposed: EqSystemInitialize it first");
    return &es->status;
}

void add_system(py::module_& m)
{
    py::class_<System, Whole, Held> type(m, "EquationSystem", described("EquationSystem"));
    type.def(py::init<>())
        .def_property(
            "table_index", [](const System& s) { return s.status.table_index; },
            [](System& s, double index) { s.status.table_index = index; }, "The row position of all table reads.");
    const auto array = [&type](const char* name, DATAstruct* EquationSystem::*field, bool is_locked, const char* text) {
        type.def_property_readonly(
            name, [=](System& s) { return s.part(s.status.*field, is_locked); }, text);
    };
    array("funcs", &EquationSystem::funcs, true, "Function pointers; its count is the number of functions.");
    array("func_names", &EquationSystem::func_names, true, "Names, kind byte [13].");
    array("func_nargs", &EquationSystem::func_nargs, true, "Numbers of arguments, kind int [1].");
    array("var_names", &EquationSystem::var_names, true, "Names, kind byte [13].");
    array("var_vals", &EquationSystem::var_vals, false, "Values, kind double [1].");
    array("var_flags", &EquationSystem::var_flags, false, "Reservation flags, kind byte [1].");
    array("equations", &EquationSystem::equations, true, "Programs, kind DATA_TYPE_DATA [3].");
    array("tables", &EquationSystem::tables, false, "Sample tables, kind DATA_TYPE_DATA [1].");
    array("table_pos", &EquationSystem::table_pos, true, "The column of the next read of each table, kind int [1].");

    m.def(
        "EqSystemInitialize",
        [](const Held& es) {
            Call call("EqSystemInitialize");
            call.use(es, "es");
            return es->initialize();
        },
        py::arg("es"), described("EqSystemInitialize"));
    m.def(
        "EqSystemDispose",
        [](const Held& es) {
            Call call("EqSystemDispose");
            call.use(es, "es");
            es->dispose();
        },
        py::arg("es"), described("EqSystemDispose"));
}

void add_variables(py::module_& m)
{
    m.def(
        "EqParseVariables",
        [](const Held& es, std::string text, int flag) {
            Call call("EqParseVariables");
            EquationSystem* const system = used(call, es);
            es->stand_apart();
            return EqParseVariables(system, Text(std::move(text), "EqParseVariables"), flag);
        },
        py::arg("es"), py::arg("text"), py::arg("flag") = 0, described("EqParseVariables"));
    const auto def_lookup = [&m](const char* name, int (*function)(EquationSystem*, char*)) {
        m.def(
            name,
            [name, function](const Held& es, std::string wanted) {
                Call call(name);
                return function(used(call, es, true), Text(std::move(wanted), name));
            },
            py::arg("es"), py::arg("name"), described(name));
    };
    def_lookup("EqLookupVariable", EqLookupVariable);
    def_lookup("EqLookupFunction", EqLookupFunction);
    m.def(
        "EqSetVariable",
        [](const Held& es, int v, double value) {
            Call call("EqSetVariable");
            EqSetVariable(used(call, es, true), v, value);
        },
        py::arg("es"), py::arg("v"), py::arg("value"), described("EqSetVariable"));
    m.def(
        "EqReadVariable",
        [](const Held& es, int v) {
            Call call("EqReadVariable");
            return EqReadVariable(used(call, es, true), v);
        },
        py::arg("es"), py::arg("v"), described("EqReadVariable"));
    m.def(
        "EqReserveVariable",
        [](const Held& es, int v, int flag) {
            Call call("EqReserveVariable");
            EqReserveVariable(used(call, es, true), v, flag);
        },
        py::arg("es"), py::arg("v"), py::arg("flag"), described("EqReserveVariable"));
    m.def(
        "EqSetVariableByName",
        [](const Held& es, std::string name, double value) {
            Call call("EqSetVariableByName");
            return EqSetVariableByName(used(call, es, true), Text(std::move(name), "EqSetVariableByName"), value);
        },
        py::arg("es"), py::arg("name"), py::arg("value"), described("EqSetVariableByName"));
    m.def(
        "EqReadVariableByName",
        [](const Held& es, std::string name) {
            Call call("EqReadVariableByName");
            return EqReadVariableByName(used(call, es, true), Text(std::move(name), "EqReadVariableByName"));
        },
        py::arg("es"), py::arg("name"), described("EqReadVariableByName"));
    m.def(
        "EqReserveVariableByName",
        [](const Held& es, std::string name, int flag) {
            Call call("EqReserveVariableByName");
            return EqReserveVariableByName(used(call, es, true), Text(std::move(name), "EqReserveVariableByName"),
                                           flag);
        },
        py::arg("es"), py::arg("name"), py::arg("flag"), described("EqReserveVariableByName"));
}

template <class Function>
void def_add(py::module_& m, const char* name, int arguments, int (*add)(EquationSystem*, char*, Function))
{
    m.def(
        name,
        [=](const Held& es, std::string text, const py::object& given) {
            Call call(name);
            EquationSystem* const system = used(call, es);
            Text registered(std::move(text), name);
            es->stand_apart();
            const size_t before = es->entrance_count();
            const Function function = es->template address<Function>(arguments, given, name);
            const int result = add(system, registered, function);
            if (result != 1)
                es->forget_last(before);
            return result;
        },
        py::arg("es"), py::arg("name"), py::arg("function"), described(name));
}

void add_functions(py::module_& m)
{
    def_add<double (*)(double, double)>(m, "EqAddFuncBinary", 2, EqAddFuncBinary);
    def_add<double (*)(double)>(m, "EqAddFuncUnary", 1, EqAddFuncUnary);
    def_add<double (*)()>(m, "EqAddFuncNoArg", 0, EqAddFuncNoArg);
    m.def(
        "EqAnotherFunc",
        [](const Held& es) {
            Call call("EqAnotherFunc");
            EquationSystem* const system = used(call, es);
            es->stand_apart();
            return EqAnotherFunc(system);
        },
        py::arg("es"), described("EqAnotherFunc"));
    m.def("EqSeed", &EqSeed, py::arg("seed"), described("EqSeed"));
    m.def("gauss_init", &gauss_init, py::arg("seed"), described("gauss_init"));
    m.def("EqFuncRand", &EqFuncRand, described("EqFuncRand"));
    m.def("gauss", &gauss, described("gauss"));
    m.def("EqFuncAdd", &EqFuncAdd, py::arg("a"), py::arg("b"), described("EqFuncAdd"));
    m.def("EqFuncSubtract", &EqFuncSubtract, py::arg("a"), py::arg("b"), described("EqFuncSubtract"));
    m.def("EqFuncMultiply", &EqFuncMultiply, py::arg("a"), py::arg("b"), described("EqFuncMultiply"));
    m.def("EqFuncDivide", &EqFuncDivide, py::arg("a"), py::arg("b"), described("EqFuncDivide"));
    m.def("EqFuncNegate", &EqFuncNegate, py::arg("a"), described("EqFuncNegate"));
}

void add_equations(py::module_& m)
{
    m.def(
        "EqParseEquation",
        [](const Held& es, std::string text) {
            Call call("EqParseEquation");
            EquationSystem* const system = used(call, es);
            es->stand_apart();
            return EqParseEquation(system, Text(std::move(text), "EqParseEquation"));
        },
        py::arg("es"), py::arg("text"), described("EqParseEquation"));
    m.def(
        "new_bi_item",
        [](int code, int op_top, int operand_counter, int item_pos, const std::shared_ptr<Tree>& kinds,
           const std::shared_ptr<Tree>& operands, const std::shared_ptr<Tree>& op_stack) {
            Call call("new_bi_item");
            DATAstruct *const k = call.write(kinds, "kinds"), *const o = call.write(operands, "operands");
            DATAstruct* const s = call.write(op_stack, "op_stack");
            const int result = new_bi_item(code, &op_top, &operand_counter, &item_pos, k, o, s);
            return py::make_tuple(result, op_top, operand_counter, item_pos);
        },
        py::arg("code"), py::arg("op_top"), py::arg("operand_counter"), py::arg("item_pos"), py::arg("kinds"),
        py::arg("operands"), py::arg("op_stack"), described("new_bi_item"));
    m.def("op_isp", &op_isp, py::arg("code"), described("op_isp"));
    m.def("op_icp", &op_icp, py::arg("code"), described("op_icp"));
    m.def(
        "EqEvaluate",
        [](const Held& es, int equation) {
            Call call("EqEvaluate");
            EquationSystem* const system = used(call, es);
            return call.run([=] { return EqEvaluate(system, equation); });
        },
        py::arg("es"), py::arg("equation"), described("EqEvaluate"));
    m.def(
        "EqSimplify",
        [](const Held& es, int equation) {
            Call call("EqSimplify");
            EquationSystem* const system = used(call, es);
            return call.run([=] { return EqSimplify(system, equation); });
        },
        py::arg("es"), py::arg("equation"), described("EqSimplify"));
    const auto def_all = [&m](const char* name, int (*function)(EquationSystem*)) {
        m.def(
            name,
            [name, function](const Held& es) {
                Call call(name);
                EquationSystem* const system = used(call, es);
                return call.run([=] { return function(system); });
            },
            py::arg("es"), described(name));
    };
    def_all("EqSystemEvaluate", EqSystemEvaluate);
    def_all("EqSystemSimplify", EqSystemSimplify);
}

void add_tables(py::module_& m)
{
    m.def(
        "EqMakeTable",
        [](const Held& es, int func, int rows, int cols) {
            Call call("EqMakeTable");
            EquationSystem* const system = used(call, es);
            es->stand_apart();
            return call.run([=] { return EqMakeTable(system, func, rows, cols); });
        },
        py::arg("es"), py::arg("func"), py::arg("rows"), py::arg("cols"), described("EqMakeTable"));
    m.def(
        "EqMakeTableByName",
        [](const Held& es, std::string name, int rows, int cols) {
            Call call("EqMakeTableByName");
            EquationSystem* const system = used(call, es);
            Text wanted(std::move(name), "EqMakeTableByName");
            es->stand_apart();
            return call.run([&] { return EqMakeTableByName(system, wanted, rows, cols); });
        },
        py::arg("es"), py::arg("name"), py::arg("rows"), py::arg("cols"), described("EqMakeTableByName"));
    m.def(
        "EqSetTableIndex",
        [](const Held& es, double index) {
            Call call("EqSetTableIndex");
            EqSetTableIndex(used(call, es, true), index);
        },
        py::arg("es"), py::arg("index"), described("EqSetTableIndex"));
    m.def(
        "EqTableRead",
        [](const Held& es, int func) {
            Call call("EqTableRead");
            EquationSystem* const system = used(call, es);
            return call.run([=] { return EqTableRead(system, func); });
        },
        py::arg("es"), py::arg("func"), described("EqTableRead"));
}

} // namespace

void add_equation(py::module_& m)
{
    add_system(m);
    add_variables(m);
    add_functions(m);
    add_equations(m);
    add_tables(m);
}

} // namespace korvale::raw
