#pragma once
// Tests of folders and files that cannot be read. Root reads everything, so as root such a
// test runs in a child process that has first become the unprivileged user "nobody"; as any
// other user it runs here. Nothing is skipped either way.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include <unistd.h>

namespace velmora::test {

// Runs `check` where file modes are obeyed; it passes when `check` returns true. Whatever it
// touches must be reachable by "nobody" (the temporary folder is).
inline void whereModesHold(const std::function<bool()>& check) {
    if (::geteuid() != 0) {
        EXPECT_TRUE(check());
        return;
    }
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            if (::setgid(65534) != 0 || ::setuid(65534) != 0)
                std::_Exit(3);
            std::_Exit(check() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

} // namespace velmora::test
