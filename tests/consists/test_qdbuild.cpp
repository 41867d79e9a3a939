// Quick Drive consists and fragments built from the shipped templates: the shape of what they
// decode to, the names they are written under, overwriting with a backup that undo restores, and
// the refusals that leave the folder as it was.

#include "../core/faultyfiles.h"
#include "../core/tempdir.h"
#include "../demo/demofixture.h"

#include "velmora/consists/qdbuild.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/userinterface.h"
#include "serz/serz.h"

#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

using namespace velmora;
namespace cs = velmora::consists;
namespace fs = std::filesystem;

namespace {

// The outlines of document-shapes.md, as they stand there.
const char* const kConsistOutline = R"(cBlueprintLoader
  Blueprint
    cConsistBlueprint
      ConsistEntry
        cConsistEntry
          BlueprintName
            iBlueprintLibrary-cAbsoluteBlueprintID
              BlueprintSetID
                iBlueprintLibrary-cBlueprintSetID
                  Provider : cDeltaString = 'RailionLudmilla'
                  Product : cDeltaString = 'Quickdrive'
              BlueprintID : cDeltaString = 'PreLoad\frag_loco\6400\6400_DBC_Belgie.xml'
          Flipped : cDeltaString = 'eFalse'
      LocoName
        Localisation-cUserLocalisedString
          English : cDeltaString = "[L'22 L]"
          French : cDeltaString = ''
          Italian : cDeltaString = ''
          German : cDeltaString = ''
          Spanish : cDeltaString = ''
          Dutch : cDeltaString = ''
          Polish : cDeltaString = ''
          Russian : cDeltaString = ''
          Other
          Key : cDeltaString = ''
      DisplayName
        Localisation-cUserLocalisedString
          English : cDeltaString = '6400 (DB, België)'
          French : cDeltaString = ''
          Italian : cDeltaString = ''
          German : cDeltaString = ''
          Spanish : cDeltaString = ''
          Dutch : cDeltaString = ''
          Polish : cDeltaString = ''
          Russian : cDeltaString = ''
          Other
          Key : cDeltaString = ''
      EngineType : cDeltaString = 'Electric'
      EraStartYear : sUInt32 = 1830
      EraEndYear : sUInt32 = 2050
      DrivingEngineIndex : sUInt32 = 0
      ValidBuildAndDriveRoutes
      DrivableConsist : cDeltaString = 'eFalse'
      ConsistType : cDeltaString = 'eConsistTypePassengerRegional'
      HasPantograph : cDeltaString = 'eFalse'
      Has3rdRailShoe : cDeltaString = 'eFalse'
      Requires4thRail : cDeltaString = 'eFalse'
)";

const char* const kFragmentOutline = R"(cBlueprintLoader
  Blueprint
    cConsistFragmentBlueprint
      Name : cDeltaString = ''
      ConsistEntry
        cConsistEntry
          BlueprintName
            iBlueprintLibrary-cAbsoluteBlueprintID
              BlueprintSetID
                iBlueprintLibrary-cBlueprintSetID
                  Provider : cDeltaString = 'SomeProvider'
                  Product : cDeltaString = 'Quickdrive'
              BlueprintID : cDeltaString = 'PreLoad\frag_wagen\Tank\Tank_4axle.xml'
          Flipped : cDeltaString = 'eFalse'
)";

// One route of ValidBuildAndDriveRoutes, as the route template and the demo write it.
const char* const kRouteOutline = R"(cConsistBlueprint-cValidRoute
  RouteID : cDeltaString = '...'
)";

struct Line {
    int depth;
    std::string text; // "Name" or "Name : type"
};

// An outline as lines of depth and name (with the type of a value), its values dropped.
std::vector<Line> parseOutline(const std::string& outline, int baseDepth = 0) {
    std::vector<Line> out;
    std::istringstream in(outline);
    for (std::string line; std::getline(in, line);) {
        const std::size_t indent = line.find_first_not_of(' ');
        if (indent == std::string::npos)
            continue;
        std::string text = line.substr(indent);
        if (const std::size_t eq = text.find(" = "); eq != std::string::npos)
            text.resize(eq);
        out.push_back({baseDepth + static_cast<int>(indent / 2), text});
    }
    return out;
}

