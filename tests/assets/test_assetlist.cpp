#include "velmora/core/filewrite.h"
#include "velmora/assets/assetlist.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/services.h"

#include "../common/hostile.h"
#include "velmora/demo/demoinstall.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

std::string blueprint(const std::string& inner) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cBlueprintLoader xmlns:d=\"x\">\r\n<Blueprint>\r\n" + inner +
           "\r\n</Blueprint>\r\n</cBlueprintLoader>\r\n";
}

std::string named(const std::string& english, const std::string& rest) {
    return "<cEngineBlueprint>\r\n<Name d:type=\"cDeltaString\">x</Name>\r\n<DisplayName>\r\n"
           "<Localisation-cUserLocalisedString>\r\n<English d:type=\"cDeltaString\">" +
           english + "</English>\r\n<French d:type=\"cDeltaString\"></French>\r\n</Localisation-cUserLocalisedString>\r\n"
                     "</DisplayName>\r\n" +
           rest + "\r\n</cEngineBlueprint>";
}

std::optional<AssetRow> row(const std::string& inner, AssetListOptions o = {}) {
    return blueprintRow(blueprint(inner), "DTG", "Class66", "RailVehicles\\x.bin", o);
}

} // namespace

TEST(AssetRowBuilding, ColumnsFromTheBlueprint) {
    auto r = row(named("Class 66, EWS", "<RailVehicleComponent/><EngineType d:type=\"cDeltaString\">Diesel</EngineType>"));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->name, "Class 66 EWS") << "commas come out";
    EXPECT_EQ(r->blueprint, "EngineBlueprint");
    EXPECT_EQ(r->category, "Diesel");
    EXPECT_EQ(r->inScene, "Yes");

    // A category is used without its leading e; ValidInScenarios decides In Scene.
    r = row(named("Tree", "<Category d:type=\"cDeltaString\">eFoliageLarge</Category>"
                          "<ValidInScenarios d:type=\"cDeltaString\">eTrue</ValidInScenarios>"));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->category, "FoliageLarge");
    EXPECT_EQ(r->inScene, "Yes");

    // Repaired names: entities and the simulator's widened letters.
    r = row(named("Driver&amp;apos;s M\xEF\xBF\xBChle", "<Category>eX</Category>"));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->name, "Driver's M\xFChle");
    EXPECT_EQ(r->inScene, "No") << "an empty In Scene becomes No";
}

TEST(AssetRowBuilding, RowsLeftOut) {
    EXPECT_FALSE(row(named("", "<Category>eX</Category>"))) << "no name";
    EXPECT_FALSE(row(named("Empty category", "<Category d:type=\"cDeltaString\"></Category>")));
    AssetListOptions stock;
    stock.rollingStockOnly = true;
    EXPECT_FALSE(row(named("Scenery", "<Category>eX</Category>"), stock)) << "not a rail vehicle";
    EXPECT_TRUE(row("<cReskinBlueprint>" + named("Reskin", "<Category>eX</Category>") + "</cReskinBlueprint>", stock));
}

TEST(AssetRowBuilding, WagonsSectionsAndTheCategoryFilter) {
    // Any word Passenger makes a wagon a passenger car, freight or not.
    const std::string wagon = "<cWagonBlueprint><Name>w</Name><English>Hopper</English>"
                              "<Note>not a Passenger car</Note></cWagonBlueprint>";
    auto r = row(wagon);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->category, "Passenger");
    r = row("<cLoftSectionBlueprint><English>Fence</English></cLoftSectionBlueprint>");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->category, "Road Section");
    EXPECT_EQ(r->inScene, "No");

    AssetListOptions freight;
    freight.category = "Freight";
    const std::string hopper = "<cWagonBlueprint><English>Hopper</English></cWagonBlueprint>";
    EXPECT_TRUE(row(hopper, freight)) << "Freight lists Freight Wagon rows";
    EXPECT_FALSE(row(wagon, freight));
    AssetListOptions none;
    none.category = "No Category";
    EXPECT_FALSE(row(hopper, none));
}

TEST(AssetPathTests, BeforeAnyFileIsOpened) {
    AssetListOptions o;
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\x.ap", "x.ap", o));
    o.excludePreload = true;
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\preload\\c.bin", "c.bin", o));
    o.rollingStockOnly = true;
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\Scenery\\tree.bin", "tree.bin", o));
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\RailVehicles\\Bogies\\b.bin", "b.bin", o));
    EXPECT_TRUE(passesPathTests("C:\\RW\\Assets\\A\\B\\RailVehicles\\Diesel\\loco.bin", "loco.bin", o));
    o.defaultFolders = true;
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\RailVehicles\\Diesel\\loco.bin", "loco.bin", o));
    EXPECT_TRUE(passesPathTests("C:\\RW\\Assets\\A\\B\\RailVehicles\\Engine\\loco.bin", "loco.bin", o));
    o.singleFile = "other.bin";
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\RailVehicles\\Engine\\loco.bin", "loco.bin", o));

    AssetListOptions qd;
    qd.quickDriveConsists = true;
    qd.rollingStockOnly = true;
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\Consists\\c.bin", "c.bin", qd)) << "only PreLoad";
    EXPECT_TRUE(passesPathTests("C:\\RW\\Assets\\A\\B\\PreLoad\\Station\\c.bin", "c.bin", qd))
        << "the Quick Drive list says Stations";
    EXPECT_FALSE(passesPathTests("C:\\RW\\Assets\\A\\B\\PreLoad\\Stations\\c.bin", "c.bin", qd));
}

