// A wave from an equation over whole columns of values, a function of the host, noise from a table, and a misprint.

#include <cstdio>
#include <vector>

#include <korvale.hpp>

int main()
{
    korvale::Equations water;
    water.declare("height x time");
    water.function("SHORE", [](double x) { return x < 1 ? x : 1.0; });
    const int wave = water.add("height = SHORE(x) * SIN(2 * x - time)");

    std::vector<double> x, height(6);
    for (int i = 0; i < 6; ++i)
        x.push_back(0.25 + 0.5 * i);
    water.set("time", 0.3);
    const korvale::Column columns[] = {{"x", x}};
    water.evaluate(wave, columns, height);
    for (int i = 0; i < 6; ++i)
        std::printf("%.2f  %8.5f\n", x[static_cast<size_t>(i)], height[static_cast<size_t>(i)]);

    // Noise that is the same at every pass: a table of five values, walked through in steps of half a row.
    water.declare("drift");
    const int drift = water.add("drift = RAND");
    EqSeed(7);
    water.make_table("RAND", 5);
    for (const double row : {0.0, 0.5, 1.0}) {
        water.set_table_position(row);
        std::printf("row %.1f  %.6f\n", row, water.evaluate(drift));
    }

    try {
        water.add("height = 2 * SIM(x)");
    } catch (const korvale::EquationError& error) {
        std::printf("%s\n", error.what());
        std::printf("height = 2 * SIM(x)\n%*s\n", static_cast<int>(error.place()) + 1, "^");
    }
}
