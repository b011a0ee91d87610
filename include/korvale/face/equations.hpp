#pragma once

#include <algorithm>
#include <exception>
#include <optional>

#include "points.hpp"
#include "progress.hpp"

namespace korvale {

/// Values of one variable, one for each row of a calculation.
struct Column {
    std::string_view name;          ///< the variable
    const double* values = nullptr; ///< the first value
    std::size_t size = 0;           ///< how many there are
    std::ptrdiff_t stride = 1;      ///< doubles from one value to the next

    /// All of `numbers`.
    ///@{
    Column(std::string_view variable KORVALE_LIFETIMEBOUND, std::span<const double> numbers KORVALE_LIFETIMEBOUND)
        : name(variable), values(numbers.data()), size(numbers.size())
    {
    }
    template <class Numbers>
    requires(std::convertible_to<Numbers, std::span<const double>> && !std::ranges::borrowed_range<Numbers>)
        Column(std::string_view, Numbers&&)
    = delete; // they would be gone: give them a name
    ///@}

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

namespace detail {

/// A call that may run functions of the host, at work in this thread: it keeps what the first of them to throw throws,
/// since nothing may be thrown through the library.
class Evaluation {
public:
    explicit Evaluation(korvale_equations* equations) : equations_(equations), before_(std::exchange(at_work, this)) {}
    ~Evaluation() { at_work = before_; }
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;

    bool has_thrown() const noexcept { return thrown_ != nullptr; }

    /// Keeps an exception and ends the evaluation.
    void keep(std::exception_ptr thrown) noexcept
    {
        thrown_ = std::move(thrown);
        korvale_equations_stop(equations_);
    }

    void rethrow()
    {
        if (thrown_)
            std::rethrow_exception(std::exchange(thrown_, nullptr));
    }

    static inline constinit thread_local Evaluation* at_work = nullptr;

private:
    korvale_equations* equations_;
    Evaluation* before_;
    std::exception_ptr thrown_;
};

/// How many doubles a callable takes: 0, 1, 2, or -1 for none of these.
template <class F>
inline constexpr int arguments_of = std::is_invocable_r_v<double, F&>                   ? 0
                                    : std::is_invocable_r_v<double, F&, double>         ? 1
                                    : std::is_invocable_r_v<double, F&, double, double> ? 2
                                                                                        : -1;

/// A callable of the host as the C interface takes it. Those without anything to keep share one place.
template <class F>
struct HostFunction {
    static constexpr bool kIsPlain = std::is_pointer_v<F>;
    static constexpr bool kIsEmpty = std::is_empty_v<F> && std::is_default_constructible_v<F>;

    static void* user_of(F&& callable)
    {
        if constexpr (kIsPlain)
            return reinterpret_cast<void*>(callable);
        else if constexpr (kIsEmpty)
            return nullptr;
        else
            return new F(std::move(callable));
    }

    static void release(void* user)
    {
        if constexpr (!kIsPlain && !kIsEmpty)
            delete static_cast<F*>(user);
    }

    static double call(const double* numbers, void* user) noexcept
    {
        constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
        Evaluation* const evaluation = Evaluation::at_work;
        if (evaluation != nullptr && evaluation->has_thrown())
            return kNothing;
        double value = kNothing;
        const std::exception_ptr thrown = caught([&] {
            if constexpr (kIsPlain) {
                value = call(reinterpret_cast<F>(user), numbers);
            } else if constexpr (kIsEmpty) {
                F callable;
                value = call(callable, numbers);
            } else {
                value = call(*static_cast<F*>(user), numbers);
            }
        });
        if (!thrown)
            return value;
        if (evaluation != nullptr)
            evaluation->keep(thrown);
        return kNothing;
    }

private:
    template <class Callable>
    static double call(Callable&& callable, const double* numbers)
    {
        if constexpr (arguments_of<F> == 0)
            return static_cast<double>(callable());
        else if constexpr (arguments_of<F> == 1)
            return static_cast<double>(callable(numbers[0]));
        else
            return static_cast<double>(callable(numbers[0], numbers[1]));
    }
};

/// A text that ends with a zero and holds no other: those in it, which no name has, become question marks.
inline std::string plain_text(std::string_view text)
{
    std::string plain(text);
    std::ranges::replace(plain, '\0', '?');
    return plain;
}

/// Refuses a column that has one place for all rows.
inline std::optional<Failure> refuse_places(const char* function, std::string_view name, std::size_t size,
                                            std::ptrdiff_t stride)
{
    if (stride != 0 || size < 2)
        return {};
    return Failure(function, name, "have a place for each row", "its stride is 0");
}

/// Columns as the C interface takes them: their names end with a zero.
template <class Plain>
class PlainColumns {
public:
    template <class AnyColumn>
    explicit PlainColumns(std::span<const AnyColumn> columns)
    {
        names_.reserve(columns.size());
        for (const AnyColumn& column : columns) {
            const char* const name = names_.emplace_back(plain_text(column.name)).c_str();
            columns_.push_back({name, values_of(column)});
        }
    }

