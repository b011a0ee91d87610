#include "tests/equation/expressions.h"

namespace korvale::test {
namespace {

template <size_t N>
std::string one_of(Random& random, const char* const (&words)[N])
{
    return words[random.below(N)];
}

std::string blanks(Random& random)
{
    return one_of(random, {" ", " ", "  ", "\t", ", "});
}

std::string number(Random& random)
{
    if (random.one_in(2))
        return std::to_string(random.below(10));
    return std::to_string(random.below(30)) + "." + std::to_string(random.below(1000));
}

std::string operand(Random& random, int depth)
{
    if (depth > 0 && random.one_in(4))
        return "(" + random_expression(random, depth - 1) + ")";
    switch (random.below(4)) {
    case 0:
        return number(random);
    case 1:
        return one_of(random, {"RAND", "GAUSS", "PI", "E"});
    default:
        return one_of(random, {"x", "y", "z"});
    }
}

std::string prefixed(Random& random, int depth)
{
    std::string text;
    while (random.one_in(4))
        text +=
            random.one_in(2)
                ? "-"
                : one_of(random, {"SIN", "COS", "TAN", "SQRT", "EXP", "LOG", "ASIN", "ACOS", "ATAN", "NEGATE"}) + " ";
    return text + operand(random, depth);
}

} // namespace

std::string random_expression(Random& random, int depth)
{
    std::string text = blanks(random) + prefixed(random, depth);
    while (!random.one_in(3)) {
        const bool word = random.one_in(4);
        text += blanks(random);
        text += word ? one_of(random, {"ADD", "SUBTRACT", "MULTIPLY", "DIVIDE", "POWER", "ANGLE", "MEAN", "LESS"})
                     : one_of(random, {"+", "-", "*", "/", "^"});
        text += blanks(random) + prefixed(random, depth);
    }
    return text;
}

std::string mutated(Random& random, std::string text)
{
    const std::string inserted = "xyzq0123456789.+-*/^()=, SINRAGEL\t\xe4";
    for (int changes = random.between(1, 4); changes > 0 && !text.empty(); --changes) {
        const auto at = static_cast<size_t>(random.below(static_cast<int>(text.size())));
        const char c = inserted[static_cast<size_t>(random.below(static_cast<int>(inserted.size())))];
        switch (random.below(5)) {
        case 0:
            text.erase(at, 1);
            break;
        case 1:
            text.insert(at, 1, text[at]);
            break;
        case 2:
            text[at] = c;
            break;
        case 3:
            text.insert(at, 1, c);
            break;
        default:
            if (random.one_in(4))
                text.resize(at);
            break;
        }
    }
    return text;
}

} // namespace korvale::test
