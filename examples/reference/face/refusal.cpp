#include "../example.h"

EXAMPLE("korvale::Error")
{
    try {
        korvale::offset({{0, 0, 0}, {1, 0, 0}}, 0.5);
    } catch (const korvale::Error& error) {
        std::printf("%s\n%s, %s\n", error.what(), error.function().c_str(), error.argument().c_str());
    }
    // > offset: outline must have at least 3 points, but it has 2
    // > offset, outline
}

EXAMPLE("korvale::EquationError")
{
    korvale::Equations equations;
    equations.declare("x");
    try {
        equations.add("x = 2 * SINE(x)");
    } catch (const korvale::EquationError& error) {
        std::printf("\"%s\" from character %zu on, counted from 0\n", error.word().c_str(), error.place());
    }
    // > "SINE" from character 8 on, counted from 0
}
