// The table of .ap files, route names from their properties, the index files.

#include "ziptestkit.h"
#include "velmora/archives/aptable.h"
#include "velmora/archives/routenames.h"
#include "velmora/core/services.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

using namespace velmora;
using namespace velmora::archives;

namespace {

class ApTableTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_rw = fs::temp_directory_path() / ("velmora-aptable-" + std::to_string(::getpid()) + "-" +
                                            ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_rw);
        fs::create_directories(m_rw);
    }
    void TearDown() override { fs::remove_all(m_rw); }
    static void put(const fs::path& file, std::size_t bytes) {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << std::string(bytes, 'x');
    }
    static void putText(const fs::path& file, const std::string& text) {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    const ApFile* find(const ApTable& t, const std::string& tail) {
        for (const auto& f : t.files)
            if (f.path.generic_string().ends_with(tail))
                return &f;
        return nullptr;
    }
    fs::path m_rw;
};

TEST_F(ApTableTest, StatesSizesAndRedRowsFollowWhatTheFolderHolds) {
    // An asset product unpacked (RailVehicles beside it), one not, one not but with enough
    // beside it to be black; a route with MixMap, one without; an .ap outside Assets and Content.
    put(m_rw / "Assets/P/Done/Done.ap", 1000);
    fs::create_directories(m_rw / "Assets/P/Done/railvehicles");
    put(m_rw / "Assets/P/Packed/Packed.ap", 1000);
    put(m_rw / "Assets/P/Partly/Partly.ap", 1000);
    put(m_rw / "Assets/P/Partly/Docs/manual.pdf", 500);
    put(m_rw / "Content/Routes/r1/MainContent.ap", 5000);
    fs::create_directories(m_rw / "Content/Routes/r1/MixMap");
    put(m_rw / "Content/Routes/r2/MainContent.ap", 5000);
    put(m_rw / "Content/Routes/r2/Extra.ap", 10);
    put(m_rw / "Other/stray.ap", 10);
    fs::create_directory_symlink(m_rw / "Assets", m_rw / "Assets/P/loop"); // a walk must not go round
    ::mkfifo((m_rw / "Assets/P/pipe.ap").c_str(), 0600);

    ApTable t = findApFiles(m_rw, {}, nullptr);
    ASSERT_EQ(t.files.size(), 6u);
    EXPECT_FALSE(find(t, "stray.ap"));
    EXPECT_FALSE(find(t, "pipe.ap"));
    const ApFile* done = find(t, "Done/Done.ap");
    ASSERT_TRUE(done);
    EXPECT_EQ(done->state, ApState::Unpacked);
    EXPECT_FALSE(done->red);
    EXPECT_EQ(done->size, 1000u);
    EXPECT_EQ(done->date.size(), 8u);
    const ApFile* packed = find(t, "Packed/Packed.ap");
    EXPECT_EQ(packed->state, ApState::NotUnpacked);
    EXPECT_TRUE(packed->red) << "twice the archive is more than its folder";
    const ApFile* partly = find(t, "Partly/Partly.ap");
    EXPECT_EQ(partly->folderSize, 1500u);
    EXPECT_TRUE(partly->red);
    put(m_rw / "Assets/P/Partly/Docs/more.pdf", 1600);
    t = findApFiles(m_rw, {}, nullptr);
    EXPECT_FALSE(find(t, "Partly/Partly.ap")->red) << "3100 bytes beside a 1000-byte archive";
    EXPECT_EQ(find(t, "r1/MainContent.ap")->state, ApState::Unpacked);
    EXPECT_EQ(find(t, "r2/MainContent.ap")->state, ApState::NotUnpacked);
    EXPECT_TRUE(find(t, "r2/MainContent.ap")->red);

    ApFindOptions main;
    main.search = ApSearch::MainContent;
    EXPECT_EQ(findApFiles(m_rw, main, nullptr).files.size(), 2u);
    ApFindOptions assets;
    assets.search = ApSearch::Assets;
    assets.details = false;
    const ApTable a = findApFiles(m_rw, assets, nullptr);
    EXPECT_EQ(a.files.size(), 3u);
    EXPECT_EQ(apGridRows(a, false)[0], (m_rw / "Assets/P/Done/Done.ap").string());
    ApFindOptions noMain;
    noMain.dropMainContent = true;
    EXPECT_EQ(findApFiles(m_rw, noMain, nullptr).files.size(), 4u);

    const std::vector<std::string> rows = apGridRows(t, true);
    EXPECT_EQ(std::count(rows[0].begin(), rows[0].end(), '\t'), 3);
    EXPECT_NE(apTableJson(t).find("\"state\": \"Not unpacked\""), std::string::npos);
}

