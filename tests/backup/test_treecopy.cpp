// The copying engine: what it copies, what it names and leaves alone, what it refuses, and what
// an abort or a failed copy leaves behind.

#include "backupfixture.h"
#include "velmora/backup/housekeeping.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace velmora::backup;
using velmora::test::BackupFixture;
using velmora::test::slurp;

namespace {

TreeCopyReport copyAll(BackupFixture& f, const fs::path& target, CopyRule rule = CopyRule::All) {
    TreeCopyOptions o;
    o.rule = rule;
    return copyTree(f.rw, simulatorParts(f.rw), target, o, &f.ui);
}

bool anyNameContains(const fs::path& folder, const std::string& part) {
    for (const auto& e : fs::recursive_directory_iterator(folder))
        if (e.path().filename().string().find(part) != std::string::npos)
            return true;
    return false;
}

bool named(const TreeCopyReport& r, const std::string& name, const std::string& reason) {
    for (const auto& p : r.problems)
        if (p.find(name) != std::string::npos && p.find(reason) != std::string::npos)
            return true;
    return false;
}

} // namespace

TEST(TreeCopy, CopiesTheRootFilesAndThePartsWithTheirNamesContentAndTimes) {
    BackupFixture f;
    const fs::path odd = f.rw / "Assets/Kuju/RailSimulator/Café, \"Ouest\".bin";
    fs::last_write_time(odd, fs::last_write_time(odd) - std::chrono::hours(48));
    fs::permissions(odd, fs::perms::owner_read | fs::perms::group_read);
    const auto r = copyAll(f, f.dir / "out");
    ASSERT_TRUE(r.complete()) << (r.problems.empty() ? r.refused : r.problems.front());
    EXPECT_EQ(r.copied, 5u);
    EXPECT_EQ(r.bytes, 3u + 4u + 9u + 70000u + 8u);
    const fs::path copy = f.dir / "out/Assets/Kuju/RailSimulator/Café, \"Ouest\".bin";
    EXPECT_EQ(slurp(copy), "blueprint");
    EXPECT_EQ(fs::last_write_time(copy), fs::last_write_time(odd));
    EXPECT_EQ(fs::status(copy).permissions(), fs::status(odd).permissions());
    EXPECT_EQ(slurp(f.dir / "out/Assets/Kuju/RailSimulator/Audio/horn.dav"), std::string(70000, 'h'));
    EXPECT_TRUE(fs::is_directory(f.dir / "out/Content/Empty"));
    // Only the root's own files: its other folders are not part of the backup.
    EXPECT_TRUE(fs::exists(f.dir / "out/Settings.xml"));
    EXPECT_FALSE(fs::exists(f.dir / "out/Manuals"));
    EXPECT_FALSE(fs::exists(f.dir / "out/Source"));
}

TEST(TreeCopy, SourceIsAPartOnlyWhenItExists) {
    BackupFixture f;
    EXPECT_EQ(simulatorParts(f.rw).size(), 3u);
    f.dir.write("rw/Source/Kuju/x.igs", "src");
    ASSERT_EQ(simulatorParts(f.rw).size(), 4u);
    EXPECT_EQ(simulatorParts(f.rw).back().folder, fs::path("Source"));
    copyAll(f, f.dir / "out");
    EXPECT_EQ(slurp(f.dir / "out/Source/Kuju/x.igs"), "src");
}

TEST(TreeCopy, PipesLinkLoopsAndLinksToFoldersAreNamedNotFollowed) {
    BackupFixture f;
    const fs::path a = f.rw / "Assets";
    ASSERT_EQ(::mkfifo((a / "pipe.bin").c_str(), 0644), 0);
    fs::create_symlink("loop", a / "loop");                 // a link to itself
    fs::create_directory_symlink(f.rw, a / "Kuju/up");       // back to the root: followed, it never ends
    fs::create_symlink(a / "Kuju/RailSimulator/Audio/horn.dav", a / "horn-link.dav");
    const auto r = copyAll(f, f.dir / "out");
    EXPECT_TRUE(named(r, "pipe.bin", "named pipe"));
    EXPECT_TRUE(named(r, "loop", "leads nowhere or round in a loop"));
    EXPECT_TRUE(named(r, "Kuju/up", "link to a folder"));
    EXPECT_EQ(r.problems.size(), 3u);
    EXPECT_FALSE(fs::exists(fs::symlink_status(f.dir / "out/Assets/Kuju/up")));
    // A link to a file is that file: its content is copied as a plain file.
    EXPECT_FALSE(fs::is_symlink(f.dir / "out/Assets/horn-link.dav"));
    EXPECT_EQ(fs::file_size(f.dir / "out/Assets/horn-link.dav"), 70000u);
    EXPECT_EQ(r.copied, 6u);
}