    const Plain* data() const noexcept { return columns_.data(); }
    std::int64_t size() const noexcept { return static_cast<std::int64_t>(columns_.size()); }

private:
    korvale_numbers values_of(const Column& column)
    {
        const auto n = static_cast<std::int64_t>(column.size);
        if (column.stride != 0 || n < 2)
            return {column.values, n, column.stride * std::ptrdiff_t{sizeof(double)}, 1, KORVALE_DOUBLE};
        const std::vector<double>& copies = copies_.emplace_back(column.size, *column.values); // one value for all
        return {copies.data(), n, 0, 1, KORVALE_DOUBLE};
    }

    static korvale_numbers_out values_of(const ResultColumn& column)
    {
        return {column.values, static_cast<std::int64_t>(column.size), column.stride * std::ptrdiff_t{sizeof(double)},
                1, KORVALE_DOUBLE};
    }

    std::vector<std::string> names_;
    std::vector<std::vector<double>> copies_;
    std::vector<Plain> columns_;
};

} // namespace detail

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
    /// A system with PI and E.
    Equations() : Equations(try_make().value()) {}

    /// The same, telling of failures by its result.
    static Result<Equations> try_make()
    {
        korvale_error error;
        korvale_equations* made = nullptr;
        if (const korvale_status status = korvale_equations_new(&made, &error); status != KORVALE_OK)
            return Failure("Equations", status, error);
        return Equations(made);
    }

    /// Takes the system over; what is left behind may only be destroyed or assigned to.
    Equations(Equations&& other) noexcept = default;
    /// Exchanges the systems.
    Equations& operator=(Equations&& other) noexcept
    {
        equations_.swap(other.equations_);
        return *this;
    }

    /// Declares variables, each 0 at first; names that exist are left alone. A reserved variable takes the result of
    /// its equation at the end of a pass (`evaluate_all`) instead of at once.
    ///
    /// Throws `Error` for a name that is not letters only, longer than 12, or a function's.
    void declare(std::string_view names, bool reserved = false) { try_declare(names, reserved).value(); }

    /// The same, telling of failures by its result.
    Result<void> try_declare(std::string_view names, bool reserved = false)
    {
        return call("Equations::declare", [&](korvale_error* error) {
            return korvale_equations_declare(equations_.get(), detail::plain_text(names).c_str(), reserved, error);
        });
    }

    /// Adds an equation, "name = expression", and returns its number, counted from 0.
    ///
    /// Throws `EquationError`, with nothing added, for a text that cannot be read or has anything in it that the
    /// language does not know.
    int add(std::string_view equation) { return try_add(equation).value(); }

    /// The same, telling of failures by its result, which knows the word and its place.
    Result<int> try_add(std::string_view equation)
    {
        constexpr const char* kFunction = "Equations::add";
        return detail::within_memory(kFunction, [&]() -> Result<int> {
            const std::string text(equation);
            if (const std::size_t zero = text.find('\0'); zero != std::string::npos)
                return Failure(EquationError(text.substr(0, zero), zero, "", "a zero character ends it early"));
            std::int32_t number = 0;
            korvale_error error;
            if (const korvale_status status = korvale_equations_add(equations_.get(), text.c_str(), &number, &error);
                status != KORVALE_OK)
                return Failure(kFunction, status, error);
            return int{number};
        });
    }

