#pragma once

#include "refusal.hpp"

namespace korvale {

/// Values of one variable, one for each row of a calculation.
struct Column {
    std::string_view name;          ///< the variable
    const double* values = nullptr; ///< the first value
    std::size_t size = 0;           ///< how many there are
    std::ptrdiff_t stride = 1;      ///< doubles from one value to the next

    /// All of `numbers`.
    Column(std::string_view variable, std::span<const double> numbers)
        : name(variable), values(numbers.data()), size(numbers.size())
    {
    }

    /// Every `step`-th double from `first` on, such as the x of points.
    Column(std::string_view variable, const double* first, std::size_t count, std::ptrdiff_t step)
        : name(variable), values(first), size(count), stride(step)
    {
    }
};

/// Where the values of one variable go, one for each row of a calculation.
struct ResultColumn {
    std::string_view name;     ///< the variable
    double* values = nullptr;  ///< where the first value goes
    std::size_t size = 0;      ///< how many there is room for
    std::ptrdiff_t stride = 1; ///< doubles from one value to the next

    /// All of `numbers`.
    ResultColumn(std::string_view variable, std::span<double> numbers)
        : name(variable), values(numbers.data()), size(numbers.size())
    {
    }

    /// Every `step`-th double from `first` on.
    ResultColumn(std::string_view variable, double* first, std::size_t count, std::ptrdiff_t step)
        : name(variable), values(first), size(count), stride(step)
    {
    }
};

/// Named variables and equations over them, written as text.
///
/// ```
/// korvale::Equations drum;
/// drum.declare("h r t");
/// const int height = drum.add("h = SIN(r * 6 - t) * EXP(0 - r)");
/// drum.set("t", 0.5);
/// std::vector<double> radii = {0, 0.1, 0.2, 0.3};
/// std::vector<double> heights = drum.evaluate(height, {{"r", radii}});
/// ```
///
/// Names are up to 12 letters, capitals count. The variables PI and E and eighteen functions are there from the start;
/// see docs/equations.md for the language. A system belongs to one thread at a time.
class Equations {
public:
    Equations()
    {
        if (EqSystemInitialize(&system_) == 1 && is_complete())
            return;
        EqSystemDispose(&system_);
        throw std::bad_alloc();
    }
    ~Equations() { EqSystemDispose(&system_); }
    /// Takes the system over; what is left behind may only be destroyed or assigned to.
    Equations(Equations&& other) noexcept : system_(std::exchange(other.system_, EquationSystem{})) {}
    /// Exchanges the systems.
    Equations& operator=(Equations&& other) noexcept
    {
        std::swap(system_, other.system_);
        return *this;
    }

    /// Declares variables, each 0 at first; names that exist are left alone. A reserved variable takes the result of
    /// its equation at the end of a pass (`evaluate_all`) instead of at once.
    ///
    /// Throws `Error` for a name that is not letters only, longer than 12, or a function's.
    void declare(std::string_view names, bool reserved = false)
    {
        std::string text(names);
        for (std::size_t at = 0; at < text.size();) {
            if (is_blank(text[at])) {
                ++at;
                continue;
            }
            const std::size_t first = at;
            while (at < text.size() && !is_blank(text[at]))
                ++at;
            check_variable(text.substr(first, at - first));
        }
        if (EqParseVariables(&system_, text.data(), reserved) < 0)
            throw std::bad_alloc();
    }

    /// Adds an equation, "name = expression", and returns its number, counted from 0.
    ///
    /// Throws `EquationError`, with nothing added, for a text that cannot be read.
    int add(std::string_view equation)
    {
        std::string text(equation);
        if (const std::size_t zero = text.find('\0'); zero != std::string::npos)
            throw EquationError(text.substr(0, zero), zero, "", "a zero character ends it early");
        const std::int32_t row = std::max(0, system_.equations->count);
        std::vector<std::int32_t> columns;
        for (std::int32_t f = 0; f < system_.funcs->count; ++f)
            columns.push_back(table(f).dim);
        if (equation.find('=') != std::string_view::npos && EqParseEquation(&system_, text.data()) > 0)
            return row;

        if (equation.find('=') != std::string_view::npos) { // a refused equation leaves an empty row and wider tables
            for (std::int32_t f = 0; f < system_.funcs->count; ++f)
                table(f).dim = columns[static_cast<std::size_t>(f)];
            if (system_.equations->count == row || !drop_last_row())
                throw std::bad_alloc();
        }
        const detail::Refusal refusal = detail::RefusalFinder(system_, equation).find();
        throw EquationError(equation, refusal.place, refusal.word, refusal.why);
    }

    /// The number of equations.
    int size() const { return std::max(0, system_.equations->count); }

