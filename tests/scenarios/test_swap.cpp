// Stock swaps in the scenario text: a single swap touches exactly the vehicle's references, name,
// number (and the number's other mentions), mass and cargo order; the refusals leave the text
// alone; the swapped stock's provider and product reach RBlueprintSetPreLoad on Save.

#include "scenariofixture.h"
#include "stockfiles.h"

#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"
#include "velmora/scenarios/consistfields.h"
#include "velmora/scenarios/scenariosave.h"
#include "velmora/scenarios/stock.h"
#include "velmora/scenarios/swap.h"

#include <gtest/gtest.h>

#include <set>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

const char* const kCoach = "Heritage\\SteamDays\\RailVehicles\\Passenger\\Mk1\\Mk1_BSK.bin";
const char* const kSteamLoco = "Heritage/SteamDays/RailVehicles/Steam/Black5/Engine/Black5.xml";
const char* const kLivery3 = "DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\Reskins\\HTA_Livery3.bin";

struct Swapping : test::ScenarioTest<Swapping> {
    static constexpr const char* kName = "scenario-swap";
    ChosenStock stock(const std::string& typed) {
        std::string error;
        auto s = chooseStock(*m_ctx, typed, error);
        EXPECT_TRUE(s) << error;
        return s.value_or(ChosenStock{});
    }
    SwapOptions fixed(bool keep = false) {
        SwapOptions o;
        o.keepNumbers = keep;
        o.randomFraction = [] { return 0.5; };
        return o;
    }
};

// The tag of an XML line: "<Provider d:type=..." gives "Provider".
std::string tagOf(const std::string& line) {
    const std::size_t lt = line.find('<');
    const std::size_t end = line.find_first_of(" >", lt);
    return lt == std::string::npos ? std::string() : line.substr(lt + 1, end - lt - 1);
}

TEST_F(Swapping, ASingleSwapChangesExactlyTheVehicle) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    ASSERT_TRUE(d.ok()) << d.error;
    const Vehicle old = d.consists[0].vehicles[1];
    ASSERT_EQ(old.name, "DemoRail HTA Coal Hopper");
    // A second mention of the number elsewhere: an element whose whole text is the number.
    const std::size_t record = d.scenarioText.find("<Record>");
    ASSERT_NE(record, std::string::npos);
    d.scenarioText.insert(record + 8, "\r\n\t\t<Mention d:type=\"cDeltaString\">" + old.number + "</Mention>");
    rereadTables(d);
    const std::string before = d.scenarioText;
    const ChosenStock coach = stock(kCoach);
    EXPECT_EQ(coach.path, "RailVehicles\\Passenger\\Mk1\\Mk1_BSK.xml");
    const SwapResult r = swapVehicle(*m_ctx, d, 0, 1, coach, fixed());
    ASSERT_TRUE(r.ok()) << r.error;
    const StockDetails details = GetStockDetails(*m_ctx, coach.file, [] { return 0.5; });
    ASSERT_FALSE(details.number.empty());

    const Vehicle& now = d.consists[0].vehicles[1];
    EXPECT_EQ(now.name, "Heritage Mk1 BSK");
    EXPECT_EQ(now.blueprint.provider, "Heritage");
    EXPECT_EQ(now.blueprint.product, "SteamDays");
    EXPECT_EQ(now.blueprint.blueprintId, coach.path);
    EXPECT_TRUE(now.reskin.empty()); // the single swap leaves an empty reskin block alone
    EXPECT_EQ(now.number, details.number);

    const auto a = test::linesOf(before), b = test::linesOf(d.scenarioText);
    ASSERT_EQ(a.size(), b.size());
    // Each changed line is one of the vehicle's six, or a mention of the old number (the one
    // put in above, and the driver's list of numbers), which now holds the new one.
    std::multiset<std::string> changed;
    int mentions = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] == b[i])
            continue;
        if (a[i].find(">" + old.number + "<") != std::string::npos && tagOf(a[i]) != "UniqueNumber") {
            ++mentions;
            EXPECT_NE(b[i].find(">" + details.number + "<"), std::string::npos) << b[i];
            continue;
        }
        changed.insert(tagOf(a[i]));
    }
    const std::multiset<std::string> expected = {"Provider", "Product", "BlueprintID", "Name", "UniqueNumber", "TotalMass"};
    EXPECT_EQ(changed, expected);
    EXPECT_GE(mentions, 1 + 1);
    EXPECT_EQ(d.scenarioText.find(">" + old.number + "<"), std::string::npos);
    EXPECT_NE(d.scenarioText.find(">" + details.number + "</Mention>"), std::string::npos);
    EXPECT_NE(d.scenarioText.find(">" + details.mass + "</TotalMass>"), std::string::npos);
    EXPECT_EQ(d.requiredAssets, std::vector<std::string>{"Heritage|SteamDays"});
    // The other vehicles keep everything.
    EXPECT_EQ(d.consists[0].vehicles[0].number, "66 736");
    EXPECT_EQ(d.consists[0].vehicles[2].name, "DemoRail HTA livery 1");
}

