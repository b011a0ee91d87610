#ifndef KORVALE_TESTS_C_CHECK_H
#define KORVALE_TESTS_C_CHECK_H

#include <korvale_c.h>

#include <stddef.h>

// What the tests in C share. A case makes what it needs, calls the library through the macros below, which want a
// `korvale_error error` and a label `done` around them, and releases all there.
typedef korvale_status (*test_case)(void);

/// Runs a case as it is; then with each allocation failing in turn, alone and with all that follow it; then as it is
/// again. With a failing allocation a case ends with KORVALE_NO_MEMORY, or with all results as they should be. No run
/// may leave blocks behind.
#define RUN(body) run_case(#body, body)
void run_case(const char* name, test_case body);

/// Complains, and goes on, where something does not hold.
#define CHECK(holds) check((holds) != 0, #holds, __FILE__, __LINE__)
void check(int holds, const char* what, const char* file, int line);

/// That numbers are exactly these.
#define CHECK_NUMBERS(given, ...)                                                                                      \
    check_numbers(given, (const double[]){__VA_ARGS__}, sizeof((const double[]){__VA_ARGS__}) / sizeof(double), 0,     \
                  #given, __FILE__, __LINE__)
/// That they are these to within 1e-12: for borders, whose last bit depends on the order of sums.
#define CHECK_NEAR(given, ...)                                                                                         \
    check_numbers(given, (const double[]){__VA_ARGS__}, sizeof((const double[]){__VA_ARGS__}) / sizeof(double), 1e-12, \
                  #given, __FILE__, __LINE__)
void check_numbers(const double* given, const double* wanted, size_t count, double slack, const char* what,
                   const char* file, int line);

/// A call that has to succeed while the heap gives. Where it fails the case is over.
#define TRY(call)                                                                                                      \
    do                                                                                                                 \
        if (!succeeds(call, &error, #call, __FILE__, __LINE__))                                                        \
            goto done;                                                                                                 \
    while (0)
int succeeds(korvale_status status, const korvale_error* error, const char* call, const char* file, int line);

/// The same of a call that writes to `place`, an array or a struct, and leaves that as it was where it fails.
#define TRY_WRITING(place, call)                                                                                       \
    do {                                                                                                               \
        remember(&(place), sizeof(place));                                                                             \
        if (!succeeds(call, &error, #call, __FILE__, __LINE__)) {                                                      \
            CHECK(is_as_remembered(&(place), sizeof(place)));                                                          \
            goto done;                                                                                                 \
        }                                                                                                              \
    } while (0)
void remember(const void* place, size_t bytes);
int is_as_remembered(const void* place, size_t bytes);

/// The same of a call that makes a handle, which is null where it fails.
#define TRY_MAKING(handle, call)                                                                                       \
    do {                                                                                                               \
        (handle) = (void*)&error;                                                                                      \
        if (!succeeds(call, &error, #call, __FILE__, __LINE__)) {                                                      \
            CHECK((handle) == NULL);                                                                                   \
            goto done;                                                                                                 \
        }                                                                                                              \
    } while (0)

/// A call that has to fail with a status and a sentence, whatever the heap does but exhaust it.
#define REFUSE(call, status, sentence)                                                                                 \
    do                                                                                                                 \
        if (!refuses(call, status, &error, sentence, __FILE__, __LINE__))                                              \
            goto done;                                                                                                 \
    while (0)
int refuses(korvale_status given, korvale_status wanted, korvale_error* error, const char* sentence, const char* file,
            int line);

/// Whether an allocation has been made to fail in this run.
int heap_has_failed(void);

/// A progress that stops whatever it is told of.
int32_t stop(double done, void* user);

// One for each section of the header.
void array_tests(void);
void band_tests(void);
void equation_tests(void);
void grid_tests(void);
void layout_tests(void);
void mesh_tests(void);
void offset_tests(void);
void plane_tests(void);
void relaxer_tests(void);
void scatter_tests(void);
void shape_tests(void);
void transform_tests(void);
void version_tests(void);

#endif
