#ifndef KORVALE_TESTS_C_HEAP_H
#define KORVALE_TESTS_C_HEAP_H

// A heap in front of the C library's that counts and, on demand, fails, whoever asks. A sanitizer or valgrind has its
// own in front of this one: nothing is counted then, nothing can be made to fail, and the tool finds what is left.

/// Whether blocks are counted and can be made to fail.
int heap_can_fail(void);

/// Blocks made less blocks released.
long live_blocks(void);

/// From now on the n-th allocation fails, 1 being the next, and every later one too where `all_after` is not 0.
void fail_allocation(long n, int all_after);

/// Nothing fails from now on. Returns whether something has.
int stop_failing(void);

#endif