// The outline with its one cConsistEntry made `vehicles` of them and `routes` routes added.
std::string expectedShape(const char* outline, int vehicles, int routes) {
    const std::vector<Line> lines = parseOutline(outline);
    std::vector<Line> out;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].text == "cConsistEntry") {
            std::size_t end = i + 1;
            while (end < lines.size() && lines[end].depth > lines[i].depth)
                ++end;
            for (int n = 0; n < vehicles; ++n)
                out.insert(out.end(), lines.begin() + static_cast<long>(i), lines.begin() + static_cast<long>(end));
            i = end - 1;
            continue;
        }
        out.push_back(lines[i]);
        if (lines[i].text == "ValidBuildAndDriveRoutes")
            for (int n = 0; n < routes; ++n)
                for (const Line& r : parseOutline(kRouteOutline, lines[i].depth + 1))
                    out.push_back(r);
    }
    std::string s;
    for (const Line& l : out)
        s += std::string(static_cast<std::size_t>(l.depth) * 2, ' ') + l.text + '\n';
    return s;
}

// The same form read from a document with a standard reader: element names, d:type, nesting.
std::string shapeOf(const std::string& xml) {
    QXmlStreamReader r(QByteArray::fromStdString(xml));
    std::string out;
    int depth = 0;
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement()) {
            out += std::string(static_cast<std::size_t>(depth) * 2, ' ') + r.name().toString().toStdString();
            if (const auto type = r.attributes().value("d:type"); !type.isEmpty())
                out += " : " + type.toString().toStdString();
            out += '\n';
            ++depth;
        } else if (r.isEndElement()) {
            --depth;
        }
    }
    EXPECT_FALSE(r.hasError()) << r.errorString().toStdString();
    return out;
}

// The texts of every element called `name`, as a standard reader reads them.
std::vector<std::string> valuesOf(const std::string& xml, const char* name) {
    QXmlStreamReader r(QByteArray::fromStdString(xml));
    std::vector<std::string> out;
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement() && r.name() == QLatin1String(name))
            out.push_back(r.readElementText().toStdString());
    }
    return out;
}

std::string decoded(const fs::path& file) {
    std::string xml;
    EXPECT_TRUE(binToXmlText(file, xml)) << file;
    return xml;
}

cs::IdSource fixedIds() {
    auto n = std::make_shared<int>(0);
    cs::IdSource ids;
    ids.fraction = [n] { return ((*n)++ % 89) / 89.0; };
    ids.guid = [] { return std::string("00000000-1111-4222-8333-444444444444"); };
    return ids;
}

std::vector<cs::QDVehicle> train(int n) {
    std::vector<cs::QDVehicle> v;
    for (int i = 0; i < n; ++i)
        v.push_back({"DemoRail", "Class66Pack",
                     i == 0 ? "RailVehicles\\Diesel\\Class66\\Engine\\Class66_EWS.xml"
                            : "RailVehicles\\Freight\\HTA\\HTA_Coal.xml",
                     i % 2 ? "eTrue" : "eFalse"});
    return v;
}

cs::QDMetadata metadata(const std::string& name, int routes = 1) {
    cs::QDMetadata m;
    m.locoName = "[DR] Class 66";
    m.displayName = "Class 66 coal";
    m.consistName = name;
    m.consistType = "Consist Type Freight Coal";
    for (int i = 0; i < routes; ++i)
        m.routes.push_back("0000000" + std::to_string(i) + "-aaaa-4bbb-8ccc-dddddddddddd");
    return m;
}

class QDBuild : public ::testing::Test {
protected:
    void SetUp() override {
        m_ctx = std::make_unique<AppContext>(m_home.path(), fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
        m_ctx->setRailWorksOverride(m_rw.path());
        std::string error;
        auto t = cs::productPreload(*m_ctx, "DemoRail", "Class66Pack", error);
        ASSERT_TRUE(t) << error;
        m_target = *t;
    }
    cs::QDBuildResult consist(const cs::QDMetadata& m, const std::vector<cs::QDVehicle>& v) {
        return cs::buildQDConsist(*m_ctx, m_target, m, v, &m_ids);
    }
    cs::QDBuildResult fragment(const std::string& name, const std::vector<cs::QDVehicle>& v) {
        return cs::buildQDFragment(*m_ctx, m_target, name, v, &m_ids);
    }
    test::TempDir m_home, m_rw;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
    cs::PreloadTarget m_target;
    cs::IdSource m_ids = fixedIds();
};

} // namespace

