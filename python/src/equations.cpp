// Equations over columns, with functions written in Python.
//
// The library calls functions by plain pointers, which have no place for a Python object. So each system numbers its
// functions, trampoline k calls function k of the system at work in its thread, and the doors below say which that is.
#include <array>
#include <exception>

#include <pybind11/stl.h>

#include "support.h"

namespace korvale::python {
namespace {

using Doubles = py::array_t<double, py::array::c_style>;

/// From so many rows on an evaluation is likely to take 20 microseconds or more.
constexpr std::size_t kManyRows = 200;

/// From so many equations on a pass takes 20 microseconds or more, and from so many rows on making a table.
constexpr int kManyEquations = 100;
constexpr int kManyDraws = 500;

/// Rows between two looks for signals.
constexpr std::size_t kPart = 16384;

/// Python functions of one number of arguments that a system can have.
constexpr std::size_t kMostFunctions = 64;

class System {
public:
    /// Makes a system the one at work in this thread for as long as the value lives, and raises afterwards what its
    /// functions have raised.
    class Work {
    public:
        Work(System& system, const char* function, bool is_long)
            : system_(system), unlocked_(is_long), turn_(system.turns_, function, is_long),
              before_(std::exchange(at_work_, &system))
        {
            system.raised_ = nullptr;
        }
        ~Work() { at_work_ = before_; }
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;

        /// What a function has raised, to be thrown where the interpreter's lock is held.
        std::exception_ptr raised() { return std::exchange(system_.raised_, nullptr); }

    private:
        System& system_;
        Unlocked unlocked_;
        Turns::Turn turn_;
        System* before_;
    };

    /// Runs `work(equations)` as the system at work.
    template <class F>
    auto run(const char* function, bool is_long, F work)
    {
        std::exception_ptr raised;
        if constexpr (std::is_void_v<decltype(work(equations_))>) {
            {
                Work here(*this, function, is_long);
                work(equations_);
                raised = here.raised();
            }
            if (raised)
                std::rethrow_exception(raised);
        } else {
            std::optional<decltype(work(equations_))> result;
            {
                Work here(*this, function, is_long);
                result.emplace(work(equations_));
                raised = here.raised();
            }
            if (raised)
                std::rethrow_exception(raised);
            return *std::move(result);
        }
    }

    void add_function(const std::string& name, py::object callable, int arguments)
    {
        std::vector<py::object>& known = functions_[static_cast<std::size_t>(arguments)];
        if (known.size() == kMostFunctions)
            throw Error("Equations.function", "name", "be one of " + detail::text_of(kMostFunctions) + " functions",
                        "there are as many of " + detail::counted(static_cast<std::size_t>(arguments), "argument"));
        const std::size_t k = known.size();
        if (arguments == 0)
            equations_.function(name, kNoArgument[k]);
        else if (arguments == 1)
            equations_.function(name, kOneArgument[k]);
        else
            equations_.function(name, kTwoArguments[k]);
        known.push_back(std::move(callable));
    }

    DATAstruct* table(const std::string& name)
    {
        std::string text = name;
        EquationSystem& system = equations_.system();
        const int f = EqLookupFunction(&system, text.data());
        if (f < 0 || system.func_nargs->ivals[f] != 0)
            throw Error("Equations.table", "name", "be a function without arguments", "it is \"" + name + "\"");
        return static_cast<DATAstruct*>(system.tables->pvals[f]);
    }

    Equations& equations() { return equations_; }
    bool has_raised() const { return raised_ != nullptr; }
    bool is_large() const { return equations_.size() >= kManyEquations; }

    int visit(visitproc visit, void* arg)
    {
        for (const std::vector<py::object>& known : functions_)
            for (const py::object& function : known)
                Py_VISIT(function.ptr());
        return 0;
    }

    /// Lets go of the functions, for the collector of cycles: nobody will evaluate any more.
    void clear()
    {
        for (std::vector<py::object>& known : functions_)
            for (py::object& function : known)
                function = py::none();
    }

private:
    template <std::size_t K, class... Numbers>
    static double call(Numbers... numbers)
    {
        return at_work_ == nullptr ? 0.0 : at_work_->call_function(K, numbers...);
    }

    /// Nothing is thrown through the library: the first exception is kept, and later calls give 0.
    template <class... Numbers>
    double call_function(std::size_t k, Numbers... numbers)
    {
        if (raised_)
            return 0.0;
        const py::gil_scoped_acquire locked;
        try {
            const py::object result = functions_[sizeof...(Numbers)][k](numbers...);
            return number_of(result, "Equations", "the result of a function");
        } catch (...) {
            raised_ = std::current_exception();
        }
        return 0.0;
    }

