// The fixed results of parsing, simplifying and evaluating with the operators and exact functions.
#include <string>

#include "tests/equation/system.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {
namespace {

std::string random_term(Draws& random, int depth)
{
    static const char* const kOperators[] = {" + ", " - ", " * ", " / "};
    if (depth == 0 || random.one_in(4)) {
        static const char* const kLeaves[] = {"x", "z", "1.25", "0.1", "7", "PI"};
        return kLeaves[random.below(6)];
    }
    if (random.one_in(6))
        return "-" + random_term(random, depth - 1);
    if (random.one_in(8))
        return "SQRT(" + random_term(random, depth - 1) + ")";
    const std::string right = random_term(random, depth - 1); // each by itself: operands have no order
    const std::string sign = kOperators[random.below(4)];
    const std::string left = random_term(random, depth - 1);
    const std::string both = left + sign + right;
    return random.one_in(2) ? "(" + both + ")" : both;
}

} // namespace

WORKLOAD(Equations, 60, 0x8a3512d9c5b6b5f5u, 16)
{
    Draws random(1009);
    for (int i = 0; i < rounds; ++i) {
        System es;
        es.declare(" x z y w");
        for (int k = 0; k < 15; ++k) {
            const int before = es->equations->count;
            hash.add(es.parse((k % 2 == 0 ? "y = " : "w = ") + random_term(random, 4)));
            es.set("x", random.uniform(-3, 3));
            es.set("z", random.one_in(5) ? 0.0 : random.uniform(-3, 3));
            if (es->equations->count == before)
                continue;
            const int equation = es->equations->count - 1;
            hash.add(EqEvaluate(es, equation));
            for (const char c : es.program(equation))
                hash.add(static_cast<int>(c));
            hash.add(EqSimplify(es, equation)).add(EqEvaluate(es, equation));
        }
        hash.add(EqSystemEvaluate(es)).add(es->var_vals->dvals, es->var_vals->count);
    }
}

} // namespace korvale::test
