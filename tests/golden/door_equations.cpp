// The fixed results of equations through the C interface, with the operators and exact functions, and what it says of
// texts that it refuses.
#include <string>
#include <vector>

#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {
namespace {

double product(const double* arguments, void*)
{
    return arguments[0] * arguments[1];
}

std::string random_text(Draws& random)
{
    static const char* const kWords[] = {"x",   "y", "2.5", " + ", " - ",   " * ",
                                         " / ", "(", ")",   "-",   "SQRT(", " TIMES "};
    std::string text = random.one_in(2) ? "y = " : "z = ";
    for (int i = random.between(1, 9); i > 0; --i)
        text += kWords[random.below(12)];
    return random.one_in(9) ? text + "\u00b2" : text;
}

} // namespace

WORKLOAD(DoorEquations, 100, 0xcf162218c3b503d0u, 60)
{
    Draws random(1102);
    for (int i = 0; i < rounds; ++i) {
        korvale_equations* e;
        if (korvale_equations_new(&e, nullptr) != KORVALE_OK)
            return; // the number tells
        korvale_equations_declare(e, "x y", 0, nullptr);
        korvale_equations_declare(e, "z", 1, nullptr);
        korvale_equations_function(e, "TIMES", 2, product, nullptr, nullptr, nullptr);
        for (int k = 0; k < 60; ++k) {
            korvale_error error = {};
            hash.add(korvale_equations_add(e, random_text(random).c_str(), nullptr, &error)).add(error.place);
            for (const char c : std::string(error.text)) // char has no sign on some processors
                hash.add(static_cast<signed char>(c));
        }
        std::vector<double> x(600), y(600), z(600);
        for (double& number : x)
            number = random.one_in(9) ? 0.0 : random.uniform(-3, 3);
        const korvale_column column = {"x", {x.data(), 600, 0, 1, KORVALE_DOUBLE}};
        const korvale_numbers_out to = {y.data(), 600, 0, 1, KORVALE_DOUBLE};
        const korvale_column_out results[] = {{"y", {y.data(), 600, 0, 1, KORVALE_DOUBLE}},
                                              {"z", {z.data(), 600, 0, 1, KORVALE_DOUBLE}}};
        for (int32_t k = 0; k < korvale_equations_count(e); ++k) {
            hash.add(korvale_equations_evaluate_rows(e, k, &column, 1, &to, nullptr, nullptr, nullptr));
            hash.add(y.data(), 600);
        }
        hash.add(korvale_equations_pass_rows(e, &column, 1, results, 2, nullptr, nullptr, nullptr));
        hash.add(y.data(), 600).add(z.data(), 600);
        korvale_equations_free(e);
    }
}

} // namespace korvale::test
