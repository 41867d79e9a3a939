#pragma once
// Independent pieces of work (documents to convert and read) on all cores, their results kept
// in the order of the pieces, so that what is merged afterwards does not depend on the number
// of threads. With a front end, the calling thread only reports progress and watches Abort.

#include "velmora/core/userinterface.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace velmora {

namespace detail {

// The front end's side of a parallel run: progress every 50 ms until `done` reaches `n` or the
// run stops; Abort stops it.
inline void reportUntilDone(UserInterface& ui, const std::string& label, std::size_t n, const std::atomic<std::size_t>& done,
                            std::atomic<bool>& stop) {
    ui.beginProgress(label, static_cast<std::int64_t>(n));
    while (done < n && !stop) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ui.progress(static_cast<std::int64_t>(done.load()));
        ui.pumpEvents();
        if (ui.cancelled())
            stop = true;
    }
}

// Called in a catch block of a worker: the first failure is kept, and the others stop.
inline void noteFailure(std::mutex& mutex, std::exception_ptr& failure, std::atomic<bool>& stop) {
    std::lock_guard lock(mutex);
    if (!failure)
        failure = std::current_exception();
    stop = true;
}

} // namespace detail

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
            detail::noteFailure(failureMutex, failure, stop);
        }
    };
    const unsigned count =
        threads > 0 ? static_cast<unsigned>(threads) : std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::thread> pool;
    for (unsigned t = ui ? 0 : 1; t < count; ++t)
        pool.emplace_back(worker);
    if (ui) {
        detail::reportUntilDone(*ui, label, n, done, stop);
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


// Pieces of work found while the work goes on (a folder walk that finds documents to read):
// the finding thread add()s each piece and the other threads start on it at once, so that the
// walk is not a stretch where only one core works. finish() ends the feed, works along (or,
// with a front end, reports progress and watches Abort) and gives the results in the order
// the pieces were added. `threads` 0 means one per core; with one thread every piece is done
// in finish(), on the calling thread.
template <typename Item, typename Result>
class ParallelFeed {
public:
    template <typename Work>
    ParallelFeed(int threads, UserInterface* ui, Work work) : m_work(std::move(work)), m_ui(ui) {
        const unsigned count =
            threads > 0 ? static_cast<unsigned>(threads) : std::max(1u, std::thread::hardware_concurrency());
        for (unsigned t = ui ? 0 : 1; t < count; ++t)
            m_pool.emplace_back([this] { workAlong(); });
    }
    ParallelFeed(const ParallelFeed&) = delete;
    ParallelFeed& operator=(const ParallelFeed&) = delete;
    ~ParallelFeed() { cancel(); }

    void add(Item item) {
        {
            std::lock_guard lock(m_mutex);
            m_items.push_back(std::move(item));
            m_results.emplace_back();
        }
        m_ready.notify_one();
    }
    const std::deque<Item>& items() const { return m_items; } // once finish() or cancel() returned

    // Stops the workers; pieces not started are left undone.
    void cancel() {
        {
            std::lock_guard lock(m_mutex);
            m_closed = true;
            m_stop = true;
        }
        m_ready.notify_all();
        join();
    }

    std::vector<Result> finish(const std::string& label, bool& stopped) {
        {
            std::lock_guard lock(m_mutex);
            m_closed = true;
        }
        m_ready.notify_all();
        if (m_ui) {
            detail::reportUntilDone(*m_ui, label, m_items.size(), m_done, m_stop);
        } else {
            workAlong();
        }
        join();
        if (m_ui)
            m_ui->endProgress();
        if (m_failure)
            std::rethrow_exception(m_failure);
        stopped = m_stop;
        return {std::make_move_iterator(m_results.begin()), std::make_move_iterator(m_results.end())};
    }

private:
    void workAlong() {
        try {
            for (;;) {
                Item* item = nullptr;
                Result* result = nullptr;
                {
                    std::unique_lock lock(m_mutex);
                    m_ready.wait(lock, [&] { return m_stop || m_next < m_items.size() || m_closed; });
                    if (m_stop || m_next >= m_items.size())
                        return;
                    // Elements of a deque stay where they are when more are added.
                    item = &m_items[m_next];
                    result = &m_results[m_next];
                    ++m_next;
                }
                *result = m_work(*item);
                ++m_done;
            }
        } catch (...) {
            detail::noteFailure(m_mutex, m_failure, m_stop);
            m_ready.notify_all();
        }
    }
    void join() {
        for (auto& t : m_pool)
            if (t.joinable())
                t.join();
    }

    std::function<Result(const Item&)> m_work;
    UserInterface* m_ui;
    std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<Item> m_items;
    std::deque<Result> m_results;
    std::size_t m_next = 0;
    bool m_closed = false;
    std::atomic<bool> m_stop{false};
    std::atomic<std::size_t> m_done{0};
    std::exception_ptr m_failure;
    std::vector<std::thread> m_pool;
};

} // namespace velmora
