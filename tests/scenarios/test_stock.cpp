// The class tests and the details a swap takes, on the demo install's own stock and on a few
// blueprints made here for what the demo lacks (a reskin known as a locomotive, fuel orders).

#include "velmora/scenarios/stock.h"

#include "../common/demofixture.h"
#include "stockfiles.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

class StockClassTests : public test::DemoInstallTest<StockClassTests> {
public:
    static constexpr const char* kName = "stock-classes";

protected:
    fs::path asset(const std::string& relative) const { return s_dir / "rw" / "Assets" / relative; }
    fs::path scratch(const std::string& name) const {
        return s_dir / ("hand-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name())) / name;
    }
};

} // namespace

TEST_F(StockClassTests, TheDemoStockIsClassedByItsBlueprint) {
    struct Expect {
        const char* file;
        bool loco, wagon, tender;
        const char* name;
        const char* engineType;
    };
    const Expect cases[] = {
        {"DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin", true, false, false,
         "DemoRail Class 66 EWS", "Diesel"},
        {"Alpenbahn/Gotthard/RailVehicles/Electric/Re460/Engine/Re460_SBB.bin", true, false, false,
         "Alpenbahn Re 460 SBB", "Electric"},
        {"Heritage/SteamDays/RailVehicles/Steam/Black5/Engine/Black5.bin", true, false, false, "Heritage Black 5",
         "Steam"},
        {"Heritage/SteamDays/RailVehicles/Steam/Black5/Tender/Black5_Tender.bin", false, false, true,
         "Heritage Black 5 tender", ""},
        {"DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin", false, true, false, "DemoRail HTA Coal Hopper",
         ""},
        // The write-protected coach is still a coach.
        {"Alpenbahn/Gotthard/RailVehicles/Passenger/EWIV/EWIV_1st.bin", false, true, false,
         "Alpenbahn EW IV 1. Klasse", ""},
        // A reskin is a locomotive only when its text says so; this one does not.
        {"DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Reskins/Class66_Freightliner.bin", false, false, false, "",
         ""},
    };
    for (const Expect& e : cases) {
        SCOPED_TRACE(e.file);
        const StockTest loco = IsItALoco(*m_ctx, asset(e.file));
        const StockTest wagon = IsItAWagon(*m_ctx, asset(e.file));
        const StockTest tender = IsItATender(*m_ctx, asset(e.file));
        ASSERT_TRUE(loco.read && wagon.read && tender.read) << loco.error;
        EXPECT_EQ(loco.is, e.loco);
        EXPECT_EQ(wagon.is, e.wagon);
        EXPECT_EQ(tender.is, e.tender);
        const StockTest& taken = e.loco ? loco : e.wagon ? wagon : tender;
        EXPECT_EQ(taken.name, e.name);
        EXPECT_EQ(loco.engineType, e.engineType);
    }
}

TEST_F(StockClassTests, AReskinKnownAsALocomotiveTakesItsBaseEngineTypeAndNamesFallBack) {
    demo::XmlBuilder x("cBlueprintLoader", 1);
    x.open("Blueprint").open("cReskinBlueprint", 2).str("Name", "Shed 66");
    x.open("BrowseInformation").str("Category", "eLocomotoves").close();
    x.blueprintRef("ReskinAssetBpId", "demorail", "CLASS66PACK", "RailVehicles\\Diesel\\Class66\\Engine\\Class66_EWS.xml");
    const fs::path reskin = scratch("Shed66.bin");
    test::writeDocument(reskin, x.finish());
    const StockTest t = IsItALoco(*m_ctx, reskin);
    ASSERT_TRUE(t.read) << t.error;
    EXPECT_TRUE(t.is);
    EXPECT_TRUE(t.reskin);
    EXPECT_EQ(t.engineType, "Diesel") << "read from the base asset, found whatever its letter case";
    EXPECT_EQ(t.name, "Shed 66") << "no display name: the <Name value";

    demo::XmlBuilder bare("cBlueprintLoader", 1);
    bare.open("Blueprint").open("cWagonBlueprint", 2).close().close();
    test::writeDocument(scratch("Bare.bin"), bare.finish());
    EXPECT_EQ(IsItAWagon(*m_ctx, scratch("Bare.bin")).name, "Unnamed");

    // A name in Windows-1252 entities comes out repaired.
    EXPECT_EQ(stockName("<English>Caf\xC3\xA9 car</English>", "English"), "Caf\xE9 car");
}

