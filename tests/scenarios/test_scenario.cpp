// Opening a scenario: the tables of the consist and item passes on the demo install, the class
// rules, and input built to hurt the reader.

#include "scenariofixture.h"

#include "../common/unprivileged.h"
#include "velmora/scenarios/scenario.h"

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

struct Opening : test::ScenarioTest<Opening> {
    static constexpr const char* kName = "scenario-open";
};

TEST_F(Opening, TablesOfTheDemoScenario) {
    const fs::path folder = copyOf();
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    ASSERT_TRUE(d.ok()) << d.error;
    EXPECT_EQ(d.properties.displayName, "O'Connor's coal run");
    EXPECT_EQ(d.properties.season, "SEASON_SPRING");
    EXPECT_EQ(d.properties.author, "Velmora demo");
    EXPECT_EQ(d.properties.startTime.size(), 4u);
    EXPECT_TRUE(d.weatherFolder.has_value());
    ASSERT_EQ(d.consists.size(), 3u);
    EXPECT_EQ(d.drivenConsist, 0);

    const Consist& driven = d.consists[0];
    EXPECT_EQ(driven.playerDriver, "1");
    EXPECT_EQ(driven.serviceClass, "1");
    EXPECT_EQ(driven.dir, "forwards");
    EXPECT_TRUE(driven.realDestination);
    ASSERT_EQ(driven.vehicles.size(), 4u);
    const Vehicle& loco = driven.vehicles[0];
    EXPECT_EQ(loco.blueprint.provider, "DemoRail");
    EXPECT_TRUE(iendsWith(loco.blueprint.blueprintId, ".xml"));
    EXPECT_NE(loco.blueprint.blueprintId.find('\\'), std::string::npos);
    EXPECT_FALSE(loco.loadable);
    EXPECT_EQ(loco.preloaded, "eFalse");
    EXPECT_EQ(loco.flipped, "0");
    EXPECT_EQ(loco.number, "66 251");
    EXPECT_EQ(loco.destination, "Valley Yard");
    EXPECT_EQ(loco.startTime, "0000");
    EXPECT_TRUE(driven.vehicles[1].loadable);
    EXPECT_EQ(driven.vehicles[1].preloaded, "eTrue");
    EXPECT_TRUE(driven.vehicles[2].reskin.blueprintId.find("Reskins") != std::string::npos);
    EXPECT_TRUE(driven.vehicles[1].reskin.empty());

    const Consist& loose = d.consists[2];
    EXPECT_EQ(loose.serviceName, "Loose Consist");
    EXPECT_FALSE(loose.realDestination);
    EXPECT_EQ(loose.vehicles.front().destination, "Not Shown");
    EXPECT_TRUE(loose.vehicles.back().missing);
    EXPECT_EQ(d.missingReport, "Missing items:-\nDemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\HTA_Sludge.bin\n");
}

TEST_F(Opening, ClassRules) {
    const ScenarioDocument quick = openScenario(*m_ctx, copyOf("[QD] Quick Drive"));
    ASSERT_TRUE(quick.ok()) << quick.error;
    EXPECT_TRUE(quick.refused);
    EXPECT_TRUE(quick.consists.empty());
    EXPECT_EQ(quick.warnings, std::vector<std::string>{kQuickDriveRefusal});

    const ScenarioDocument career = openScenario(*m_ctx, copyOf("Career: first turn"));
    ASSERT_TRUE(career.ok());
    EXPECT_FALSE(career.refused);
    EXPECT_EQ(career.warnings.front(), kCareerWarning);
    EXPECT_EQ(career.consists.size(), 3u); // the opening goes on after the box
    EXPECT_TRUE(career.properties.author.empty()) << "no Author field in a career scenario";

    const ScenarioDocument free = openScenario(*m_ctx, copyOf("Free roam"));
    EXPECT_EQ(free.properties.startLocation, "Demo yard");
    EXPECT_EQ(free.properties.author, "Velmora demo");

    EXPECT_EQ(parseClass("freeroam"), ScenarioClass::FreeRoam);
    EXPECT_EQ(parseClass("Career Scenario"), ScenarioClass::Career);
    EXPECT_EQ(parseClass("eTemplateScenarioClass"), std::nullopt) << "Quick Drive is no choice of the editor";
}

TEST_F(Opening, TimesAndNames) {
    EXPECT_EQ(hhmm("19800"), "0530");
    EXPECT_EQ(hhmm("0"), "0000");
    EXPECT_EQ(hhmm("86400.0000"), "2400");
    const std::string block = "<DisplayName><English d:type=\"cDeltaString\"></English><French d:type=\"cDeltaString\">"
                              "Nom</French><German>Name</German></DisplayName>";
    EXPECT_EQ(GetName(block, 1, "German"), "Name");
    EXPECT_EQ(GetName(block, 1, "English"), "Nom") << "an empty value falls back to the next language";
}

