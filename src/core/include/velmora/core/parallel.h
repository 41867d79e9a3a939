#pragma once
// Independent pieces of work (documents to convert and read) on all cores, their results kept
// in the order of the pieces, so that what is merged afterwards does not depend on the number
// of threads. With a front end, the calling thread only reports progress and watches Abort.

#include "velmora/core/userinterface.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace velmora {

// Runs work(i) for i in [0, n) and returns the results by index. `threads` 0 means one per
// core. `stopped` is set when Abort was pressed; the results are then incomplete. Work that
// throws stops the others; the first exception is rethrown here once every thread has ended.
template <typename Result, typename Work>
std::vector<Result> parallelMap(std::size_t n, int threads, UserInterface* ui, const std::string& label, bool& stopped,
                                Work work) {
    std::vector<Result> results(n);
    std::atomic<std::size_t> next{0}, done{0};
    std::atomic<bool> stop{false};
    std::exception_ptr failure;
    std::mutex failureMutex;
    auto worker = [&] {
        try {
            for (std::size_t i = next++; i < n && !stop; i = next++) {
                results[i] = work(i);
                ++done;
            }
        } catch (...) {
            std::lock_guard lock(failureMutex);
            if (!failure)
                failure = std::current_exception();
            stop = true;
        }
    };
    const unsigned count =
        threads > 0 ? static_cast<unsigned>(threads) : std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::thread> pool;
    for (unsigned t = ui ? 0 : 1; t < count; ++t)
        pool.emplace_back(worker);
    if (ui) {
        ui->beginProgress(label, static_cast<std::int64_t>(n));
        while (done < n && !stop) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            ui->progress(static_cast<std::int64_t>(done.load()));
            ui->pumpEvents();
            if (ui->cancelled())
                stop = true;
        }
    } else {
        worker();
    }
    for (auto& t : pool)
        t.join();
    if (ui)
        ui->endProgress();
    if (failure)
        std::rethrow_exception(failure);
    stopped = stop;
    return results;
}

// One piece of a batch: running out of memory on it is that piece's failure, given to
// `failed` as a reason, and the batch goes on with the next.
template <typename Work, typename Failed>
auto onePiece(Work&& work, Failed&& failed) -> decltype(work()) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return failed(std::string("there is not enough memory to read it"));
    }
}

} // namespace velmora