    /// The number of equations.
    int size() const { return korvale_equations_count(equations_.get()); }

    /// The names of the variables, PI and E first.
    std::vector<std::string> variables() const
    {
        std::vector<std::string> names;
        for (std::int32_t v = 0; v < korvale_equations_variables(equations_.get()); ++v)
            names.emplace_back(korvale_equations_name(equations_.get(), v));
        return names;
    }

    /// Gives a variable a value.
    void set(std::string_view name, double value) { try_set(name, value).value(); }

    /// The same, telling of failures by its result.
    Result<void> try_set(std::string_view name, double value)
    {
        return call("Equations::set", [&](korvale_error* error) {
            return korvale_equations_set(equations_.get(), detail::plain_text(name).c_str(), value, error);
        });
    }

    /// The value of a variable.
    double get(std::string_view name) const { return try_get(name).value(); }

    /// The same, telling of failures by its result.
    Result<double> try_get(std::string_view name) const
    {
        double value = 0;
        const Result<void> done = call("Equations::get", [&](korvale_error* error) {
            return korvale_equations_get(equations_.get(), detail::plain_text(name).c_str(), &value, error);
        });
        return with(value, done);
    }

    /// Runs an equation once and returns its result, which its variable also takes unless it is reserved.
    double evaluate(int equation) { return try_evaluate(equation).value(); }

    /// The same, telling of failures by its result; what functions of yours throw is thrown on.
    Result<double> try_evaluate(int equation)
    {
        double result = 0;
        const Result<void> done = run("Equations::evaluate", [&](korvale_error* error) {
            return korvale_equations_evaluate(equations_.get(), equation, &result, error);
        });
        return with(result, done);
    }

    /// Runs an equation once for every row: each column sets its variable, and the result goes to `output`. The columns
    /// have as many values as `output`; the variables keep those of the last row.
    ///
    /// Throws `Error` where `progress` has stopped it: the rows so far are written, and the variables keep the values
    /// of the last of them.
    void evaluate(int equation, std::span<const Column> columns, std::span<double> output,
                  const Progress& progress = {})
    {
        evaluate(equation, columns, output.data(), output.size(), 1, progress);
    }

    /// The same into every `stride`-th double from `output` on.
    void evaluate(int equation, std::span<const Column> columns, double* output, std::size_t rows,
                  std::ptrdiff_t stride, const Progress& progress = {})
    {
        try_evaluate(equation, columns, output, rows, stride, progress).value();
    }

    /// The same two, telling of failures by their result; what functions of yours throw is thrown on.
    ///@{
    Result<void> try_evaluate(int equation, std::span<const Column> columns, std::span<double> output,
                              const Progress& progress = {})
    {
        return try_evaluate(equation, columns, output.data(), output.size(), 1, progress);
    }
    Result<void> try_evaluate(int equation, std::span<const Column> columns, double* output, std::size_t rows,
                              std::ptrdiff_t stride, const Progress& progress = {})
    {
        constexpr const char* kFunction = "Equations::evaluate";
        return detail::within_memory(kFunction, [&]() -> Result<void> {
            if (std::optional<Failure> failure = detail::refuse_places(kFunction, "column \"output\"", rows, stride))
                return *std::move(failure);
            const detail::PlainColumns<korvale_column> read(columns);
            const korvale_numbers_out write = {output, static_cast<std::int64_t>(rows),
                                               stride * std::ptrdiff_t{sizeof(double)}, 1, KORVALE_DOUBLE};
            return run(kFunction, progress, [&](korvale_progress told, void* user, korvale_error* error) {
                return korvale_equations_evaluate_rows(equations_.get(), equation, read.data(), read.size(), &write,
                                                       told, user, error);
            });
        });
    }
    ///@}

