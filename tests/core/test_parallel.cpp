// The worker pool that batch readers share: results in input order whatever the threads, Abort,
// and work that throws.

#include "velmora/core/parallel.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace velmora;

namespace {

// Work whose pieces take uneven time, so that later pieces often finish first.
std::string slowSquare(std::size_t i) {
    std::this_thread::sleep_for(std::chrono::microseconds((i * 7919) % 13 * 100));
    return std::to_string(i * i);
}

} // namespace

TEST(ParallelMap, ResultsKeepTheirOrderOnAnyNumberOfThreads) {
    for (int threads : {1, 2, 7, 0}) {
        bool stopped = true;
        const auto r = parallelMap<std::string>(200, threads, nullptr, "squares", stopped, slowSquare);
        EXPECT_FALSE(stopped);
        ASSERT_EQ(r.size(), 200u);
        for (std::size_t i = 0; i < r.size(); ++i)
            ASSERT_EQ(r[i], std::to_string(i * i)) << "threads " << threads;
    }
    bool stopped = true;
    EXPECT_TRUE(parallelMap<int>(0, 3, nullptr, "none", stopped, [](std::size_t) { return 1; }).empty());
    EXPECT_FALSE(stopped);
}

TEST(ParallelMap, WithAFrontEndProgressIsShownAndAbortStops) {
    ScriptedUi ui;
    bool stopped = false;
    auto r = parallelMap<std::string>(40, 2, &ui, "Tiles", stopped, slowSquare);
    EXPECT_FALSE(stopped);
    EXPECT_EQ(ui.progressTotal, 40);
    ASSERT_FALSE(ui.progressLabels.empty());
    EXPECT_EQ(ui.progressLabels.front(), "Tiles");

    ScriptedUi cancelling;
    cancelling.cancelAfter(1);
    std::atomic<int> ran{0};
    r = parallelMap<std::string>(100000, 2, &cancelling, "Tiles", stopped, [&](std::size_t i) {
        ++ran;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        return std::to_string(i);
    });
    EXPECT_TRUE(stopped);
    EXPECT_LT(ran.load(), 100000) << "Abort ends the work early";
}

TEST(ParallelMap, WorkThatThrowsEndsTheRunAndTheExceptionReachesTheCaller) {
    for (bool withUi : {false, true}) {
        ScriptedUi ui;
        bool stopped = false;
        std::atomic<int> after{0};
        EXPECT_THROW(parallelMap<int>(5000, 3, withUi ? &ui : nullptr, "x", stopped,
                                      [&](std::size_t i) {
                                          if (i == 10)
                                              throw std::runtime_error("unreadable piece 10");
                                          if (i > 1000)
                                              ++after;
                                          std::this_thread::sleep_for(std::chrono::microseconds(50));
                                          return static_cast<int>(i);
                                      }),
                     std::runtime_error);
        EXPECT_LT(after.load(), 3999) << "the others stop soon after";
    }
}