TEST(TreeCopy, AFileThatCannotBeReadIsNamedAndTheRestIsCopied) {
    BackupFixture f;
    // Gone between the plan and its copy (as a file on a failing disk is): named with the reason.
    // One thread, so that nothing is copied before the progress box opens.
    f.ui.atStart = [&] { fs::remove(f.rw / "Settings.xml"); };
    TreeCopyOptions one;
    one.threads = 1;
    auto r = copyTree(f.rw, simulatorParts(f.rw), f.dir / "out", one, &f.ui);
    EXPECT_TRUE(named(r, (f.rw / "Settings.xml").string(), "cannot be read"));
    EXPECT_EQ(r.copied, 4u);
    EXPECT_FALSE(fs::exists(f.dir / "out/Settings.xml"));
    if (::geteuid() != 0) { // permissions do not stop the superuser
        f.ui.atStart = nullptr;
        fs::permissions(f.rw / "RailWorks.exe", fs::perms::none);
        r = copyAll(f, f.dir / "out2");
        EXPECT_TRUE(named(r, "RailWorks.exe", "cannot be read")) << r.problems.size();
    }
}

TEST(TreeCopy, ATargetInsideTheTreeIsRefusedBeforeAnythingIsMade) {
    BackupFixture f;
    for (const fs::path& inside : {f.rw, f.rw / "Assets/VL_Backup1", f.rw / "Content/../Content/x"}) {
        const auto r = copyAll(f, inside);
        EXPECT_NE(r.refused.find("lies inside"), std::string::npos) << inside;
        EXPECT_EQ(r.copied, 0u);
    }
    // Reached through a link from outside, it is still inside.
    fs::create_directory_symlink(f.rw / "Content", f.dir / "sneaky");
    EXPECT_FALSE(copyAll(f, f.dir / "sneaky/VL_Backup1").refused.empty());
    EXPECT_FALSE(fs::exists(f.rw / "Assets/VL_Backup1"));
    EXPECT_FALSE(fs::exists(f.rw / "Content/VL_Backup1"));
    // A sibling whose name begins with the root's is outside.
    EXPECT_TRUE(copyAll(f, f.dir / "rw-backup").refused.empty());
}

TEST(TreeCopy, ATargetWithoutRoomIsRefusedBeforeCopying) {
    BackupFixture f;
    TreeCopyOptions o;
    o.clone = false; // clones on btrfs or XFS would need no room
    o.freeSpace = [](const fs::path&) { return std::optional<std::uint64_t>(1000); };
    const auto r = copyTree(f.rw, simulatorParts(f.rw), f.dir / "out", o, &f.ui);
    EXPECT_NE(r.refused.find("not enough room"), std::string::npos);
    EXPECT_NE(r.refused.find("68.4 KB"), std::string::npos) << r.refused;
    EXPECT_FALSE(fs::exists(f.dir / "out"));
    // Enough room for the changed files alone is enough for an incremental copy.
    copyAll(f, f.dir / "inc");
    f.dir.write("rw/Settings.xml", "<s>changed</s>");
    o.rule = CopyRule::NewerOnly;
    const auto again = copyTree(f.rw, simulatorParts(f.rw), f.dir / "inc", o, &f.ui);
    EXPECT_TRUE(again.complete()) << again.refused;
    EXPECT_EQ(again.copied, 1u);
}

TEST(TreeCopy, NewerOnlyCopiesWhatChangedAndReplacesReadOnlyCopies) {
    BackupFixture f;
    const fs::path out = f.dir / "inc";
    EXPECT_EQ(copyAll(f, out, CopyRule::NewerOnly).copied, 5u);
    auto r = copyAll(f, out, CopyRule::NewerOnly);
    EXPECT_EQ(r.copied, 0u);
    EXPECT_EQ(r.unchanged, 5u);

    // Newer: copied over a copy that is read-only. Same time but another size: copied too.
    fs::permissions(out / "Settings.xml", fs::perms::owner_read);
    f.dir.write("rw/Settings.xml", "<s>new</s>");
    fs::last_write_time(f.rw / "Settings.xml", fs::last_write_time(out / "Settings.xml") + std::chrono::seconds(5));
    const auto horn = f.rw / "Assets/Kuju/RailSimulator/Audio/horn.dav";
    const auto when = fs::last_write_time(horn);
    f.dir.write("rw/Assets/Kuju/RailSimulator/Audio/horn.dav", "short");
    fs::last_write_time(horn, when);
    // An older copy restored by the user into the tree is left: the backup keeps the newer one.
    f.dir.write("rw/RailWorks.exe", "old");
    fs::last_write_time(f.rw / "RailWorks.exe", when - std::chrono::hours(1));
    fs::remove(f.rw / "Content/Routes/r1/RouteProperties.xml");
    // Newer with the same size: copied for its time alone.
    const fs::path odd = f.rw / "Assets/Kuju/RailSimulator/Café, \"Ouest\".bin";
    f.dir.write("rw/Assets/Kuju/RailSimulator/Café, \"Ouest\".bin", "BLUEPRINT");
    fs::last_write_time(odd, fs::last_write_time(out / "Assets/Kuju/RailSimulator/Café, \"Ouest\".bin") +
                                 std::chrono::seconds(5));

    r = copyAll(f, out, CopyRule::NewerOnly);
    EXPECT_TRUE(r.complete());
    EXPECT_EQ(r.copied, 3u);
    EXPECT_EQ(slurp(out / "Assets/Kuju/RailSimulator/Café, \"Ouest\".bin"), "BLUEPRINT");
    EXPECT_EQ(slurp(out / "Settings.xml"), "<s>new</s>");
    EXPECT_EQ(slurp(out / "Assets/Kuju/RailSimulator/Audio/horn.dav"), "short");
    EXPECT_EQ(slurp(out / "RailWorks.exe"), "exe");
    // Nothing is deleted from the backup when it goes from the tree.
    EXPECT_EQ(slurp(out / "Content/Routes/r1/RouteProperties.xml"), "<route/>");
    EXPECT_FALSE(anyNameContains(out, ".velmora-copy"));
}