TEST(AssetListFiles, SavedInThreeFormsAndReadBack) {
    const fs::path dir = fs::temp_directory_path() / ("velmora-grid-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir);
    const std::vector<AssetRow> rows = {{"DTG", "Class66", "RailVehicles\\a.bin", "Class 66 & co", "Yes", "Diesel",
                                         "EngineBlueprint", "1"},
                                        {"Kuju", "Core", "x.bin", "M\xFChle", "No", "", "", "2"},
                                        {"AP", "Wagons, vol. 2", "\"Q\" stock.bin", "HTA, \"coal\"", "", "", "", "3"}};
    velmora::WriteService files;
    for (const char* name : {"list.csv", "list.TXT", "list.tab", "list.xls"}) {
        const fs::path file = dir / name;
        ASSERT_TRUE(saveAssetList(files, file, listFormOf(file), rows)) << name;
        std::vector<AssetRow> back;
        ASSERT_TRUE(loadAssetList(file, listFormOf(file), back)) << name;
        ASSERT_EQ(back.size(), rows.size()) << name;
        for (std::size_t i = 0; i < rows.size(); ++i)
            EXPECT_EQ(back[i].cells(), rows[i].cells()) << name;
    }
    // In the comma form only the cells that need it stand in quotes.
    EXPECT_NE(velmora::ReadTextFile(dir / "list.csv").find("AP,\"Wagons, vol. 2\",\"\"\"Q\"\" stock.bin\",\"HTA, \"\"coal\"\"\",,,,3"),
              std::string::npos);
    EXPECT_NE(velmora::ReadTextFile(dir / "list.csv").find("DTG,Class66,RailVehicles\\a.bin,Class 66 & co,"), std::string::npos);
    EXPECT_EQ(listFormOf("x.doc"), ListForm::Unknown);
    std::string error;
    EXPECT_FALSE(saveAssetList(files, dir / "x.doc", ListForm::Unknown, rows, &error));
    EXPECT_NE(error.find("x.doc"), std::string::npos);

    // The stock index keeps the old one as a numbered backup; an empty grid still gives a header.
    ASSERT_TRUE(saveStockIndex(files, dir / "Reports", rows));
    ASSERT_TRUE(saveStockIndex(files, dir / "Reports", {}));
    ASSERT_TRUE(saveStockIndex(files, dir / "Reports", {}));
    EXPECT_TRUE(fs::exists(dir / "Reports/Index.csv.bak"));
    EXPECT_TRUE(fs::exists(dir / "Reports/Index.csv.bak1"));
    std::ifstream in(dir / "Reports/Index.csv");
    std::string header;
    std::getline(in, header);
    EXPECT_EQ(header, "Provider,Product,Path,Name,In Scene,Category,Blueprint,Index\r");
    fs::remove_all(dir);
}

// The whole build on the demo install: the same rows whatever the number of threads.
class DemoAssets : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_root = fs::temp_directory_path() / ("velmora-assets-demo-" + std::to_string(::getpid()));
        fs::remove_all(s_root);
        s_ok = velmora::demo::generateDemoInstall(s_root, {}).ok;
    }
    static void TearDownTestSuite() { fs::remove_all(s_root); }
    void SetUp() override {
        if (!s_ok)
            GTEST_SKIP() << "the demo install could not be generated (no codec yet)";
    }
    static inline fs::path s_root;
    static inline bool s_ok = false;
};

TEST_F(DemoAssets, ListIsTheSameOnOneThreadAndOnMany) {
    AssetListOptions one;
    one.threads = 1;
    AssetListOptions many;
    many.threads = 8;
    const auto a = buildAssetList(s_root / "Assets", one);
    const auto b = buildAssetList(s_root / "Assets", many);
    ASSERT_GT(a.rows.size(), 50u);
    ASSERT_EQ(a.rows.size(), b.rows.size());
    for (std::size_t i = 0; i < a.rows.size(); ++i)
        EXPECT_EQ(a.rows[i].cells(), b.rows[i].cells());
}

