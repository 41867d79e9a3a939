// The physics grids on the demo install: every engine's values and its simulation's, a change
// that reaches one element alone, names that are ambiguous or absent, values of the wrong kind,
// a missing simulation, hostile names, and a failed write that leaves the old file whole.

#include "../common/demofixture.h"
#include "../core/faultyfiles.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/physics/dcsvtable.h"
#include "velmora/physics/physicsdoc.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace velmora;
using namespace velmora::physics;
namespace fs = std::filesystem;

namespace {

struct PhysicsGrids : test::DemoInstallTest<PhysicsGrids> {
    static constexpr const char* kName = "physicsgrids";
    static fs::path assets() { return s_dir / "rw/Assets"; }
    static fs::path class66() { return assets() / "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin"; }
    static fs::path black5() { return assets() / "Heritage/SteamDays/RailVehicles/Steam/Black5/Engine/Black5.bin"; }

    PhysicsSet open(const fs::path& file) {
        PhysicsSet set;
        EXPECT_EQ(openPhysics(file, m_ctx->railWorks(), m_ctx->resolver, set), "");
        return set;
    }
    static std::string xmlOf(const fs::path& file) {
        std::string xml;
        EXPECT_TRUE(binToXmlText(file, xml)) << file;
        return xml;
    }
    static std::vector<std::string> lines(const std::string& text) {
        std::vector<std::string> out;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);)
            out.push_back(line);
        return out;
    }
    static std::size_t rowOf(const PhysicsDocument& doc, const std::string& name) {
        const auto found = findRows(doc.rows, name);
        EXPECT_EQ(found.size(), 1u) << name;
        return found.empty() ? doc.rows.size() : found.front();
    }
    static std::string valueOf(const PhysicsDocument& doc, const std::string& name) {
        const std::size_t i = rowOf(doc, name);
        return i < doc.rows.size() ? doc.rows[i].value : "(none)";
    }
};

TEST_F(PhysicsGrids, EveryDemoEngineShowsItsValuesAndItsSimulations) {
    int engines = 0;
    for (const auto& e : fs::recursive_directory_iterator(assets())) {
        if (e.path().extension() != ".bin")
            continue;
        std::string xml;
        if (!binToXmlText(e.path(), xml) || xml.find("<cEngineBlueprint>") == std::string::npos)
            continue;
        ++engines;
        SCOPED_TRACE(e.path().string());
        const PhysicsSet set = open(e.path());
        EXPECT_EQ(set.simProblem, "");
        EXPECT_FALSE(valueOf(set.vehicle, "Mass").empty());
        EXPECT_NE(valueOf(set.vehicle, "EngineType"), "");
        const bool steam = valueOf(set.vehicle, "EngineType") == "Steam";
        EXPECT_EQ(set.kind, steam ? SimKind::Steam : SimKind::DieselElectric);
        EXPECT_FALSE(valueOf(set.simulation, "MaxPower").empty());
        EXPECT_FALSE(valueOf(set.simulation, "TrainBrakeAssembly/MaxSystemPressure").empty());
        if (steam)
            EXPECT_EQ(valueOf(set.simulation, "Boiler/MaxPressure"), "225");
        else
            EXPECT_EQ(valueOf(set.simulation, "DynamicBrakesSystem/MaxForce"), "200");
        // Every curve the simulation names is installed and reads as a table.
        int curves = 0;
        for (const PhysicsRow& r : set.simulation.rows) {
            if (r.kind != RowKind::Table)
                continue;
            ++curves;
            DcsvTable t;
            EXPECT_EQ(readTable(tableFile(r.value, m_ctx->railWorks(), m_ctx->resolver), t), "") << r.value;
            EXPECT_GE(t.points.size(), 5u);
        }
        EXPECT_EQ(curves, steam ? 4 : 3);
    }
    EXPECT_GE(engines, 3);
}

