// Assets and scenarios read out of .ap archives without unpacking them: the entry filter, the
// asset grid's rows of chosen entries, scenario details, the .ap index, damaged archives.

#include "archives/ziptestkit.h"
#include "velmora/archives/apassets.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/scenarios/apscenarios.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

using namespace velmora;
using namespace velmora::archives;
namespace fs = std::filesystem;

namespace {

bool passes(const std::string& path, const std::string& mask, bool stock = false) {
    return entryPasses(path, ApEntryFilter{mask, stock});
}

std::string engineXml(const std::string& english) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cBlueprintLoader xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
           "d:version=\"1.0\">\r\n<Blueprint>\r\n<cEngineBlueprint>\r\n<Name d:type=\"cDeltaString\">x</Name>\r\n"
           "<DisplayName>\r\n<Localisation-cUserLocalisedString>\r\n<English d:type=\"cDeltaString\">" +
           english +
           "</English>\r\n</Localisation-cUserLocalisedString>\r\n</DisplayName>\r\n<RailVehicleComponent/>\r\n"
           "<EngineType d:type=\"cDeltaString\">Steam</EngineType>\r\n</cEngineBlueprint>\r\n</Blueprint>\r\n"
           "</cBlueprintLoader>\r\n";
}

std::string bin(const std::string& xml) {
    std::string out;
    const ConvertResult r = xmlTextToBin(xml, out, "test.xml");
    EXPECT_TRUE(r.ok) << r.message;
    return out;
}

std::string propertiesXml(const std::string& name, const std::string& cls) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cScenarioProperties>\r\n<DisplayName>\r\n"
           "<Localisation-cUserLocalisedString>\r\n<English>" +
           name +
           "</English>\r\n</Localisation-cUserLocalisedString>\r\n</DisplayName>\r\n<Description>\r\n"
           "<Localisation-cUserLocalisedString>\r\n<English>d</English>\r\n</Localisation-cUserLocalisedString>\r\n"
           "</Description>\r\n<Briefing>\r\n<Localisation-cUserLocalisedString>\r\n<English>b</English>\r\n"
           "</Localisation-cUserLocalisedString>\r\n</Briefing>\r\n<ScenarioClass>" +
           cls +
           "</ScenarioClass>\r\n<StartTime>19800</StartTime>\r\n<DurationMins>45</DurationMins>\r\n"
           "<StartDD>3</StartDD>\r\n<StartMM>7</StartMM>\r\n<StartYYYY>1962</StartYYYY>\r\n<Season>eSeasonSummer</Season>"
           "\r\n<WeatherBlueprint>\r\n<Provider>Kuju</Provider>\r\n<Product>RailSimulator</Product>\r\n"
           "<BlueprintID>Weather\\Sun.xml</BlueprintID>\r\n</WeatherBlueprint>\r\n</cScenarioProperties>\r\n";
}

class ApAssetsTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-apassets-" + std::to_string(::getpid()) + "-" +
                                             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
    }
    void TearDown() override {
        std::error_code ec;
        fs::permissions(m_dir, fs::perms::owner_all, ec);
        fs::remove_all(m_dir, ec);
    }
    fs::path m_dir;
};

} // namespace

TEST(ApEntryFilter, MaskTailFromTheThirdCharacter) {
    EXPECT_EQ(maskTail("*.bin"), "bin");
    EXPECT_EQ(maskTail("*.TgPcDx"), "TgPcDx");
    EXPECT_EQ(maskTail(".TgPcDx"), "gPcDx") << "a mask without '*' loses the extension's first letter";
    EXPECT_EQ(maskTail("*"), "");
    // Both still find the same entries, letter case aside.
    EXPECT_TRUE(passes("Textures/Black5_01.tgpcdx", ".TgPcDx"));
    EXPECT_TRUE(passes("Textures\\Black5_01.TgPcDx", "*.TgPcDx"));
    EXPECT_FALSE(passes("Textures\\Black5_01.TgPcDx", "*.bin"));
    EXPECT_FALSE(passes("anything.bin", "*")) << "an empty tail lists nothing";
}

TEST(ApEntryFilter, RollingStockOnlyWithTheInteractiveExemption) {
    EXPECT_TRUE(passes("RailVehicles/Steam/Engine/Black5.bin", "*.bin", true));
    EXPECT_TRUE(passes("railvehicles\\Freight\\Tender\\T.bin", "*.bin", true)) << "folder names in any case";
    EXPECT_TRUE(passes("RailVehicles/Coaches/Passenger/Mk1.bin", "*.bin", true));
    EXPECT_FALSE(passes("RailVehicles/DMU/Class101/DMBS.bin", "*.bin", true)) << "no Engine, Tender, Freight, Passenger";
    EXPECT_FALSE(passes("Scenery/Engine/Shed.bin", "*.bin", true)) << "Engine without RailVehicles";
    EXPECT_TRUE(passes("Scenery/Interactive/WaterTower.bin", "*.bin", true)) << "interactive items stay";
    EXPECT_FALSE(passes("Scenery/Interactive/WaterTower.GeoPcDx", "*.bin", true)) << "but the mask still applies";
    EXPECT_TRUE(passes("RailVehicles/DMU/Class101/DMBS.bin", "*.bin", false));
}

