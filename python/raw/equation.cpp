// Equations. A Python function that equations call takes one of a number of entry points: the library hands its
// functions nothing but numbers, so each needs an address of its own.
#include <functional>
#include <utility>

#include "bind.h"

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

template <size_t Entry, class... Numbers>
double enter(Numbers... values)
{
    return call_python(Entry, values...);
}

template <class... Numbers, size_t... Entry>
constexpr std::array<double (*)(Numbers...), kEntries> entry_points(std::index_sequence<Entry...>)
{
    return {&enter<Entry, Numbers...>...};
}

template <class... Numbers>
constexpr auto kEntryPoints = entry_points<Numbers...>(std::make_index_sequence<kEntries>());

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

    void look(Call& call) override
    {
        if (status.funcs == nullptr)
            call.refuse("es has been disposed: EqSystemInitialize it first");
    }

    /// The address of `given`, a Python function or an address.
    template <class... Numbers>
    auto address(const py::object& given, const char* function) -> double (*)(Numbers...)
    {
        if (py::isinstance<py::int_>(given))
            return reinterpret_cast<double (*)(Numbers...)>(given.cast<uintptr_t>());
        if (given.is_none())
            return nullptr;
        if (!PyCallable_Check(given.ptr()))
            throw py::type_error(std::string(function) + ": function has to be callable, or an address");
        return kEntryPoints<Numbers...>[entrances_.emplace_back(sizeof...(Numbers), given, function).entry()];
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

void add_system(py::module_& m)
{
    using R = EquationSystem;
    py::class_<System, Whole, std::shared_ptr<System>> type(m, "EquationSystem", described("EquationSystem"));
    type.def(py::init<>());
    def_number(type, FIELD(R, table_index), "The row position of all table reads.");
    def_part(type, FIELD(R, funcs), true, "Function pointers; its count is the number of functions.");
    def_part(type, FIELD(R, func_names), true, "Names, kind byte [13].");
    def_part(type, FIELD(R, func_nargs), true, "Numbers of arguments, kind int [1].");
    def_part(type, FIELD(R, var_names), true, "Names, kind byte [13].");
    def_part(type, FIELD(R, var_vals), false, "Values, kind double [1].");
    def_part(type, FIELD(R, var_flags), false, "Reservation flags, kind byte [1].");
    def_part(type, FIELD(R, equations), true, "Programs, kind DATA_TYPE_DATA [3].");
    def_part(type, FIELD(R, tables), false, "Sample tables, kind DATA_TYPE_DATA [1].");
    def_part(type, FIELD(R, table_pos), true, "The column of the next read of each table, kind int [1].");
}

template <class... Numbers>
void def_addition(py::module_& m, const char* name, int (*add)(EquationSystem*, char*, double (*)(Numbers...)))
{
    const auto work = [add](Call& call, System& system, char* function_name, const py::object& given) {
        const size_t before = system.entrance_count();
        const auto function = system.address<Numbers...>(given, call.function());
        const int result = add(&system.status, function_name, function);
        if (result != 1)
            system.forget_last(before);
        return result;
    };
    def_work<System&, char*, const py::object&>(m, name, work, moving("es"), text("name"), plain("function"));
}

} // namespace

template <>
struct ObjectOf<EquationSystem> : std::type_identity<System> {
};

namespace {

void add_variables(py::module_& m)
{
    def(m, NAMED(EqParseVariables), moving("es"), text("text"), plain("flag", 0));
    def(m, NAMED(EqLookupVariable), nested("es"), text("name"));
    def(m, NAMED(EqSetVariable), nested("es"), plain("v"), plain("value"));
    def(m, NAMED(EqSetVariableByName), nested("es"), text("name"), plain("value"));
    def(m, NAMED(EqReadVariable), nested("es"), plain("v"));
    def(m, NAMED(EqReadVariableByName), nested("es"), text("name"));
    def(m, NAMED(EqReserveVariable), nested("es"), plain("v"), plain("flag"));
    def(m, NAMED(EqReserveVariableByName), nested("es"), text("name"), plain("flag"));
}

void add_functions(py::module_& m)
{
    def_addition(m, NAMED(EqAddFuncBinary));
    def_addition(m, NAMED(EqAddFuncUnary));
    def_addition(m, NAMED(EqAddFuncNoArg));
    def(m, NAMED(EqAnotherFunc), moving("es"));
    def(m, NAMED(EqLookupFunction), nested("es"), text("name"));
    def(m, NAMED(EqSeed), plain("seed"));
    def(m, NAMED(gauss_init), plain("seed"));
    def(m, NAMED(EqFuncRand));
    def(m, NAMED(gauss));
    def(m, NAMED(EqFuncAdd), plain("a"), plain("b"));
    def(m, NAMED(EqFuncSubtract), plain("a"), plain("b"));
    def(m, NAMED(EqFuncMultiply), plain("a"), plain("b"));
    def(m, NAMED(EqFuncDivide), plain("a"), plain("b"));
    def(m, NAMED(EqFuncNegate), plain("a"));
}

void add_equations(py::module_& m)
{
    def(m, NAMED(EqParseEquation), moving("es"), text("text"));
    def(m, NAMED(new_bi_item), plain("code"), address("op_top"), address("operand_counter"), address("item_pos"),
        write("kinds"), write("operands"), write("op_stack"));
    def(m, NAMED(op_isp), plain("code"));
    def(m, NAMED(op_icp), plain("code"));
    def_unlocked(m, NAMED(EqEvaluate), status("es"), plain("equation"));
    def_unlocked(m, NAMED(EqSimplify), status("es"), plain("equation"));
    def_unlocked(m, NAMED(EqSystemEvaluate), status("es"));
    def_unlocked(m, NAMED(EqSystemSimplify), status("es"));
}

void add_tables(py::module_& m)
{
    def_unlocked(m, NAMED(EqMakeTable), moving("es"), plain("func"), plain("rows"), plain("cols"));
    def_unlocked(m, NAMED(EqMakeTableByName), moving("es"), text("name"), plain("rows"), plain("cols"));
    def(m, NAMED(EqSetTableIndex), nested("es"), plain("index"));
    def_unlocked(m, NAMED(EqTableRead), status("es"), plain("func"));
}

} // namespace

void add_equation(py::module_& m)
{
    add_system(m);
    def(m, "EqSystemInitialize", &System::initialize, in_any_state("es"));
    def(m, "EqSystemDispose", &System::dispose, in_any_state("es"));
    add_variables(m);
    add_functions(m);
    add_equations(m);
    add_tables(m);
}

} // namespace korvale::raw
