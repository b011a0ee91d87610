#include "../example.h"

EXAMPLE("korvale::Progress")
{
    korvale::Equations equations;
    equations.declare("x y");
    const int number = equations.add("y = SIN(x)");
    const std::vector<double> x(1000000, 0.5);
    std::stop_source stop;
    stop.request_stop(); // as a button would, from another thread
    if (auto none = equations.try_evaluate(number, {{"x", x}}, stop.get_token()); !none)
        std::printf("%s\n", none.error().what());
    const auto told = [](double done) { return done < 0.5; }; // false stops the work
    if (auto none = equations.try_evaluate(number, {{"x", x}}, told); !none)
        std::printf("%s\n", none.error().what());
    // > Equations::evaluate: progress must go on, but it has stopped the work
    // > Equations::evaluate: progress must go on, but it has stopped the work
}
