#pragma once

// Functions of a host that equations call, one of each number of arguments.
namespace korvale::fuzz {

inline double half(double x)
{
    return x / 2;
}

inline double least(double a, double b)
{
    return a < b ? a : b;
}

inline double three()
{
    return 3;
}

} // namespace korvale::fuzz