TEST_F(PhysicsGrids, RowsComeInListOrderWithSectionsAndRepeats) {
    const PhysicsSet set = open(class66());
    // The engine's MaxForce, the handbrake's and the dynamic brake's are three rows.
    EXPECT_EQ(findRows(set.simulation.rows, "MaxForce").size(), 3u);
    EXPECT_EQ(valueOf(set.simulation, "Handbrake/MaxForce"), "20");
    EXPECT_EQ(valueOf(set.simulation, "dynamicbrakessystem/maxforce"), "200");
    EXPECT_EQ(valueOf(set.simulation, "/MaxForce"), "409");
    // Each bogie gives its own rows; a reference shows provider, product and id and has no key.
    EXPECT_EQ(findRows(set.vehicle.rows, "BogeyPivotX").size(), 2u);
    const PhysicsRow& sim = set.vehicle.rows[rowOf(set.vehicle, "EngineSimulationContainer")];
    EXPECT_EQ(sim.kind, RowKind::Reference);
    EXPECT_EQ(sim.key, "");
    EXPECT_EQ(sim.value, "DemoRail\\Class66Pack\\RailVehicles\\Diesel\\Class66\\Engine\\Simulation\\Class66_EWS_EngineSim.xml");
    // The name is the English display name; the script's Name is another row.
    EXPECT_EQ(findRows(set.vehicle.rows, "Name").size(), 2u);
    EXPECT_EQ(set.vehicle.rows.front().item, "Name");
    EXPECT_EQ(set.vehicle.rows.front().key, "English");
    EXPECT_EQ(set.vehicle.rows.front().value, "DemoRail Class 66 EWS");
    // Positions rise: the rows are read in document order.
    for (std::size_t i = 1; i < set.simulation.rows.size(); ++i)
        EXPECT_LT(set.simulation.rows[i - 1].position, set.simulation.rows[i].position) << set.simulation.rows[i].item;
    // The steam list on the steam simulation: each injector and safety valve on its own.
    const PhysicsSet steam = open(black5());
    EXPECT_EQ(findRows(steam.simulation.rows, "PressureForOpen").size(), 2u);
    EXPECT_EQ(valueOf(steam.simulation, "SafetyValve2/PressureForOpen"), "231");
    EXPECT_EQ(valueOf(steam.simulation, "Injector1/Type"), "eLiveSteam");
    EXPECT_EQ(valueOf(steam.simulation, "TrainBrakeAssembly/Handbrake/MaxForce"), "20");
}

TEST_F(PhysicsGrids, AChangeReachesOneElementAloneAndIsOneJournalEntry) {
    PhysicsSet set = open(class66());
    const fs::path simFile = set.simulation.file;
    const std::string before = xmlOf(simFile);
    const std::size_t engineForce = findRows(set.simulation.rows, "MaxForce@" + std::to_string(
        set.simulation.rows[findRows(set.simulation.rows, "MaxForce")[1]].position)).front();
    ASSERT_EQ(setValue(set.simulation, engineForce, "450"), "");
    // A later row keeps pointing at its own element after the length changed.
    const std::size_t dynamic = rowOf(set.simulation, "DynamicBrakesSystem/MaxForce");
    ASSERT_EQ(setValue(set.simulation, dynamic, " 212.5 "), "");
    const std::size_t entries = m_ctx->journal().entries().size();
    const SaveResult saved = saveDocument(*m_ctx, set.simulation, "test save");
    ASSERT_TRUE(saved.ok) << saved.message;
    EXPECT_FALSE(set.simulation.changed);
    EXPECT_EQ(m_ctx->journal().entries().size(), entries + 1);
    EXPECT_TRUE(fs::exists(saved.backup));

    const std::vector<std::string> a = lines(before), b = lines(xmlOf(simFile));
    ASSERT_EQ(a.size(), b.size());
    std::vector<std::string> changed;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i])
            changed.push_back(b[i]);
    ASSERT_EQ(changed.size(), 2u);
    EXPECT_NE(changed[0].find(">450</MaxForce>"), std::string::npos) << changed[0];
    EXPECT_NE(changed[1].find(">212.5</MaxForce>"), std::string::npos) << changed[1];
    const PhysicsSet again = open(class66());
    EXPECT_EQ(valueOf(again.simulation, "Handbrake/MaxForce"), "20");
    EXPECT_EQ(valueOf(again.simulation, "DynamicBrakesSystem/MaxForce"), "212.5");
}

TEST_F(PhysicsGrids, ValuesOfTheWrongKindAndUnknownNamesChangeNothing) {
    PhysicsSet set = open(class66());
    const std::string xml = set.vehicle.xml;
    const std::size_t mass = rowOf(set.vehicle, "Mass");
    EXPECT_NE(setValue(set.vehicle, mass, "heavy").find("'heavy' is not a number"), std::string::npos);
    EXPECT_NE(setValue(set.vehicle, mass, "1e999").find("not a number"), std::string::npos);
    EXPECT_NE(setValue(set.vehicle, mass, "").find("not a number"), std::string::npos);
    const std::size_t lod = rowOf(set.vehicle, "HighestLevel_1isHighest");
    EXPECT_NE(setValue(set.vehicle, lod, "1.5").find("not a whole number"), std::string::npos);
    EXPECT_NE(setValue(set.vehicle, lod, "99999999999").find("out of range"), std::string::npos);
    EXPECT_EQ(set.vehicle.xml, xml);
    EXPECT_FALSE(set.vehicle.changed);
    EXPECT_TRUE(findRows(set.vehicle.rows, "NoSuchValue").empty());
    EXPECT_TRUE(findRows(set.vehicle.rows, "Mass@1").empty());
    EXPECT_TRUE(findRows(set.vehicle.rows, "Mass@x").empty());
    // A text element takes text; a reference is no value to change.
    EXPECT_EQ(setValue(set.vehicle, rowOf(set.vehicle, "EngineName"), "Class 66 & \"Co\""), "");
    EXPECT_NE(set.vehicle.xml.find(">Class 66 &amp; \"Co\"</EngineName>"), std::string::npos);
    const PhysicsRow& coupling = set.vehicle.rows[rowOf(set.vehicle, "FrontCouplingBlueprintID")];
    std::string text = set.vehicle.xml;
    EXPECT_EQ(putRowValue(text, coupling, "x"), "The Key  was not found");
}

