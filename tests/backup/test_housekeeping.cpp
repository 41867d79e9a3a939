// The menu commands around the copies: where the backups go, what the user is told, and the
// read/write, scratch-folder and version commands.

#include "backupfixture.h"
#include "velmora/backup/housekeeping.h"
#include "velmora/core/services.h"
#include "velmora/core/version.h"

using namespace velmora;
using namespace velmora::backup;
using velmora::test::BackupFixture;
using velmora::test::slurp;

TEST(FullBackup, TakesTheFirstFreeNumberWrittenWithoutPadding) {
    BackupFixture f;
    EXPECT_EQ(nextFullBackupFolder(f.backups), f.backups / "VL_Backup1");
    fs::create_directories(f.backups / "VL_Backup1");
    fs::create_directories(f.backups / "VL_Backup2");
    EXPECT_EQ(nextFullBackupFolder(f.backups), f.backups / "VL_Backup3");
    // Any entry of the name counts as taken: a file, or a link that leads nowhere.
    std::ofstream(f.backups / "VL_Backup3") << "a file";
    fs::create_symlink("nowhere", f.backups / "VL_Backup4");
    EXPECT_EQ(nextFullBackupFolder(f.backups), f.backups / "VL_Backup5");
    for (int n = 5; n <= 50; ++n)
        fs::create_directories(f.backups / ("VL_Backup" + std::to_string(n)));
    EXPECT_EQ(nextFullBackupFolder(f.backups), f.backups / "VL_Backup50");
}

TEST(FullBackup, CopiesIntoTheNextFolderAndSaysWhere) {
    BackupFixture f;
    fs::create_directories(f.backups / "VL_Backup1");
    fs::create_directories(f.backups / "VL_Backup2");
    const BackupRun run = fullBackup(f.ctx);
    ASSERT_TRUE(run.ran) << run.message;
    EXPECT_FALSE(run.warn());
    EXPECT_EQ(run.report.target, f.backups / "VL_Backup3");
    EXPECT_EQ(run.message.rfind("TrainSimulator 2019 Assets,Contents,Source and Root folders have been copied to\n" +
                                    (f.backups / "VL_Backup3").string(),
                                0),
              0u)
        << run.message;
    EXPECT_NE(run.message.find("5 files"), std::string::npos);
    EXPECT_EQ(slurp(f.backups / "VL_Backup3/Content/Routes/r1/RouteProperties.xml"), "<route/>");
    // A backup folder that is not there yet is made.
    const BackupRun elsewhere = fullBackup(f.ctx, f.dir / "new/place");
    EXPECT_TRUE(fs::is_regular_file(f.dir / "new/place/VL_Backup1/RailWorks.exe")) << elsewhere.message;
}

TEST(FullBackup, BeyondTheFiftiethTheLastFolderIsBroughtUpToDate) {
    BackupFixture f;
    for (int n = 1; n <= 50; ++n)
        fs::create_directories(f.backups / ("VL_Backup" + std::to_string(n)));
    std::ofstream(f.backups / "VL_Backup50/Settings.xml") << "stale";
    fs::last_write_time(f.backups / "VL_Backup50/Settings.xml", fs::file_time_type::clock::now() - std::chrono::hours(99));
    const BackupRun run = fullBackup(f.ctx);
    EXPECT_TRUE(run.ran);
    EXPECT_TRUE(run.report.problems.empty()) << run.message;
    EXPECT_EQ(slurp(f.backups / "VL_Backup50/Settings.xml"), "<s/>");
}

TEST(FullBackup, WithoutABackupPathNothingIsCopiedAndTheUserIsToldWhere) {
    BackupFixture f;
    f.ctx.settings.railWorksBackup.clear();
    for (const BackupRun& run : {fullBackup(f.ctx), incrementalBackup(f.ctx)}) {
        EXPECT_FALSE(run.ran);
        EXPECT_EQ(run.message, "You do not appear to have set up a path for your backups.\n"
                               "Go to the Options menu and do this first.");
    }
    EXPECT_FALSE(fs::exists(f.backups));
}

TEST(FullBackup, NamesWhatItCouldNotCopyAndWarns) {
    BackupFixture f;
    fs::create_symlink("loop", f.rw / "Assets/loop");
    const BackupRun run = fullBackup(f.ctx);
    EXPECT_TRUE(run.ran);
    EXPECT_TRUE(run.warn());
    EXPECT_NE(run.message.find("Not copied (1):\n" + (f.rw / "Assets/loop").string()), std::string::npos)
        << run.message;
}

