// Equations as text for every face: a system of its own in a handle, with what functions of the host are called with.
#include "door/internal/equations.h"

#include <algorithm>
#include <span>

#include "door/internal/quoted.h"
#include "door/internal/refusal.h"
#include "door/internal/rows.h"
#include "door/internal/views.h"
#include "equation/evaluate.h"
#include "equation/functions.h"
#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "equation/parse.h"
#include "equation/simplify.h"
#include "equation/tables.h"
#include "equation/variables.h"
#include "platform/internal/generator.h"
#include "platform/internal/random.h"

namespace korvale::door {

using namespace korvale::equation;

namespace {

constexpr int32_t kBuiltInVariables = 2; ///< that a new system holds

Word as_word(std::string_view text)
{
    return {text.data(), text.size()};
}

/// Whether the heap had room for all that a new system holds.
bool is_complete(const EquationSystem& es)
{
    if (es.funcs->count != kBuiltInCount || es.var_vals->count != kBuiltInVariables)
        return false;
    for (int32_t f = 0; f < kBuiltInCount; ++f)
        if (es.funcs->pvals[f] == nullptr || es.tables->pvals[f] == nullptr)
            return false;
    return true;
}

int32_t equation_count(const korvale_equations& equations)
{
    return std::max(0, equations.record.equations->count);
}

// --- What is asked of arguments --------------------------------------------------------------------------------------

korvale_equations& require_equations(korvale_equations* equations)
{
    require(equations, "equations");
    return *equations;
}

const korvale_equations& require_equations(const korvale_equations* equations)
{
    require(equations, "equations");
    return *equations;
}

bool is_name(std::string_view name)
{
    return !name.empty() && name.size() <= kLongestName && std::all_of(name.begin(), name.end(), is_letter);
}

int32_t require_variable(const EquationSystem& es, const char* name)
{
    require(name, "name");
    const int32_t v = variables_of(es).find(word_of(name));
    if (v < 0)
        throw Refusal("name", "be a variable", Text() << quoted(name) << " is none");
    return v;
}

void require_equation(const korvale_equations& equations, int32_t equation)
{
    const int32_t n = equation_count(equations);
    if (equation < 0 || equation >= n)
        throw Refusal("equation", Text() << "be the number of one of " << n << " equations",
                      Text() << "it is " << equation);
}

/// A column's buffer, whose numbers may stand anywhere; returns how many there are.
template <class Buffer>
int64_t require_column(const Buffer& values, std::string_view argument)
{
    if (values.kind != KORVALE_DOUBLE && values.kind != KORVALE_FLOAT)
        throw Refusal(argument, "be of kind KORVALE_DOUBLE or KORVALE_FLOAT", Text() << "its kind is " << values.kind);
    if (values.width != 0 && values.width != 1)
        throw Refusal(argument, "have a width of 1", Text() << "it is " << values.width);
    if (values.count < 0)
        throw Refusal(argument, "have a count of 0 or more", Text() << "it is " << values.count);
    if (values.data == nullptr && values.count > 0)
        throw Refusal(argument, "have data", "it is null");
    return values.count;
}

template <class Buffer>
int64_t stride_of(const Buffer& values)
{
    if (values.stride != 0)
        return values.stride;
    return values.kind == KORVALE_FLOAT ? int64_t{sizeof(float)} : int64_t{sizeof(double)};
}

/// A host's columns as the cores want them, each of `rows` values.
template <class Inside, class Given>
Vector<Inside> require_columns(const EquationSystem& es, const Given* given, int64_t count, std::string_view argument,
                               int64_t rows)
{
    if (count < 0)
        throw Refusal(argument, "be 0 or more", Text() << "there are " << count);
    if (count > 0)
        require(given, argument);
    Vector<Inside> columns;
    columns.reserve(static_cast<size_t>(count));
    for (const Given& column : std::span(given, static_cast<size_t>(count))) {
        const int32_t variable = require_variable(es, column.name);
        Text name;
        name << "column " << quoted(column.name);
        if (const int64_t n = require_column(column.values, name); n != rows)
            throw Refusal(name, Text() << "have " << counted(rows, "value"), Text() << "it has " << n);
        using Data = decltype(Inside::data);
        columns.push_back(
            {static_cast<Data>(column.values.data), stride_of(column.values), column.values.kind, variable});
    }
    return columns;
}

// --- Variables and equations -----------------------------------------------------------------------------------------

void declare(EquationSystem& es, const char* names, bool is_reserved)
{
    const auto is_blank = [](char c) { return c == ' ' || c == ',' || c == ';' || (c >= '\t' && c <= '\r'); };
    for (const char* at = names; *at != '\0';) {
        if (is_blank(*at)) {
            ++at;
            continue;
        }
        const char* const first = at;
        while (*at != '\0' && !is_blank(*at))
            ++at;
        const std::string_view name(first, static_cast<size_t>(at - first));
        if (!is_name(name))
            throw Refusal("names", Text() << "be 1 to " << kLongestName << " letters each",
                          Text() << quoted(name) << " is among them");
        if (functions_of(es).find(as_word(name)) >= 0)
            throw Refusal("names", "be no functions'", Text() << quoted(name) << " is one");
    }
    if (EqParseVariables(&es, const_cast<char*>(names), is_reserved) < 0) // which only reads them
        throw std::bad_alloc();
}

DATAstruct& table_of(const EquationSystem& es, int32_t f)
{
    return *static_cast<DATAstruct*>(es.tables->pvals[f]);
}

/// Takes the last row off with its three arrays. Returns whether the heap had room for all of them.
bool drop_last_row(EquationSystem& es)
{
    es.equations->count -= 1;
    bool is_whole = true;
    void** const row = es.equations->pvals + int64_t{es.equations->count} * kChildren;
    for (int32_t child = 0; child < kChildren; ++child) {
        is_whole = is_whole && row[child] != nullptr;
        DATADispose(static_cast<DATAstruct*>(row[child]));
        std::free(std::exchange(row[child], nullptr));
    }
    return is_whole;
}

int32_t add(korvale_equations& equations, const char* text)
{
    EquationSystem& es = equations.record;
    const int32_t items = require_whole_equation(es, text);
    const int32_t row = equation_count(equations), functions = es.funcs->count;
    Vector<int32_t> columns;
    for (int32_t f = 0; f < functions; ++f)
        columns.push_back(table_of(es, f).dim);
    if (EqParseEquation(&es, const_cast<char*>(text)) > 0) // which writes only where the left side is no variable
        return row;
    for (int32_t f = 0; f < functions; ++f) // a refused equation leaves wider tables and an empty row
        table_of(es, f).dim = columns[static_cast<size_t>(f)];
    if (es.equations->count == row || !drop_last_row(es))
        throw std::bad_alloc();
    refuse_beyond_limits(text, items);
}

// --- Running ---------------------------------------------------------------------------------------------------------

/// Runs what may call functions of the host, and fails where one of them has asked to stop.
template <class Work>
void run(korvale_equations& equations, Work work)
{
    const bool before = std::exchange(equations.is_stopped, false); // a function may run its own system again
    work();
    if (std::exchange(equations.is_stopped, before))
        throw Stop();
}

// --- Functions and tables --------------------------------------------------------------------------------------------

/// What a host hands over with a function: released unless it is kept.
struct User {
    void* user;
    void (*release)(void* user);

