// The rolling-stock edits on the demo install's stock: what each one puts where, that every
// result still encodes and decodes, and what a row that does not fit is told.

#include "../common/demofixture.h"
#include "blueprinttext.h"
#include "serz/serz.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/rsedits.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

using namespace velmora;
using namespace velmora::assets;
using velmora::test::count;
using velmora::test::roundTrips;
using velmora::test::valueOf;
namespace fs = std::filesystem;

namespace {

const std::string kClass66 = "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin";
const std::string kHta = "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin";
const std::string kMk1 = "Heritage/SteamDays/RailVehicles/Passenger/Mk1/Mk1_BSK.bin";
const std::string kBlack5 = "Heritage/SteamDays/RailVehicles/Steam/Black5/Engine/Black5.bin";
const std::string kBlack5Bogie =
    "Heritage/SteamDays/RailVehicles/Steam/Black5/Engine/Bogies/Black5_Bogie.bin";

// The sixteen matrix values of the child of this name.
std::vector<std::string> matrixOf(const std::string& xml, const std::string& childName) {
    const std::size_t child = xml.find(">" + childName + "<");
    std::vector<std::string> values;
    std::size_t pos = xml.find("<Element>", child);
    for (int i = 0; i < 16 && pos != std::string::npos; ++i) {
        pos = xml.find("<e ", pos + 1);
        const std::size_t gt = xml.find('>', pos);
        values.push_back(xml.substr(gt + 1, xml.find('<', gt) - gt - 1));
    }
    return values;
}

std::string templateFile(const std::string& name) {
    return ReadTextFile(fs::path(VELMORA_SOURCE_DIR) / "data" / "Templates" / name);
}

class RsEdits : public test::DemoInstallTest<RsEdits> {
public:
    static constexpr const char* kName = "rsedits";
    static void SetUpTestSuite() {
        DemoInstallTest::SetUpTestSuite();
        fs::copy(fs::path(VELMORA_SOURCE_DIR) / "data", s_dir / "data", fs::copy_options::recursive);
    }

protected:
    RowInput input(const std::string& relative) {
        RowInput in;
        m_rows.emplace_back();
        EXPECT_TRUE(rowForBlueprint(relative, s_dir / "rw/Assets", m_rows.back())) << relative;
        in.row = &m_rows.back();
        in.file = s_dir / "rw/Assets" / relative;
        in.assets = s_dir / "rw/Assets";
        EXPECT_TRUE(binToXmlText(in.file, in.xml)) << relative;
        return in;
    }
    RsSettings settings(RsCommand command) {
        RsSettings s;
        s.command = command;
        return s;
    }
    // Loads the settings and edits the row, expecting both to work.
    RowEdit run(RsSettings s, const RowInput& in) {
        const std::string error = loadRsSettings(*m_ctx, s);
        EXPECT_EQ(error, "");
        return editRow(s, in);
    }
    LampTable lamps() {
        LampTable table;
        std::string error;
        EXPECT_TRUE(readLampTable(rsTemplateFile(*m_ctx, "UKLights.txt"), table, error)) << error;
        return table;
    }
    std::deque<AssetRow> m_rows;
};

} // namespace

TEST(RsCommandTable, WordsFindTheirCommandsInMenuOrder) {
    const auto& all = rsCommands();
    ASSERT_EQ(all.size(), 11u);
    for (const auto& c : all)
        EXPECT_EQ(rsCommand(c.word), &c) << c.word;
    EXPECT_EQ(rsCommand("Dead"), nullptr);
    EXPECT_EQ(rsCommand(""), nullptr);
    EXPECT_EQ(all.front().command, RsCommand::HeadLights);
    EXPECT_EQ(all.back().command, RsCommand::WagonScript);
}

