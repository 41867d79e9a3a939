#pragma once
// Scaling measured directly: the same work on one thread and on all threads, alternating in
// one run so both see the same machine, with the cores the run could use and the load it met.

#include <benchmark/benchmark.h>

#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

namespace velmora::bench {

// The cores this process may run on (what `nproc` prints), not the machine's count.
inline int coresSeen() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) == 0)
        return CPU_COUNT(&set);
    return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

// The one-minute load average when the run started (another session's work shows here).
inline double loadAverage() {
    std::ifstream in("/proc/loadavg");
    double one = 0;
    in >> one;
    return one;
}

struct Scaling {
    double oneThread = 1e300; // best seconds of the rounds
    double allThreads = 1e300;
    double oneWorst = 0;
    double allWorst = 0;
    // Processor time (user and system, every thread) over wall time in the all-threads run of
    // the best round: the cores kept busy. Near the core count unless the work waits on
    // something or another process holds a core.
    double busyCores = 0;
    double busyOne = 0; // the same for the best one-thread run: at most 1
};

inline double processorSeconds() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

// `work(threads)` runs the whole job with that many threads (0: one per core). Each round runs
// one thread then all threads; the best of the rounds is reported, the worst shows the spread.
inline Scaling measureScaling(const std::function<void(int)>& work, int rounds) {
    Scaling s;
    double busy = 0;
    auto timed = [&](int threads) {
        const double cpu0 = processorSeconds();
        const auto t0 = std::chrono::steady_clock::now();
        work(threads);
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        busy = (processorSeconds() - cpu0) / wall;
        return wall;
    };
    for (int r = 0; r < rounds; ++r) {
        const double one = timed(1);
        if (one < s.oneThread)
            s.busyOne = busy;
        const double all = timed(0);
        s.oneThread = std::min(s.oneThread, one);
        s.oneWorst = std::max(s.oneWorst, one);
        if (all < s.allThreads)
            s.busyCores = busy;
        s.allThreads = std::min(s.allThreads, all);
        s.allWorst = std::max(s.allWorst, all);
    }
    return s;
}

inline void reportScaling(benchmark::State& state, const Scaling& s, double load) {
    state.counters["cores"] = coresSeen();
    state.counters["load"] = load;
    state.counters["1 thread s"] = s.oneThread;
    state.counters["all threads s"] = s.allThreads;
    state.counters["speedup"] = s.oneThread / s.allThreads;
    state.counters["busy cores"] = s.busyCores;
    state.counters["1 thread busy"] = s.busyOne;
    // How far the slowest round was from the best, per side: the noise of a shared machine.
    state.counters["1 thread spread"] = s.oneWorst / s.oneThread;
    state.counters["all spread"] = s.allWorst / s.allThreads;
}

} // namespace velmora::bench