TEST(TreeCopy, AnAbortStopsBetweenFilesAndLeavesNoHalfFile) {
    BackupFixture f;
    f.ui.cancelAfter = 2;
    TreeCopyOptions o;
    o.threads = 1;
    const auto r = copyTree(f.rw, simulatorParts(f.rw), f.dir / "out", o, &f.ui);
    EXPECT_TRUE(r.aborted);
    EXPECT_FALSE(r.complete());
    EXPECT_EQ(r.copied, 2u);
    EXPECT_EQ(r.planned, 5u);
    EXPECT_FALSE(anyNameContains(f.dir / "out", ".velmora-copy"));
}

TEST(TreeCopy, AFailedReplaceLeavesTheOldCopyWhole) {
    BackupFixture f;
    f.dir.write("old/copy.bin", "the old copy");
    bool cloned = true;
    const std::string why = copyFile(f.dir / "missing.bin", f.dir / "old/copy.bin", true, true, cloned);
    EXPECT_NE(why.find("cannot be read"), std::string::npos);
    EXPECT_FALSE(cloned);
    EXPECT_EQ(slurp(f.dir / "old/copy.bin"), "the old copy");
    EXPECT_FALSE(anyNameContains(f.dir / "old", ".velmora-copy"));
    // Without replace an existing name is never written over.
    EXPECT_NE(copyFile(f.rw / "Settings.xml", f.dir / "old/copy.bin", false, true, cloned).find("taken"),
              std::string::npos);
    EXPECT_EQ(slurp(f.dir / "old/copy.bin"), "the old copy");
    // A leftover of a copy cut off by a kill does not block the next one.
    f.dir.write("old/.copy.bin.velmora-copy", "half");
    EXPECT_EQ(copyFile(f.rw / "Settings.xml", f.dir / "old/copy.bin", true, false, cloned), "");
    EXPECT_EQ(slurp(f.dir / "old/copy.bin"), "<s/>");
}

TEST(TreeCopy, PlainCopiesWhenCloningIsOffOrUnsupported) {
    BackupFixture f;
    TreeCopyOptions o;
    o.clone = false;
    const auto plain = copyTree(f.rw, simulatorParts(f.rw), f.dir / "plain", o, &f.ui);
    EXPECT_EQ(plain.cloned, 0u);
    EXPECT_EQ(plain.copied, 5u);
    // With cloning on, the copy is the same whether or not this file system can clone.
    const auto maybe = copyAll(f, f.dir / "maybe");
    EXPECT_EQ(maybe.copied, 5u);
    EXPECT_LE(maybe.cloned, maybe.copied);
    EXPECT_EQ(slurp(f.dir / "maybe/Assets/Kuju/RailSimulator/Audio/horn.dav"), std::string(70000, 'h'));
}

TEST(TreeCopy, TheReportIsTheSameWhateverTheNumberOfThreads) {
    BackupFixture f;
    for (int i = 0; i < 40; ++i)
        f.dir.write("rw/Assets/Many/f" + std::to_string(i) + ".bin", std::string(static_cast<std::size_t>(i), 'x'));
    for (const char* name : {"b.bin", "a.bin", "c.bin"})
        fs::create_symlink(std::string("missing-") + name, f.rw / "Assets/Many" / name);
    std::vector<TreeCopyReport> reports;
    for (int threads : {1, 2, 4}) {
        TreeCopyOptions o;
        o.threads = threads;
        reports.push_back(copyTree(f.rw, simulatorParts(f.rw), f.dir / ("t" + std::to_string(threads)), o, &f.ui));
    }
    for (const auto& r : reports) {
        EXPECT_EQ(r.copied, 45u);
        EXPECT_EQ(r.bytes, reports[0].bytes);
        EXPECT_EQ(r.problems, reports[0].problems);
        EXPECT_FALSE(r.aborted);
    }
    EXPECT_EQ(reports[0].problems.size(), 3u);
    EXPECT_EQ(slurp(f.dir / "t4/Assets/Many/f39.bin"), std::string(39, 'x'));
}
