// The write service under faults: every step failing in turn, links where they should not be,
// a full disk, a kill in the middle, and the numbered backup series.

#include "faultyfiles.h"
#include "tempdir.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <random>
#include <set>

#include <sys/wait.h>
#include <unistd.h>

using namespace velmora;
using velmora::test::FaultyFiles;
using velmora::test::TempDir;
namespace fs = std::filesystem;

namespace {

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& e : fs::directory_iterator(folder))
        names.insert(e.path().filename().string());
    return names;
}

constexpr WriteStep kSteps[] = {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup,
                                WriteStep::Replace};

} // namespace

TEST(WriteService, BackupsTakeTheFirstFreeNameOfTheSeries) {
    TempDir dir;
    const fs::path doc = dir.write("Bogie.bin", "v0");
    dir.write("Bogie.bin.bak3", "old3");
    WriteService files;
    std::vector<std::string> taken;
    for (int round = 1; round <= 4; ++round) {
        const WriteResult r = files.write(doc, "v" + std::to_string(round));
        ASSERT_TRUE(r) << r.message;
        EXPECT_FALSE(r.created);
        taken.push_back(r.backup.filename().string());
        EXPECT_EQ(test::slurp(r.backup), "v" + std::to_string(round - 1));
    }
    EXPECT_EQ(taken, (std::vector<std::string>{"Bogie.bin.bak", "Bogie.bin.bak1", "Bogie.bin.bak2", "Bogie.bin.bak4"}));
    EXPECT_EQ(test::slurp(doc), "v4");
    EXPECT_EQ(test::slurp(dir / "Bogie.bin.bak3"), "old3");

    // A new file has nothing to keep; a write with no backup keeps nothing.
    const WriteResult fresh = files.write(dir / "New.bin", "n");
    EXPECT_TRUE(fresh.created);
    EXPECT_TRUE(fresh.backup.empty());
    EXPECT_TRUE(files.write(dir / "New.bin", "m", {Backup::None}));
    EXPECT_EQ(namesIn(dir.path()).count("New.bin.bak"), 0u);
    EXPECT_EQ(freeBackupName(doc), dir / "Bogie.bin.bak5");
}

TEST(WriteService, AllFiftyOneBackupNamesTakenMeansAskingFirst) {
    TempDir dir;
    dir.write("T.bin.bak", "b");
    for (int n = 1; n <= 50; ++n)
        dir.write("T.bin.bak" + std::to_string(n), "b" + std::to_string(n));
    const fs::path doc = dir.write("T.bin", "original");
    EXPECT_EQ(freeBackupName(doc), std::nullopt);

    // Nobody to ask, or a No: the file stays as it is and the message says why.
    WriteService silent;
    WriteResult r = silent.write(doc, "new");
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("all 51 backup names"), std::string::npos) << r.message;
    EXPECT_EQ(test::slurp(doc), "original");
    ScriptedUi ui;
    WriteService asking(&ui);
    r = asking.write(doc, "new");
    EXPECT_FALSE(r);
    ASSERT_EQ(ui.prompts.size(), 1u);
    EXPECT_NE(ui.prompts[0].text.find("Overwrite it without keeping a backup?"), std::string::npos);
    EXPECT_EQ(test::slurp(doc), "original");
    EXPECT_EQ(namesIn(dir.path()).size(), 52u) << "no temporary file is left";

    ui.pushAnswer(Answer::Yes);
    r = asking.write(doc, "new");
    ASSERT_TRUE(r) << r.message;
    EXPECT_TRUE(r.overwroteWithoutBackup);
    EXPECT_TRUE(r.backup.empty());
    EXPECT_EQ(test::slurp(doc), "new");
    EXPECT_EQ(test::slurp(dir / "T.bin.bak50"), "b50");
}

