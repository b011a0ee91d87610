#include "../example.h"

EXAMPLE("bbox_intersect")
{
    double room[] = {0, 0, 0, 4, 4, 3}, next_door[] = {4, 0, 0, 8, 4, 3}, across[] = {5, 0, 0, 8, 4, 3};
    std::printf("%d %d\n", bbox_intersect(room, next_door), bbox_intersect(room, across)); // touching counts
    // > 1 0
}
