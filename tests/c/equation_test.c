// Equations over named variables.
#include "check.h"

#include <string.h>

static korvale_status runs_as_it_was_added(void)
{
    korvale_equations* e = NULL;
    int32_t number = 9;
    double result = 0;
    korvale_error error;
    TRY_MAKING(e, korvale_equations_new(&e, &error));
    TRY(korvale_equations_declare(e, "h r", 0, &error));
    TRY(korvale_equations_declare(e, "kept", 1, &error));
    CHECK(korvale_equations_variables(e) == 5);
    CHECK(strcmp(korvale_equations_name(e, 2), "h") == 0 && korvale_equations_name(e, 5) == NULL);
    TRY_WRITING(number, korvale_equations_add(e, "h = r * 2 + 2 * 3", &number, &error));
    CHECK(number == 0);
    TRY_WRITING(number, korvale_equations_add(e, "kept = h", &number, &error));
    CHECK(number == 1 && korvale_equations_count(e) == 2);
    TRY(korvale_equations_set(e, "r", 0.5, &error));
    TRY_WRITING(result, korvale_equations_evaluate(e, 0, &result, &error));
    CHECK(result == 7);
    TRY(korvale_equations_simplify(e, &error));
    TRY(korvale_equations_pass(e, &error));
    TRY_WRITING(result, korvale_equations_get(e, "kept", &result, &error));
    CHECK(result == 7);
    CHECK(korvale_equations_record(e) != NULL);
    REFUSE(korvale_equations_add(e, "h = q", &number, &error), KORVALE_BAD_EQUATION,
           "korvale_equations_add: text must be an equation, but \"h = q\" is refused at character 5: \"q\" is neither "
           "a variable nor a function");
    CHECK(error.place == 4 && strcmp(error.word, "q") == 0);
    REFUSE(korvale_equations_get(e, "q", &result, &error), KORVALE_BAD_ARGUMENT,
           "korvale_equations_get: name must be a variable, but \"q\" is none");
    REFUSE(korvale_equations_new(NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_equations_new: equations must be given, but it is null");
done:
    korvale_equations_free(e);
    return (korvale_status)error.status;
}

static korvale_status runs_over_columns(void)
{
    enum { rows = 100 }; // a block and more
    korvale_equations* e = NULL;
    float xs[rows][2];
    double totals[rows] = {0}, sums[rows] = {0};
    const korvale_column column = {"x", {xs, rows, sizeof xs[0], 1, KORVALE_FLOAT}};
    const korvale_numbers_out output = {.data = sums, .count = rows};
    const korvale_column_out result = {"total", {.data = totals, .count = rows}};
    korvale_error error;
    int i;
    for (i = 0; i < rows; ++i)
        xs[i][0] = xs[i][1] = (float)i;
    TRY_MAKING(e, korvale_equations_new(&e, &error));
    TRY(korvale_equations_declare(e, "x y total", 0, &error));
    TRY(korvale_equations_add(e, "y = SQRT(x * x) + 1", NULL, &error));
    TRY_WRITING(sums, korvale_equations_evaluate_rows(e, 0, &column, 1, &output, NULL, NULL, &error));
    CHECK(sums[0] == 1 && sums[rows - 1] == rows);
    CHECK(korvale_equations_ran_in_blocks(e) == 1);
    TRY(korvale_equations_add(e, "total = total + y", NULL, &error));
    TRY_WRITING(totals, korvale_equations_pass_rows(e, &column, 1, &result, 1, NULL, NULL, &error));
    CHECK(totals[0] == 1 && totals[1] == 3 && totals[rows - 1] == 5050);
    CHECK(korvale_equations_ran_in_blocks(e) == 0);
    REFUSE(korvale_equations_evaluate_rows(e, 0, &column, 1, NULL, NULL, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_equations_evaluate_rows: output must be given, but it is null");
    REFUSE(korvale_equations_evaluate_rows(e, 0, &column, 1, &output, stop, NULL, &error), KORVALE_STOPPED,
           "korvale_equations_evaluate_rows: it was asked to stop");
    REFUSE(korvale_equations_pass_rows(e, NULL, 1, &result, 1, NULL, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_equations_pass_rows: columns must be given, but it is null");
done:
    korvale_equations_free(e);
    return (korvale_status)error.status;
}

typedef struct ramp {
    korvale_equations* system;
    double slope;
    int released;
} ramp;

static double rise(const double* arguments, void* user)
{
    return arguments[0] * ((const ramp*)user)->slope;
}

static double give_up(const double* arguments, void* user)
{
    (void)arguments;
    korvale_equations_stop(((const ramp*)user)->system);
    return 0;
}

static void release(void* user)
{
    ++((ramp*)user)->released;
}

static korvale_status calls_functions_of_the_host(void)
{
    ramp steep = {NULL, 3, 0};
    korvale_equations* e = NULL;
    double result = 0;
    int is_added = 0;
    korvale_error error;
    TRY_MAKING(e, korvale_equations_new(&e, &error));
    steep.system = e;
    TRY(korvale_equations_declare(e, "h", 0, &error));
    is_added = 1;
    TRY(korvale_equations_function(e, "RISE", 1, rise, &steep, release, &error));
    TRY(korvale_equations_function(e, "GIVEUP", 0, give_up, &steep, NULL, &error));
    TRY(korvale_equations_add(e, "h = RISE 7", NULL, &error));
    TRY(korvale_equations_add(e, "h = GIVEUP + 1", NULL, &error));
    TRY_WRITING(result, korvale_equations_evaluate(e, 0, &result, &error));
    CHECK(result == 21 && steep.released == 0);
    REFUSE(korvale_equations_evaluate(e, 1, &result, &error), KORVALE_STOPPED,
           "korvale_equations_evaluate: it was asked to stop");
    CHECK(result == 21);
done:
    korvale_equations_free(e);
    CHECK(steep.released == is_added);
    return (korvale_status)error.status;
}

static korvale_status repeats_its_own_random_numbers(void)
{
    korvale_equations* e = NULL;
    uint32_t seed = 9;
    double first = 0, second = 0, again = 0;
    korvale_error error;
    TRY_MAKING(e, korvale_equations_new(&e, &error));
    TRY(korvale_equations_declare(e, "h", 0, &error));
    TRY(korvale_equations_add(e, "h = RAND", NULL, &error));
    CHECK(korvale_equations_seeded(e, &seed) == 0 && seed == 9);
    TRY(korvale_equations_seed(e, 5, &error));
    CHECK(korvale_equations_seeded(e, &seed) == 1 && seed == 5);
    TRY_WRITING(first, korvale_equations_evaluate(e, 0, &first, &error));
    TRY_WRITING(second, korvale_equations_evaluate(e, 0, &second, &error));
    CHECK(first != second);
    TRY(korvale_equations_seed(e, 5, &error));
    TRY(korvale_equations_make_table(e, "RAND", 2, &error));
    korvale_equations_set_table_position(e, 0.5);
    TRY_WRITING(again, korvale_equations_evaluate(e, 0, &again, &error));
    CHECK(again == 0.5 * first + 0.5 * second);
    REFUSE(korvale_equations_make_table(e, "SIN", 2, &error), KORVALE_BAD_ARGUMENT,
           "korvale_equations_make_table: name must be a function without arguments, but it is \"SIN\"");
done:
    korvale_equations_free(e);
    return (korvale_status)error.status;
}

void equation_tests(void)
{
    RUN(runs_as_it_was_added);
    RUN(runs_over_columns);
    RUN(calls_functions_of_the_host);
    RUN(repeats_its_own_random_numbers);
}
