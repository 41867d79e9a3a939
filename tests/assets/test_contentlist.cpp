// The content list: how a file below Content\Routes becomes a row, where the names come from,
// and a walk of a tree with the things that must neither hang it nor go unreported.

#include "../common/unprivileged.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/assets/contentlist.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/textboundary.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

const std::string kRoute = "0a1b2c3d-0000-4000-8000-000000000001";
const std::string kBare = "0a1b2c3d-0000-4000-8000-000000000002"; // no RouteProperties.xml
const std::string kScenario = "5e6f7a8b-0000-4000-8000-00000000000a";
const std::string kNoProperties = "5e6f7a8b-0000-4000-8000-00000000000b";

std::string properties(const std::string& root, const std::string& english) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<" + root +
           ">\n<DisplayName><Localisation-cUserLocalisedString>\n"
           "<English d:type=\"cDeltaString\">" +
           english +
           "</English>\n"
           "<French d:type=\"cDeltaString\">autre</French>\n"
           "</Localisation-cUserLocalisedString></DisplayName>\n"
           "<Description><Localisation-cUserLocalisedString>\n"
           "<English d:type=\"cDeltaString\">not the name</English>\n"
           "</Localisation-cUserLocalisedString></Description>\n</" +
           root + ">\n";
}

class ContentTree : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-content-" + std::to_string(::getpid()));
        fs::remove_all(m_dir);
        m_routes = m_dir / "Content" / "Routes";
        // Accents as UTF-8, a comma, double quotes, an ampersand, and the simulator's apostrophe.
        write(kRoute + "/RouteProperties.xml",
              properties("cRouteProperties", "Vall\xC3\xA9"
                                             "e d&quot;Aoste, \"Nord\" &amp; Co"));
        write(kRoute + "/Scenarios/" + kScenario + "/ScenarioProperties.xml",
              properties("cScenarioProperties", "Caf\xC3\xA9 run, part 1"));
        write(kRoute + "/Scenarios/" + kScenario + "/Scenario.bin", "x");
        write(kRoute + "/Scenarios/" + kScenario + "/Extra/deep/notes.txt", "x");
        write(kRoute + "/Scenarios/" + kNoProperties + "/Scenario.bin", "x");
        write(kRoute + "/Scenarios/loose.txt", "x");
        write(kRoute + "/Networks/Track Tiles/+000000+000000.bin", "x");
        write(kRoute + "/Tracks.bin", "x");
        write(kRoute + "/PreLoad/skipped.bin", "x");
        write(kRoute + "/Scenery/preload_scenery.bin", "x");
        write(kBare + "/RouteInformation/Image.png", "x");
        write("stray.txt", "x");
    }
    void TearDown() override {
        std::error_code ec;
        for (auto it =
                 fs::recursive_directory_iterator(m_dir, fs::directory_options::skip_permission_denied, ec);
             !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
            if (!it->is_symlink())
                fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
        fs::permissions(m_routes / kRoute / "closed", fs::perms::owner_all, fs::perm_options::add, ec);
        fs::remove_all(m_dir);
    }
    void write(const std::string& relative, const std::string& bytes) {
        const fs::path file = m_routes / relative;
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }
    const ContentRow* find(const ContentListResult& r, const std::string& fileName) const {
        for (const auto& row : r.rows)
            if (row.fileName == fileName)
                return &row;
        return nullptr;
    }
    fs::path m_dir, m_routes;
};

} // namespace