TEST(LampTableFile, BadLinesAreNamedWithTheirNumber) {
    const fs::path dir = fs::temp_directory_path() / ("velmora-lamps-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    const std::string lamp = "Kuju\\RailSimulator\\Scenery\\Animated\\oillamp_white_drb.xml";
    auto read = [&](const std::string& name, const std::string& text, LampTable& table) {
        std::ofstream(dir / name, std::ios::binary) << text;
        std::string error;
        const bool ok = readLampTable(dir / name, table, error);
        return ok ? std::string() : error;
    };
    LampTable table;
    // Comments and blank lines are skipped but counted; a name keeps its accents and quotes.
    EXPECT_EQ(read("good.txt",
                   "// header\n\nLampe Gr\xc3\xbcn \"S\xc3\xbc"
                   "d\", " +
                       lamp + ", 0.8, 1.2, 10.6, 3.6, 10.4, 0.0000, x, 0\r\nTail, " + lamp +
                       ",-0.7,1.1,-7.4,0,0,0,0,2\n",
                   table),
              "");
    ASSERT_EQ(table.heads.size(), 1u);
    ASSERT_EQ(table.tails.size(), 1u);
    EXPECT_EQ(table.heads[0].name, "Lampe Gr\xc3\xbcn \"S\xc3\xbc"
                                   "d\"");
    EXPECT_EQ(table.heads[0].line, 3u);
    EXPECT_EQ(table.tails[0].columns[2], "-0.7");
    EXPECT_EQ(table.tails[0].columns[9], "2");

    struct Bad {
        std::string text, says;
    } bad[] = {
        {"// c\nShort, " + lamp + ", 1, 2, 3\n", "line 2"},
        {"A, " + lamp + ", 1, 2, x3, 4, 5, 0.0000, 0, 0\n", "'x3' in column 4"},
        {"A, Kuju\\RailSimulator\\Lamp.bin, 1, 2, 3, 4, 5, 0.0000, 0, 0\n", "does not end in xml"},
        // The tenth field takes the rest of the line, commas and all.
        {"A, " + lamp + ", 1, 2, 3, 4, 5, 0.0000, 0, 2, 3\n", "'2, 3' as the number of tail lamps"},
    };
    for (const auto& b : bad) {
        const std::string error = read("bad.txt", b.text, table);
        EXPECT_NE(error.find("bad.txt"), std::string::npos) << error;
        EXPECT_NE(error.find(b.says), std::string::npos) << error;
    }
    EXPECT_NE(read("empty.txt", "", table).find("empty.txt"), std::string::npos);
    fs::remove_all(dir);
}

TEST_F(RsEdits, ShippedLampTableNamesInstalledLamps) {
    const LampTable table = lamps();
    ASSERT_GE(table.heads.size(), 2u);
    ASSERT_GE(table.tails.size(), 2u);
    for (const auto* list : {&table.heads, &table.tails})
        for (const auto& t : *list) {
            RsSettings s = settings(list == &table.heads ? RsCommand::HeadLights : RsCommand::TailLights);
            s.lamp = t;
            EXPECT_EQ(loadRsSettings(*m_ctx, s), "") << t.name;
        }
}

TEST_F(RsEdits, HeadLampsGoOnTopOfTheChildrenWithTheVariantsNames) {
    const LampTable table = lamps();
    RsSettings s = settings(RsCommand::HeadLights);
    s.lamp = table.heads[0]; // column 7 is 0.0000: the middle lamp stands at column 4
    s.trainType = 0;         // Express Passenger: one side and the other side
    RowInput in = input(kClass66);
    in.newDisplayName = "Class 66 Gr\xc3\xbcn's";
    const RowEdit e = run(s, in);
    EXPECT_TRUE(e.changed);
    EXPECT_EQ(e.passedOver, "");
    EXPECT_EQ(count(e.xml, "<cEntityContainerBlueprint-sChild>"), 3u); // the engine sound stays
    const auto side = matrixOf(e.xml, "HeadLamp2"), other = matrixOf(e.xml, "HeadLamp4");
    ASSERT_EQ(side.size(), 16u);
    EXPECT_EQ(side[0], "1.0000");
    EXPECT_EQ(side[12], s.lamp.columns[2]);
    EXPECT_EQ(other[12], "-" + s.lamp.columns[2]);
    EXPECT_EQ(other[14], s.lamp.columns[4]);
    EXPECT_EQ(valueOf(e.xml, "Provider", e.xml.find(">HeadLamp2<")), "Kuju");
    EXPECT_EQ(valueOf(e.xml, "BlueprintID", e.xml.find(">HeadLamp2<") + 40),
              "Scenery\\Animated\\oillamp_white_drb.xml");
    for (const char* tag : {"Name", "English", "French", "Italian", "German", "Spanish"})
        EXPECT_EQ(utf8FromDocument(shownName(valueOf(e.xml, tag))), in.newDisplayName) << tag; // escaped in the XML
    EXPECT_TRUE(roundTrips(e.xml));

    // Thru Freight: the top lamp, and the middle one at column 7 when the template gives one.
    s.lamp = table.heads[2];
    ASSERT_NE(s.lamp.columns[7], "0.0000");
    s.trainType = 4;
    const RowEdit f = run(s, input(kClass66));
    EXPECT_EQ(matrixOf(f.xml, "HeadLamp1")[13], s.lamp.columns[5]);
    EXPECT_EQ(matrixOf(f.xml, "HeadLamp1")[14], s.lamp.columns[6]);
    EXPECT_EQ(matrixOf(f.xml, "HeadLamp3")[12], "0.0000");
    EXPECT_EQ(matrixOf(f.xml, "HeadLamp3")[14], s.lamp.columns[7]);

    // Lamps on a vehicle that has lamps already: more lamps, no test for doubles.
    in.xml = e.xml;
    s.lamp = table.heads[0];
    s.trainType = 0;
    EXPECT_EQ(count(run(s, in).xml, ">HeadLamp2<"), 2u);
}

TEST_F(RsEdits, TailLampsOpenAnEmptyChildrenListAndMirrorTheSecond) {
    const LampTable table = lamps();
    RsSettings s = settings(RsCommand::TailLights);
    for (const auto& t : table.tails)
        if (t.columns[9] == "2")
            s.lamp = t;
    ASSERT_EQ(s.lamp.columns[2].front(), '-');
    const RowInput in = input(kHta);
    ASSERT_NE(in.xml.find("<Children/>"), std::string::npos);
    const RowEdit e = run(s, in);
    EXPECT_EQ(e.xml.find("<Children/>"), std::string::npos);
    EXPECT_EQ(count(e.xml, "<Children>"), 1u);
    EXPECT_EQ(count(e.xml, "</Children>"), 1u);
    ASSERT_EQ(count(e.xml, ">TailLamp<"), 2u);
    const std::size_t second = e.xml.find(">TailLamp<", e.xml.find(">TailLamp<") + 1);
    std::vector<std::string> xs;
    for (std::size_t at : {e.xml.find(">TailLamp<"), second})
        xs.push_back(matrixOf(e.xml.substr(at - 1), "TailLamp")[12]);
    EXPECT_EQ(std::count(xs.begin(), xs.end(), s.lamp.columns[2]), 1);
    EXPECT_EQ(std::count(xs.begin(), xs.end(), s.lamp.columns[2].substr(1)), 1);
    EXPECT_EQ(matrixOf(e.xml, "TailLamp")[0], s.lamp.columns[3]); // the scale
    EXPECT_EQ(count(e.xml, "\n"), count(e.xml, "\r\n"));          // the document's line ends throughout
    EXPECT_TRUE(roundTrips(e.xml));

    s.lamp.columns[9] = "1";
    EXPECT_EQ(count(run(s, in).xml, ">TailLamp<"), 1u);
}

TEST_F(RsEdits, SettingsNameWhatIsMissing) {
    RsSettings s = settings(RsCommand::TailLights);
    s.lamp = lamps().tails[0];
    s.lamp.blueprint = "Kuju\\RailSimulator\\Scenery\\Animated\\NoSuchLamp.xml";
    std::string error = loadRsSettings(*m_ctx, s);
    EXPECT_EQ(error.rfind("You do not appear to have the Light files installed:-\n", 0), 0u) << error;
    EXPECT_NE(error.find("NoSuchLamp.bin"), std::string::npos) << error;

    // The lamp files that come with the program are put in place first, and then found.
    const fs::path shipped = s_dir / "home/OrvelleLights/Assets/Kuju/RailSimulator/Scenery/Animated";
    fs::create_directories(shipped);
    fs::copy_file(s_dir / "rw/Assets/Kuju/RailSimulator/Scenery/Animated/Zugschlusslaterne.bin", shipped / "NoSuchLamp.bin");
    EXPECT_EQ(loadRsSettings(*m_ctx, s), "");
    const fs::path installed = s_dir / "rw/Assets/Kuju/RailSimulator/Scenery/Animated/NoSuchLamp.bin";
    EXPECT_TRUE(fs::exists(installed));
    EXPECT_EQ(m_ctx->journal().entries().back().command, "Install the lamp files");
    fs::remove(installed);
    fs::remove_all(s_dir / "home/OrvelleLights");

    // A missing template is named; a user's own copy wins over the shipped one.
    AppContext bare(s_dir / "home", s_dir / "nodata", m_ui);
    bare.setRailWorksOverride(s_dir / "rw");
    RsSettings mass = settings(RsCommand::Mass);
    mass.mass = mass.capacity = "1";
    error = loadRsSettings(bare, mass);
    EXPECT_NE(error.find("CargoDef.txt"), std::string::npos) << error;
    fs::create_directories(s_dir / "home/Templates");
    std::ofstream(s_dir / "home/Templates/CargoDef.txt") << "<CargoDef>mine</CargoDef>";
    EXPECT_EQ(loadRsSettings(bare, mass), "");
    EXPECT_EQ(mass.templates["CargoDef.txt"], "<CargoDef>mine</CargoDef>");
    EXPECT_EQ(rsTemplateFile(bare, "CargoDef.txt"), s_dir / "home/Templates/CargoDef.txt");
    EXPECT_EQ(rsTemplateFile(*m_ctx, "UKLights.txt"), s_dir / "data/Templates/UKLights.txt");
    fs::remove_all(s_dir / "home/Templates");

    for (const char* typed : {"12,5", "", "heavy", "1e999", "0x10", "inf", "12.5 t"}) {
        mass.mass = typed;
        EXPECT_NE(loadRsSettings(*m_ctx, mass), "") << typed;
    }
    RsSettings prov = settings(RsCommand::Provider);
    EXPECT_NE(loadRsSettings(*m_ctx, prov), "");
}

TEST_F(RsEdits, DeadTakesTheChildrenOff) {
    RowInput in = input(kClass66);
    in.newDisplayName = "Class 66_Dead";
    const RowEdit e = run(settings(RsCommand::Dead), in);
    EXPECT_EQ(e.xml.find("Children"), std::string::npos);
    EXPECT_EQ(e.xml.find("EngineSound"), std::string::npos);
    EXPECT_NE(e.xml.find("<TrackTerrainInEditor "
                         "d:type=\"bool\">0</TrackTerrainInEditor>\r\n\t\t\t\t</cEntityContainerBlueprint>"),
              std::string::npos);
    EXPECT_EQ(valueOf(e.xml, "English"), "Class 66_Dead");
    EXPECT_TRUE(roundTrips(e.xml));
    // A wagon that carries nothing has nothing to take off.
    const RowEdit wagon = run(settings(RsCommand::Dead), input(kHta));
    EXPECT_FALSE(wagon.changed);
    EXPECT_NE(wagon.passedOver, "");
}

TEST_F(RsEdits, ConductorMirrorsTheDriver) {
    RowInput in = input(kClass66);
    EXPECT_NE(run(settings(RsCommand::Conductor), in).passedOver, "");
    // A driver standing left of the cab's middle, on a figure node of the cab.
    const std::size_t start = in.xml.find("<cEntityContainerBlueprint-sChild>");
    const std::size_t end = in.xml.find("</cEntityContainerBlueprint-sChild>") + 35;
    std::string driver = in.xml.substr(start, end - start);
    driver.replace(driver.find(">EngineSound<"), 13, ">Driver<");
    const std::string node = "<ParentNodeName d:type=\"cDeltaString\">";
    driver.insert(driver.find(node) + node.size(), "WP_04_02");
    in.xml.insert(end, "\r\n" + driver);
    // -0.72 as its x translation.
    std::size_t at = in.xml.find("<Element>", in.xml.find(">Driver<"));
    for (int i = 0; i < 13; ++i)
        at = in.xml.find("<e ", at + 1);
    const std::size_t gt = in.xml.find('>', at);
    in.xml.replace(gt + 1, in.xml.find('<', gt) - gt - 1, "-0.72");

    const RowEdit e = run(settings(RsCommand::Conductor), in);
    EXPECT_TRUE(e.changed);
    EXPECT_EQ(count(e.xml, "<cEntityContainerBlueprint-sChild>"), 3u);
    EXPECT_EQ(matrixOf(e.xml, "Driver")[12], "-0.72");
    EXPECT_EQ(matrixOf(e.xml, "Conductor")[12], "0.72");
    EXPECT_EQ(count(e.xml, "WP_04_02"), 1u);
    EXPECT_EQ(count(e.xml, "WP_04_01"), 1u);
    EXPECT_LT(e.xml.find(">Driver<"), e.xml.find(">Conductor<"));
    EXPECT_TRUE(roundTrips(e.xml));
}

TEST_F(RsEdits, PassengersByCoachKindWithTheEmptyCoachKept) {
    const RowInput mk1 = input(kMk1);
    const RowEdit e = run(settings(RsCommand::Passengers), mk1);
    EXPECT_TRUE(e.changed);
    EXPECT_EQ(count(e.xml, ">Passenger0"), count(templateFile("AddPassengers.txt"), ">Passenger0"));
    EXPECT_EQ(e.xml.find(">Guard<"), std::string::npos);
    EXPECT_TRUE(roundTrips(e.xml));
    ASSERT_EQ(e.documents.size(), 1u);
    EXPECT_EQ(e.documents[0].target, mk1.file.parent_path() / "Mk1_BSK_MT.bin");
    EXPECT_EQ(e.documents[0].xml.find(">Passenger0"), std::string::npos);
    EXPECT_EQ(valueOf(e.documents[0].xml, "Name"), "Heritage Mk1 BSK_MT");
    EXPECT_EQ(valueOf(e.documents[0].xml, "German"), "Heritage Mk1 BSK_MT");
    EXPECT_TRUE(roundTrips(e.documents[0].xml));

    RowInput brake = mk1;
    brake.file = mk1.file.parent_path() / "Mk1_bck.bin";
    EXPECT_NE(run(settings(RsCommand::Passengers), brake).xml.find(">Guard<"), std::string::npos);
    const RowEdit open = run(settings(RsCommand::Passengers), input(kHta));
    EXPECT_EQ(count(open.xml, ">Passenger0"), count(templateFile("AddPassengers2.txt"), ">Passenger0"));
    EXPECT_TRUE(roundTrips(open.xml));
}

TEST_F(RsEdits, MassIsWrittenAsTyped) {
    RsSettings s = settings(RsCommand::Mass);
    s.mass = " 12.5 "; // the blanks of the box are dropped
    s.capacity = "30.25";
    RowInput in = input(kHta);
    RowEdit e = run(s, in);
    EXPECT_NE(e.xml.find(">12.5</Mass>"), std::string::npos);
    EXPECT_NE(e.xml.find(">30.25</Capacity>"), std::string::npos);
    ASSERT_TRUE(roundTrips(e.xml));
    std::string bin, back;
    ASSERT_TRUE(xmlTextToBin(e.xml, bin));
    ASSERT_TRUE(serz::decode(bin, back));
    EXPECT_NE(back.find(">12.5</Mass>"), std::string::npos);

    // An empty cargo definition is filled from the template.
    const std::size_t from = in.xml.find("<CargoDef>"), to = in.xml.find("</CargoDef>") + 11;
    in.xml.replace(from, to - from, "<CargoDef/>");
    e = run(s, in);
    EXPECT_EQ(e.xml.find("<CargoDef/>"), std::string::npos);
    EXPECT_NE(e.xml.find("<cBulkCargoDef>"), std::string::npos);
    EXPECT_NE(e.xml.find(">30.25</Capacity>"), std::string::npos);
    EXPECT_TRUE(roundTrips(e.xml));
}

TEST_F(RsEdits, WheelSlipOnlyOnBogies) {
    const RowEdit e = run(settings(RsCommand::WheelSlip), input(kBlack5Bogie));
    EXPECT_TRUE(e.changed);
    EXPECT_EQ(count(e.xml, "<Powered"), 2u);
    EXPECT_EQ(count(e.xml, ">eFalse</Powered>"), 2u);
    EXPECT_LT(e.xml.find("<Powered", e.xml.find(">Driving2<")),
              e.xml.find("<Axle>", e.xml.find(">Driving2<")));
    EXPECT_TRUE(roundTrips(e.xml));

    RowInput again = input(kBlack5Bogie);
    again.xml = e.xml;
    EXPECT_FALSE(run(settings(RsCommand::WheelSlip), again).changed);

    const RowEdit engine = run(settings(RsCommand::WheelSlip), input(kBlack5));
    EXPECT_FALSE(engine.changed);
    EXPECT_EQ(engine.passedOver, m_ctx->lang.text(464) + " " + m_ctx->lang.text(465));
}

TEST_F(RsEdits, AirBrakesReplaceTheNotchedLever) {
    RowInput in = input(kClass66);
    EXPECT_EQ(run(settings(RsCommand::UsAirBrakes), in).passedOver,
              "This loco does not appear to have a Notched Lever control\nno changes can be made.");
    EXPECT_NE(run(settings(RsCommand::UsAirBrakes), input(kHta)).passedOver, "");
    const std::string lever =
        "<InterfaceElements>\n<cControlContainerBlueprint-cInteriorIrregularNotchedLever>\n"
        "<AnimationName d:type=\"cDeltaString\">BrakeLever</AnimationName>\n"
        "<Old d:type=\"cDeltaString\">x</Old>\n"
        "</cControlContainerBlueprint-cInteriorIrregularNotchedLever>\n</InterfaceElements>\n";
    const std::size_t brake = in.xml.find(">TrainBrakeControl<");
    in.xml.insert(in.xml.find("</cControlContainerBlueprint-cControlValue>", brake), lever);
    const RowEdit e = run(settings(RsCommand::UsAirBrakes), in);
    EXPECT_TRUE(e.changed);
    EXPECT_EQ(e.xml.find("<Old "), std::string::npos);
    EXPECT_EQ(valueOf(e.xml, "AnimationName", brake), "BrakeLever");
    EXPECT_EQ(count(e.xml, "<InterfaceElements>"), 1u);
    EXPECT_GT(count(e.xml, "-sNotch>"), 2u);
    EXPECT_TRUE(roundTrips(e.xml));
}

TEST_F(RsEdits, ProviderChangesWholeValuesOnly) {
    RsSettings s = settings(RsCommand::Provider);
    s.oldProvider = "demorail";
    s.newProvider = "Velmora R\xc3\xa4il";
    const RowInput in = input(kHta);
    const RowEdit e = run(s, in);
    EXPECT_EQ(count(e.xml, ">DemoRail<"), 0u);
    EXPECT_EQ(count(e.xml, ">Velmora R\xc3\xa4il<"), count(in.xml, ">DemoRail<"));
    // A path that begins with the provider is not a whole value.
    EXPECT_EQ(count(e.xml, "DemoRail\\"), count(in.xml, "DemoRail\\"));
    EXPECT_TRUE(roundTrips(e.xml));
    s.oldProvider = "Nobody";
    EXPECT_FALSE(run(s, in).changed);
}

TEST_F(RsEdits, LocoScriptDrivesTheExhausts) {
    RowInput in = input(kClass66);
    RowEdit e = run(settings(RsCommand::LocoScript), in);
    EXPECT_EQ(e.passedOver, "");
    EXPECT_TRUE(e.changed);
    const std::size_t values = e.xml.find("<ControlValues>");
    EXPECT_LT(values, e.xml.find(">RPM<"));
    EXPECT_EQ(valueOf(e.xml, "ApplyToConsist", e.xml.find(">RPM<")), "eFalse");
    EXPECT_EQ(valueOf(e.xml, "ApplyToConsist", e.xml.find(">RPMDelta<")), "eTrue");
    EXPECT_TRUE(roundTrips(e.xml));
    // No exhaust: no script. The simulation is stored again in place, as it was.
    EXPECT_TRUE(e.files.empty());
    ASSERT_EQ(e.documents.size(), 1u);
    EXPECT_EQ(e.documents[0].target.filename(), "Class66_EWS_EngineSim.bin");
    EXPECT_NE(e.documents[0].xml.find("cDieselElectricEngineSimObjectBlueprint"), std::string::npos);

    // Exhausts as children; the script is the blueprint's own, as .lua.
    const std::size_t start = in.xml.find("<cEntityContainerBlueprint-sChild>");
    const std::size_t end = in.xml.find("</cEntityContainerBlueprint-sChild>") + 35;
    std::string exhaust = in.xml.substr(start, end - start);
    exhaust.replace(exhaust.find(">EngineSound<"), 13, ">DieselExhaust<");
    std::string one = in.xml, two = in.xml, three = in.xml;
    one.insert(end, "\n" + exhaust);
    std::string second = exhaust;
    second.replace(second.find(">DieselExhaust<"), 15, ">Exhaust_Rear<");
    two.insert(end, "\n" + exhaust + "\n" + second);
    three.insert(end, "\n" + exhaust + "\n" + second + "\n" + exhaust);
    in.xml = one;
    e = run(settings(RsCommand::LocoScript), in);
    ASSERT_EQ(e.files.size(), 1u);
    EXPECT_EQ(e.files[0].target.filename(), "Class66_EWS.lua");
    EXPECT_NE(e.files[0].bytes.find("\"DieselExhaust:SetEmitterActive\""), std::string::npos);
    EXPECT_EQ(e.files[0].bytes.find("aaaaaa"), std::string::npos);
    in.xml = two;
    e = run(settings(RsCommand::LocoScript), in);
    ASSERT_EQ(e.files.size(), 1u);
    EXPECT_NE(e.files[0].bytes.find("\"Exhaust_Rear:SetEmitterActive\""), std::string::npos);
    EXPECT_EQ(e.files[0].bytes.find("bbbbbb"), std::string::npos);
    in.xml = three;
    e = run(settings(RsCommand::LocoScript), in);
    EXPECT_EQ(e.passedOver, "Unable to modify file as Exhaust names ambiguous.");
    EXPECT_FALSE(e.changed);
}

TEST_F(RsEdits, LocoScriptGivesTheSimulationASoundScript) {
    // A simulation with a script of its own, written beside the demo's.
    const fs::path simFolder =
        s_dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Simulation";
    std::string sim;
    ASSERT_TRUE(binToXmlText(simFolder / "Class66_EWS_EngineSim.bin", sim));
    const std::string script =
        "DemoRail\\Class66Pack\\RailVehicles\\Diesel\\Class66\\Engine\\Simulation\\Sim Sound";
    sim.insert(sim.rfind("</cEngineSimBlueprint>"),
               "<ScriptComponent>\n<cScriptComponentBlueprint>\n<Name d:type=\"cDeltaString\">" + script +
                   "</Name>\n</cScriptComponentBlueprint>\n</ScriptComponent>\n");
    std::string bin;
    ASSERT_TRUE(xmlTextToBin(sim, bin));
    std::ofstream(simFolder / "Scripted_Sim.bin", std::ios::binary) << bin;

    RowInput in = input(kClass66);
    in.xml.replace(in.xml.find("Class66_EWS_EngineSim.xml"), 25, "Scripted_Sim.xml");
    RowEdit e = run(settings(RsCommand::LocoScript), in);
    ASSERT_EQ(e.files.size(), 1u);
    EXPECT_EQ(e.files[0].target, simFolder / "Sim Sound.lua");
    EXPECT_EQ(e.files[0].bytes, templateFile("DefaultAudio.lua"));
    // One already there is kept as it is (the row loop backs it up).
    std::ofstream(simFolder / "Sim Sound.lua") << "-- mine";
    e = run(settings(RsCommand::LocoScript), in);
    ASSERT_EQ(e.files.size(), 1u);
    EXPECT_EQ(e.files[0].bytes, "-- mine");

    // An unreadable simulation passes the row over, naming the file.
    in.xml.replace(in.xml.find("Scripted_Sim.xml"), 16, "Absent_Sim.xml");
    e = run(settings(RsCommand::LocoScript), in);
    EXPECT_FALSE(e.changed);
    EXPECT_NE(e.passedOver.find("Absent_Sim.bin"), std::string::npos) << e.passedOver;
}

TEST_F(RsEdits, WagonScriptSetOrAdded) {
    RowInput in = input(kHta);
    RowEdit e = run(settings(RsCommand::WagonScript), in);
    EXPECT_EQ(valueOf(e.xml, "Name", e.xml.find("<ScriptComponent>")), "1_WagonScript/wag_script_drb");
    EXPECT_TRUE(roundTrips(e.xml));
    const std::size_t from = in.xml.find("<ScriptComponent>"), to = in.xml.find("</ScriptComponent>") + 18;
    in.xml.erase(from, to - from);
    e = run(settings(RsCommand::WagonScript), in);
    EXPECT_TRUE(e.changed);
    EXPECT_LT(e.xml.find("</ContainerComponent>"), e.xml.find("<ScriptComponent>"));
    EXPECT_LT(e.xml.find("</ScriptComponent>"), e.xml.find("</cWagonBlueprint>"));
    EXPECT_TRUE(roundTrips(e.xml));
    RowInput engine = input(kClass66);
    engine.xml.erase(engine.xml.find("<ScriptComponent>"),
                     engine.xml.find("</ScriptComponent>") + 18 - engine.xml.find("<ScriptComponent>"));
    EXPECT_NE(run(settings(RsCommand::WagonScript), engine).passedOver, "");
}

TEST_F(RsEdits, RowsEditedOnSeveralThreadsAtOnceGiveWhatOneThreadGives) {
    RsSettings s = settings(RsCommand::HeadLights);
    s.lamp = lamps().heads[0];
    ASSERT_EQ(loadRsSettings(*m_ctx, s), "");
    const std::vector<RowInput> rows{input(kClass66), input(kHta), input(kMk1), input(kBlack5)};
    std::vector<std::string> alone;
    for (const auto& r : rows)
        alone.push_back(editRow(s, r).xml);
    std::vector<std::string> together(rows.size() * 8);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < together.size(); ++t)
        threads.emplace_back([&, t] { together[t] = editRow(s, rows[t % rows.size()]).xml; });
    for (auto& t : threads)
        t.join();
    for (std::size_t t = 0; t < together.size(); ++t)
        EXPECT_EQ(together[t], alone[t % rows.size()]) << t;
}
