#include "../example.h"

EXAMPLE("korvale_seed")
{
    korvale_seed(7); // the generator that RAND draws from where a system has none of its own
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    double first, again;
    korvale_equations_declare(equations, "y", 0, NULL);
    korvale_equations_add(equations, "y = RAND", NULL, NULL);
    korvale_equations_evaluate(equations, 0, &first, NULL);
    korvale_seed(7);
    korvale_equations_evaluate(equations, 0, &again, NULL);
    printf("%s\n", first == again ? "the same number" : "another");
    korvale_equations_free(equations);
    // > the same number
}

EXAMPLE("korvale_mix")
{
    const double here[] = {0, 0, 0}, there[] = {8, 4, 2}, weights[] = {0.75, 0.25};
    const korvale_numbers arrays[] = {{.data = here, .count = 3}, {.data = there, .count = 3}};
    double way[3];
    const korvale_numbers_out output = {.data = way, .count = 3};
    if (korvale_mix(arrays, weights, 2, &output, NULL) == KORVALE_OK) // a quarter of the way
        printf("%g %g %g\n", way[0], way[1], way[2]);
    // > 2 1 0.5
}

EXAMPLE("korvale_bounds")
{
    const double points[] = {3, 9, 5, 1, 4, 4};
    const korvale_numbers rows = {.data = points, .count = 3, .width = 2};
    double least[2], greatest[2];
    if (korvale_bounds(&rows, least, greatest, NULL) == KORVALE_OK)
        printf("x %g to %g, y %g to %g\n", least[0], greatest[0], least[1], greatest[1]);
    // > x 3 to 5, y 1 to 9
}

EXAMPLE("korvale_reverse")
{
    double corners[] = {0, 0, 4, 0, 4, 4};
    const korvale_numbers_out rows = {.data = corners, .count = 3, .width = 2};
    if (korvale_reverse(&rows, NULL) == KORVALE_OK) // the outline runs the other way round
        printf("%g %g, %g %g, %g %g\n", corners[0], corners[1], corners[2], corners[3], corners[4], corners[5]);
    // > 4 4, 4 0, 0 0
}