TEST_F(StockClassTests, ABlueprintThatDoesNotDecodeIsReportedNotClassed) {
    test::writeBytes(scratch("Broken.bin"), "SERZ\0\0\1\0 and then nothing useful");
    test::writeBytes(scratch("Empty.bin"), "");
    for (const char* name : {"Broken.bin", "Empty.bin", "Missing.bin"}) {
        const StockTest t = IsItATender(*m_ctx, scratch(name));
        EXPECT_FALSE(t.read) << name;
        EXPECT_FALSE(t.is) << name;
        EXPECT_NE(t.error.find(name), std::string::npos) << t.error;
        EXPECT_FALSE(GetStockDetails(*m_ctx, scratch(name)).read) << name;
    }
}

TEST_F(StockClassTests, DetailsGiveMassNumberAndFuelOrder) {
    const auto d = GetStockDetails(*m_ctx, asset("DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin"),
                                   [] { return 0.5; });
    ASSERT_TRUE(d.read) << d.error;
    EXPECT_EQ(d.mass, "126");
    EXPECT_EQ(d.number.rfind("66 ", 0), 0u) << "a number from the vehicle's own list: " << d.number;
    EXPECT_EQ(d.fuelKind, 0);

    // Coal then water, water then coal; a numbering list that is not there gives no number.
    test::HandVehicle coalFirst, waterFirst;
    coalFirst.name = "T1";
    coalFirst.numbers = "Hand\\Made\\Nowhere.csv";
    coalFirst.cargo = "CoalFuel WaterFuel";
    waterFirst.name = "T2";
    waterFirst.cargo = "WaterFuel then CoalFuel";
    test::writeDocument(scratch("T1.bin"), test::vehicleXml(coalFirst));
    test::writeDocument(scratch("T2.bin"), test::vehicleXml(waterFirst));
    const auto one = GetStockDetails(*m_ctx, scratch("T1.bin"), [] { return 0.0; });
    const auto two = GetStockDetails(*m_ctx, scratch("T2.bin"), [] { return 0.0; });
    EXPECT_EQ(one.fuelKind, 1);
    EXPECT_EQ(two.fuelKind, 2);
    EXPECT_EQ(one.mass, "53.5");
    EXPECT_EQ(one.number, "");
}

TEST(StockNumbers, TheRoughPickStaysInsideTheListAndCopesWithShortOnes) {
    std::string list = "<cCSVContainer>\n\t<CsvItem>\n";
    for (int i = 0; i < 30; ++i)
        list += "\t\t<cCSVItem d:id=\"" + std::to_string(1000 + i) + "\">\n\t\t\t<X>0</X>\n\t\t\t<Name>N" +
                std::to_string(i) + "</Name>\n\t\t</cCSVItem>\n";
    list += "\t</CsvItem>\n</cCSVContainer>\n";
    for (double f : {0.0, 0.25, 0.5, 0.999}) {
        const std::string n = scenarios::pickNumber(list, f);
        ASSERT_FALSE(n.empty()) << f;
        const int index = std::stoi(n.substr(1));
        EXPECT_LT(index, 21) << "never past the first twenty names (" << f << ")";
    }
    // One name: k is 1 whatever the fraction, and the read from d finds it.
    const std::string one = "<cCSVContainer><CsvItem><cCSVItem><Name>Solo</Name></cCSVItem></CsvItem></cCSVContainer>";
    EXPECT_EQ(scenarios::pickNumber(one, 0.0), "Solo");
    EXPECT_EQ(scenarios::pickNumber(one, 0.9), "Solo");
    EXPECT_EQ(scenarios::pickNumber("<cCSVContainer></cCSVContainer>", 0.5), "");
}