TEST(WriteService, AFailureAtEveryStepLeavesTheOldFileWholeAndNothingBeside) {
    for (const WriteStep step : kSteps) {
        for (const bool existing : {true, false}) {
            SCOPED_TRACE(std::string(writeStepName(step)) + (existing ? ", existing file" : ", new file"));
            TempDir dir;
            const fs::path doc = dir / "Doc.bin";
            if (existing)
                dir.write("Doc.bin", "the old content");
            const auto before = namesIn(dir.path());
            FaultyFiles faults(step, std::errc::no_space_on_device);
            WriteService files;
            files.setFileOps(&faults);
            const WriteResult r = files.write(doc, std::string(100000, 'n'));
            if (step == WriteStep::Backup && !existing) {
                EXPECT_TRUE(r) << "a new file needs no backup";
                continue;
            }
            EXPECT_FALSE(r);
            ASSERT_TRUE(r.failedStep);
            EXPECT_EQ(*r.failedStep, step);
            EXPECT_EQ(r.message.rfind(doc.string() + ": ", 0), 0u) << r.message;
            EXPECT_NE(r.message.find("No space left on device"), std::string::npos) << r.message;
            EXPECT_NE(r.message.find(existing ? "The file was not changed." : "Nothing was written."), std::string::npos);
            EXPECT_EQ(namesIn(dir.path()), before) << "no temporary file and no backup are left";
            if (existing) {
                EXPECT_EQ(test::slurp(doc), "the old content");
            }
        }
    }
}

TEST(WriteService, NeverWritesThroughALinkAtTheTemporaryName) {
    TempDir dir;
    const fs::path victim = dir.write("elsewhere/victim.txt", "keep me");
    const fs::path doc = dir.write("Doc.bin", "old");

    // The system's create refuses a name that is a link, whatever it points at.
    int handle = -1;
    fs::create_symlink(victim, dir / "planted");
    FileOps system;
    EXPECT_EQ(system.create(dir / "planted", handle), std::errc::file_exists);

    // A link put at the very name the service is about to create is passed by, never opened.
    FaultyFiles race;
    int planted = 0;
    race.beforeCreate = [&](const fs::path& name) {
        if (planted++ == 0)
            fs::create_symlink(victim, name);
    };
    WriteService files;
    files.setFileOps(&race);
    const WriteResult r = files.write(doc, "new");
    ASSERT_TRUE(r) << r.message;
    EXPECT_EQ(test::slurp(doc), "new");
    EXPECT_EQ(test::slurp(victim), "keep me");
    EXPECT_EQ(race.calls[WriteStep::Create], 2);
}

TEST(WriteService, TargetsThatAreLinksFoldersOrReadOnly) {
    TempDir dir;
    WriteService files;
    // A link to a document: the document is written, its backup beside it, the link stays.
    const fs::path real = dir.write("real/Doc.bin", "old");
    fs::create_symlink(real, dir / "Link.bin");
    WriteResult r = files.write(dir / "Link.bin", "new");
    ASSERT_TRUE(r) << r.message;
    EXPECT_TRUE(fs::is_symlink(dir / "Link.bin"));
    EXPECT_EQ(test::slurp(real), "new");
    EXPECT_EQ(test::slurp(dir / "real/Doc.bin.bak"), "old");

    // A link to nothing, a folder: refused, nothing made.
    fs::create_symlink(dir / "nowhere", dir / "Dangling.bin");
    EXPECT_FALSE(files.write(dir / "Dangling.bin", "x"));
    EXPECT_FALSE(fs::exists(dir / "nowhere"));
    fs::create_directories(dir / "Folder.bin");
    r = files.write(dir / "Folder.bin", "x");
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("is a folder"), std::string::npos);

    // Read-only: replaced where a backup keeps the old one, refused where none would.
    const fs::path locked = dir.write("Locked.bin", "locked");
    fs::permissions(locked, fs::perms::owner_read | fs::perms::group_read);
    if (::geteuid() != 0) { // root may write anywhere, so the refusal cannot be seen
        EXPECT_FALSE(files.write(locked, "x", {Backup::None}));
        EXPECT_EQ(test::slurp(locked), "locked");
    }
    ASSERT_TRUE(files.write(locked, "replaced"));
    EXPECT_EQ(test::slurp(locked), "replaced");
    EXPECT_EQ(test::slurp(dir / "Locked.bin.bak"), "locked");

    // A folder that cannot be written to: the message says so and nothing is made.
    FaultyFiles readOnlyFolder(WriteStep::Create, std::errc::permission_denied);
    files.setFileOps(&readOnlyFolder);
    r = files.write(dir / "Locked.bin", "x");
    EXPECT_NE(r.message.find("Permission denied"), std::string::npos) << r.message;
    EXPECT_EQ(test::slurp(locked), "replaced");
    files.setFileOps(nullptr);
    if (::geteuid() != 0) {
        fs::create_directories(dir / "sealed");
        fs::permissions(dir / "sealed", fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_FALSE(files.write(dir / "sealed/New.bin", "x"));
        fs::permissions(dir / "sealed", fs::perms::owner_all);
    }

    // Missing folders are made on the way.
    ASSERT_TRUE(files.write(dir / "a/b/c/New.txt", "deep"));
    EXPECT_EQ(test::slurp(dir / "a/b/c/New.txt"), "deep");
}

