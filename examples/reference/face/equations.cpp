#include "../example.h"

using korvale::Equations;

EXAMPLE("korvale::Equations korvale::Equations::declare korvale::Equations::add korvale::Equations::set")
{
    Equations equations;
    equations.declare("x y");
    const int parabola = equations.add("y = x ^ 2 - 1");
    equations.set("x", 3);
    std::printf("%g\n", equations.evaluate(parabola));
    // > 8
}

EXAMPLE("korvale::Equations::evaluate korvale::Equations::try_evaluate korvale::Column")
{
    Equations drum;
    drum.declare("h r t");
    const int height = drum.add("h = r * r + t");
    drum.set("t", 0.5);
    const std::vector<double> radii = {0, 1, 2, 3};
    for (double h : drum.evaluate(height, {{"r", radii}})) // a row for each radius
        std::printf("%g ", h);
    std::printf("\n");
    if (auto none = drum.try_evaluate(height, {{"q", radii}}); !none)
        std::printf("%s\n", none.error().what());
    // > 0.5 1.5 4.5 9.5
    // > Equations::evaluate: name must be a variable, but "q" is none
}

EXAMPLE("korvale::Equations::evaluate_all korvale::ResultColumn")
{
    Equations wave;
    wave.declare("t x y");
    wave.add("x = 2 * t");
    wave.add("y = x + 1"); // which reads the x of its row
    const std::vector<double> times = {0, 1, 2};
    std::vector<double> xy(6);
    const korvale::Column columns[] = {{"t", times}};
    const korvale::ResultColumn results[] = {{"x", &xy[0], 3, 2}, {"y", &xy[1], 3, 2}}; // side by side
    wave.evaluate_all(columns, results);
    std::printf("%g %g, %g %g, %g %g\n", xy[0], xy[1], xy[2], xy[3], xy[4], xy[5]);
    // > 0 1, 2 3, 4 5
}

EXAMPLE("korvale::Equations::ran_in_blocks")
{
    Equations equations;
    equations.declare("x y");
    const int number = equations.add("y = 2 * x + 1");
    const std::vector<double> x(10000, 3.0);
    equations.evaluate(number, {{"x", x}});
    std::printf("%s\n", equations.ran_in_blocks() ? "in blocks" : "row by row");
    // > in blocks
}

EXAMPLE("korvale::Equations::try_add korvale::Equations::try_declare")
{
    Equations equations;
    if (auto none = equations.try_declare("SIN"); !none)
        std::printf("%s\n", none.error().what());
    if (auto none = equations.try_add("PI = 3 + q"); !none)
        std::printf("\"%s\" at %td\n", none.error().word().data(), none.error().place());
    // > Equations::declare: names must be no functions', but "SIN" is one
    // > "q" at 9
}

EXAMPLE("korvale::Equations::get korvale::Equations::try_set")
{
    Equations equations;
    std::printf("%.6f\n", equations.get("PI"));
    if (auto none = equations.try_set("speed", 3); !none)
        std::printf("%s\n", none.error().what());
    // > 3.141593
    // > Equations::set: name must be a variable, but "speed" is none
}

EXAMPLE("korvale::Equations::size korvale::Equations::variables")
{
    Equations equations;
    equations.declare("speed");
    equations.add("speed = 3");
    std::printf("%d equation over", equations.size());
    for (const std::string& name : equations.variables())
        std::printf(" %s", name.c_str());
    std::printf("\n");
    // > 1 equation over PI E speed
}

EXAMPLE("korvale::Equations::function korvale::Equations::try_function")
{
    Equations equations;
    equations.declare("y");
    const double limit = 5; // what a function captures is kept with it
    equations.function("CUT", [limit](double x) { return std::min(x, limit); });
    std::printf("%g\n", equations.evaluate(equations.add("y = CUT(3 * 4)")));
    if (auto none = equations.try_function("SIN", [](double x) { return x; }); !none)
        std::printf("%s\n", none.error().what());
    // > 5
    // > Equations::function: name must be new, but "SIN" is a function or a variable
}

EXAMPLE("korvale::Equations::simplify")
{
    Equations equations;
    equations.declare("x y");
    const int number = equations.add("y = x + 2 * 3");
    equations.simplify(); // 2 * 3 is a constant now
    std::printf("%g\n", equations.evaluate(number));
    // > 6
}

EXAMPLE("korvale::Equations::seed korvale::Equations::seeded")
{
    Equations a, b;
    for (Equations* equations : {&a, &b}) {
        equations->seed(7);
        equations->declare("y");
        equations->add("y = RAND");
    }
    std::printf("%s\n", a.evaluate(0) == b.evaluate(0) ? "the same number" : "others");
    std::printf("%s\n", a.seeded() == b.seeded() ? "and the same next ones" : "others next");
    // > the same number
    // > and the same next ones
}

EXAMPLE("korvale::Equations::make_table korvale::Equations::set_table_position")
{
    Equations noise;
    noise.seed(7);
    noise.declare("y");
    const int number = noise.add("y = RAND");
    noise.make_table("RAND", 10); // after the equations that name it
    noise.set_table_position(3);
    const double there = noise.evaluate(number);
    noise.set_table_position(6.5);
    noise.evaluate(number);
    noise.set_table_position(3);
    std::printf("%s\n", noise.evaluate(number) == there ? "the same again" : "another");
    // > the same again
}

EXAMPLE("korvale::Equations::try_make")
{
    if (auto equations = Equations::try_make()) // without exceptions
        std::printf("%zu variables\n", equations->variables().size());
    // > 2 variables
}

EXAMPLE("korvale::Equations::system")
{
    Equations equations;
    char name[] = "PI";
    std::printf("%.6f\n", EqReadVariableByName(&equations.system(), name)); // a function of korvale.h
    // > 3.141593
}
