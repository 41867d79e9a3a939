#include "tempdir.h"
#include "velmora/core/installinfo.h"
#include "velmora/core/paths.h"
#include "velmora/core/routeindex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace velmora;
using velmora::test::TempDir;
namespace fs = std::filesystem;

TEST(PathResolver, FindsDocumentPathsWhateverTheirLetterCase) {
    TempDir dir;
    dir.write("Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66.bin", "x");
    dir.write("Assets/DemoRail/Class66Pack/Textures/Body_SP.TgPcDx", "t");
    PathResolver r;
    auto found = r.resolve(dir.path(), "assets\\DEMORAIL\\class66pack\\RailVehicles\\diesel\\CLASS66.BIN");
    ASSERT_TRUE(found);
    EXPECT_EQ(*found, dir / "Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66.bin");

    // Relative steps as geometry files write them.
    auto tex = r.resolve(dir / "Assets/DemoRail/Class66Pack/RailVehicles/Diesel",
                         "..\\..\\textures\\body_sp.tgpcdx");
    ASSERT_TRUE(tex);
    EXPECT_EQ(tex->filename(), "Body_SP.TgPcDx");
    EXPECT_FALSE(r.resolve(dir.path(), "Assets\\DemoRail\\Missing\\x.bin"));
    EXPECT_FALSE(r.resolve(dir.path(), "C:\\Assets"));
    EXPECT_TRUE(r.resolve(dir.path(), "Assets//DemoRail/./Class66Pack"));
}

TEST(PathResolver, ExactSpellingWinsAndListingsAreCached) {
    TempDir dir;
    dir.write("Folder/readme.txt", "lower");
    dir.write("Folder/README.txt", "upper");
    PathResolver r;
    EXPECT_EQ(test::slurp(*r.resolve(dir.path(), "folder/README.txt")), "upper");
    EXPECT_EQ(test::slurp(*r.resolve(dir.path(), "FOLDER/readme.txt")), "lower");

    // A file made after the folder was listed is found: the folder's changed time makes the
    // resolver read it again.
    EXPECT_FALSE(r.resolve(dir.path(), "folder/new.txt"));
    dir.write("Folder/New.txt", "n");
    EXPECT_TRUE(r.resolve(dir.path(), "folder/new.txt"));
    // A removed file is still named from the cache until the listing is dropped.
    fs::remove(dir / "Folder/New.txt");
    r.invalidate(dir / "Folder");
    EXPECT_FALSE(r.resolve(dir.path(), "folder/new.txt"));
}

TEST(PathResolver, NonAsciiNamesFoldToo) {
    TempDir dir;
    dir.write("Assets/ÖBB/Wägen.bin", "x");
    PathResolver r;
    EXPECT_TRUE(r.resolve(dir.path(), "assets\\öbb\\WÄGEN.bin"));
    EXPECT_EQ(foldName("ÄÖÜ×Straße"), "äöü×straße");
}

TEST(PathResolver, WritePathsKeepTheRealSpellingOfWhatExists) {
    TempDir dir;
    fs::create_directories(dir / "Content/Routes");
    PathResolver r;
    EXPECT_EQ(r.resolveForWrite(dir.path(), "content\\routes\\New\\RouteProperties.xml"),
              dir / "Content/Routes/New/RouteProperties.xml");
}

TEST(Steam, LibraryFoldersAndTheSimulatorInThem) {
    TempDir dir;
    std::string vdf = R"("libraryfolders"
{
	"0"
	{
		"path"		")" + (dir / "lib0").string() + R"("
		"label"		""
	}
	"1"
	{
		"path"		")" + (dir / "games").string() + R"("
	}
})";
    auto libs = parseLibraryFolders(vdf);
    ASSERT_EQ(libs.size(), 2u);
    EXPECT_EQ(libs[1], dir / "games");
    EXPECT_EQ(parseLibraryFolders(R"("path" "D:\\SteamLibrary")")[0], fs::path("D:\\SteamLibrary"));
    // An empty or relative library would be looked for from the current folder.
    EXPECT_TRUE(parseLibraryFolders(R"("path" "" "path" "steamapps" "path")").empty());

    dir.write("home/.local/share/Steam/steamapps/libraryfolders.vdf", vdf);
    EXPECT_FALSE(findRailWorksInSteam(dir / "home"));
    dir.write("games/steamapps/common/RailWorks/RailWorks.exe", "");
    auto root = findRailWorksInSteam(dir / "home");
    ASSERT_TRUE(root);
    EXPECT_EQ(*root, dir / "games/steamapps/common/RailWorks");
}