    /// The same with a vector as output, as long as the columns.
    std::vector<double> evaluate(int equation, std::initializer_list<Column> columns, const Progress& progress = {})
    {
        return try_evaluate(equation, columns, progress).value();
    }

    /// The same, telling of failures by its result; what functions of yours throw is thrown on.
    Result<std::vector<double>> try_evaluate(int equation, std::initializer_list<Column> columns,
                                             const Progress& progress = {})
    {
        return detail::within_memory("Equations::evaluate", [&]() -> Result<std::vector<double>> {
            std::vector<double> output(columns.size() == 0 ? 1 : columns.begin()->size);
            const Result<void> done =
                try_evaluate(equation, std::span(columns.begin(), columns.size()), output, progress);
            return with(output, done);
        });
    }

    /// Runs all equations in order.
    void evaluate_all() { try_evaluate_all().value(); }

    /// The same, telling of failures by its result; what functions of yours throw is thrown on.
    Result<void> try_evaluate_all()
    {
        return run("Equations::evaluate_all",
                   [&](korvale_error* error) { return korvale_equations_pass(equations_.get(), error); });
    }

    /// Runs all equations in order once for every row; `results` take the values of their variables after each pass.
    /// Where `progress` has stopped it, it ends as `evaluate` does.
    void evaluate_all(std::span<const Column> columns, std::span<const ResultColumn> results,
                      const Progress& progress = {})
    {
        try_evaluate_all(columns, results, progress).value();
    }

    /// The same, telling of failures by its result; what functions of yours throw is thrown on.
    Result<void> try_evaluate_all(std::span<const Column> columns, std::span<const ResultColumn> results,
                                  const Progress& progress = {})
    {
        constexpr const char* kFunction = "Equations::evaluate_all";
        return detail::within_memory(kFunction, [&]() -> Result<void> {
            for (const ResultColumn& column : results)
                if (std::optional<Failure> failure = detail::refuse_places(
                        kFunction, "column \"" + std::string(column.name) + "\"", column.size, column.stride))
                    return *std::move(failure);
            const detail::PlainColumns<korvale_column> read(columns);
            const detail::PlainColumns<korvale_column_out> write(results);
            return run(kFunction, progress, [&](korvale_progress told, void* user, korvale_error* error) {
                return korvale_equations_pass_rows(equations_.get(), read.data(), read.size(), write.data(),
                                                   write.size(), told, user, error);
            });
        });
    }

    /// Whether the last call over columns ran a block of rows at a time: many times as quick, with the same bits. It
    /// ran row by row for few rows, where equations call RAND, GAUSS (but from a table) or a function of the host,
    /// where one reads a variable that it or a later one sets, and where an output lies shifted over a column.
    bool ran_in_blocks() const { return korvale_equations_ran_in_blocks(equations_.get()) != 0; }

    /// Replaces functions of constants in all equations by their values.
    void simplify() { try_simplify().value(); }

    /// The same, telling of failures by its result.
    Result<void> try_simplify()
    {
        return run("Equations::simplify",
                   [&](korvale_error* error) { return korvale_equations_simplify(equations_.get(), error); });
    }

    /// Adds a function for the equations added from now on. `name` is up to 12 letters that stand for nothing yet. Give
    /// anything that takes no, one or two doubles and returns one: a function pointer, a lambda with what it captures,
    /// a `std::function`. It is kept as long as the system.
    ///
    /// ```
    /// equations.function("STEP", [](double x) { return x < 0 ? 0.0 : 1.0; });
    /// equations.function("HYPOT", [](double a, double b) { return std::sqrt(a * a + b * b); });
    /// const std::vector<double> heights = {0, 1, 4, 9};
    /// equations.function("HEIGHT", [heights](double i) { return heights.at(static_cast<std::size_t>(i)); });
    /// ```
    ///
    /// It is called inside evaluations and, for one without arguments, inside `make_table`. What it throws ends the
    /// evaluation, which throws it on; called by `EqEvaluate` on `system()`, through which nothing can be thrown, it
    /// gives NaN instead.
    ///
    /// A process has room for 512 functions of each number of arguments at a time. Lambdas that capture nothing, and
    /// function pointers, need one place each, however many systems use them.
    template <class F>
    void function(std::string_view name, F callable)
    {
        try_function(name, std::move(callable)).value();
    }

