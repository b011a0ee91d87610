#include "../example.h"

EXAMPLE("korvale_equations_new korvale_equations_declare korvale_equations_evaluate korvale_equations_free")
{
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_declare(equations, "x y", 0, NULL);
    korvale_equations_add(equations, "y = x ^ 2 - 1", NULL, NULL);
    korvale_equations_set(equations, "x", 3, NULL);
    double y;
    if (korvale_equations_evaluate(equations, 0, &y, NULL) == KORVALE_OK)
        printf("%g\n", y);
    korvale_equations_free(equations);
    // > 8
}

EXAMPLE("korvale_equations_add")
{
    korvale_equations* equations;
    korvale_error error;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    int32_t number;
    korvale_equations_declare(equations, "x", 0, NULL);
    if (korvale_equations_add(equations, "x = 1 + 2", &number, &error) == KORVALE_OK)
        printf("equation %d\n", number);
    if (korvale_equations_add(equations, "x = 2 * SINE(x)", NULL, &error) == KORVALE_BAD_EQUATION)
        printf("\"%s\" from character %d on, counted from 0\n", error.word, error.place);
    korvale_equations_free(equations);
    // > equation 0
    // > "SINE" from character 8 on, counted from 0
}

EXAMPLE("korvale_equations_set korvale_equations_get")
{
    korvale_equations* equations;
    korvale_error error;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    double pi;
    korvale_equations_get(equations, "PI", &pi, NULL);
    printf("%.6f\n", pi);
    if (korvale_equations_set(equations, "speed", 3, &error) != KORVALE_OK)
        printf("%s\n", error.text);
    korvale_equations_free(equations);
    // > 3.141593
    // > korvale_equations_set: name must be a variable, but "speed" is none
}

EXAMPLE("korvale_equations_count korvale_equations_variables korvale_equations_name")
{
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_declare(equations, "speed", 0, NULL);
    korvale_equations_add(equations, "speed = 3", NULL, NULL);
    printf("%d equation over", korvale_equations_count(equations));
    for (int32_t v = 0; v < korvale_equations_variables(equations); ++v)
        printf(" %s", korvale_equations_name(equations, v));
    printf("\n");
    korvale_equations_free(equations);
    // > 1 equation over PI E speed
}

EXAMPLE("korvale_equations_evaluate_rows korvale_equations_ran_in_blocks")
{
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_declare(equations, "h r", 0, NULL);
    korvale_equations_add(equations, "h = r * r + 1", NULL, NULL);
    const double radii[] = {0, 1, 2, 3};
    double heights[4];
    const korvale_column column = {.name = "r", .values = {.data = radii, .count = 4}};
    const korvale_numbers_out output = {.data = heights, .count = 4};
    korvale_equations_evaluate_rows(equations, 0, &column, 1, &output, NULL, NULL, NULL);
    printf("%g %g %g %g\n", heights[0], heights[1], heights[2], heights[3]);
    printf("%s\n", korvale_equations_ran_in_blocks(equations) ? "in blocks" : "row by row, as there are few");
    korvale_equations_free(equations);
    // > 1 2 5 10
    // > row by row, as there are few
}

EXAMPLE("korvale_equations_pass korvale_equations_pass_rows")
{
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_declare(equations, "t x y", 0, NULL);
    korvale_equations_add(equations, "x = 2 * t", NULL, NULL);
    korvale_equations_add(equations, "y = x + 1", NULL, NULL); // which reads the x of its row
    const double times[] = {0, 1, 2};
    double y[3];
    const korvale_column column = {.name = "t", .values = {.data = times, .count = 3}};
    const korvale_column_out result = {.name = "y", .values = {.data = y, .count = 3}};
    korvale_equations_pass_rows(equations, &column, 1, &result, 1, NULL, NULL, NULL);
    printf("%g %g %g\n", y[0], y[1], y[2]);
    korvale_equations_pass(equations, NULL); // once more, with the t of the last row
    korvale_equations_free(equations);
    // > 1 3 5
}

EXAMPLE("korvale_equations_simplify")
{
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_declare(equations, "x y", 0, NULL);
    korvale_equations_add(equations, "y = x + 2 * 3", NULL, NULL);
    korvale_equations_simplify(equations, NULL); // 2 * 3 is a constant now
    double y;
    korvale_equations_evaluate(equations, 0, &y, NULL);
    printf("%g\n", y);
    korvale_equations_free(equations);
    // > 6
}

static double cut(const double* arguments, void* user)
{
    const double limit = *(const double*)user;
    return arguments[0] < limit ? arguments[0] : limit;
}

EXAMPLE("korvale_equations_function")
{
    // double cut(const double* arguments, void* user): the least of the argument and *user
    static double limit = 5;
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_function(equations, "CUT", 1, cut, &limit, NULL, NULL);
    korvale_equations_declare(equations, "y", 0, NULL);
    korvale_equations_add(equations, "y = CUT(3 * 4)", NULL, NULL);
    double y;
    korvale_equations_evaluate(equations, 0, &y, NULL);
    printf("%g\n", y);
    korvale_equations_free(equations);
    // > 5
}

static double read_sensor(const double* arguments, void* user)
{
    (void)arguments;
    korvale_equations_stop((korvale_equations*)user);
    return 0;
}

EXAMPLE("korvale_equations_stop")
{
    // double read_sensor(const double* arguments, void* user) calls korvale_equations_stop(user) as it has failed
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_function(equations, "SENSOR", 0, read_sensor, equations, NULL, NULL);
    korvale_equations_declare(equations, "y", 0, NULL);
    korvale_equations_add(equations, "y = SENSOR", NULL, NULL);
    if (korvale_equations_evaluate(equations, 0, NULL, NULL) == KORVALE_STOPPED)
        printf("stopped\n");
    korvale_equations_free(equations);
    // > stopped
}

EXAMPLE("korvale_equations_seed korvale_equations_seeded")
{
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_declare(equations, "y", 0, NULL);
    korvale_equations_add(equations, "y = RAND", NULL, NULL);
    double first, again;
    korvale_equations_seed(equations, 7, NULL);
    korvale_equations_evaluate(equations, 0, &first, NULL);
    korvale_equations_seed(equations, 7, NULL);
    korvale_equations_evaluate(equations, 0, &again, NULL);
    printf("%s, %d\n", first == again ? "the same number" : "another", korvale_equations_seeded(equations, NULL));
    korvale_equations_free(equations);
    // > the same number, 1
}

EXAMPLE("korvale_equations_make_table korvale_equations_set_table_position korvale_equations_record")
{
    korvale_equations* equations;
    if (korvale_equations_new(&equations, NULL) != KORVALE_OK)
        return;
    korvale_equations_declare(equations, "y", 0, NULL);
    korvale_equations_add(equations, "y = RAND", NULL, NULL);
    korvale_equations_make_table(equations, "RAND", 10, NULL); // after the equations that name it
    double there, elsewhere, again;
    korvale_equations_set_table_position(equations, 3);
    korvale_equations_evaluate(equations, 0, &there, NULL);
    korvale_equations_set_table_position(equations, 6.5);
    korvale_equations_evaluate(equations, 0, &elsewhere, NULL);
    korvale_equations_set_table_position(equations, 3);
    korvale_equations_evaluate(equations, 0, &again, NULL);
    printf("%s\n", there == again ? "the same again" : "another");
    printf("%s\n", korvale_equations_record(equations) != NULL ? "an EquationSystem, in C++" : "no memory");
    korvale_equations_free(equations);
    // > the same again
    // > an EquationSystem, in C++
}
