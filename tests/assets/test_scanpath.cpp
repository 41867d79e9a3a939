#include "velmora/assets/scanpath.h"

#include "../common/unprivileged.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

class ScanTree : public ::testing::Test {
protected:
    void SetUp() override {
        m_root = fs::temp_directory_path() / ("velmora-scan-" + std::to_string(::getpid()));
        fs::remove_all(m_root);
        for (const char* f : {"b.bin", "A.BIN", "c.xml", "sub/d.bin", "sub/deeper/e.bin", "Other/f.cost1", "Other/g.tgt",
                              ".hidden.bin"})
            touch(f, "x");
        touch("big.bin", std::string(100, 'x'));
        touch("empty.bin", "");
        touch("locked.bin", "x");
        fs::permissions(m_root / "locked.bin", fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
    }
    void TearDown() override {
        fs::permissions(m_root / "locked.bin", fs::perms::owner_write, fs::perm_options::add);
        fs::remove_all(m_root);
    }
    void touch(const std::string& rel, const std::string& bytes) {
        fs::create_directories((m_root / rel).parent_path());
        std::ofstream(m_root / rel, std::ios::binary) << bytes;
    }
    std::vector<std::string> walk(cScanPath& scan, bool sorted, bool patterns = true) {
        std::vector<std::string> seen;
        scan.FileMatch = [&](const std::string& path, const std::string& name) {
            EXPECT_EQ(path.back(), '/');
            seen.push_back(fs::relative(fs::path(path) / name, m_root).string());
        };
        scan.DirMatch = [&](const std::string& path, const std::string& name) {
            seen.push_back("[" + fs::relative(fs::path(path) / name, m_root).string() + "]");
        };
        scan.StartScan(m_root, true, sorted, patterns);
        return seen;
    }
    fs::path m_root;
};

} // namespace

TEST_F(ScanTree, BreadthFirstInNameOrderWithPatterns) {
    cScanPath scan;
    scan.ReadOnly = false;
    scan.setFilter("*.bin;");
    EXPECT_EQ(scan.Filter(), "*.bin");
    const auto seen = walk(scan, false);
    // A folder's own files come before any file of its subfolders; read-only and hidden
    // files are left out.
    const std::vector<std::string> expected = {"A.BIN", "b.bin", "big.bin", "empty.bin", "[Other]", "[sub]", "sub/d.bin",
                                               "[sub/deeper]", "sub/deeper/e.bin"};
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(scan.FileCount(), 6);
    EXPECT_EQ(scan.DirCount(), 3);
}

TEST_F(ScanTree, AFolderTheFilterRefusesIsNeitherReportedNorEntered) {
    for (const bool sorted : {false, true}) {
        cScanPath scan;
        scan.setFilter("*.bin");
        scan.DirFilter = [](const std::string&, const std::string& name) { return name != "sub"; };
        const auto seen = walk(scan, sorted);
        for (const auto& s : seen)
            EXPECT_EQ(s.find("sub"), std::string::npos) << s << (sorted ? " (sorted)" : "");
        EXPECT_NE(std::find(seen.begin(), seen.end(), "[Other]"), seen.end());
        EXPECT_EQ(scan.DirCount(), 1);
    }
}

TEST_F(ScanTree, SortedWalkPutsFilesBeforeFoldersAndRecursesAtOnce) {
    cScanPath scan;
    scan.setFilter("*.cost*;*.tgt");
    const auto seen = walk(scan, true);
    const std::vector<std::string> expected = {"[Other]", "Other/f.cost1", "Other/g.tgt", "[sub]", "[sub/deeper]"};
    EXPECT_EQ(seen, expected);
}

TEST_F(ScanTree, ExtensionListsSizesAndAttributes) {
    cScanPath scan;
    scan.setFilter("XML;TGT;");
    auto seen = walk(scan, false, false);
    EXPECT_NE(std::find(seen.begin(), seen.end(), "c.xml"), seen.end());
    EXPECT_NE(std::find(seen.begin(), seen.end(), "Other/g.tgt"), seen.end());
    EXPECT_EQ(std::find(seen.begin(), seen.end(), "b.bin"), seen.end());

    cScanPath small;
    small.setFilter("*.*");
    small.MaximumSize = 1;
    small.ReadOnly = true; // read-only files are welcome here
    seen = walk(small, false);
    EXPECT_NE(std::find(seen.begin(), seen.end(), "empty.bin"), seen.end());
    EXPECT_NE(std::find(seen.begin(), seen.end(), "locked.bin"), seen.end());
    EXPECT_EQ(std::find(seen.begin(), seen.end(), "big.bin"), seen.end());
}

TEST_F(ScanTree, StopEndsTheWalk) {
    cScanPath scan;
    scan.setFilter("*.*");
    int files = 0;
    scan.FileMatch = [&](const std::string&, const std::string&) {
        if (++files == 1)
            scan.StopScan();
    };
    scan.StartScan(m_root, true, false, true);
    EXPECT_TRUE(scan.stopped());
    EXPECT_LT(files, 9);
}

