#include "check.h"
#include "heap.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int complaints, cases;
static long failures; ///< allocations that were made to fail
static const char* running = "";

void check(int holds, const char* what, const char* file, int line)
{
    if (holds)
        return;
    ++complaints;
    fprintf(stderr, "%s:%d: %s: %s\n", file, line, running, what);
}

void check_numbers(const double* given, const double* wanted, size_t count, double slack, const char* what,
                   const char* file, int line)
{
    size_t i;
    for (i = 0; i < count; ++i) {
        if (given[i] == wanted[i] || fabs(given[i] - wanted[i]) <= slack)
            continue;
        check(0, what, file, line);
        fprintf(stderr, "  number %d is %.17g, not %.17g\n", (int)i, given[i], wanted[i]);
    }
}

/// Whether `call` calls the function `name`.
static int is_call_of(const char* name, const char* call)
{
    const size_t length = strlen(name);
    return strncmp(call, name, length) == 0 && call[length] == '(';
}

int succeeds(korvale_status status, const korvale_error* error, const char* call, const char* file, int line)
{
    char exhausted[128];
    check(error->status == (int32_t)status, "the error has the status that was returned", file, line);
    if (status == KORVALE_OK)
        return 1;
    if (heap_has_failed()) {
        check(status == KORVALE_NO_MEMORY, "an exhausted heap is told as one", file, line);
        check(is_call_of(error->function, call), "the error names the function", file, line);
        snprintf(exhausted, sizeof exhausted, "%s: the heap is exhausted", error->function);
        check(strcmp(error->text, exhausted) == 0, error->text, file, line);
        return 0;
    }
    check(0, call, file, line);
    fprintf(stderr, "  %s\n", error->text);
    return 0;
}

int32_t stop(double done, void* user)
{
    (void)done;
    (void)user;
    return 0;
}

int refuses(korvale_status given, korvale_status wanted, korvale_error* error, const char* sentence, const char* file,
            int line)
{
    check(error->status == (int32_t)given, "the error has the status that was returned", file, line);
    if (given == KORVALE_NO_MEMORY && heap_has_failed())
        return 0;
    check(given == wanted, "the status is another", file, line);
    check(strcmp(error->text, sentence) == 0, error->text, file, line);
    error->status = KORVALE_OK;
    return 1;
}

static char remembered[4096];

void remember(const void* place, size_t bytes)
{
    check(bytes <= sizeof remembered, "there is room to remember a place", __FILE__, __LINE__);
    memcpy(remembered, place, bytes);
}

int is_as_remembered(const void* place, size_t bytes)
{
    return memcmp(remembered, place, bytes) == 0;
}

static void run_plainly(test_case body)
{
    const long before = live_blocks();
    CHECK(body() == KORVALE_OK);
    CHECK(live_blocks() == before);
}

/// Whether the case asks for n blocks at all.
static int run_without(long n, int all_after, test_case body)
{
    const long before = live_blocks();
    korvale_status status;
    int failed;
    fail_allocation(n, all_after);
    status = body();
    failed = stop_failing();
    failures += failed;
    CHECK(status == KORVALE_OK || (failed && status == KORVALE_NO_MEMORY));
    CHECK(live_blocks() == before);
    return failed;
}

void run_case(const char* name, test_case body)
{
    long n;
    int all_after;
    running = name;
    ++cases;
    run_plainly(body);
    if (heap_can_fail())
        for (all_after = 0; all_after < 2; ++all_after)
            for (n = 1; run_without(n, all_after, body); ++n)
                ;
    run_plainly(body);
}

int main(void)
{
    version_tests();
    layout_tests();
    offset_tests();
    band_tests();
    plane_tests();
    shape_tests();
    mesh_tests();
    scatter_tests();
    grid_tests();
    relaxer_tests();
    equation_tests();
    transform_tests();
    array_tests();
    printf("%d cases, %ld failing allocations, %d complaints\n", cases, failures, complaints);
    return complaints == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