TEST_F(Opening, WeatherFolderRule) {
    EXPECT_TRUE(weatherFolder(*m_ctx, {"kuju", "railsimulatorcore", ""}).has_value()) << "letter case does not matter";
    EXPECT_FALSE(weatherFolder(*m_ctx, {"Nobody", "Nothing", "Weather\\x.xml"}).has_value());
    EXPECT_FALSE(weatherFolder(*m_ctx, {"..", "..", ""}).has_value());

    const fs::path folder = copyOf();
    std::string text = test::slurp(folder / "ScenarioProperties.xml");
    text.replace(text.find(">Kuju<"), 6, ">Gone<");
    std::ofstream(folder / "ScenarioProperties.xml", std::ios::binary | std::ios::trunc) << text;
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    ASSERT_TRUE(d.ok());
    ASSERT_FALSE(d.warnings.empty());
    EXPECT_EQ(d.warnings.back().rfind("The Weather folder for this scenario is missing\nMaybe it is packed in an .ap "
                                      "file? Missing item:-\n", 0),
              0u);
    EXPECT_FALSE(d.consists.empty()) << "only the weather picker is left out";
}

// Every kind of broken input: a clear message naming the file, nothing written, no crash.
TEST_F(Opening, HostileInputNamesTheFileAndWritesNothing) {
    const fs::path folder = copyOf();
    const std::string bin = test::slurp(folder / "Scenario.bin");
    const std::string properties = test::slurp(folder / "ScenarioProperties.xml");
    auto put = [&](const std::string& name, const std::string& bytes) {
        std::ofstream(folder / name, std::ios::binary | std::ios::trunc) << bytes;
    };
    auto refused = [&](const std::string& file) {
        const auto before = test::snapshot(folder);
        const ScenarioDocument d = openScenario(*m_ctx, folder);
        EXPECT_FALSE(d.ok());
        EXPECT_NE(d.error.find((folder / file).string()), std::string::npos) << d.error;
        EXPECT_EQ(test::snapshot(folder), before);
    };
    for (std::size_t cut : {std::size_t(0), std::size_t(3), bin.size() / 3, bin.size() - 1}) {
        SCOPED_TRACE(cut);
        put("Scenario.bin", bin.substr(0, cut));
        refused("Scenario.bin");
    }
    std::string corrupt = bin;
    for (std::size_t i = 16; i < corrupt.size(); i += 7)
        corrupt[i] = static_cast<char>(0xFF);
    put("Scenario.bin", corrupt);
    refused("Scenario.bin");
    put("Scenario.bin", bin);

    // Season moved in front of StartTime, then a tag taken out.
    std::string swapped = properties;
    const std::size_t season = swapped.find("\t<Season");
    const std::string seasonLine = swapped.substr(season, swapped.find('\n', season) + 1 - season);
    swapped.erase(season, seasonLine.size());
    swapped.insert(swapped.find("\t<StartTime"), seasonLine);
    put("ScenarioProperties.xml", swapped);
    refused("ScenarioProperties.xml");
    std::string without = properties;
    without.erase(without.find("<DurationMins"), 5);
    put("ScenarioProperties.xml", without);
    refused("ScenarioProperties.xml");
    std::filesystem::remove(folder / "ScenarioProperties.xml");
    refused("ScenarioProperties.xml");
    put("ScenarioProperties.xml", properties);

    fs::permissions(folder / "Scenario.bin", fs::perms::none);
    test::whereModesHold([&] {
        const ScenarioDocument d = openScenario(*m_ctx, folder);
        return !d.ok() && d.error.find("Scenario.bin") != std::string::npos;
    });
    fs::permissions(folder / "Scenario.bin", fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Opening, ConsistsWithoutItemsOrWithTooMany) {
    const fs::path folder = copyOf();
    std::string xml = xmlOf(folder);
    // Nothing but the record set: no consists at all.
    putXml(folder, xml.substr(0, xml.find("<cConsist")) + "</Record>\n</cRecordSet>\n");
    ScenarioDocument d = openScenario(*m_ctx, folder);
    ASSERT_TRUE(d.ok()) << d.error;
    EXPECT_TRUE(d.consists.empty());
    ASSERT_FALSE(d.warnings.empty());
    EXPECT_NE(d.warnings.back().find("Scenario.bin: holds no consists"), std::string::npos);

    std::string error;
    const std::string empty = "<cConsist d:id=\"1\"><RailVehicles/></cConsist>";
    auto consists = readConsists(empty + empty, "S.bin", error);
    EXPECT_TRUE(error.empty());
    ASSERT_EQ(consists.size(), 2u);
    EXPECT_TRUE(consists[1].vehicles.empty());
    EXPECT_EQ(consists[1].serviceName, "Loose Consist");

    std::string many = "<cConsist d:id=\"1\"><RailVehicles>";
    const std::string vehicle = "<cOwnedEntity><Flipped>1</Flipped><BlueprintID><Provider>P</Provider><Product>Q</Product>"
                                "<BlueprintID>..\\..\\..\\..\\etc\\passwd.xml</BlueprintID></BlueprintID>"
                                "<Name>N</Name></cOwnedEntity>";
    for (std::size_t i = 0; i < kMaxItems; ++i)
        many += vehicle;
    consists = readConsists(many + "</RailVehicles></cConsist>", "S.bin", error);
    ASSERT_TRUE(error.empty()) << "900 items are still read";
    EXPECT_EQ(consists[0].vehicles[0].flipped, "1");
    markMissing(*m_ctx, consists);
    EXPECT_TRUE(consists[0].vehicles[0].missing) << "a path leading out of Assets is never looked for";
    consists = readConsists(many + vehicle + "</RailVehicles></cConsist>", "S.bin", error);
    EXPECT_TRUE(consists.empty());
    EXPECT_NE(error.find("S.bin: consist 0 holds more than 900 items"), std::string::npos) << error;
}

} // namespace