TEST(ScanPathLike, Wildcards) {
    EXPECT_TRUE(cScanPath::like("LOCO_WI_NM.TGPCDX", "*_wi*.TgPcDx"));
    EXPECT_TRUE(cScanPath::like("a.bak12", "*.bak*"));
    EXPECT_TRUE(cScanPath::like("abc", "a?c"));
    EXPECT_FALSE(cScanPath::like("abc", "a?d"));
    EXPECT_FALSE(cScanPath::like("a.bin.txt", "*.bin"));
    EXPECT_TRUE(cScanPath::like("", "*"));
    EXPECT_TRUE(cScanPath::like(std::string(5000, 'a'), std::string(50, '*') + "b*") == false);
}

TEST_F(ScanTree, DatesNarrowTheMatches) {
    const auto now = std::chrono::system_clock::now();
    fs::last_write_time(m_root / "b.bin", fs::file_time_type::clock::now() - std::chrono::hours(48));
    cScanPath recent;
    recent.setFilter("*.bin");
    recent.FromDate = now - std::chrono::hours(1);
    auto seen = walk(recent, false);
    EXPECT_EQ(std::find(seen.begin(), seen.end(), "b.bin"), seen.end()) << "written two days ago";
    EXPECT_NE(std::find(seen.begin(), seen.end(), "A.BIN"), seen.end());

    cScanPath old;
    old.setFilter("*.bin");
    old.ToDate = now - std::chrono::hours(24);
    seen = walk(old, false);
    EXPECT_NE(std::find(seen.begin(), seen.end(), "b.bin"), seen.end());
    EXPECT_EQ(std::find(seen.begin(), seen.end(), "A.BIN"), seen.end());
}

TEST_F(ScanTree, WithoutRecursionOnlyTheFolderItself) {
    cScanPath scan;
    scan.setFilter("*.bin");
    std::vector<std::string> seen;
    scan.FileMatch = [&](const std::string&, const std::string& name) { seen.push_back(name); };
    scan.DirMatch = [&](const std::string&, const std::string& name) { seen.push_back("[" + name + "]"); };
    scan.StartScan(m_root, false, false, true);
    EXPECT_EQ(std::find(seen.begin(), seen.end(), "d.bin"), seen.end());
    EXPECT_EQ(std::find(seen.begin(), seen.end(), "[sub]"), seen.end()) << "folders are not reported without recursion";
    EXPECT_EQ(scan.DirCount(), 0);
    // A folder that cannot be read gives nothing, and says so.
    cScanPath none;
    none.setFilter("*.*");
    none.StartScan(m_root / "no-such-folder", true, true, true);
    EXPECT_EQ(none.FileCount(), 0);
    ASSERT_EQ(none.UnreadableFolders().size(), 1u);
    EXPECT_NE(none.UnreadableFolders()[0].find("no-such-folder"), std::string::npos);
}

TEST_F(ScanTree, LinksToFoldersAreNotFollowedAndOnlyRegularFilesAreReported) {
    // Loops of links that would multiply the rows or never end, a FIFO that would block the
    // reader, a link to a file (that file), and a link to nothing.
    fs::create_directory_symlink("..", m_root / "sub" / "up");
    fs::create_directory_symlink(".", m_root / "self");
    fs::create_directory_symlink(".", m_root / "sub" / "deeper" / "again");
    ASSERT_EQ(::mkfifo((m_root / "pipe.bin").c_str(), 0600), 0);
    fs::create_symlink(m_root / "b.bin", m_root / "sub" / "alias.bin");
    fs::create_symlink(m_root / "gone.bin", m_root / "dangling.bin");
    for (bool sorted : {false, true}) {
        cScanPath scan;
        scan.setFilter("*.bin");
        auto seen = walk(scan, sorted);
        std::sort(seen.begin(), seen.end());
        // The link to b.bin is reported where it stands, and names b.bin.
        const std::vector<std::string> expected = {"A.BIN",     "[Other]",    "[sub/deeper]", "[sub]",
                                                   "b.bin",     "b.bin",      "big.bin",      "empty.bin",
                                                   "locked.bin", "sub/d.bin", "sub/deeper/e.bin"};
        EXPECT_EQ(seen, expected) << (sorted ? "sorted" : "breadth first");
        EXPECT_TRUE(scan.UnreadableFolders().empty());
    }
}

TEST_F(ScanTree, FoldersThatCannotBeReadAreNamed) {
    touch("closed/inside.bin", "x");
    touch("closed/sub/deep.bin", "x");
    fs::permissions(m_root, fs::perms::all, fs::perm_options::add);
    fs::permissions(m_root / "closed", fs::perms::none);
    const fs::path root = m_root;
    velmora::test::whereModesHold([root] {
        for (bool sorted : {false, true}) {
            cScanPath scan;
            scan.setFilter("*.bin");
            int files = 0;
            scan.FileMatch = [&](const std::string&, const std::string& name) {
                files += name == "inside.bin" || name == "deep.bin" ? 100 : 1;
            };
            scan.StartScan(root, true, sorted, true);
            const auto& unreadable = scan.UnreadableFolders();
            if (files != 7 || unreadable.size() != 1 || unreadable[0].find("/closed/: ") == std::string::npos)
                return false;
        }
        return true;
    });
    fs::permissions(m_root / "closed", fs::perms::owner_all);
}