TEST(ContentRow, ThePathBelowTheRoutesFolderFillsTheColumns) {
    ContentNames names(fs::temp_directory_path() / "velmora-no-such-routes-folder");
    ContentRow row;
    // Directly in the route's folder: no Sub-Folder, all the rest is the File Name.
    ASSERT_EQ(contentRow("R\\Tracks.bin", names, row), ContentFile::Row);
    EXPECT_EQ(row.cells(), (std::vector<std::string>{"R", "", "", "", "", "Tracks.bin", ""}));
    EXPECT_EQ(row.relativePath(), "R\\Tracks.bin");
    ASSERT_EQ(contentRow("R\\Networks\\Tracks.bin", names, row), ContentFile::Row);
    EXPECT_EQ(row.subFolder, "Networks");
    EXPECT_EQ(row.subFolder2, "");
    EXPECT_EQ(row.fileName, "Tracks.bin");
    ASSERT_EQ(contentRow("R\\Scenarios\\S\\Extra\\deep\\a, \"b\".txt", names, row), ContentFile::Row);
    EXPECT_EQ(row.subFolder, "Scenarios");
    EXPECT_EQ(row.subFolder2, "S");
    EXPECT_EQ(row.fileName, "Extra\\deep\\a, \"b\".txt");
    EXPECT_EQ(row.relativePath(), "R\\Scenarios\\S\\Extra\\deep\\a, \"b\".txt");
    // No route folder at all.
    EXPECT_EQ(contentRow("stray.txt", names, row), ContentFile::Invalid);
    // PreLoad anywhere in the path, in any letter case.
    EXPECT_EQ(contentRow("R\\PreLoad\\x.bin", names, row), ContentFile::Skipped);
    EXPECT_EQ(contentRow("R\\Scenery\\preloaded.bin", names, row), ContentFile::Skipped);
    // Without the documents there are no names, and nothing was read.
    EXPECT_EQ(names.documentsRead(), 0u);
    EXPECT_TRUE(names.unreadable().empty());
}

TEST(ContentRow, CellsComeBackFromASavedList) {
    const ContentRow row{"R",
                         "Vall\xE9"
                         "e, \"Nord\"",
                         "Scenarios",
                         "Caf\xE9, 1",
                         "S",
                         "a, \"b\".txt",
                         "3"};
    CellRows table{contentColumns(), row.cells()};
    const std::string text = listText(ListForm::Csv, table, "Content");
    const fs::path file =
        fs::temp_directory_path() / ("velmora-content-list-" + std::to_string(::getpid()) + ".csv");
    ASSERT_TRUE(writeFileSafely(file, text));
    std::vector<ListLine> lines;
    ASSERT_TRUE(loadListLines(file, ListForm::Csv, lines));
    fs::remove(file);
    ASSERT_EQ(lines.size(), 2u) << "the content header is no asset header, so it is read as a line";
    EXPECT_EQ(lines[0].cells, contentColumns());
    EXPECT_EQ(contentRowFromCells(lines[1].cells).cells(), row.cells());
}

TEST_F(ContentTree, RowsCarryRouteAndScenarioNamesEachReadOnce) {
    const ContentListResult r = buildContentList(m_routes, m_routes, {});
    EXPECT_FALSE(r.stopped);
    EXPECT_TRUE(r.unreadable.empty());
    ASSERT_EQ(r.messages.size(), 1u);
    EXPECT_NE(r.messages[0].find("stray.txt is invalid and contains errors"), std::string::npos);

    const ContentRow* tracks = find(r, "Tracks.bin");
    ASSERT_TRUE(tracks);
    EXPECT_EQ(tracks->route, kRoute);
    EXPECT_EQ(tracks->subFolder, "");
    EXPECT_EQ(utf8FromDocument(tracks->routeName), "Vall\xC3\xA9"
                                                   "e d'Aoste, \"Nord\" & Co");

    const ContentRow* tile = find(r, "+000000+000000.bin");
    ASSERT_TRUE(tile);
    EXPECT_EQ(tile->subFolder, "Networks");
    EXPECT_EQ(tile->subFolder2, "Track Tiles");
    EXPECT_EQ(tile->name, "") << "only files below Scenarios carry a scenario name";

    const ContentRow* notes = find(r, "Extra\\deep\\notes.txt");
    ASSERT_TRUE(notes);
    EXPECT_EQ(notes->subFolder2, kScenario);
    EXPECT_EQ(utf8FromDocument(notes->name), "Caf\xC3\xA9 run, part 1");

    // A scenario without ScenarioProperties.xml, a file loose in Scenarios, a route without
    // RouteProperties.xml: the names stay empty.
    int withoutScenarioName = 0;
    for (const auto& row : r.rows)
        if (row.subFolder == "Scenarios" && row.subFolder2 == kNoProperties) {
            ++withoutScenarioName;
            EXPECT_EQ(row.name, "");
            EXPECT_FALSE(row.routeName.empty());
        }
    EXPECT_EQ(withoutScenarioName, 1);
    const ContentRow* loose = find(r, "loose.txt");
    ASSERT_TRUE(loose);
    EXPECT_EQ(loose->subFolder2, "");
    EXPECT_EQ(loose->name, "");
    const ContentRow* image = find(r, "Image.png");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->route, kBare);
    EXPECT_EQ(image->routeName, "");

    // PreLoad files are left out; the rest are numbered in walk order from 1.
    for (const auto& row : r.rows)
        EXPECT_EQ(row.relativePath().find("reload"), std::string::npos) << row.relativePath();
    ASSERT_EQ(r.rows.size(), 9u);
    for (std::size_t i = 0; i < r.rows.size(); ++i)
        EXPECT_EQ(r.rows[i].index, std::to_string(i + 1));
    // Nine rows of two routes and their scenarios: two name documents read, each once.
    EXPECT_EQ(r.documentsRead, 2u);
}

