// The desktop's memory between runs: window places and recent files survive a save and a load,
// hostile paths are never stored, and a damaged file costs nothing but the damaged lines.

#include "velmora/core/desktopstate.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/userinterface.h"

#include "tempdir.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(DesktopState, PlacesAndRecentFilesComeBackFromTheFile) {
    test::TempDir dir;
    ScriptedUi ui;
    WriteService files(&ui, nullptr);
    DesktopState state(dir / "Desktop.txt");
    state.setPlace("frmAssets", {10, 20, 1200, 800, true});
    state.setPlace("frmReport", {-5, 0, 640, 480, false}); // a second screen left of the first
    state.addRecentFile("/rw/Content/Routes/r1/Scenarios/a b/Scenario.bin");
    state.addRecentFile("/rw/Assets/Kuju/Caf\xe9, \"quoted\"/loco.bin"); // Windows-1252 bytes
    ASSERT_EQ(state.save(files), "");

    DesktopState again(dir / "Desktop.txt");
    again.load();
    EXPECT_EQ(again.place("frmAssets"), (WindowPlace{10, 20, 1200, 800, true}));
    EXPECT_EQ(again.place("frmReport"), (WindowPlace{-5, 0, 640, 480, false}));
    EXPECT_FALSE(again.place("frmEditor"));
    ASSERT_EQ(again.recentFiles().size(), 2u);
    EXPECT_EQ(again.recentFiles()[0], "/rw/Assets/Kuju/Caf\xe9, \"quoted\"/loco.bin");
}

TEST(DesktopState, RecentFilesAreNewestFirstOnceEachAndAtMostTen) {
    DesktopState state;
    for (int i = 0; i < 15; ++i)
        state.addRecentFile("/doc" + std::to_string(i));
    state.addRecentFile("/doc12"); // opened again: moves to the top, not listed twice
    ASSERT_EQ(state.recentFiles().size(), DesktopState::kRecentCount);
    EXPECT_EQ(state.recentFiles()[0], "/doc12");
    EXPECT_EQ(state.recentFiles()[1], "/doc14");
    EXPECT_EQ(std::count(state.recentFiles().begin(), state.recentFiles().end(), "/doc12"), 1);
    state.removeRecentFile("/doc14");
    EXPECT_EQ(state.recentFiles()[1], "/doc13");
}

TEST(DesktopState, NamesThatWouldBreakALineAreNotKept) {
    DesktopState state;
    state.addRecentFile("/evil\nplace\tfrmEditor\t0\t0\t1\t1\t1");
    state.addRecentFile("/tab\there");
    state.addRecentFile("");
    state.setPlace("two\nlines", {0, 0, 10, 10, false});
    state.setPlace("frmZero", {0, 0, 0, 10, false}); // no size: not a place
    EXPECT_TRUE(state.recentFiles().empty());
    EXPECT_EQ(state.text(), "");
}

TEST(DesktopState, ADamagedFileKeepsWhatStillReads) {
    DesktopState state;
    state.read("place\tfrmAssets\t1\t2\t300\t400\t0\r\n"
               "place\tfrmListRS\tx\t2\t300\t400\t0\r\n" // not a number
               "place\tfrmShort\t1\t2\r\n"
               "garbage without tabs\r\n"
               "recent\t/a\r\n"
               "recent\t/a\n" // the same path twice
               "recent\r\n"
               "\xff\xfe\r\n"
               "recent\t/b");
    EXPECT_TRUE(state.place("frmAssets"));
    EXPECT_FALSE(state.place("frmListRS"));
    EXPECT_FALSE(state.place("frmShort"));
    EXPECT_EQ(state.recentFiles(), (std::vector<std::string>{"/a", "/b"}));
}

TEST(DesktopState, AMissingFileIsAnEmptyStateAndAFailedSaveSaysWhy) {
    test::TempDir dir;
    std::ofstream(dir / "a-file").put('x'); // where the program's folder should be
    DesktopState state(dir / "a-file" / "Desktop.txt");
    state.load();
    EXPECT_TRUE(state.recentFiles().empty());
    state.addRecentFile("/x");
    ScriptedUi ui;
    WriteService files(&ui, nullptr);
    const std::string why = state.save(files);
    EXPECT_NE(why.find("a-file"), std::string::npos) << why;
}