TEST_F(Swapping, KeepNumbersLeavesEveryNumber) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    const std::string number = d.consists[0].vehicles[1].number;
    ASSERT_TRUE(swapVehicle(*m_ctx, d, 0, 1, stock(kCoach), fixed(true)).ok());
    EXPECT_EQ(d.consists[0].vehicles[1].number, number);
    EXPECT_EQ(d.consists[0].vehicles[1].name, "Heritage Mk1 BSK");
}

TEST_F(Swapping, RefusalsLeaveTheTextAlone) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    const std::string before = d.scenarioText;
    EXPECT_EQ(swapVehicle(*m_ctx, d, 0, 1, stock(kSteamLoco), fixed()).error, kLocosForWagons);
    EXPECT_EQ(swapVehicle(*m_ctx, d, 0, 0, stock(kCoach), fixed()).error, kWagonsForLocos);
    EXPECT_NE(swapVehicle(*m_ctx, d, 0, 4, stock(kCoach), fixed()).error.find("no vehicle 4"), std::string::npos);
    EXPECT_NE(swapVehicle(*m_ctx, d, 3, 0, stock(kCoach), fixed()).error.find("no consist 3"), std::string::npos);
    EXPECT_EQ(swapVehicle(*m_ctx, d, 0, 0, ChosenStock{}, fixed()).error, kNoStockChosen);
    EXPECT_EQ(swapIdentical(*m_ctx, d, 1, 1, stock(kSteamLoco), fixed()).error.empty(), true)
        << "the identical swap tests the consist's first vehicle, a locomotive";
    d = openScenario(*m_ctx, d.folder);
    const std::string again = d.scenarioText;
    EXPECT_EQ(swapIdentical(*m_ctx, d, 1, 1, stock(kCoach), fixed()).error, kWagonsForLocos);
    EXPECT_EQ(swapEveryConsist(*m_ctx, d, "DemoRail HTA Coal Hopper", stock(kCoach), fixed()).error, kWagonsForLocos);
    EXPECT_EQ(d.scenarioText, again);
    EXPECT_EQ(before, again);
    std::string error;
    EXPECT_FALSE(chooseStock(*m_ctx, "Heritage\\SteamDays\\RailVehicles\\Nothing.bin", error));
    EXPECT_NE(error.find("does not exist"), std::string::npos) << error;
    EXPECT_FALSE(chooseStock(*m_ctx, "Mk1_BSK.bin", error));
}

TEST_F(Swapping, AReskinWritesItsBaseAndItself) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    const ChosenStock livery = stock(kLivery3);
    ASSERT_TRUE(livery.reskin);
    EXPECT_EQ(livery.base.blueprintId, "RailVehicles\\Freight\\HTA\\HTA_Coal.xml");
    ASSERT_TRUE(swapVehicle(*m_ctx, d, 0, 1, livery, fixed()).ok());
    const Vehicle& v = d.consists[0].vehicles[1];
    EXPECT_EQ(v.blueprint.blueprintId, livery.base.blueprintId);
    EXPECT_EQ(v.reskin.blueprintId, livery.path);
    EXPECT_EQ(v.name, livery.reskinName);
}

TEST_F(Swapping, IdenticalSwapsEveryVehicleOfTheNameInTheConsist) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    // The loose consist (all wagons) gets two vehicles of one name.
    const ChosenStock hopper = stock("DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\HTA_Coal.bin");
    ASSERT_TRUE(swapVehicle(*m_ctx, d, 2, 0, hopper, fixed()).ok());
    ASSERT_EQ(d.consists[2].vehicles[0].name, d.consists[2].vehicles[1].name);
    const std::string shared = d.consists[2].vehicles[0].name;
    const ChosenStock livery = stock(kLivery3);
    const SwapResult r = swapIdentical(*m_ctx, d, 2, 1, livery, fixed());
    ASSERT_TRUE(r.ok()) << r.error;
    EXPECT_EQ(r.swapped, 2);
    EXPECT_EQ(d.consists[2].vehicles[0].name, livery.reskinName);
    EXPECT_EQ(d.consists[2].vehicles[1].name, livery.reskinName);
    EXPECT_EQ(d.consists[2].vehicles[2].name, "DemoRail HTA livery 1");
    EXPECT_EQ(d.consists[0].vehicles[1].name, shared); // other consists keep theirs
    // The identical swap of a reskin writes the base only: the reskin block keeps its old value.
    EXPECT_EQ(d.consists[2].vehicles[1].blueprint.blueprintId, livery.base.blueprintId);
    EXPECT_TRUE(d.consists[2].vehicles[1].reskin.empty());
    // Every vehicle's number is its own pick, each pair replaced once.
    EXPECT_NE(d.consists[2].vehicles[0].number, "");
}

