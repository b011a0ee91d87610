// Runs one job of the library or of a peer in a process of its own, so that nothing another job left on the heap helps
// or hurts it.
//
//     jobs list                 name, exponent, smallest counted size, sizes
//     jobs time JOB SIZE        nanoseconds a call, page faults a call after the first
//     jobs count JOB SIZE       one call in counted_call(), for an instruction counter
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "bench/job.h"

namespace {

using korvale::bench::Job;
using korvale::bench::Work;

std::vector<Job> all_jobs()
{
    using namespace korvale::bench;
    std::vector<Job> all;
    for (const auto jobs : {border_jobs, ray_jobs, equation_jobs, preserve_jobs, array_jobs, path_jobs, math_jobs,
                            door_jobs, column_jobs, many_jobs, grid_jobs, shape_jobs}) {
        const std::vector<Job> some = jobs();
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

/// Processor time, so that a busy machine counts less.
double seconds()
{
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

long page_faults()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

/// The quickest of several rounds of about ten milliseconds, or of single calls where one takes longer.
void time_calls(const Work& work)
{
    work();
    const double first = seconds();
    work();
    const double once = std::max(seconds() - first, 1e-9);
    const long batch = std::max(1L, static_cast<long>(0.01 / once)), rounds = once > 0.1 ? 3 : 9;
    const long faults = page_faults();
    double best = 1e9;
    for (long round = 0; round < rounds; ++round) {
        const double start = seconds();
        for (long i = 0; i < batch; ++i)
            work();
        best = std::min(best, (seconds() - start) / static_cast<double>(batch));
    }
    std::printf("%.1f %.3f\n", best * 1e9,
                static_cast<double>(page_faults() - faults) / static_cast<double>(batch * rounds));
}

} // namespace

extern "C" [[gnu::noinline]] void counted_call(const Work& work)
{
    work();
    asm volatile(""); // a call that is not the last thing done is no jump, which a counter would take for the end
}

int main(int argc, char** argv)
{
    const std::vector<Job> jobs = all_jobs();
    if (argc == 2 && std::strcmp(argv[1], "list") == 0) {
        for (const Job& job : jobs) {
            std::printf("%s %g %d", job.name.c_str(), job.exponent, job.counted);
            for (const int size : job.sizes)
                std::printf(" %d", size);
            std::printf("\n");
        }
        return 0;
    }
    for (const Job& job : jobs)
        if (argc == 4 && job.name == argv[2]) {
            const Work work = job.prepare(std::atoi(argv[3]));
            if (std::strcmp(argv[1], "time") == 0) {
                time_calls(work);
            } else {
                work();
                counted_call(work);
            }
            return 0;
        }
    std::fprintf(stderr, "jobs: list, or time or count, a job of the list and a size\n");
    return 2;
}
