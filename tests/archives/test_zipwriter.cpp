// Making archives: what goes in, the level, the parts through 7-Zip, and the write rules.

#include "ziptestkit.h"
#include "velmora/archives/zipreader.h"
#include "velmora/archives/zipwriter.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

using namespace velmora;
using namespace velmora::archives;

namespace {

class ZipWriter : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-zipw-" + std::to_string(::getpid()) + "-" +
                                             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        put("src/Route/RouteProperties.xml", "<English>Ærø, \"quoted\"</English>");
        put("src/Route/Scenarios/s1/Scenario.bin", std::string(100000, 's'));
        put("src/Route/Scenarios/s1/notes.txt", "n");
        m_journal = std::make_unique<Journal>(m_dir / "Journal.jsonl");
        m_files = std::make_unique<WriteService>(nullptr, m_journal.get());
    }
    void TearDown() override { fs::remove_all(m_dir); }
    void put(const std::string& rel, const std::string& text) {
        fs::create_directories((m_dir / rel).parent_path());
        std::ofstream(m_dir / rel, std::ios::binary) << text;
    }
    std::vector<std::string> names(const fs::path& zipFile) {
        ZipReader zip;
        EXPECT_TRUE(zip.open(zipFile)) << zip.error();
        std::vector<std::string> out;
        for (const auto& e : zip.entries())
            out.push_back(e.name);
        std::sort(out.begin(), out.end());
        return out;
    }
    fs::path m_dir;
    std::unique_ptr<Journal> m_journal;
    std::unique_ptr<WriteService> m_files;
};

TEST_F(ZipWriter, TakesTheFolderByWildcardsAndReadsBackTheSame) {
    ZipCreateOptions o;
    o.wildcards = "*.bin; *.xml";
    const ZipCreateResult r = createZip(*m_files, m_dir / "out/pack", {m_dir / "src/Route"}, o, nullptr);
    ASSERT_TRUE(r.ok) << r.message;
    ASSERT_EQ(r.parts, std::vector<fs::path>{m_dir / "out/pack.zip"}) << "\".zip\" added";
    EXPECT_EQ(names(r.parts[0]), (std::vector<std::string>{"Route/RouteProperties.xml", "Route/Scenarios/s1/Scenario.bin"}));
    ZipReader zip;
    ASSERT_TRUE(zip.open(r.parts[0]));
    std::string bytes;
    ASSERT_TRUE(zip.readAll(static_cast<std::uint64_t>(zip.find("Route/Scenarios/s1/Scenario.bin")), bytes, 1 << 20));
    EXPECT_EQ(bytes, std::string(100000, 's'));
    EXPECT_LT(zip.entry(static_cast<std::uint64_t>(zip.find("Route/Scenarios/s1/Scenario.bin"))).packed, 2000u);

    o.level = 0;
    o.subFolders = false;
    o.wildcards = "*.*";
    const ZipCreateResult stored = createZip(*m_files, m_dir / "out/pack.zip", {m_dir / "src/Route"}, o, nullptr);
    ASSERT_TRUE(stored.ok) << stored.message;
    EXPECT_EQ(names(stored.parts[0]), std::vector<std::string>{"Route/RouteProperties.xml"});
    EXPECT_TRUE(fs::exists(m_dir / "out/pack.zip.bak")) << "the archive made before is kept";
    for (const auto& e : fs::directory_iterator(m_dir / "out"))
        EXPECT_EQ(e.path().string().find("velmora-tmp"), std::string::npos) << e.path();
}

TEST_F(ZipWriter, NothingToTakeMakesNoArchive) {
    ZipCreateOptions o;
    o.wildcards = "*.none";
    const ZipCreateResult r = createZip(*m_files, m_dir / "out.zip", {m_dir / "src", m_dir / "missing"}, o, nullptr);
    EXPECT_FALSE(r.ok);
    EXPECT_FALSE(fs::exists(m_dir / "out.zip"));
    ASSERT_EQ(r.skipped.size(), 1u);
    EXPECT_NE(r.skipped[0].find("missing"), std::string::npos);
}

TEST_F(ZipWriter, PartsComeFrom7ZipOrAClearMessage) {
    ZipCreateOptions o;
    o.volumeBytes = 40 << 10;
    o.level = 0;
    o.sevenZip = "velmora-no-such-7zip";
    ZipCreateResult r = createZip(*m_files, m_dir / "parts.zip", {m_dir / "src"}, o, nullptr);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.message, sevenZipMissing("velmora-no-such-7zip"));
    if (::system("7zz > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "7zz is not installed here";
    o.sevenZip = "7zz";
    r = createZip(*m_files, m_dir / "parts.zip", {m_dir / "src"}, o, nullptr);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_GE(r.parts.size(), 3u) << "100 KB stored in parts of 40 KB";
    EXPECT_EQ(r.parts[0].filename(), "parts.zip.001");
}

} // namespace