TEST(WriteService, BackupIsACopyWhereTheFileSystemCannotLink) {
    TempDir dir;
    const fs::path doc = dir.write("Doc.bin", "old");
    FaultyFiles noLinks(WriteStep::Backup, std::errc::operation_not_permitted);
    WriteService files;
    files.setFileOps(&noLinks);
    const WriteResult r = files.write(doc, "new");
    ASSERT_TRUE(r) << r.message;
    EXPECT_EQ(r.backup, dir / "Doc.bin.bak");
    EXPECT_EQ(test::slurp(dir / "Doc.bin.bak"), "old");
    EXPECT_EQ(test::slurp(doc), "new");
}

TEST(WriteService, AppendsToLogsAndNeverThroughALink) {
    TempDir dir;
    WriteService files;
    ASSERT_TRUE(files.append(dir / "logs/Errors.txt", "one\n"));
    ASSERT_TRUE(files.append(dir / "logs/Errors.txt", "two\n"));
    EXPECT_EQ(test::slurp(dir / "logs/Errors.txt"), "one\ntwo\n");
    const fs::path victim = dir.write("victim.txt", "keep");
    fs::create_symlink(victim, dir / "log.txt");
    std::string error;
    EXPECT_FALSE(files.append(dir / "log.txt", "x", &error));
    EXPECT_NE(error.find("log.txt"), std::string::npos);
    EXPECT_EQ(test::slurp(victim), "keep");
}

// A child process writes a large document and is killed at a random moment, many times: the
// document's name holds the whole old content or the whole new one every time.
TEST(WriteService, AKillAtAnyMomentLeavesTheOldOrTheNewFileWhole) {
    TempDir dir;
    const std::string oldBytes(7 << 20, 'o');
    std::string newBytes(7 << 20, 'n');
    newBytes.back() = 'N';
    const fs::path doc = dir / "Scenario.bin";
    std::mt19937 rng(20261124);
    int sawOld = 0, sawNew = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(4);
    for (int round = 0; round < 40 && std::chrono::steady_clock::now() < deadline; ++round) {
        for (const auto& name : namesIn(dir.path()))
            fs::remove(dir / name);
        dir.write("Scenario.bin", oldBytes);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            WriteService files;
            const WriteResult r = files.write(doc, newBytes);
            ::_exit(r ? 0 : 1);
        }
        ::usleep(std::uniform_int_distribution<useconds_t>(0, 40000)(rng));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        const std::string now = test::slurp(doc);
        if (now == oldBytes)
            ++sawOld;
        else if (now == newBytes)
            ++sawNew;
        else
            FAIL() << "round " << round << ": the document holds " << now.size() << " bytes of neither";
        // A backup, when there is one, is the whole old file.
        if (fs::exists(dir / "Scenario.bin.bak")) {
            EXPECT_EQ(test::slurp(dir / "Scenario.bin.bak"), oldBytes);
        }
    }
    EXPECT_GT(sawOld + sawNew, 5);
    RecordProperty("old", sawOld);
    RecordProperty("new", sawNew);
}