TEST_F(DemoAssets, RollingStockOnlyListsVehiclesAndSkipsTheReadOnlyFile) {
    AssetListOptions o;
    o.rollingStockOnly = true;
    const auto r = buildAssetList(s_root / "Assets", o);
    ASSERT_FALSE(r.rows.empty());
    bool engine = false;
    for (const auto& row : r.rows) {
        EXPECT_EQ(row.path.find("Scenery"), std::string::npos) << row.relativePath();
        engine = engine || row.category == "Diesel" || row.category == "Electric" || row.category == "Steam";
    }
    EXPECT_TRUE(engine);
}

TEST_F(DemoAssets, FiltersPreloadZeroLengthAndSingleFiles) {
    // Freight wagons by the Freight filter, which stands for "Freight Wagon".
    AssetListOptions freight;
    freight.category = "Freight";
    const auto wagons = buildAssetList(s_root / "Assets", freight);
    ASSERT_FALSE(wagons.rows.empty());
    for (const auto& r : wagons.rows)
        EXPECT_EQ(r.category, "Freight Wagon") << r.relativePath();
    EXPECT_EQ(wagons.categoryFilter, "Freight Wagon");

    // PreLoad left out, and Quick Drive consists only from PreLoad.
    AssetListOptions noPreload;
    noPreload.excludePreload = true;
    for (const auto& r : buildAssetList(s_root / "Assets", noPreload).rows)
        EXPECT_EQ(r.relativePath().find("PreLoad"), std::string::npos);
    AssetListOptions qd;
    qd.quickDriveConsists = true;
    const auto consists = buildAssetList(s_root / "Assets", qd);
    ASSERT_FALSE(consists.rows.empty());
    for (const auto& r : consists.rows)
        EXPECT_NE(r.relativePath().find("PreLoad"), std::string::npos);

    // Zero-length files: listed as plain files before the first Add to List, not after it.
    AssetListOptions zero;
    zero.zeroLength = true;
    zero.mask = "*.*";
    zero.convertBins = false;
    bool empty = false;
    for (const auto& r : buildAssetList(s_root / "Assets", zero).rows)
        empty = empty || r.path.find("Empty_Hut.bin") != std::string::npos;
    EXPECT_TRUE(empty);
    zero.convertBins = true;
    for (const auto& r : buildAssetList(s_root / "Assets", zero).rows)
        EXPECT_EQ(r.path.find("Empty_Hut.bin"), std::string::npos);

    // One file by name.
    AssetListOptions single;
    single.singleFile = "class66_ews.BIN";
    const auto one = buildAssetList(s_root / "Assets", single);
    ASSERT_EQ(one.rows.size(), 1u);
    EXPECT_EQ(one.rows[0].index, "1");
}

TEST(HostileAssets, OneBadDocumentNeitherEndsNorSwellsTheList) {
    const fs::path root = fs::temp_directory_path() / ("velmora-assets-hostile-" + std::to_string(::getpid()));
    fs::remove_all(root);
    ASSERT_TRUE(velmora::demo::generateDemoInstall(root, {}).ok);
    const auto before = buildAssetList(root / "Assets", {});
    ASSERT_GT(before.rows.size(), 200u);

    // A megabyte of nested records, a loop of links, a link to the Assets folder's parent, a
    // FIFO named like a blueprint.
    std::ofstream(root / "Assets/DemoRail/Class66Pack/Scenery/Nested.bin", std::ios::binary)
        << velmora::test::nestedDocument(1 << 20);
    fs::create_directory_symlink("..", root / "Assets/DemoRail/up");
    fs::create_directory_symlink(".", root / "Assets/Heritage/SteamDays/self");
    ASSERT_EQ(::mkfifo((root / "Assets/DemoRail/Class66Pack/Scenery/Tile.bin").c_str(), 0600), 0);

    velmora::ErrorLog log(root, nullptr);
    AssetListOptions o;
    o.log = &log;
    const auto after = buildAssetList(root / "Assets", o);
    ASSERT_EQ(after.rows.size(), before.rows.size());
    for (std::size_t i = 0; i < after.rows.size(); ++i)
        EXPECT_EQ(after.rows[i].cells(), before.rows[i].cells());
    // The document that could not be read is named, with what is wrong and where.
    std::string named;
    for (const auto& u : after.unreadable)
        if (u.find("Nested.bin") != std::string::npos)
            named = u;
    EXPECT_NE(named.find("nest deeper than 1024 levels (at byte"), std::string::npos) << named;
    EXPECT_NE(velmora::ReadTextFile(root / "Errors.txt").find("Nested.bin"), std::string::npos);
    for (const auto& u : after.unreadable)
        EXPECT_EQ(u.find("Tile.bin"), std::string::npos) << "a FIFO is not a document: " << u;

    // A start folder given relative to the current one finds the same rows.
    const fs::path here = fs::current_path();
    fs::current_path(root);
    const auto relative = buildAssetList("Assets", {});
    fs::current_path(here);
    EXPECT_EQ(relative.rows.size(), before.rows.size());
    fs::remove_all(root);
}