    ~User()
    {
        if (release != nullptr)
            release(user);
    }
};

void add_function(korvale_equations& equations, const char* name, int32_t arguments, korvale_function function,
                  User& user)
{
    EquationSystem& es = equations.record;
    require(name, "name");
    if (!is_name(name))
        throw Refusal("name", Text() << "be 1 to " << kLongestName << " letters", Text() << "it is " << quoted(name));
    if (functions_of(es).find(word_of(name)) >= 0 || variables_of(es).find(word_of(name)) >= 0)
        throw Refusal("name", "be new", Text() << quoted(name) << " is a function or a variable");
    if (arguments < 0 || arguments > 2)
        throw Refusal("arguments", "be 0, 1 or 2", Text() << "it is " << arguments);
    require(reinterpret_cast<const void*>(function), "function");
    equations.functions.push_back({HostFunction(arguments, function, user.user), user.user, nullptr});
    const Function plain = equations.functions.back().function.plain();
    char* const text = const_cast<char*>(name); // which is only read
    const int result = arguments == 0   ? EqAddFuncNoArg(&es, text, plain.none)
                       : arguments == 1 ? EqAddFuncUnary(&es, text, plain.one)
                                        : EqAddFuncBinary(&es, text, plain.two);
    if (result != 1) {
        equations.functions.pop_back();
        throw std::bad_alloc();
    }
    equations.functions.back().release = std::exchange(user.release, nullptr);
}

double draw_even(const double*, void* user)
{
    auto& state = *static_cast<uint32_t*>(user);
    state = following(state);
    return unit_of(number_of(state));
}

double draw_normal(const double*, void* user)
{
    double sum = draw_even(nullptr, user);
    for (int draw = 1; draw < 4; ++draw)
        sum += draw_even(nullptr, user);
    return normal_of(sum);
}

/// Lets RAND and GAUSS draw from the system's own generator.
void give_generator(korvale_equations& equations)
{
    HostFunction even(0, draw_even, &equations.generator), normal(0, draw_normal, &equations.generator);
    equations.functions.reserve(equations.functions.size() + 2);
    for (const int32_t f : {kRand, kGauss})
        if (is_built_in(f, functions_of(equations.record).at(f))) // a host's own function stays
            equations.record.funcs->pvals[f] = (f == kRand ? even : normal).plain().slot();
    equations.functions.push_back({std::move(even), nullptr, nullptr});
    equations.functions.push_back({std::move(normal), nullptr, nullptr});
    equations.has_generator = true;
}

void make_table(korvale_equations& equations, const char* name, int32_t rows)
{
    EquationSystem& es = equations.record;
    require(name, "name");
    const int32_t f = functions_of(es).find(word_of(name));
    if (f < 0 || es.func_nargs->ivals[f] != 0)
        throw Refusal("name", "be a function without arguments", Text() << "it is " << quoted(name));
    if (rows < 1)
        throw Refusal("rows", "be 1 or more", Text() << "it is " << rows);
    if (table_of(es, f).dim < 1)
        throw Refusal("name", "stand in an equation", Text() << "no equation names " << quoted(name) << " yet");
    run(equations, [&] { require_done(EqMakeTable(&es, f, rows, 1)); });
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_equations::korvale_equations()
{
    if (EqSystemInitialize(&record) == 1 && is_complete(record))
        return;
    EqSystemDispose(&record);
    throw std::bad_alloc();
}

korvale_equations::~korvale_equations()
{
    EqSystemDispose(&record);
    for (const Registration& registration : functions)
        if (registration.release != nullptr)
            registration.release(registration.user);
}

korvale_status korvale_equations_new(korvale_equations** equations, korvale_error* error)
{
    if (equations != nullptr)
        *equations = nullptr;
    return answer(error, "korvale_equations_new", [&] {
        require(equations, "equations");
        *equations = make_handle<korvale_equations>();
    });
}

korvale_status korvale_equations_declare(korvale_equations* equations, const char* names, int32_t reserved,
                                         korvale_error* error)
{
    return answer(error, "korvale_equations_declare", [&] {
        korvale_equations& e = require_equations(equations);
        require(names, "names");
        declare(e.record, names, reserved != 0);
    });
}

korvale_status korvale_equations_add(korvale_equations* equations, const char* text, int32_t* number,
                                     korvale_error* error)
{
    return answer(error, "korvale_equations_add", [&] {
        korvale_equations& e = require_equations(equations);
        require(text, "text");
        const int32_t added = add(e, text);
        if (number != nullptr)
            *number = added;
    });
}

int32_t korvale_equations_count(const korvale_equations* equations)
{
    return equations == nullptr ? 0 : equation_count(*equations);
}

int32_t korvale_equations_variables(const korvale_equations* equations)
{
    return equations == nullptr ? 0 : korvale::equation::variables_of(equations->record).named;
}

const char* korvale_equations_name(const korvale_equations* equations, int32_t variable)
{
    if (variable < 0 || variable >= korvale_equations_variables(equations))
        return nullptr;
    return reinterpret_cast<const char*>(equations->record.var_names->bvals) +
           int64_t{variable} * korvale::equation::kNameBytes;
}

korvale_status korvale_equations_set(korvale_equations* equations, const char* name, double value, korvale_error* error)
{
    return answer(error, "korvale_equations_set", [&] {
        EquationSystem& es = require_equations(equations).record;
        EqSetVariable(&es, require_variable(es, name), value);
    });
}

korvale_status korvale_equations_get(const korvale_equations* equations, const char* name, double* value,
                                     korvale_error* error)
{
    return answer(error, "korvale_equations_get", [&] {
        const EquationSystem& es = require_equations(equations).record;
        const int32_t v = require_variable(es, name);
        require(value, "value");
        *value = es.var_vals->dvals[v];
    });
}

korvale_status korvale_equations_evaluate(korvale_equations* equations, int32_t equation, double* result,
                                          korvale_error* error)
{
    return answer(error, "korvale_equations_evaluate", [&] {
        korvale_equations& e = require_equations(equations);
        require_equation(e, equation);
        double value = 0;
        run(e, [&] { value = EqEvaluate(&e.record, equation); });
        if (result != nullptr)
            *result = value;
    });
}

korvale_status korvale_equations_evaluate_rows(korvale_equations* equations, int32_t equation,
                                               const korvale_column* columns, int64_t column_count,
                                               const korvale_numbers_out* output, korvale_progress progress, void* user,
                                               korvale_error* error)
{
    return answer(error, "korvale_equations_evaluate_rows", [&] {
        korvale_equations& e = require_equations(equations);
        require_equation(e, equation);
        require(output, "output");
        const int64_t rows = require_column(*output, "output");
        const Vector<Column> read = require_columns<Column>(e.record, columns, column_count, "columns", rows);
        const ColumnOut write = {static_cast<char*>(output->data), stride_of(*output), output->kind, -1};
        run(e, [&] { evaluate_rows(e, equation, read, write, rows, {progress, user}); });
    });
}

korvale_status korvale_equations_pass(korvale_equations* equations, korvale_error* error)
{
    return answer(error, "korvale_equations_pass", [&] {
        korvale_equations& e = require_equations(equations);
        run(e, [&] { require_done(EqSystemEvaluate(&e.record)); });
    });
}

korvale_status korvale_equations_pass_rows(korvale_equations* equations, const korvale_column* columns,
                                           int64_t column_count, const korvale_column_out* results,
                                           int64_t result_count, korvale_progress progress, void* user,
                                           korvale_error* error)
{
    return answer(error, "korvale_equations_pass_rows", [&] {
        korvale_equations& e = require_equations(equations);
        const bool has_columns = column_count > 0 && columns != nullptr;
        const bool has_results = result_count > 0 && results != nullptr;
        const int64_t rows = has_columns ? columns[0].values.count : has_results ? results[0].values.count : 0;
        const Vector<Column> read = require_columns<Column>(e.record, columns, column_count, "columns", rows);
        const Vector<ColumnOut> write = require_columns<ColumnOut>(e.record, results, result_count, "results", rows);
        run(e, [&] { pass_rows(e, read, write, rows, {progress, user}); });
    });
}

int32_t korvale_equations_ran_in_blocks(const korvale_equations* equations)
{
    return equations != nullptr && equations->ran_in_blocks ? 1 : 0;
}

korvale_status korvale_equations_simplify(korvale_equations* equations, korvale_error* error)
{
    return answer(error, "korvale_equations_simplify", [&] {
        korvale_equations& e = require_equations(equations);
        run(e, [&] { require_done(EqSystemSimplify(&e.record)); });
    });
}

korvale_status korvale_equations_function(korvale_equations* equations, const char* name, int32_t arguments,
                                          korvale_function function, void* user, void (*release)(void* user),
                                          korvale_error* error)
{
    User owned = {user, release};
    return answer(error, "korvale_equations_function",
                  [&] { add_function(require_equations(equations), name, arguments, function, owned); });
}

void korvale_equations_stop(korvale_equations* equations)
{
    if (equations != nullptr)
        equations->is_stopped = true;
}

korvale_status korvale_equations_seed(korvale_equations* equations, uint32_t seed, korvale_error* error)
{
    return answer(error, "korvale_equations_seed", [&] {
        korvale_equations& e = require_equations(equations);
        if (!e.has_generator)
            give_generator(e);
        e.generator = seed;
    });
}

int32_t korvale_equations_seeded(const korvale_equations* equations, uint32_t* seed)
{
    if (equations == nullptr || !equations->has_generator)
        return 0;
    if (seed != nullptr)
        *seed = equations->generator;
    return 1;
}

korvale_status korvale_equations_make_table(korvale_equations* equations, const char* name, int32_t rows,
                                            korvale_error* error)
{
    return answer(error, "korvale_equations_make_table", [&] { make_table(require_equations(equations), name, rows); });
}

void korvale_equations_set_table_position(korvale_equations* equations, double row)
{
    if (equations != nullptr)
        EqSetTableIndex(&equations->record, row);
}

void* korvale_equations_record(korvale_equations* equations)
{
    return equations == nullptr ? nullptr : &equations->record;
}

void korvale_equations_free(korvale_equations* equations)
{
    free_handle(equations);
}