    /// The names of the variables, PI and E first.
    std::vector<std::string> variables() const
    {
        std::vector<std::string> names;
        for (std::int32_t v = 0; v < system_.var_vals->count; ++v)
            names.emplace_back(reinterpret_cast<const char*>(system_.var_names->bvals) + 13 * std::ptrdiff_t{v});
        return names;
    }

    /// Gives a variable a value.
    void set(std::string_view name, double value) { EqSetVariable(&system_, variable("Equations::set", name), value); }

    /// The value of a variable.
    double get(std::string_view name) const
    {
        const int v = variable("Equations::get", name);
        return system_.var_vals->dvals[v];
    }

    /// Runs an equation once and returns its result, which its variable also takes unless it is reserved.
    double evaluate(int equation)
    {
        check_equation("Equations::evaluate", equation);
        return EqEvaluate(&system_, equation);
    }

    /// Runs an equation once for every row: each column sets its variable, and the result goes to `output`. The columns
    /// have as many values as `output`; the variables keep those of the last row.
    void evaluate(int equation, std::span<const Column> columns, std::span<double> output)
    {
        evaluate(equation, columns, output.data(), output.size(), 1);
    }

    /// The same into every `stride`-th double from `output` on.
    void evaluate(int equation, std::span<const Column> columns, double* output, std::size_t rows,
                  std::ptrdiff_t stride)
    {
        check_equation("Equations::evaluate", equation);
        const std::vector<int> places = places_of("Equations::evaluate", columns, rows);
        for (std::size_t row = 0; row < rows; ++row) {
            load(columns, places, row);
            output[static_cast<std::ptrdiff_t>(row) * stride] = EqEvaluate(&system_, equation);
        }
    }

    /// The same with a vector as output, as long as the columns.
    std::vector<double> evaluate(int equation, std::initializer_list<Column> columns)
    {
        std::vector<double> output(columns.size() == 0 ? 1 : columns.begin()->size);
        evaluate(equation, std::span(columns.begin(), columns.size()), output);
        return output;
    }

    /// Runs all equations in order.
    void evaluate_all()
    {
        if (EqSystemEvaluate(&system_) != 1)
            throw std::bad_alloc();
    }

    /// Runs all equations in order once for every row; `results` take the values of their variables after each pass.
    void evaluate_all(std::span<const Column> columns, std::span<const ResultColumn> results)
    {
        const std::size_t rows = !columns.empty() ? columns[0].size : results.empty() ? 0 : results[0].size;
        const std::vector<int> sources = places_of("Equations::evaluate_all", columns, rows);
        const std::vector<int> targets = places_of("Equations::evaluate_all", results, rows);
        for (std::size_t row = 0; row < rows; ++row) {
            load(columns, sources, row);
            evaluate_all();
            for (std::size_t c = 0; c < results.size(); ++c)
                results[c].values[static_cast<std::ptrdiff_t>(row) * results[c].stride] =
                    system_.var_vals->dvals[targets[c]];
        }
    }

    /// Replaces functions of constants in all equations by their values.
    void simplify()
    {
        if (EqSystemSimplify(&system_) != 1)
            throw std::bad_alloc();
    }

    /// Adds a function for the equations added from now on. `name` is up to 12 letters that stand for nothing yet. Give
    /// a function pointer or a lambda without captures, of no, one or two doubles: equations keep plain pointers, so
    /// there is no place for captured values; hand such values over as variables.
    ///
    /// ```
    /// equations.function("STEP", [](double x) { return x < 0 ? 0.0 : 1.0; });
    /// equations.function("HYPOT", [](double a, double b) { return std::sqrt(a * a + b * b); });
    /// ```
    ///
    /// It is called inside evaluations and, for one without arguments, inside `make_table`; it must not throw.
    template <class F>
    void function(std::string_view name, F callable)
    {
        constexpr bool kNone = std::is_convertible_v<F, double (*)()>;
        constexpr bool kOne = std::is_convertible_v<F, double (*)(double)>;
        constexpr bool kTwo = std::is_convertible_v<F, double (*)(double, double)>;
        static_assert(kNone || kOne || kTwo,
                      "a function pointer or a lambda without captures, of no, one or two doubles");
        std::string text(name);
        check_name("Equations::function", text);
        if (EqLookupFunction(&system_, text.data()) >= 0 || EqLookupVariable(&system_, text.data()) >= 0)
            throw Error("Equations::function", "name", "be new", "\"" + text + "\" is a function or a variable");
        int result;
        if constexpr (kNone)
            result = EqAddFuncNoArg(&system_, text.data(), static_cast<double (*)()>(callable));
        else if constexpr (kOne)
            result = EqAddFuncUnary(&system_, text.data(), static_cast<double (*)(double)>(callable));
        else
            result = EqAddFuncBinary(&system_, text.data(), static_cast<double (*)(double, double)>(callable));
        if (result != 1)
            throw std::bad_alloc();
    }