TEST_F(QDBuild, ConsistsAndFragmentsDecodeToTheOutlinedShape) {
    for (int n : {1, 2, 5}) {
        SCOPED_TRACE(n);
        const auto c = consist(metadata("Shape " + std::to_string(n), n == 5 ? 3 : 1), train(n));
        ASSERT_TRUE(c) << c.detail;
        EXPECT_EQ(shapeOf(decoded(c.file)), expectedShape(kConsistOutline, n, n == 5 ? 3 : 1));
        const auto f = fragment("Shape " + std::to_string(n) + " Fragment", train(n));
        ASSERT_TRUE(f) << f.detail;
        EXPECT_EQ(shapeOf(decoded(f.file)), expectedShape(kFragmentOutline, n, 0));
    }
    // With no vehicles and no routes the text still encodes, to the outline with both lists empty.
    cs::QDTemplates t;
    std::string error;
    ASSERT_TRUE(cs::readConsistTemplatesQD(*m_ctx, t, error)) << error;
    std::string bin, xml;
    ASSERT_TRUE(xmlTextToBin(cs::qdConsistText(t, metadata("Empty", 0), {}, m_ids), bin));
    ASSERT_TRUE(serz::decode(bin, xml).ok);
    EXPECT_EQ(shapeOf(xml), expectedShape(kConsistOutline, 0, 0));
}

TEST_F(QDBuild, TheDemoInstallsQuickDriveDocumentsHaveTheSameShape) {
    static const test::Install install;
    ASSERT_TRUE(install.result.ok) << install.result.error;
    const fs::path preload = install.path("Assets/DemoRail/Class66Pack/PreLoad");
    const std::string demoConsist = test::readFile(preload / "Class66_Coal_QD.bin");
    const std::string demoFragment = test::readFile(preload / "Fragments/Class66_Loco_Fragment.bin");
    ASSERT_FALSE(demoConsist.empty());
    ASSERT_FALSE(demoFragment.empty());
    const int routes = static_cast<int>(valuesOf(demoConsist, "RouteID").size());
    ASSERT_GT(routes, 0);
    const auto c = consist(metadata("Two", routes), train(2));
    ASSERT_TRUE(c) << c.detail;
    EXPECT_EQ(shapeOf(decoded(c.file)), shapeOf(demoConsist));
    const auto f = fragment("One Fragment", train(1));
    ASSERT_TRUE(f) << f.detail;
    EXPECT_EQ(shapeOf(decoded(f.file)), shapeOf(demoFragment));
}

TEST_F(QDBuild, ValuesComeBackAsTypedWithTheirDefaults) {
    cs::QDMetadata m = metadata("Caf\xC3\xA9 \"Express\" & <Co>");
    m.locoName = "O'Brien's \xC3\x9C-Lok & Sons";
    m.locoType = "Electric";
    m.drivable = false;
    m.pantograph = true;
    m.fourthRail = true;
    std::vector<cs::QDVehicle> v = train(2);
    v[1].product = "Caf\xC3\xA9 & Co";
    v[1].blueprintId = "Scenery\\O'Brien's Shed.xml";
    const auto c = consist(m, v);
    ASSERT_TRUE(c) << c.detail;
    EXPECT_EQ(c.message, cs::kConsistCopied);
    const std::string xml = decoded(c.file);
    EXPECT_EQ(valuesOf(xml, "English"), (std::vector<std::string>{m.locoName, m.displayName}));
    EXPECT_EQ(valuesOf(xml, "EngineType"), std::vector<std::string>{"Electric"});
    EXPECT_EQ(valuesOf(xml, "EraStartYear"), std::vector<std::string>{"2000"}); // empty era fields
    EXPECT_EQ(valuesOf(xml, "EraEndYear"), std::vector<std::string>{"2050"});
    EXPECT_EQ(valuesOf(xml, "ConsistType"), std::vector<std::string>{"eConsistTypeFreightCoal"});
    EXPECT_EQ(valuesOf(xml, "DrivableConsist"), std::vector<std::string>{"eFalse"});
    EXPECT_EQ(valuesOf(xml, "HasPantograph"), std::vector<std::string>{"eTrue"});
    EXPECT_EQ(valuesOf(xml, "Has3rdRailShoe"), std::vector<std::string>{"eFalse"});
    EXPECT_EQ(valuesOf(xml, "Requires4thRail"), std::vector<std::string>{"eTrue"});
    EXPECT_EQ(valuesOf(xml, "Product"), (std::vector<std::string>{"Class66Pack", v[1].product}));
    EXPECT_EQ(valuesOf(xml, "BlueprintID").back(), v[1].blueprintId);
    EXPECT_EQ(valuesOf(xml, "Flipped"), (std::vector<std::string>{"eFalse", "eTrue"}));
    EXPECT_EQ(valuesOf(xml, "RouteID"), m.routes);
    EXPECT_EQ(c.file.filename().string(), "Caf\xC3\xA9 _Express_ & _Co_.bin");

    m.eraStart = "1998";
    m.eraEnd = "soon";
    EXPECT_FALSE(consist(m, v)) << "a year that is no number is refused before anything is written";

    EXPECT_EQ(cs::consistTypeValue("Consist Type Passenger Regional"), "eConsistTypePassengerRegional");
    EXPECT_EQ(cs::consistTypeValue("eConsistTypeDoNotSpawn"), "eConsistTypeDoNotSpawn");
    EXPECT_EQ(cs::consistTypes().size(), 25u);
    EXPECT_EQ(cs::flippedOther("eFalse"), "eTrue");
    EXPECT_EQ(cs::flippedOther("eTrue"), "eFalse");
}