    /// The same, telling of failures by its result.
    template <class F>
    Result<void> try_function(std::string_view name, F callable)
    {
        using Host = detail::HostFunction<F>;
        constexpr int kArguments = detail::arguments_of<F>;
        static_assert(kArguments >= 0, "a callable of no, one or two doubles that returns a double");
        return call("Equations::function", [&](korvale_error* error) {
            const std::string text = detail::plain_text(name);
            return korvale_equations_function(equations_.get(), text.c_str(), kArguments, &Host::call,
                                              Host::user_of(std::move(callable)), &Host::release, error);
        });
    }

    /// Gives RAND and GAUSS of this system a random generator of its own, or seeds it anew: they repeat whatever else
    /// draws, in any thread, and are what the generator of the process gives after `EqSeed`.
    void seed(std::uint32_t seed) { try_seed(seed).value(); }

    /// The same, telling of failures by its result.
    Result<void> try_seed(std::uint32_t seed)
    {
        return call("Equations::seed",
                    [&](korvale_error* error) { return korvale_equations_seed(equations_.get(), seed, error); });
    }

    /// The seed that goes on from here, where the system has a generator of its own.
    std::optional<std::uint32_t> seeded() const
    {
        std::uint32_t seed = 0;
        const bool is_seeded = korvale_equations_seeded(equations_.get(), &seed) != 0;
        return is_seeded ? std::optional(seed) : std::nullopt;
    }

    /// Replaces a function without arguments, such as RAND, by a table of `rows` rows of its values, so that noise
    /// stays the same from pass to pass and moves smoothly with `set_table_position`. Call it after the equations that
    /// name the function: each place that does has a column of its own.
    void make_table(std::string_view name, int rows) { try_make_table(name, rows).value(); }

    /// The same, telling of failures by its result; what the function throws is thrown on.
    Result<void> try_make_table(std::string_view name, int rows)
    {
        return run("Equations::make_table", [&](korvale_error* error) {
            return korvale_equations_make_table(equations_.get(), detail::plain_text(name).c_str(), rows, error);
        });
    }

    /// Moves all tables to a row; between two rows values are interpolated.
    void set_table_position(double row) { korvale_equations_set_table_position(equations_.get(), row); }

    /// The record behind the system. It is an `EquationSystem&`; include korvale.hpp for it.
    template <class Behind = korvale_equations>
    detail::Record<Behind>& system()
    {
        return *static_cast<detail::Record<Behind>*>(korvale_equations_record(equations_.get()));
    }

private:
    struct Free {
        void operator()(korvale_equations* equations) const { korvale_equations_free(equations); }
    };

    explicit Equations(korvale_equations* made) noexcept : equations_(made) {}

    /// A call, which may make texts.
    template <class Call>
    static Result<void> call(const char* function, Call work)
    {
        return detail::within_memory(function, [&]() -> Result<void> { return detail::done(function, work); });
    }

    /// A call that may run functions of the host; what they throw is thrown on.
    template <class Call>
    Result<void> run(const char* function, Call work)
    {
        detail::Evaluation evaluation(equations_.get());
        Result<void> done = call(function, work);
        evaluation.rethrow();
        return done;
    }

    /// The same with somebody to tell.
    template <class Call>
    Result<void> run(const char* function, const Progress& progress, Call work)
    {
        if (!progress)
            return run(function, [&](korvale_error* error) { return work(nullptr, nullptr, error); });
        detail::Evaluation evaluation(equations_.get());
        Result<void> done = detail::done(function, progress, work);
        evaluation.rethrow();
        return done;
    }

    /// A value once all is done.
    template <class T>
    static Result<T> with(T& value, const Result<void>& done)
    {
        if (!done)
            return done.error();
        return std::move(value);
    }

    std::unique_ptr<korvale_equations, Free> equations_;
};

} // namespace korvale