TEST(ApProviderProduct, CutBehindTheLastAssetsFolder) {
    ProviderProduct p = providerProductOf("/rw/Assets/Heritage/SteamDays/SteamDaysAssets.ap");
    EXPECT_EQ(p.provider, "Heritage");
    EXPECT_EQ(p.product, "SteamDays");
    p = providerProductOf("/home/me/Assets/backup/rw/Assets/Kuju/RailSimulator/x.ap");
    EXPECT_EQ(p.provider, "Kuju") << "the last Assets folder counts";
    EXPECT_EQ(p.product, "RailSimulator");
    p = providerProductOf("C:\\Rail Works\\assets\\Éditeur, \"Q\"\\Produit\\a.ap");
    EXPECT_EQ(p.provider, "Éditeur, \"Q\"");
    EXPECT_EQ(p.product, "Produit");
    p = providerProductOf("/rw/Content/Routes/abc/MainContent.ap");
    EXPECT_EQ(p.provider, "");
    EXPECT_EQ(p.product, "");
    p = providerProductOf("/rw/MyAssets/Kuju/Product/a.ap");
    EXPECT_EQ(p.provider, "") << "a folder that merely ends in Assets is not the Assets folder";
}

TEST_F(ApAssetsTest, RowsOfChosenEntriesComeFromTheSameRowBuilding) {
    const fs::path ap = m_dir / "Assets" / "Heritage" / "SteamDays" / "SteamDaysAssets.ap";
    fs::create_directories(ap.parent_path());
    ASSERT_TRUE(test::makeZip(ap, {{"RailVehicles/Steam/Engine/Black5.bin", bin(engineXml("Black 5, LMS"))},
                                   {"RailVehicles/Steam/Engine/Textures/Black5.TgPcDx", "texture"},
                                   {"RailVehicles/Steam/Engine/NoName.bin", bin(engineXml(""))},
                                   {"Scenery/Interactive/Tower.GeoPcDx", "shape"},
                                   {"RailVehicles\\Steam\\Engine\\Black5.bin", bin(engineXml("Black 5 again"))}}));
    ZipReader zip;
    ASSERT_TRUE(zip.open(ap)) << zip.error();

    const auto listed = listApEntries(zip, {"*.bin", true});
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].path, "RailVehicles\\Steam\\Engine\\Black5.bin");
    EXPECT_EQ(listed[2].index, 4u) << "the same path twice keeps its two numbers";

    assets::AssetListOptions o;
    const ApRowsResult r = apAssetRows(zip, {0, 1, 2, 3, 4}, o);
    EXPECT_TRUE(r.unreadable.empty());
    ASSERT_EQ(r.rows.size(), 4u) << "the entry with no name gives no row";
    EXPECT_EQ(r.rows[0].cells(), (std::vector<std::string>{"Heritage", "SteamDays", "RailVehicles\\Steam\\Engine\\Black5.bin",
                                                           "Black 5 LMS", "Yes", "Steam", "EngineBlueprint", "0"}));
    EXPECT_EQ(r.rows[1].cells(), (std::vector<std::string>{"Heritage", "SteamDays",
                                                           "RailVehicles\\Steam\\Engine\\Textures\\Black5.TgPcDx", "",
                                                           "", "", "", "1"}));
    EXPECT_EQ(r.rows[2].path, "Scenery\\Interactive\\Tower.GeoPcDx");
    EXPECT_EQ(r.rows[3].name, "Black 5 again");
    EXPECT_EQ(r.rows[3].index, "4") << "two rows for the entry that is there twice";

    // A category filter and the rolling-stock test work as they do for loose files.
    o.category = "Diesel";
    EXPECT_TRUE(apAssetRows(zip, {0}, o).rows.empty());
}

TEST_F(ApAssetsTest, NoAssetsFolderLeavesProviderAndProductEmpty) {
    const fs::path ap = m_dir / "loose" / "Pack.ap";
    fs::create_directories(ap.parent_path());
    ASSERT_TRUE(test::makeZip(ap, {{"RailVehicles/Engine/E.bin", bin(engineXml("E"))}, {"t.png", "png"}}));
    ZipReader zip;
    ASSERT_TRUE(zip.open(ap));
    const ApRowsResult r = apAssetRows(zip, {0, 1}, {});
    ASSERT_EQ(r.rows.size(), 2u);
    for (const auto& row : r.rows) {
        EXPECT_EQ(row.provider, "");
        EXPECT_EQ(row.product, "");
    }
    EXPECT_EQ(r.rows[0].name, "E");
}