TEST_F(QDBuild, HostileNamesNeverLeaveThePreLoadFolder) {
    for (const std::string name : {"../../../Evil Fragment", "..", "a/b\\c Fragment", "..\\..\\Up Fragment",
                                   "C:\\Windows\\Fragment", "Caf\xC3\xA9 \"Qu'ote\" & Fragment", "Fragment.."}) {
        SCOPED_TRACE(name);
        const auto c = consist(metadata(name), train(1));
        ASSERT_TRUE(c) << c.detail;
        EXPECT_EQ(c.file.parent_path(), m_target.folder);
        EXPECT_EQ(valuesOf(decoded(c.file), "English"), (std::vector<std::string>{"[DR] Class 66", "Class 66 coal"}));
        // A fragment of the same name takes the same file, the consist kept as its backup.
        const auto f = cs::isFragmentName(name) ? fragment(name, train(1)) : c;
        ASSERT_TRUE(f) << f.detail;
        EXPECT_EQ(f.file, c.file);
    }
    // Nothing but the PreLoad folder (and the journal in the program's folder) was written.
    for (const auto& e : fs::recursive_directory_iterator(m_rw.path())) {
        if (e.is_regular_file()) {
            EXPECT_EQ(e.path().parent_path(), m_target.folder) << e.path();
        }
    }
    // A fragment's own name is kept in the document as typed.
    const auto f = fragment("Caf\xC3\xA9 \"Qu'ote\" & Fragment", train(1));
    EXPECT_EQ(valuesOf(decoded(f.file), "Name"), std::vector<std::string>{"Caf\xC3\xA9 \"Qu'ote\" & Fragment"});
}

