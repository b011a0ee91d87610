#include "equation/system.h"

#include "platform/internal/random.h"

// Deliberate: truncated decimals of sqrt(3) and 2 sqrt(3), which bring the sum of four draws to variance 1 and mean 0.
namespace korvale::inside {
namespace {

constexpr double kDrawsToUnitVariance = 1.7320508;
constexpr double kMeanOfScaledDraws = 3.4641016;

void seed_generator(int seed)
{
    Mwsrand(static_cast<unsigned>(seed));
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

void EqSeed(int seed)
{
    seed_generator(seed);
}

void gauss_init(int seed)
{
    seed_generator(seed);
}

double EqFuncRand()
{
    return unit_draw();
}

double gauss()
{
    double sum = unit_draw();
    for (int draw = 1; draw < 4; ++draw)
        sum += unit_draw();
    return sum * kDrawsToUnitVariance - kMeanOfScaledDraws;
}

double EqFuncAdd(double a, double b)
{
    return a + b;
}

double EqFuncSubtract(double a, double b)
{
    return a - b;
}

double EqFuncMultiply(double a, double b)
{
    return a * b;
}

double EqFuncDivide(double a, double b)
{
    return b == 0.0 ? 0.0 : a / b;
}

double EqFuncNegate(double a)
{
    return -a;
}