TEST_F(Swapping, EveryConsistSwapsByNameInTheWholeScenario) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    const SwapResult r = swapEveryConsist(*m_ctx, d, "demorail class 66 ews", stock(kSteamLoco), fixed());
    ASSERT_TRUE(r.ok()) << r.error;
    EXPECT_EQ(r.swapped, 1);
    EXPECT_EQ(d.consists[0].vehicles[0].name, "Heritage Black 5");
    EXPECT_EQ(d.consists[1].vehicles[0].name, "DemoRail Class 66 Freightliner");
    EXPECT_EQ(swapEveryConsist(*m_ctx, d, "No such name", stock(kSteamLoco), fixed()).swapped, 0);
}

TEST_F(Swapping, AnIdenticalPlainSwapKeepsTheReskinBlockInStep) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    ASSERT_TRUE(swapIdentical(*m_ctx, d, 2, 1, stock(kCoach), fixed()).ok());
    const Vehicle& v = d.consists[2].vehicles[1];
    EXPECT_EQ(v.blueprint.blueprintId, "RailVehicles\\Passenger\\Mk1\\Mk1_BSK.xml");
    EXPECT_EQ(v.reskin.blueprintId, v.blueprint.blueprintId);
}

TEST_F(Swapping, CoalAndWaterStockPutsTheCargoInOrder) {
    // Hand-made tenders: coal before water (kind 1) and water before coal (kind 2).
    for (const auto& [file, cargo] : {std::pair<const char*, const char*>{"Coal.bin", "CoalFuel WaterFuel"},
                                      {"Water.bin", "WaterFuel then CoalFuel"}}) {
        test::HandVehicle tender;
        tender.name = file;
        tender.cargo = cargo;
        test::writeDocument(s_dir / "rw" / "Assets" / "Hand" / "Made" / "RailVehicles" / file, test::vehicleXml(tender));
    }
    const std::string high = "<e d:type=\"sFloat32\">1</e>\r\n", low = "<e d:type=\"sFloat32\">0.5</e>\r\n";
    const ScenarioDocument opened = openScenario(*m_ctx, copyOf("Free roam"));
    struct Case {
        const char* stock;
        std::string levels, expected;
    };
    for (const Case& c : {Case{"Hand\\Made\\RailVehicles\\Coal.bin", high + low, low + high},   // second below first
                          Case{"Hand\\Made\\RailVehicles\\Coal.bin", low + high, low + high},   // in order
                          Case{"Hand\\Made\\RailVehicles\\Water.bin", low + high, high + low},  // second above first
                          Case{"Hand\\Made\\RailVehicles\\Water.bin", low + low, low + low}}) { // equal: alone
        ScenarioDocument d = opened;
        const std::size_t level = d.scenarioText.find("<InitialLevel>", d.consists[0].start);
        const std::size_t close = d.scenarioText.find("</InitialLevel>", level);
        ASSERT_LT(close, d.consists[1].start);
        // Vehicle 1 of consist 0 (a wagon) holds the consist's first cargo list.
        ASSERT_GT(level, d.scenarioText.find("<cWagon", d.consists[0].start));
        d.scenarioText.replace(level + 14, close - level - 14, c.levels);
        rereadTables(d);
        const ChosenStock tender = stock(c.stock);
        ASSERT_EQ(tender.category, "Tender");
        ASSERT_TRUE(swapVehicle(*m_ctx, d, 0, 1, tender, fixed()).ok());
        const std::size_t now = d.scenarioText.find("<InitialLevel>", d.consists[0].start);
        EXPECT_EQ(d.scenarioText.substr(now + 14, c.expected.size()), c.expected) << c.stock;
    }
}

