#pragma once

#include <cstdlib>
#include <ctime>

#include <benchmark/benchmark.h>

// Ratios to a peer, measured in the same run: the time of the peer divided by ours, so 2 means twice as fast as the
// peer.
namespace korvale::bench {

/// Ends the program where something fails: what it then takes says nothing.
inline void need(bool done)
{
    if (!done)
        std::abort();
}

/// Processor time, so that a busy machine does not count.
inline double seconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Seconds of one call of `work`, the best of a few rounds.
template <class Work>
double time_of(Work work)
{
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        long calls = 0;
        const double start = seconds();
        double spent = 0.0;
        for (long batch = 1; spent < 0.01; batch *= 2) {
            for (long i = 0; i < batch; ++i)
                work();
            calls += batch;
            spent = seconds() - start;
        }
        const double each = spent / static_cast<double>(calls);
        best = each < best ? each : best;
    }
    return best;
}

/// Runs `ours` as the benchmark and reports the ratio to each peer under its name.
template <class Ours>
class Race {
public:
    Race(benchmark::State& state, Ours ours) : state_(state)
    {
        for (auto _ : state)
            ours();
        ours_ = time_of(ours);
    }

    template <class Peer>
    Race& against(const char* name, Peer peer)
    {
        state_.counters[name] = time_of(peer) / ours_;
        return *this;
    }

private:
    benchmark::State& state_;
    double ours_;
};

} // namespace korvale::bench
