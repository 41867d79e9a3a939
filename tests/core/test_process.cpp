#include "tempdir.h"
#include "velmora/core/process.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace velmora;

TEST(ExecCmd, WaitsForTheProgramInItsFolder) {
    test::TempDir dir;
    ScriptedUi ui;
    auto r = ExecCmd("sh", {"-c", "echo done > out.txt; exit 3"}, dir.path(), &ui);
    EXPECT_TRUE(r.started);
    EXPECT_FALSE(r.cancelled);
    EXPECT_EQ(r.exitCode, 3);
    EXPECT_EQ(test::slurp(dir / "out.txt"), "done\n");
}

TEST(ExecCmd, MissingProgramEndsQuietly) {
    auto r = ExecCmd("velmora-no-such-program", {}, {}, nullptr);
    EXPECT_FALSE(r.started);
}

TEST(ExecCmd, AbortStopsTheProgram) {
    ScriptedUi ui;
    ui.cancelAfter(0);
    ui.progress(0, {}); // the user has pressed Abort
    auto start = std::chrono::steady_clock::now();
    auto r = ExecCmd("sleep", {"30"}, {}, &ui);
    EXPECT_TRUE(r.started);
    EXPECT_TRUE(r.cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}