TEST_F(Swapping, TheStockCategoryDecidesWhatItMayReplace) {
    EXPECT_EQ(stock(kCoach).category, "Passenger");
    EXPECT_EQ(stock(kSteamLoco).category, "Steam");
    EXPECT_EQ(stock("DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\HTA_Coal.bin").category, "Freight");
    EXPECT_EQ(stock(kLivery3).category, "Freight");
    // A multiple unit's motor car may stand in for a wagon.
    const ChosenStock motor = stock("Alpenbahn/Gotthard/RailVehicles/EMU/RABDe500/RABDe500_Motor.bin");
    EXPECT_EQ(motor.category, "EMU");
    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    EXPECT_TRUE(swapVehicle(*m_ctx, d, 0, 1, motor, fixed()).ok());
    EXPECT_TRUE(swapVehicle(*m_ctx, d, 0, 0, motor, fixed()).ok());
}

TEST(SwapCoal, ExchangesTheFirstTwoLevels) {
    std::string v = "<x><InitialLevel>\r\n<e d:type=\"sFloat32\">1</e>\r\n<e d:type=\"sFloat32\">0.25</e>\r\n"
                    "<e d:type=\"sFloat32\">7</e></InitialLevel></x>";
    SwapCoal(v);
    EXPECT_EQ(v, "<x><InitialLevel>\r\n<e d:type=\"sFloat32\">0.25</e>\r\n<e d:type=\"sFloat32\">1</e>\r\n"
                 "<e d:type=\"sFloat32\">7</e></InitialLevel></x>");
    std::string single = "<InitialLevel><e>1</e></InitialLevel>";
    SwapCoal(single);
    EXPECT_EQ(single, "<InitialLevel><e>1</e></InitialLevel>");
}

TEST(SwapRefusal, DmuAndEmuPassBothTests) {
    EXPECT_EQ(swapRefusal("Diesel", "<cWagon d:id=\"1\">"), kLocosForWagons);
    EXPECT_EQ(swapRefusal("Tender", "<cEngine d:id=\"1\">"), kWagonsForLocos);
    EXPECT_EQ(swapRefusal("DMU", "<cWagon d:id=\"1\">"), "");
    EXPECT_EQ(swapRefusal("EMU", "<cEngine d:id=\"1\">"), "");
    EXPECT_EQ(swapRefusal("Freight", "<cWagon d:id=\"1\">"), "");
}

