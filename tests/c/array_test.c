// Whole arrays and the random generator.
#include "check.h"

static korvale_status mixes_bounds_and_reverses(void)
{
    double rows[] = {1, 10, 2, 20, 3, 30}, mixed[6] = {0}, least[2] = {0}, greatest[2] = {0};
    const float floats[] = {4, 4, 4, 4, 4, 4};
    const korvale_numbers arrays[] = {{.data = rows, .count = 3, .width = 2}, {floats, 3, 0, 2, KORVALE_FLOAT}};
    const double weights[] = {1, 0.5};
    const korvale_numbers_out output = {.data = mixed, .count = 3, .width = 2};
    float strided[] = {1, 0, 2, 0};
    const korvale_numbers_out column = {strided, 2, 2 * sizeof(float), 1, KORVALE_FLOAT};
    korvale_error error;
    TRY_WRITING(mixed, korvale_mix(arrays, weights, 2, &output, &error));
    CHECK_NUMBERS(mixed, 3, 12, 4, 22, 5, 32);
    TRY_WRITING(least, korvale_bounds(&arrays[0], least, greatest, &error));
    CHECK_NUMBERS(least, 1, 10);
    CHECK_NUMBERS(greatest, 3, 30);
    TRY_WRITING(strided, korvale_reverse(&column, &error));
    CHECK(strided[0] == 2 && strided[2] == 1);
    REFUSE(korvale_mix(arrays, weights, 3, &output, &error), KORVALE_BAD_ARGUMENT,
           "korvale_mix: count must be 2 or 4, but it is 3");
    REFUSE(korvale_bounds(NULL, least, greatest, &error), KORVALE_BAD_ARGUMENT,
           "korvale_bounds: array must be given, but it is null");
    REFUSE(korvale_reverse(NULL, &error), KORVALE_BAD_ARGUMENT, "korvale_reverse: array must be given, but it is null");
done:
    return (korvale_status)error.status;
}

/// The generator of the process is the one that equations without a seed of their own draw from.
static korvale_status seeds_the_generator_of_the_process(void)
{
    korvale_equations* e = NULL;
    double first = 0, again = 0;
    korvale_error error;
    TRY_MAKING(e, korvale_equations_new(&e, &error));
    TRY(korvale_equations_declare(e, "h", 0, &error));
    TRY(korvale_equations_add(e, "h = RAND", NULL, &error));
    korvale_seed(5);
    TRY(korvale_equations_evaluate(e, 0, &first, &error));
    korvale_seed(5);
    TRY(korvale_equations_evaluate(e, 0, &again, &error));
    CHECK(again == first);
done:
    korvale_equations_free(e);
    return (korvale_status)error.status;
}

void array_tests(void)
{
    RUN(mixes_bounds_and_reverses);
    RUN(seeds_the_generator_of_the_process);
}