TEST(IncrementalBackup, TheFirstRunCopiesAllAndLaterRunsWhatIsNewer) {
    BackupFixture f;
    BackupRun run = incrementalBackup(f.ctx);
    EXPECT_TRUE(run.firstIncremental);
    EXPECT_EQ(run.message.rfind("This appears to be the first time you have used this option.", 0), 0u);
    EXPECT_EQ(run.report.copied, 5u);
    EXPECT_EQ(run.report.target, f.backups / "Incremental Backup");

    f.dir.write("rw/Assets/Kuju/RailSimulator/Café, \"Ouest\".bin", "blueprint, edited");
    run = incrementalBackup(f.ctx);
    EXPECT_FALSE(run.firstIncremental);
    EXPECT_EQ(run.message.rfind("Changed files in TrainSimulator 2019 Assets,Contents,Source and Root folders have "
                                "been copied to\n",
                                0),
              0u);
    EXPECT_EQ(run.report.copied, 1u);
    EXPECT_EQ(run.report.unchanged, 4u);
    EXPECT_EQ(slurp(f.backups / "Incremental Backup/Assets/Kuju/RailSimulator/Café, \"Ouest\".bin"),
              "blueprint, edited");
}

TEST(IncrementalBackup, ABackupFolderInsideTheTreeIsRefused) {
    BackupFixture f;
    f.ctx.settings.railWorksBackup = (f.rw / "Backups").string();
    const BackupRun run = incrementalBackup(f.ctx);
    EXPECT_FALSE(run.ran);
    EXPECT_NE(run.message.find("lies inside"), std::string::npos);
    EXPECT_FALSE(fs::exists(f.rw / "Backups"));
}

TEST(ReadWrite, ClearsReadOnlyFilesAndFoldersWithoutFollowingLinks) {
    BackupFixture f;
    const fs::path file = f.rw / "Assets/Kuju/RailSimulator/Café, \"Ouest\".bin";
    const fs::path outside = f.dir.write("outside/keep.txt", "x");
    fs::permissions(outside, fs::perms::owner_read);
    fs::create_symlink(outside, f.rw / "Assets/link.txt");
    fs::permissions(file, fs::perms::owner_read | fs::perms::group_read);
    fs::permissions(f.rw / "Content/Empty", fs::perms::owner_read | fs::perms::owner_exec);
    const ReadWriteRun run = makeReadWrite(f.ctx);
    EXPECT_EQ(run.changed, 2u);
    EXPECT_TRUE((fs::status(file).permissions() & fs::perms::owner_write) != fs::perms::none);
    EXPECT_TRUE((fs::status(f.rw / "Content/Empty").permissions() & fs::perms::owner_write) != fs::perms::none);
    // The link is named; what it points to is left read-only.
    EXPECT_EQ(fs::status(outside).permissions(), fs::perms::owner_read);
    ASSERT_EQ(run.problems.size(), 1u);
    EXPECT_NE(run.problems[0].find("link.txt: a link"), std::string::npos);
    EXPECT_NE(run.message.find("not all"), std::string::npos);
}

TEST(ReadWrite, AChosenFolderMustLieInsideTheSimulatorOrTheProgramsFolder) {
    BackupFixture f;
    const fs::path file = f.rw / "Settings.xml";
    fs::permissions(file, fs::perms::owner_read);
    fs::permissions(f.rw / "Assets/Kuju/RailSimulator/Audio/horn.dav", fs::perms::owner_read);
    ReadWriteRun run = makeReadWrite(f.ctx, f.rw / "Assets");
    EXPECT_EQ(run.message, "All files are now Read/Write");
    EXPECT_EQ(run.changed, 1u);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read);

    f.dir.write("elsewhere/x", "x");
    run = makeReadWrite(f.ctx, f.dir / "elsewhere");
    EXPECT_NE(run.refused.find("outside the Rail Works folder"), std::string::npos);
    EXPECT_EQ(run.seen, 0u);
    run = makeReadWrite(f.ctx, f.rw / "No such");
    EXPECT_NE(run.refused.find("no such folder"), std::string::npos);
}

TEST(Housekeeping, TheSimulatorsTempFolderIsEmptiedAndMadeAgain) {
    BackupFixture f;
    f.dir.write("rw/Temp/a.tmp", "a");
    f.dir.write("rw/Temp/sub/b.tmp", "b");
    fs::permissions(f.rw / "Temp/a.tmp", fs::perms::owner_read);
    clearSimulatorTemp(f.ctx);
    EXPECT_TRUE(fs::is_directory(f.rw / "Temp"));
    EXPECT_TRUE(fs::is_empty(f.rw / "Temp"));
    EXPECT_TRUE(fs::exists(f.rw / "Settings.xml"));
}

TEST(Housekeeping, TheVersionAndTheWebPages) {
    EXPECT_EQ(versionMessage(), "Your Current Version is \nVersion " + std::to_string(Version::major) + "." +
                                    std::to_string(Version::minor) + "." + std::to_string(Version::revision));
    EXPECT_EQ(versionPageUrl(), homePageUrl() + "downloads/vl_version.html");
    EXPECT_EQ(homePageUrl().rfind("https://", 0), 0u);
    EXPECT_EQ(homePageUrl().back(), '/');
}