TEST_F(Swapping, SaveMergesTheRequiredAssets) {
    const fs::path folder = copyOf("Free roam");
    AppContext shipped(s_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
    shipped.setRailWorksOverride(s_dir / "rw");
    ScenarioDocument d = openScenario(shipped, folder);
    ASSERT_TRUE(swapVehicle(shipped, d, 0, 1, stock(kCoach), fixed()).ok());
    ASSERT_TRUE(swapVehicle(shipped, d, 0, 2, stock(kCoach), fixed()).ok());
    d.requiredAssets.push_back("heritage|steamdays"); // the same pair in other case counts once
    ASSERT_TRUE(saveScenario(shipped, d, fieldsOf(d)));
    const std::string saved = test::slurp(folder / "ScenarioProperties.xml");
    const std::size_t open = saved.find("<RBlueprintSetPreLoad>"), close = saved.find("</RBlueprintSetPreLoad>");
    ASSERT_NE(close, std::string::npos);
    const std::string entry = "\t\t\t<Provider d:type=\"cDeltaString\">Heritage</Provider>\r\n"
                              "\t\t\t<Product d:type=\"cDeltaString\">SteamDays</Product>\r\n";
    auto count = [&](const std::string& text) {
        int n = 0;
        for (std::size_t p = text.find(entry); p != std::string::npos && p < text.find("</RBlueprintSetPreLoad>");
             p = text.find(entry, p + 1))
            ++n;
        return n;
    };
    // One entry more, inside the element, whatever the pairs already there.
    EXPECT_EQ(count(saved), count(d.propertiesText) + 1);
    EXPECT_LT(saved.rfind(entry), close);
    EXPECT_GT(saved.find(entry), open);
    EXPECT_EQ(saved.find("xxxxxxxx"), std::string::npos);
    EXPECT_EQ(saved.find("heritage"), std::string::npos);
    // The saved document opens again with the swap in place.
    const ScenarioDocument again = openScenario(shipped, folder);
    ASSERT_TRUE(again.ok()) << again.error;
    EXPECT_EQ(again.consists[0].vehicles[2].name, "Heritage Mk1 BSK");
    EXPECT_FALSE(again.consists[0].vehicles[1].missing);
}

TEST_F(Swapping, AnEmptyPreloadListIsOpenedAndAMissingOneLeftOut) {
    const fs::path folder = copyOf("Free roam");
    AppContext shipped(s_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
    shipped.setRailWorksOverride(s_dir / "rw");
    const fs::path properties = folder / "ScenarioProperties.xml";
    std::string text = test::slurp(properties);
    const std::size_t open = text.find("<RBlueprintSetPreLoad>");
    const std::size_t close = text.find("</RBlueprintSetPreLoad>");
    ASSERT_LT(open, close);
    const std::string emptied = text.substr(0, open) + "<RBlueprintSetPreLoad/>" + text.substr(close + 23);
    std::ofstream(properties, std::ios::binary | std::ios::trunc) << emptied;

    ScenarioDocument d = openScenario(shipped, folder);
    ASSERT_TRUE(swapVehicle(shipped, d, 0, 1, stock(kCoach), fixed()).ok());
    ASSERT_TRUE(saveScenario(shipped, d, fieldsOf(d)));
    const std::string saved = test::slurp(properties);
    EXPECT_EQ(saved.find("<RBlueprintSetPreLoad/>"), std::string::npos);
    const std::size_t at = saved.find("<RBlueprintSetPreLoad>\t<iBlueprintLibrary-cBlueprintSetID d:id=\"");
    ASSERT_NE(at, std::string::npos);
    EXPECT_NE(saved.find("<Provider d:type=\"cDeltaString\">Heritage</Provider>", at), std::string::npos);
    EXPECT_NE(saved.find("</iBlueprintLibrary-cBlueprintSetID>\r\n\t\r\n</RBlueprintSetPreLoad>", at), std::string::npos);

    // No list at all: the required assets are dropped and the rest is saved.
    const std::string without = emptied.substr(0, open) + emptied.substr(open + 23);
    std::ofstream(properties, std::ios::binary | std::ios::trunc) << without;
    d = openScenario(shipped, folder);
    ASSERT_TRUE(swapVehicle(shipped, d, 0, 2, stock(kCoach), fixed()).ok());
    ASSERT_TRUE(saveScenario(shipped, d, fieldsOf(d)));
    EXPECT_EQ(test::slurp(properties).find("RBlueprintSetPreLoad"), std::string::npos);
    EXPECT_EQ(openScenario(shipped, folder).consists[0].vehicles[2].name, "Heritage Mk1 BSK");
}

} // namespace

// Stock below a folder with an accented name: the file is found by its UTF-8 name, and the
// document gets the name in its own form, never the file name's UTF-8 bytes.
TEST_F(Swapping, StockBelowAnAccentedFolderIsWrittenInTheDocumentsLetters) {
    const fs::path hta = s_dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA";
    const fs::path accented = hta.parent_path() / "W\xC3\xA4gen";
    fs::create_directories(accented);
    fs::copy_file(hta / "HTA_Coal.bin", accented / "HTA_Coal.bin", fs::copy_options::overwrite_existing);
    const ChosenStock wagon = stock("DemoRail/Class66Pack/RailVehicles/Freight/W\xC3\xA4gen/HTA_Coal.bin");
    const std::string inDocument = documentFromUtf8("W\xC3\xA4gen");
    EXPECT_EQ(DecodedChars(inDocument), "W\xE4gen");
    EXPECT_EQ(wagon.path, "RailVehicles\\Freight\\" + inDocument + "\\HTA_Coal.xml");

    ScenarioDocument d = openScenario(*m_ctx, copyOf("Free roam"));
    ASSERT_TRUE(d.ok()) << d.error;
    const SwapResult r = swapVehicle(*m_ctx, d, 0, 1, wagon, fixed());
    ASSERT_TRUE(r.ok()) << r.error;
    EXPECT_NE(DecodedChars(d.scenarioText).find("W\xE4gen\\HTA_Coal.xml"), std::string::npos);
    EXPECT_EQ(d.scenarioText.find("W\xC3\xA4gen"), std::string::npos);
    // The stock's own blueprint was read through its UTF-8 name: the mass is there.
    const auto span = vehicleSpan(d, 0, 1);
    ASSERT_TRUE(span);
    const std::string vehicle = d.scenarioText.substr(span->first, span->second - span->first);
    const std::size_t mass = vehicle.find("<TotalMass");
    ASSERT_NE(mass, std::string::npos);
    const std::size_t value = vehicle.find('>', mass) + 1;
    EXPECT_NE(vehicle[value], '<') << "the mass was left empty";
    std::string bin;
    EXPECT_TRUE(xmlTextToBin(d.scenarioText, bin));
}