    /// Replaces a function without arguments, such as RAND, by a table of `rows` rows of its values, so that noise
    /// stays the same from pass to pass and moves smoothly with `set_table_position`. Call it after the equations that
    /// name the function: each place that does has a column of its own.
    void make_table(std::string_view name, int rows)
    {
        std::string text(name);
        const int f = EqLookupFunction(&system_, text.data());
        if (f < 0 || system_.func_nargs->ivals[f] != 0)
            throw Error("Equations::make_table", "name", "be a function without arguments", "it is \"" + text + "\"");
        if (rows < 1)
            throw Error("Equations::make_table", "rows", "be 1 or more", "it is " + detail::text_of(rows));
        if (table(f).dim < 1)
            throw Error("Equations::make_table", "name", "stand in an equation",
                        "no equation names \"" + text + "\" yet");
        if (EqMakeTable(&system_, f, rows, 1) != 1)
            throw std::bad_alloc();
    }

    /// Moves all tables to a row; between two rows values are interpolated.
    void set_table_position(double row) { EqSetTableIndex(&system_, row); }

    /// The record behind the system.
    EquationSystem& system() { return system_; }

private:
    static bool is_blank(char c) { return c == ' ' || c == ',' || c == ';' || (c >= '\t' && c <= '\r'); }

    static void check_name(const char* function, const std::string& name)
    {
        const auto is_letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
        if (name.empty() || name.size() > 12 || !std::ranges::all_of(name, is_letter))
            throw Error(function, "a name", "be 1 to 12 letters", "it is \"" + name + "\"");
    }

    void check_variable(std::string name)
    {
        check_name("Equations::declare", name);
        if (EqLookupFunction(&system_, name.data()) >= 0)
            throw Error("Equations::declare", "a name", "be no function's", "\"" + name + "\" is one");
    }

    void check_equation(const char* function, int equation) const
    {
        if (equation < 0 || equation >= size())
            throw Error(function, "equation", "be the number of one of " + detail::text_of(size()) + " equations",
                        "it is " + detail::text_of(equation));
    }

    DATAstruct& table(std::int32_t f) { return *static_cast<DATAstruct*>(system_.tables->pvals[f]); }

    int variable(const char* function, std::string_view name) const
    {
        std::string text(name);
        const int v = EqLookupVariable(const_cast<EquationSystem*>(&system_), text.data());
        if (v < 0)
            throw Error(function, "name", "be a variable", "\"" + text + "\" is none");
        return v;
    }

    template <class AnyColumn>
    std::vector<int> places_of(const char* function, std::span<const AnyColumn> columns, std::size_t rows) const
    {
        std::vector<int> places;
        for (const AnyColumn& column : columns) {
            places.push_back(variable(function, column.name));
            if (column.size != rows)
                throw Error(function, "column \"" + std::string(column.name) + "\"",
                            "have " + detail::counted(rows, "value"), "it has " + detail::text_of(column.size));
        }
        return places;
    }

    void load(std::span<const Column> columns, const std::vector<int>& places, std::size_t row)
    {
        for (std::size_t c = 0; c < columns.size(); ++c)
            system_.var_vals->dvals[places[c]] =
                columns[c].values[static_cast<std::ptrdiff_t>(row) * columns[c].stride];
    }

    /// Whether the heap had room for all that a new system holds.
    bool is_complete() const
    {
        constexpr std::int32_t kFunctions = 18, kVariables = 2;
        if (system_.funcs->count != kFunctions || system_.var_vals->count != kVariables)
            return false;
        for (std::int32_t f = 0; f < kFunctions; ++f)
            if (system_.funcs->pvals[f] == nullptr || system_.tables->pvals[f] == nullptr)
                return false;
        return true;
    }

    /// Takes the last row off with its three arrays. Returns whether the heap had room for all of them.
    bool drop_last_row()
    {
        DATAstruct& equations = *system_.equations;
        equations.count -= 1;
        bool is_whole = true;
        for (int k = 0; k < 3; ++k) {
            void*& slot = equations.pvals[3 * std::ptrdiff_t{equations.count} + k];
            is_whole = is_whole && slot != nullptr;
            DATADispose(static_cast<DATAstruct*>(slot));
            std::free(std::exchange(slot, nullptr));
        }
        return is_whole;
    }

    EquationSystem system_ = {};
};

} // namespace korvale