    template <class... Numbers, std::size_t... K>
    static constexpr auto trampolines(std::index_sequence<K...>)
    {
        return std::array<double (*)(Numbers...), sizeof...(K)>{&call<K, Numbers...>...};
    }

    static const std::array<double (*)(), kMostFunctions> kNoArgument;
    static const std::array<double (*)(double), kMostFunctions> kOneArgument;
    static const std::array<double (*)(double, double), kMostFunctions> kTwoArguments;
    static thread_local System* at_work_;

    Equations equations_;
    std::vector<py::object> functions_[3]; // by the number of arguments
    std::exception_ptr raised_;
    Turns turns_;
};

thread_local System* System::at_work_ = nullptr;
constexpr auto kAll = std::make_index_sequence<kMostFunctions>();
const std::array<double (*)(), kMostFunctions> System::kNoArgument = trampolines<>(kAll);
const std::array<double (*)(double), kMostFunctions> System::kOneArgument = trampolines<double>(kAll);
const std::array<double (*)(double, double), kMostFunctions> System::kTwoArguments = trampolines<double, double>(kAll);

/// Named one-dimensional arrays of doubles, read or written where they are.
using Columns = std::vector<std::pair<std::string, py::array>>;

std::ptrdiff_t stride_of(const py::array& column)
{
    return column.strides(0) / static_cast<std::ptrdiff_t>(sizeof(double));
}

std::vector<Column> to_read(const Columns& columns)
{
    std::vector<Column> read;
    for (const auto& [name, array] : columns)
        read.emplace_back(name, static_cast<const double*>(array.data()), static_cast<std::size_t>(array.shape(0)),
                          stride_of(array));
    return read;
}

/// Some rows of columns.
template <class AnyColumn>
std::vector<AnyColumn> part_of(std::vector<AnyColumn> columns, std::size_t first, std::size_t last)
{
    for (AnyColumn& column : columns) {
        column.values += column.stride * static_cast<std::ptrdiff_t>(first);
        column.size = last - first;
    }
    return columns;
}

/// Calls `work` with the first and past the last row of parts of nearly one size, so that what holds for all rows holds
/// for each part; looks for signals in between, and ends once a function has raised.
template <class Work>
void for_each_part(const System& system, std::size_t rows, Work work)
{
    const std::size_t parts = std::max<std::size_t>(1, (rows + kPart - 1) / kPart);
    Signals signals;
    for (std::size_t k = 0; k < parts && !system.has_raised(); ++k) {
        work(k * rows / parts, (k + 1) * rows / parts);
        if (parts > 1)
            signals();
    }
}

void evaluate_rows(System& system, int equation, const Columns& columns, py::array out)
{
    const std::vector<Column> read = to_read(columns);
    double* const to = static_cast<double*>(out.mutable_data());
    const auto rows = static_cast<std::size_t>(out.shape(0));
    const std::ptrdiff_t stride = stride_of(out);
    system.run("Equations.evaluate", rows >= kManyRows, [&](Equations& equations) {
        for_each_part(system, rows, [&](std::size_t first, std::size_t last) {
            equations.evaluate(equation, part_of(read, first, last), to + stride * static_cast<std::ptrdiff_t>(first),
                               last - first, stride);
        });
    });
}

void evaluate_all_rows(System& system, const Columns& columns, Columns& results)
{
    const std::vector<Column> read = to_read(columns);
    std::vector<ResultColumn> write;
    for (auto& [name, array] : results)
        write.emplace_back(name, static_cast<double*>(array.mutable_data()), static_cast<std::size_t>(array.shape(0)),
                           stride_of(array));
    const std::size_t rows = !read.empty() ? read[0].size : write.empty() ? 0 : write[0].size;
    system.run("Equations.evaluate_all", rows >= kManyRows, [&](Equations& equations) {
        for_each_part(system, rows, [&](std::size_t first, std::size_t last) {
            equations.evaluate_all(part_of(read, first, last), part_of(write, first, last));
        });
    });
}

/// What a table holds, [rows][columns] as they were when it was made; equations added since may want more columns.
py::array table_of(System& system, const std::string& name)
{
    const DATAstruct* const table = system.table(name);
    const bool is_there = table != nullptr && table->dvals != nullptr;
    const py::ssize_t rows = is_there ? table->alloc_count : 0, columns = is_there ? table->alloc_dim : 0;
    return Doubles({rows, columns}, is_there ? table->dvals : nullptr);
}

void fill_table(System& system, const std::string& name, const Doubles& values)
{
    DATAstruct* const table = system.table(name);
    if (table == nullptr || table->dvals == nullptr || values.shape(0) != table->alloc_count ||
        values.shape(1) != table->alloc_dim)
        throw Error("Equations.fill_table", "values", "have the shape of the table", "it has another");
    std::copy_n(values.data(), values.size(), table->dvals);
}

/// Makes a table of values that `table_of` gave, without calling the function.
void restore_table(System& system, const std::string& name, const Doubles& values)
{
    DATAstruct* const table = system.table(name);
    if (table == nullptr)
        throw std::bad_alloc();
    const std::int32_t columns = table->dim; // what the equations want
    table->type = DATA_TYPE_DOUBLE;
    table->count = static_cast<std::int32_t>(values.shape(0));
    table->dim = static_cast<std::int32_t>(values.shape(1));
    if (DATAAllocate(table) != 1)
        throw std::bad_alloc();
    table->dim = columns;
    std::copy_n(values.data(), values.size(), table->dvals);
}

std::vector<std::int32_t> table_columns(System& system)
{
    const EquationSystem& record = system.equations().system();
    return {record.table_pos->ivals, record.table_pos->ivals + record.funcs->count};
}

void set_table_columns(System& system, const std::vector<std::int32_t>& columns)
{
    const EquationSystem& record = system.equations().system();
    if (columns.size() != static_cast<std::size_t>(record.funcs->count))
        throw Error("Equations", "the state", "be of this system", "it is of another");
    std::ranges::copy(columns, record.table_pos->ivals);
}

/// The system of a Python object, null while it is being made.
System* system_of(PyObject* object)
{
    const auto value = reinterpret_cast<py::detail::instance*>(object)->get_value_and_holder();
    return value.holder_constructed() ? value.value_ptr<System>() : nullptr;
}

/// Lets the interpreter find cycles through functions that hold the system.
void enable_collection(PyHeapTypeObject* heap_type)
{
    PyTypeObject& type = heap_type->ht_type;
    type.tp_flags |= Py_TPFLAGS_HAVE_GC;
    type.tp_traverse = [](PyObject* self, visitproc visit, void* arg) {
        Py_VISIT(Py_TYPE(self));
        System* const system = system_of(self);
        return system == nullptr ? 0 : system->visit(visit, arg);
    };
    type.tp_clear = [](PyObject* self) {
        if (System* const system = system_of(self))
            system->clear();
        return 0;
    };
}

} // namespace

void bind_equations(py::module_& m)
{
    py::class_<System>(m, "System", py::custom_type_setup(&enable_collection))
        .def(py::init<>())
        .def("declare",
             [](System& self, const std::string& names, bool reserved) {
                 self.run("Equations.declare", false, [&](Equations& e) { e.declare(names, reserved); });
             })
        .def("add",
             [](System& self, const std::string& text) {
                 return self.run("Equations.add", false, [&](Equations& e) { return e.add(text); });
             })
        .def("__len__", [](System& self) { return self.equations().size(); })
        .def("variables", [](System& self) { return self.equations().variables(); })
        .def("set", [](System& self, const std::string& name,
                       double value) { self.run("Equations", false, [&](Equations& e) { e.set(name, value); }); })
        .def("get",
             [](System& self, const std::string& name) {
                 return self.run("Equations", false, [&](Equations& e) { return e.get(name); });
             })
        .def("evaluate",
             [](System& self, int equation) {
                 return self.run("Equations.evaluate", false, [&](Equations& e) { return e.evaluate(equation); });
             })
        .def("seed", [](System& self,
                        std::uint32_t seed) { self.run("Equations.seed", false, [&](Equations& e) { e.seed(seed); }); })
        .def_property_readonly("seeded", [](System& self) { return self.equations().seeded(); })
        .def_property_readonly("ran_in_blocks", [](System& self) { return self.equations().ran_in_blocks(); })
        .def("evaluate_rows", &evaluate_rows)
        .def("evaluate_all",
             [](System& self) {
                 self.run("Equations.evaluate_all", self.is_large(), [&](Equations& e) { e.evaluate_all(); });
             })
        .def("evaluate_all_rows", &evaluate_all_rows)
        .def("simplify",
             [](System& self) { self.run("Equations.simplify", self.is_large(), [&](Equations& e) { e.simplify(); }); })
        .def("function", &System::add_function)
        .def("make_table",
             [](System& self, const std::string& name, int rows) {
                 self.run("Equations.make_table", rows >= kManyDraws, [&](Equations& e) { e.make_table(name, rows); });
             })
        .def("set_table_position",
             [](System& self, double row) {
                 self.run("Equations", false, [&](Equations& e) { e.set_table_position(row); });
             })
        .def_property_readonly("table_position", [](System& self) { return self.equations().system().table_index; })
        .def("table", &table_of)
        .def("fill_table", &fill_table)
        .def("restore_table", &restore_table)
        .def("table_columns", &table_columns)
        .def("set_table_columns", &set_table_columns);
}

} // namespace korvale::python