TEST_F(QDBuild, RebuildingKeepsABackupThatUndoPutsBackByteForByte) {
    const auto first = fragment("Coal Fragment", train(1));
    ASSERT_TRUE(first) << first.detail;
    EXPECT_TRUE(first.created);
    const std::string before = test::readFile(first.file);
    const auto second = fragment("Coal Fragment", train(5));
    ASSERT_TRUE(second) << second.detail;
    EXPECT_EQ(second.file, first.file);
    EXPECT_EQ(second.backup, m_target.folder / "Coal Fragment.bak");
    EXPECT_EQ(test::readFile(second.backup), before);
    EXPECT_NE(test::readFile(second.file), before);

    const auto entries = m_ctx->journal().entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries.back().command, cs::kBuildFragmentCommand);
    UndoResult u = undoEntry(m_ctx->files(), entries.back().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_EQ(test::readFile(first.file), before);
    u = undoEntry(m_ctx->files(), entries.front().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_FALSE(fs::exists(first.file));

    // A consist of the same name the same way, with its own command.
    ASSERT_TRUE(consist(metadata("Coal"), train(1)));
    const auto again = consist(metadata("Coal"), train(2));
    ASSERT_TRUE(again);
    EXPECT_EQ(again.backup, m_target.folder / "Coal.bak");
    EXPECT_EQ(m_ctx->journal().entries().back().command, cs::kBuildConsistCommand);
}

TEST_F(QDBuild, AFailedWriteLeavesTheOldDocumentWhole) {
    const auto first = consist(metadata("Coal"), train(1));
    ASSERT_TRUE(first) << first.detail;
    const std::string before = test::readFile(first.file);
    for (WriteStep step : {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup, WriteStep::Replace}) {
        test::FaultyFiles faulty(step, std::errc::no_space_on_device);
        m_ctx->files().setFileOps(&faulty);
        const auto r = consist(metadata("Coal"), train(5));
        m_ctx->files().setFileOps(nullptr);
        EXPECT_FALSE(r) << writeStepName(step);
        EXPECT_NE(r.message.find("Coal.bin"), std::string::npos) << r.message;
        EXPECT_EQ(test::readFile(first.file), before) << writeStepName(step);
        std::size_t files = 0;
        for ([[maybe_unused]] const auto& e : fs::directory_iterator(m_target.folder))
            ++files;
        EXPECT_EQ(files, 1u) << "no temporary file or backup is left after a failed " << writeStepName(step);
    }
}

TEST_F(QDBuild, RefusalsAndAMissingTemplateWriteNothing) {
    auto noRoute = metadata("No Route", 0);
    auto r = consist(noRoute, train(2));
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kNoRoute);
    r = fragment("Coal Rake", train(2));
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kFragmentRefused);
    EXPECT_NE(std::string(cs::kFragmentRefused).find("e.g. Scotsman Fragment"), std::string::npos);
    EXPECT_FALSE(consist(metadata("  "), train(1))) << "a consist needs a name";

    // Templates of a data folder that lacks QD3.txt and QDF3.txt.
    test::TempDir data;
    fs::create_directories(data / "Templates");
    for (const char* name : {"QD1.txt", "QD2.txt", "QD4.txt", "QD5.txt", "QDF1.txt"})
        fs::copy_file(fs::path(VELMORA_SOURCE_DIR) / "data/Templates" / name, data / "Templates" / name);
    AppContext bare(m_home.path(), data.path(), m_ui);
    bare.setRailWorksOverride(m_rw.path());
    r = cs::buildQDConsist(bare, m_target, metadata("Missing"), train(1), &m_ids);
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("QD3.txt"), std::string::npos) << r.message;
    r = cs::buildQDFragment(bare, m_target, "Missing Fragment", train(1), &m_ids);
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("QDF3.txt"), std::string::npos) << r.message;

    EXPECT_FALSE(fs::exists(m_target.folder));
    EXPECT_TRUE(m_ctx->journal().entries().empty());
}

TEST_F(QDBuild, TheTargetMustLieInAProductAndListsItsFragments) {
    std::string error;
    EXPECT_FALSE(cs::preloadTarget(*m_ctx, m_rw / "Assets/DemoRail", error));
    EXPECT_NE(error.find("Assets/DemoRail"), std::string::npos) << error;
    EXPECT_FALSE(cs::preloadTarget(*m_ctx, m_home.path(), error));
    EXPECT_FALSE(cs::preloadTarget(*m_ctx, m_rw / "Assets/DemoRail/Class66Pack/../../..", error));
    EXPECT_FALSE(cs::productPreload(*m_ctx, "..", "Class66Pack", error));
    EXPECT_FALSE(cs::productPreload(*m_ctx, "DemoRail", "a/b", error));
    const auto deep = cs::preloadTarget(*m_ctx, m_rw / "Assets/DemoRail/Class66Pack/PreLoad/Fragments", error);
    ASSERT_TRUE(deep) << error;
    EXPECT_EQ(deep->provider, "DemoRail");
    EXPECT_EQ(deep->product, "Class66Pack");
    EXPECT_EQ(deep->relative, "PreLoad\\Fragments");

    ASSERT_TRUE(fragment("Loco Fragment", train(1)));
    ASSERT_TRUE(fragment("Rake fragment", train(2)));
    ASSERT_TRUE(consist(metadata("Whole train"), train(2)));
    const auto rows = cs::availableFragments(m_target);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].blueprintId, "PreLoad\\Loco Fragment.xml");
    EXPECT_EQ(rows[0].provider, "DemoRail");
    EXPECT_EQ(rows[0].flipped, "eFalse");
    // A fragment used in a consist is one row whose path begins PreLoad\.
    const auto c = consist(metadata("With fragments"), rows);
    ASSERT_TRUE(c);
    EXPECT_EQ(valuesOf(decoded(c.file), "BlueprintID"),
              (std::vector<std::string>{"PreLoad\\Loco Fragment.xml", "PreLoad\\Rake fragment.xml"}));
}