TEST_F(ApTableTest, SortsByFileOrByDate) {
    put(m_rw / "Assets/A/b/b.ap", 1);
    put(m_rw / "Assets/A/a/a.ap", 1);
    fs::last_write_time(m_rw / "Assets/A/a/a.ap", fs::last_write_time(m_rw / "Assets/A/b/b.ap") + std::chrono::hours(48));
    ApTable t = findApFiles(m_rw, {}, nullptr);
    sortApTable(t, ApSort::File);
    EXPECT_EQ(t.files[0].path.filename(), "a.ap");
    sortApTable(t, ApSort::Date);
    EXPECT_EQ(t.files[0].path.filename(), "b.ap");
}

TEST_F(ApTableTest, RouteIndexLinesAreCleanedAndCut) {
    const fs::path routes = m_rw / "Content/Routes";
    putText(routes / "aaa/RouteProperties.xml",
            "<cRouteProperties><DisplayName><Localisation-cUserLocalisedString><English>A, B: C</English>"
            "</Localisation-cUserLocalisedString></DisplayName></cRouteProperties>");
    putText(routes / "bbb/routeproperties.XML",
            "<DisplayName><English></English><French></French><German>Nur Deutsch</German></DisplayName>");
    putText(routes / "ccc/RouteProperties.xml", "<DisplayName><English></English></DisplayName>");
    fs::create_directories(routes / "ddd"); // no properties: no line
    const RouteIndexLines lines = routeIndexLines(routes, m_rw / "Reports");
    EXPECT_EQ(lines.routes, 3);
    EXPECT_EQ(lines.text, "aaa,A- B C\r\nbbb,Nur Deutsch\r\nccc,\r\n\r\n");

    const std::string longName(400, 'n');
    putText(routes / "eee/RouteProperties.xml", "<English>" + longName + "</English>");
    const RouteIndexLines cut = routeIndexLines(routes, m_rw / "Reports");
    for (const auto& line : SplitLines(cut.text))
        EXPECT_LE((m_rw / "Reports").string().size() + 1 + line.size(), 241u) << line.size();
}

TEST_F(ApTableTest, RouteNameFoldersAreMadeOnceAndStayWithin240) {
    const fs::path routes = m_rw / "Content/Routes";
    putText(routes / "guid-1/RouteProperties.xml", "<English>West: Line</English>");
    putText(routes / "guid-2/RouteProperties.xml", "<English>" + std::string(300, 'w') + "</English>");
    putText(routes / "guid-3/RouteProperties.xml", "<English>../../escape</English>");
    RouteNameFolders made = addRouteNameFolders(routes);
    EXPECT_EQ(made.made.size(), 3u);
    EXPECT_TRUE(fs::is_directory(routes / "guid-1/guid-1  West Line"));
    for (const auto& m : made.made) {
        EXPECT_LE(m.string().size(), 240u);
        EXPECT_EQ(m.parent_path().parent_path(), routes) << m << " stays inside its route folder";
    }
    EXPECT_TRUE(addRouteNameFolders(routes).made.empty()) << "made once";
}

TEST(ApIndex, OneLineAnArchive) {
    EXPECT_EQ(apIndexText({"/rw/Assets/P/Q/a.ap", "/rw/Content/Routes/r/MainContent.ap"}),
              "/rw/Assets/P/Q,a.ap\r\n/rw/Content/Routes/r,MainContent.ap\r\n");
}

} // namespace
