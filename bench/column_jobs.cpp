// An equation over whole columns, in blocks, beside `EqEvaluate` row by row and a loop over the same expression
// compiled. The size is the number of rows.
#include <cmath>
#include <cstring>
#include <memory>

#include "bench/job.h"
#include "include/korvale.h"
#include "include/korvale_c.h"

namespace korvale::bench {
namespace {

constexpr double kA = 1.25;
double two = 2.0; ///< an exponent that the compiler does not know, as it would make a product of the power

const char* const kArith = "y = x * 2 + a * (x - 1) / 3 - x * x";
const char* const kPower = "y = a * x ^ 2";
const char* const kSquare = "y = a * x * x";
const char* const kSine = "y = SIN(x)";
const char* const kFunctions = "y = SIN(x * 2) * COS(a) + SQRT(x)";

double arith(double x)
{
    return x * 2 + kA * (x - 1) / 3 - x * x;
}
double power(double x)
{
    return kA * std::pow(x, two);
}
double square(double x)
{
    return kA * x * x;
}
double sine(double x)
{
    return std::sin(x);
}
double functions(double x)
{
    return std::sin(x * 2) * std::cos(kA) + std::sqrt(x);
}

/// A column x, and room for y.
struct Columns {
    explicit Columns(int rows) : x(static_cast<size_t>(rows)), y(x.size())
    {
        for (size_t i = 0; i < x.size(); ++i)
            x[i] = 0.001 + 9 * static_cast<double>(i) / rows;
    }

    std::vector<double> x, y;
};

/// An equation for y over the column.
struct Equation : Columns {
    Equation(const char* text, int rows) : Columns(rows)
    {
        need(korvale_equations_new(&equations, nullptr) == KORVALE_OK);
        need(korvale_equations_declare(equations, "y x a", 0, nullptr) == KORVALE_OK);
        need(korvale_equations_set(equations, "a", kA, nullptr) == KORVALE_OK);
        need(korvale_equations_add(equations, text, nullptr, nullptr) == KORVALE_OK);
        record = static_cast<EquationSystem*>(korvale_equations_record(equations));
    }

    void in_blocks()
    {
        const auto rows = static_cast<int64_t>(x.size());
        const korvale_column column = {"x", {x.data(), rows, 0, 1, KORVALE_DOUBLE}};
        const korvale_numbers_out output = {y.data(), rows, 0, 1, KORVALE_DOUBLE};
        need(korvale_equations_evaluate_rows(equations, 0, &column, 1, &output, nullptr, nullptr, nullptr) ==
             KORVALE_OK);
    }

    void by_rows()
    {
        char name[] = "x";
        const int variable = EqLookupVariable(record, name);
        for (size_t i = 0; i < x.size(); ++i) {
            EqSetVariable(record, variable, x[i]);
            y[i] = EqEvaluate(record, 0);
        }
    }

    korvale_equations* equations = nullptr;
    EquationSystem* record = nullptr;
};

template <const char* const& text>
Work in_blocks(int rows)
{
    auto equation = std::make_shared<Equation>(text, rows);
    equation->in_blocks();
    need(korvale_equations_ran_in_blocks(equation->equations) == 1);
    return [equation] { equation->in_blocks(); };
}

template <const char* const& text>
Work by_rows(int rows)
{
    return [equation = std::make_shared<Equation>(text, rows)] { equation->by_rows(); };
}

template <double (*compute)(double)>
Work compiled(int rows)
{
    keep(two);
    return [columns = std::make_shared<Columns>(rows)] {
        for (size_t i = 0; i < columns->x.size(); ++i)
            columns->y[i] = compute(columns->x[i]);
        keep(*columns);
    };
}

template <const char* const& text, double (*compute)(double)>
void add(std::vector<Job>& jobs, const std::string& name)
{
    const std::vector<int> sizes = {1000000};
    jobs.push_back({"columns." + name, sizes, in_blocks<text>});
    jobs.push_back({"columns." + name + "@rows", sizes, by_rows<text>});
    jobs.push_back({"columns." + name + "@compiled", sizes, compiled<compute>});
}

} // namespace

std::vector<Job> column_jobs()
{
    std::vector<Job> jobs;
    add<kArith, arith>(jobs, "arith");
    add<kPower, power>(jobs, "power");
    add<kSquare, square>(jobs, "square");
    add<kSine, sine>(jobs, "sine");
    add<kFunctions, functions>(jobs, "functions");
    return jobs;
}

} // namespace korvale::bench