TEST(RouteIndex, TwoFieldsALineIntoParallelTables) {
    auto index = parseRouteIndex("00000001-aaaa,Demo Valley\r\n\r\n\"0002\",\"Alpine - Pass\"\r\nlonely\r\n");
    ASSERT_EQ(index.size(), 3u);
    EXPECT_EQ(index.folders[1], "0002");
    EXPECT_EQ(index.names[1], "Alpine - Pass");
    EXPECT_EQ(index.names[2], "");
    EXPECT_EQ(index.nameOf("00000001-AAAA"), "Demo Valley");
    EXPECT_EQ(index.nameOf("nope"), "");
}

TEST(InstallInfo, ProductsWhateverTheLetterCaseAndNotBehindLinks) {
    TempDir dir;
    dir.write("RailWorks.exe", "");
    dir.write("Assets/Zeta/One/a.bin", "");
    dir.write("Assets/alpha/Two/b.bin", "");
    dir.write("Assets/alpha/Beta/c.bin", "");
    fs::create_directory_symlink("..", dir / "Assets/alpha/up");
    PathResolver r;
    auto s = summarizeInstall(dir.path(), r);
    EXPECT_TRUE(s.hasExecutable);
    ASSERT_EQ(s.products.size(), 3u);
    EXPECT_EQ(s.products[0].provider + "/" + s.products[0].product, "alpha/Beta");
    EXPECT_EQ(s.products[2].provider, "Zeta");
}

TEST(ProgramFolders, ShippedDataBesideTheProgramThenTheInstalledLayout) {
    TempDir dir;
    // Only a data folder with a Language folder counts.
    dir.write("build/bin/data/Templates/x.txt", "x");
    dir.write("usr/share/velmora/data/Language/Lang_English.txt", "x");
    EXPECT_EQ(findDataFolder(dir / "build/bin/velmora"), dir / "build/bin/data") << "the fallback names it anyway";
    dir.write("build/bin/data/Language/Lang_English.txt", "x");
    EXPECT_EQ(findDataFolder(dir / "build/bin/velmora"), dir / "build/bin/data");
    EXPECT_EQ(findDataFolder(dir / "usr/bin/velmora"), dir / "usr/share/velmora/data");
}

TEST(ProgramFolders, TheUsersOwnFolderFollowsTheDesktopsRules) {
#ifndef _WIN32
    const char* oldXdg = std::getenv("XDG_DATA_HOME");
    const std::string keptXdg = oldXdg ? oldXdg : "";
    ::setenv("XDG_DATA_HOME", "/tmp/xdg-data", 1);
    EXPECT_EQ(defaultHomeFolder(), fs::path("/tmp/xdg-data/velmora"));
    ::setenv("XDG_DATA_HOME", "", 1);
    const char* home = std::getenv("HOME");
    if (home && *home) {
        EXPECT_EQ(defaultHomeFolder(), fs::path(home) / ".local/share/velmora") << "an empty XDG_DATA_HOME is unset";
    }
    if (oldXdg)
        ::setenv("XDG_DATA_HOME", keptXdg.c_str(), 1);
    else
        ::unsetenv("XDG_DATA_HOME");
#endif
}

TEST(PathResolver, ManyThreadsResolveAtOnceAndSeeNewFiles) {
    TempDir dir;
    for (int f = 0; f < 20; ++f)
        for (int n = 0; n < 10; ++n)
            dir.write("Assets/Pack" + std::to_string(f) + "/Caf\xC3\xA9 " + std::to_string(n) + ".bin", "x");
    PathResolver r;
    std::atomic<int> wrong{0};
    std::vector<std::thread> pool;
    for (int t = 0; t < 4; ++t)
        pool.emplace_back([&, t] {
            for (int round = 0; round < 20; ++round)
                for (int f = 0; f < 20; ++f) {
                    const int n = (f + t + round) % 10;
                    // Upper case of the Latin-1 letter folds too.
                    const auto found = r.resolve(dir.path(), "ASSETS\\pack" + std::to_string(f) + "\\CAF\xC3\x89 " +
                                                                 std::to_string(n) + ".BIN");
                    if (!found || found->filename() != "Caf\xC3\xA9 " + std::to_string(n) + ".bin")
                        ++wrong;
                    if (r.resolve(dir.path(), "Assets\\Pack" + std::to_string(f) + "\\missing.bin"))
                        ++wrong;
                }
        });
    for (auto& t : pool)
        t.join();
    EXPECT_EQ(wrong, 0);
    // A file made after its folder was listed is found once the folder's time changed.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    dir.write("Assets/Pack3/Later.bin", "x");
    EXPECT_TRUE(r.resolve(dir.path(), "assets\\pack3\\later.bin"));
}