TEST_F(PhysicsGrids, AnEmptyElementGivesAnEmptyRowThatCannotBeChanged) {
    const std::string xml = "<cBlueprintLoader><Blueprint><cEngineBlueprint><Mass d:type=\"sFloat32\">5</Mass>"
                            "<HeatHaze/><TexText><x d:type=\"bool\">1</x></TexText></cEngineBlueprint></Blueprint></cBlueprintLoader>";
    const std::vector<PhysicsRow> rows = vehicleRows(xml);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1].item, "HeatHaze");
    EXPECT_EQ(rows[1].kind, RowKind::Empty);
    EXPECT_EQ(rows[2].kind, RowKind::Empty);
    std::string text = xml;
    EXPECT_EQ(putRowValue(text, rows[1], "1"), "The Key HeatHaze was not found");
    EXPECT_EQ(putRowValue(text, rows[2], "1"), "The Key TexText was not found");
    EXPECT_EQ(text, xml);
}

TEST_F(PhysicsGrids, AWagonOrAMissingSimulationLeavesTheFirstGridWorking) {
    const PhysicsSet wagon = open(assets() / "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin");
    EXPECT_FALSE(wagon.vehicle.rows.empty());
    EXPECT_TRUE(wagon.simulation.rows.empty());
    EXPECT_EQ(wagon.simProblem.rfind(noSimulationMessage(), 0), 0u) << wagon.simProblem;

    // An engine whose simulation is not installed: the second grid says which file is missing.
    const fs::path folder = s_dir / "rw/Assets/Tëst, \"Quoted\"/Pack/RailVehicles";
    fs::create_directories(folder);
    std::string xml = xmlOf(class66());
    const std::string id = "Class66_EWS_EngineSim.xml";
    xml.replace(xml.find(id), id.size(), "Gone_Sim.xml");
    const fs::path loco = folder / "Lokomotive Zürich.xml";
    std::ofstream(loco, std::ios::binary) << xml;
    const PhysicsSet missing = open(loco);
    EXPECT_FALSE(missing.vehicle.binary);
    EXPECT_FALSE(missing.vehicle.rows.empty());
    EXPECT_NE(missing.simProblem.find("Gone_Sim.bin is not installed"), std::string::npos) << missing.simProblem;

    // An XML document is written back as text, its accents and quotes kept.
    PhysicsSet set = missing;
    ASSERT_EQ(setValue(set.vehicle, rowOf(set.vehicle, "EngineName"), "Lok \"Zürich\", Nord"), "");
    ASSERT_TRUE(saveDocument(*m_ctx, set.vehicle, "test").ok);
    const PhysicsSet again = open(loco);
    EXPECT_EQ(utf8FromDocument(valueOf(again.vehicle, "EngineName")), "Lok \"Zürich\", Nord");
    EXPECT_EQ(valueOf(again.vehicle, "Mass"), "126");
}

TEST_F(PhysicsGrids, AnUnreadableFileIsNamedAndAFailedWriteLeavesTheOldFile) {
    PhysicsSet set;
    const fs::path nowhere = s_dir / "rw/Assets/Nowhere/Loco, \"x\".bin";
    const std::string problem = openPhysics(nowhere, m_ctx->railWorks(), m_ctx->resolver, set);
    EXPECT_NE(problem.find(nowhere.string()), std::string::npos) << problem;
    const fs::path junk = s_dir / "junk.bin";
    std::ofstream(junk, std::ios::binary) << std::string("SERZ\0\0\1\0\xFF\x50", 10);
    EXPECT_NE(openPhysics(junk, m_ctx->railWorks(), m_ctx->resolver, set).find(junk.string()), std::string::npos);

    set = open(class66());
    const std::string old = ReadTextFile(set.vehicle.file);
    ASSERT_EQ(setValue(set.vehicle, rowOf(set.vehicle, "Mass"), "130"), "");
    test::FaultyFiles faults(WriteStep::Replace, std::errc::io_error);
    m_ctx->files().setFileOps(&faults);
    const SaveResult r = saveDocument(*m_ctx, set.vehicle, "test");
    m_ctx->files().setFileOps(nullptr);
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.message.find("Class66_EWS.bin"), std::string::npos) << r.message;
    EXPECT_EQ(ReadTextFile(set.vehicle.file), old);
    EXPECT_TRUE(set.vehicle.changed);
}

} // namespace