TEST_F(ApAssetsTest, BadEntriesAndDamagedArchivesAreNamed) {
    const fs::path ap = m_dir / "Assets" / "P" / "Q" / "Bad, \"one\".ap";
    fs::create_directories(ap.parent_path());
    ASSERT_TRUE(test::makeZip(ap, {{"RailVehicles/Engine/NotSerz.bin", "this is no simulator document"}}));
    ZipReader zip;
    ASSERT_TRUE(zip.open(ap));
    const ApRowsResult r = apAssetRows(zip, {0, 7}, {});
    EXPECT_TRUE(r.rows.empty());
    ASSERT_EQ(r.unreadable.size(), 1u) << "an entry past the end is passed over";
    EXPECT_NE(r.unreadable[0].find("NotSerz.bin"), std::string::npos) << r.unreadable[0];
    EXPECT_NE(r.unreadable[0].find("Bad, \"one\".ap"), std::string::npos) << r.unreadable[0];

    const fs::path damaged = m_dir / "Assets" / "P" / "Q" / "Damaged.ap";
    std::ofstream(damaged, std::ios::binary) << "PK\x03\x04 not really a zip";
    ZipReader broken;
    EXPECT_FALSE(broken.open(damaged));
    EXPECT_NE(broken.error().find("Damaged.ap"), std::string::npos) << broken.error();
    const auto details = scenarios::readPackedScenarios(damaged, "English");
    ASSERT_EQ(details.problems.size(), 1u);
    EXPECT_NE(details.problems[0].find("Damaged.ap"), std::string::npos);
}

TEST_F(ApAssetsTest, ScenarioDetailsReadOutOfARouteArchive) {
    const fs::path route = m_dir / "Content" / "Routes" / "11111111-2222-3333-4444-555555555555";
    fs::create_directories(route);
    const fs::path ap = route / "MainContent.ap";
    ASSERT_TRUE(test::makeZip(
        ap, {{"RouteProperties.xml", "<x/>"},
             {"Scenarios/aaa/ScenarioProperties.xml", propertiesXml("Morning, \"Mail\" to Crewe", "eStandardScenarioClass")},
             {"Scenarios/bbb/ScenarioProperties.xml", "<cScenarioProperties>cut short"},
             {"Scenarios/ccc/Scenario.bin", "x"},
             {"Scenarios/ddd/OldScenarioProperties.xml", propertiesXml("not this", "eCareerScenarioClass")}}));
    const auto found = scenarios::readPackedScenarios(ap, "English");
    ASSERT_EQ(found.scenarios.size(), 1u);
    const auto& s = found.scenarios[0];
    EXPECT_EQ(s.route, "11111111-2222-3333-4444-555555555555");
    EXPECT_EQ(s.scenario, "aaa");
    EXPECT_EQ(s.entry, "Scenarios\\aaa\\ScenarioProperties.xml");
    const auto cells = scenarios::scenarioSummaryCells(s);
    ASSERT_EQ(cells.size(), scenarios::scenarioSummaryColumns().size());
    EXPECT_EQ(cells[3], "Morning, \"Mail\" to Crewe");
    EXPECT_EQ(cells[4], "Standard Scenario");
    EXPECT_EQ(cells[5], "0530");
    EXPECT_EQ(cells[7], "3/7/1962");
    ASSERT_EQ(found.problems.size(), 1u) << "the broken document is named";
    EXPECT_NE(found.problems[0].find("bbb"), std::string::npos) << found.problems[0];

    // The same document loose reads the same.
    const fs::path loose = route / "Scenarios" / "aaa" / "ScenarioProperties.xml";
    fs::create_directories(loose.parent_path());
    std::ofstream(loose, std::ios::binary) << propertiesXml("Morning, \"Mail\" to Crewe", "eStandardScenarioClass");
    const auto single = scenarios::readScenarioProperties(loose, "English");
    ASSERT_EQ(single.scenarios.size(), 1u);
    EXPECT_EQ(single.scenarios[0].properties.displayName, s.properties.displayName);
    EXPECT_EQ(single.scenarios[0].scenario, "aaa");
    EXPECT_FALSE(scenarios::readScenarioProperties(route / "missing.xml", "English").problems.empty());
}

TEST_F(ApAssetsTest, ApIndexIsWrittenThroughTheWriteServiceAndAFailedWriteKeepsTheOld) {
    ScriptedUi ui;
    AppContext ctx(m_dir / "home", m_dir / "data", ui);
    const std::vector<fs::path> aps{m_dir / "Assets" / "Ünï, co" / "a.ap", m_dir / "b.ap"};
    std::string error;
    ASSERT_TRUE(writeApIndex(ctx, aps, &error)) << error;
    const fs::path index = m_dir / "home" / "Data" / "AP-Index.csv";
    const std::string first = ReadTextFile(index);
    EXPECT_EQ(first, (m_dir / "Assets" / "Ünï, co").string() + ",a.ap\r\n" + m_dir.string() + ",b.ap\r\n");

    if (::geteuid() != 0) { // root writes anywhere
        fs::permissions(index.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_FALSE(writeApIndex(ctx, {m_dir / "c.ap"}, &error));
        EXPECT_NE(error.find("AP-Index.csv"), std::string::npos) << error;
        fs::permissions(index.parent_path(), fs::perms::owner_all);
        EXPECT_EQ(ReadTextFile(index), first);
    }
}