TEST_F(ContentTree, AStartFolderBelowTheRoutesKeepsTheColumnsAndTheMaskNarrows) {
    ContentListOptions o;
    o.mask = "*.bin";
    const ContentListResult r = buildContentList(m_routes, m_routes / kRoute / "Scenarios", o);
    ASSERT_EQ(r.rows.size(), 2u);
    for (const auto& row : r.rows) {
        EXPECT_EQ(row.route, kRoute);
        EXPECT_EQ(row.subFolder, "Scenarios");
        EXPECT_EQ(row.fileName, "Scenario.bin");
    }
    // Zero length: only files of at most one byte.
    write(kRoute + "/Scenery/big.bin", std::string(50, 'x'));
    o.zeroLength = true;
    o.mask = "*.*";
    const ContentListResult small = buildContentList(m_routes, m_routes / kRoute / "Scenery", o);
    EXPECT_TRUE(small.rows.empty()) << "preload_scenery.bin is skipped, big.bin is too big";
}

TEST_F(ContentTree, LoopsAndFifosNeitherHangTheWalkNorBecomeRows) {
    fs::create_directory_symlink("..", m_routes / kRoute / "Scenarios" / "up");
    fs::create_directory_symlink(".", m_routes / kRoute / "self");
    ASSERT_EQ(::mkfifo((m_routes / kRoute / "Networks" / "pipe.bin").c_str(), 0600), 0);
    // A FIFO in the place of a scenario's properties is named, never opened.
    fs::remove(m_routes / kRoute / "Scenarios" / kScenario / "ScenarioProperties.xml");
    ASSERT_EQ(
        ::mkfifo((m_routes / kRoute / "Scenarios" / kScenario / "ScenarioProperties.xml").c_str(), 0600), 0);
    const ContentListResult r = buildContentList(m_routes, m_routes, {});
    for (const auto& row : r.rows) {
        EXPECT_NE(row.fileName, "pipe.bin");
        EXPECT_NE(row.fileName, "ScenarioProperties.xml") << "a FIFO is no file of the list";
        EXPECT_EQ(row.fileName.find("up\\"), std::string::npos);
    }
    EXPECT_EQ(r.rows.size(), 8u);
    ASSERT_EQ(r.unreadable.size(), 1u);
    EXPECT_NE(r.unreadable[0].find("ScenarioProperties.xml: not a regular file"), std::string::npos);
    EXPECT_EQ(find(r, "Scenario.bin")->name, "");
}

TEST_F(ContentTree, FoldersAndNameDocumentsThatCannotBeReadAreNamed) {
    write(kRoute + "/closed/inside.bin", "x");
    fs::permissions(m_routes / kRoute / "closed", fs::perms::none);
    fs::permissions(m_routes / kRoute / "RouteProperties.xml", fs::perms::none);
    const fs::path routes = m_routes;
    const std::string route = kRoute;
    velmora::test::whereModesHold([routes, route] {
        const ContentListResult r = buildContentList(routes, routes, {});
        bool folderNamed = false, documentNamed = false, inside = false;
        for (const auto& u : r.unreadable) {
            folderNamed |= u.find(route + "/closed/: ") != std::string::npos;
            documentNamed |= u.find("RouteProperties.xml: cannot be opened") != std::string::npos;
        }
        for (const auto& row : r.rows)
            inside |= row.fileName == "inside.bin";
        // The route's other files are still listed, without a name.
        const bool rowsStay = std::any_of(r.rows.begin(), r.rows.end(), [](const ContentRow& row) {
            return row.fileName == "Tracks.bin" && row.routeName.empty();
        });
        return folderNamed && documentNamed && !inside && rowsStay && r.unreadable.size() == 2;
    });
}
