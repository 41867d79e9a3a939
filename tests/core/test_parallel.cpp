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

TEST(ParallelFeed, ResultsInTheOrderOfAddingWhileTheFeedGoesOn) {
    for (int threads : {1, 2, 4}) {
        ParallelFeed<std::size_t, std::string> feed(threads, nullptr, [](const std::size_t& i) { return slowSquare(i); });
        for (std::size_t i = 0; i < 300; ++i) {
            feed.add(i);
            if (i % 50 == 0) // the walk pauses; the workers must wait, not end
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        bool stopped = true;
        const auto results = feed.finish("Squares", stopped);
        EXPECT_FALSE(stopped);
        ASSERT_EQ(results.size(), 300u) << threads;
        for (std::size_t i = 0; i < results.size(); ++i)
            ASSERT_EQ(results[i], std::to_string(i * i)) << threads;
        EXPECT_EQ(feed.items().size(), 300u);
    }
}

TEST(ParallelFeed, OneThreadWorksOnlyInFinishOnTheCallingThread) {
    const auto caller = std::this_thread::get_id();
    std::atomic<int> elsewhere{0}, done{0};
    ParallelFeed<int, int> feed(1, nullptr, [&](const int& v) {
        if (std::this_thread::get_id() != caller)
            ++elsewhere;
        ++done;
        return v + 1;
    });
    for (int i = 0; i < 20; ++i)
        feed.add(i);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(done, 0);
    bool stopped = false;
    const auto results = feed.finish("One", stopped);
    EXPECT_EQ(results.back(), 20);
    EXPECT_EQ(elsewhere, 0);
}

TEST(ParallelFeed, EmptyFeedAndCancelEndEveryWorker) {
    {
        ParallelFeed<int, int> feed(3, nullptr, [](const int& v) { return v; });
        bool stopped = true;
        EXPECT_TRUE(feed.finish("Nothing", stopped).empty());
        EXPECT_FALSE(stopped);
    }
    // A walk that is stopped: the feed is cancelled with pieces undone, and nothing hangs.
    std::atomic<int> done{0};
    ParallelFeed<int, int> feed(2, nullptr, [&](const int& v) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        ++done;
        return v;
    });
    for (int i = 0; i < 1000; ++i)
        feed.add(i);
    feed.cancel();
    EXPECT_LT(done.load(), 1000);
}

TEST(ParallelFeed, WorkThatThrowsIsRethrownFromFinish) {
    ParallelFeed<int, int> feed(2, nullptr, [](const int& v) {
        if (v == 37)
            throw std::runtime_error("piece 37 failed");
        return v;
    });
    for (int i = 0; i < 100; ++i)
        feed.add(i);
    bool stopped = false;
    EXPECT_THROW(feed.finish("Throws", stopped), std::runtime_error);
}
