#include "../example.h"

EXAMPLE("DataCat")
{
    double a[] = {1, 2}, b[] = {3};
    Data first = {.dim = 1, .count = 2, .dvals = a}, second = {.dim = 1, .count = 1, .dvals = b}, joined;
    DataInitialize(&joined);
    DataCat(&first, &second, &joined);
    std::printf("%d: %g %g %g\n", joined.count, joined.dvals[0], joined.dvals[1], joined.dvals[2]);
    DataDispose(&joined);
    // > 3: 1 2 3
}

EXAMPLE("DATACat")
{
    int32_t a[] = {1, 2}, b[] = {3};
    DATAstruct first = {.dim = 1, .count = 2, .type = DATA_TYPE_INT, .ivals = a};
    DATAstruct second = {.dim = 1, .count = 1, .type = DATA_TYPE_INT, .ivals = b}, joined;
    DATAInitialize(&joined);
    DATACat(&first, &second, &joined);
    std::printf("%d: %d %d %d\n", joined.count, joined.ivals[0], joined.ivals[1], joined.ivals[2]);
    DATADispose(&joined);
    // > 3: 1 2 3
}

EXAMPLE("DataCopy")
{
    double xyz[] = {1, 2, 3};
    Data point = {.dim = 3, .count = 1, .dvals = xyz}, copy;
    DataInitialize(&copy);
    std::printf("%d: ", DataCopy(&point, &copy));
    std::printf("%g %g %g\n", copy.dvals[0], copy.dvals[1], copy.dvals[2]);
    DataDispose(&copy);
    // > 1: 1 2 3
}

EXAMPLE("DATACopy")
{
    uint8_t held[] = {0, 1, 0};
    DATAstruct flags = {.dim = 1, .count = 3, .type = DATA_TYPE_BYTE, .bvals = held}, copy;
    DATAInitialize(&copy);
    std::printf("%d: ", DATACopy(&flags, &copy));
    std::printf("%d %d %d\n", copy.bvals[0], copy.bvals[1], copy.bvals[2]);
    DATADispose(&copy);
    // > 1: 0 1 0
}

EXAMPLE("DataMix")
{
    double here[] = {0, 0, 0}, there[] = {8, 4, 2};
    Data from = {.dim = 3, .count = 1, .dvals = here}, to = {.dim = 3, .count = 1, .dvals = there};
    DataMix(&from, &to, 0.75, 0.25, &from); // a quarter of the way, in place
    std::printf("%g %g %g\n", here[0], here[1], here[2]);
    // > 2 1 0.5
}

EXAMPLE("DATAMix")
{
    double now[] = {1, 10}, velocity[] = {3, -1};
    DATAstruct place = {.dim = 1, .count = 2, .dvals = now}, speed = {.dim = 1, .count = 2, .dvals = velocity}, next;
    DATAInitialize(&next);
    DATAMix(&place, &speed, 1, 0.5, &next); // half a second later
    std::printf("%g %g\n", next.dvals[0], next.dvals[1]);
    DATADispose(&next);
    // > 2.5 9.5
}

EXAMPLE("Data4Mix")
{
    double a[] = {0, 0}, b[] = {4, 0}, c[] = {4, 4}, d[] = {0, 4}, m[2]; // corners of a square
    Data p = {.dim = 2, .count = 1, .dvals = a}, q = {.dim = 2, .count = 1, .dvals = b};
    Data r = {.dim = 2, .count = 1, .dvals = c}, s = {.dim = 2, .count = 1, .dvals = d};
    Data middle = {.dim = 2, .count = 1, .dvals = m};
    Data4Mix(&p, &q, &r, &s, 0.25, 0.25, 0.25, 0.25, &middle);
    std::printf("%g %g\n", m[0], m[1]);
    // > 2 2
}

EXAMPLE("DATA4Mix")
{
    double a[] = {0}, b[] = {0}, c[] = {6}, d[] = {6}, m[1]; // a cubic curve halfway: weights 1 3 3 1 over 8
    DATAstruct p = {.dim = 1, .count = 1, .dvals = a}, q = {.dim = 1, .count = 1, .dvals = b};
    DATAstruct r = {.dim = 1, .count = 1, .dvals = c}, s = {.dim = 1, .count = 1, .dvals = d};
    DATAstruct point = {.dim = 1, .count = 1, .dvals = m};
    DATA4Mix(&p, &q, &r, &s, 0.125, 0.375, 0.375, 0.125, &point);
    std::printf("%g\n", m[0]);
    // > 3
}

EXAMPLE("DataBounds")
{
    double xy[] = {3, 9, 5, 1, 4, 4};
    Data points = {.dim = 2, .count = 3, .dvals = xy}, bounds;
    DataInitialize(&bounds);
    DataBounds(&points, &bounds);
    std::printf("x %g to %g, y %g to %g\n", bounds.dvals[0], bounds.dvals[2], bounds.dvals[1], bounds.dvals[3]);
    DataDispose(&bounds);
    // > x 3 to 5, y 1 to 9
}

EXAMPLE("DATABounds")
{
    double heights[] = {3, 9, -5, 1};
    DATAstruct d = {.dim = 1, .count = 4, .dvals = heights}, bounds;
    DATAInitialize(&bounds);
    DATABounds(&d, &bounds);
    std::printf("%g to %g\n", bounds.dvals[0], bounds.dvals[1]);
    DATADispose(&bounds);
    // > -5 to 9
}

EXAMPLE("DataBBox")
{
    double xyz[] = {1, 5, 0, 3, 2, 7}, corners[6];
    Data points = {.dim = 3, .count = 2, .dvals = xyz}, box = {.dim = 6, .count = 1, .dvals = corners};
    std::printf("%d: ", DataBBox(&points, &box));
    std::printf("%g %g %g to %g %g %g\n", corners[0], corners[1], corners[2], corners[3], corners[4], corners[5]);
    // > 1: 1 2 0 to 3 5 7
}

EXAMPLE("DATABBox")
{
    double xyz[] = {1, 5, 0, 3, 2, 7}, corners[6];
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, box = {.dim = 3, .count = 2, .dvals = corners};
    std::printf("%d: ", DATABBox(&points, &box)); // any shape of six numbers will do
    std::printf("%g %g %g to %g %g %g\n", corners[0], corners[1], corners[2], corners[3], corners[4], corners[5]);
    // > 1: 1 2 0 to 3 5 7
}

EXAMPLE("TransformData")
{
    double along[] = {10, 0, 0}, xyz[] = {0, 0, 0, 1, 2, 3};
    Data points = {.dim = 3, .count = 2, .dvals = xyz};
    Xfm move;
    TranslateMatrix(along, move);
    TransformData(move, &points, &points);
    std::printf("%g %g %g, %g %g %g\n", xyz[0], xyz[1], xyz[2], xyz[3], xyz[4], xyz[5]);
    // > 10 0 0, 11 2 3
}

EXAMPLE("TransformDATA")
{
    double up[] = {0, 0, 2}, outer[] = {0, 0, 0}, hole[] = {1, 1, 0};
    DATAstruct a = {.dim = 3, .count = 1, .dvals = outer}, b = {.dim = 3, .count = 1, .dvals = hole};
    void* slots[] = {&a, &b};
    DATAstruct plate = {.dim = 1, .count = 2, .type = DATA_TYPE_DATA, .pvals = slots};
    Xfm lift;
    TranslateMatrix(up, lift);
    TransformDATA(lift, &plate, &plate); // every outline of it
    std::printf("%g %g\n", outer[2], hole[2]);
    // > 2 2
}
