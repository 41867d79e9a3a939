// ConsistTemplates.bin: reading the saved consists, and adding one from the shipped templates,
// into an existing file, into none, and through every way it can go wrong.

#include "../core/faultyfiles.h"
#include "../core/tempdir.h"
#include "consistids.h"

#include "velmora/consists/consisttemplates.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"

#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

using namespace velmora;
namespace cs = velmora::consists;
namespace fs = std::filesystem;

namespace {

using test::countingIds;

const std::vector<cs::NewVehicle> kTrain = {
    {"Kuju", "RailSimulator", "RailVehicles\\Diesel\\Class66\\Class66.xml", "0"},
    {"Kuju", "RailSimulator", "RailVehicles\\Freight\\HTA\\HTA.xml", "1"},
    {"O&apos;Brien", "Caf\xC3\xA9", "RailVehicles\\Coach\\Mk1.xml", ""},
};

// The element names from the root down to every element, one line each, indented by depth:
// what the document's outline shows.
std::string outline(const std::string& xml) {
    QXmlStreamReader r(QByteArray::fromStdString(xml));
    std::string out;
    int depth = 0;
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement()) {
            out += std::string(static_cast<std::size_t>(depth), ' ') + r.name().toString().toStdString() + '\n';
            ++depth;
        } else if (r.isEndElement()) {
            --depth;
        }
    }
    EXPECT_FALSE(r.hasError()) << r.errorString().toStdString();
    return out;
}

// The English names of the document, as a standard reader reads them.
std::vector<std::string> englishNames(const std::string& xml) {
    QXmlStreamReader r(QByteArray::fromStdString(xml));
    std::vector<std::string> names;
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement() && r.name() == QLatin1String("English"))
            names.push_back(r.readElementText().toStdString());
    }
    return names;
}

class ConsistTemplatesTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_ctx = std::make_unique<AppContext>(m_home.path(), fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
        m_ctx->setRailWorksOverride(m_rw.path());
    }
    fs::path target() const { return m_rw / "Content/ConsistTemplates.bin"; }
    std::string decoded() const {
        std::string xml;
        EXPECT_TRUE(binToXmlText(target(), xml));
        return xml;
    }
    cs::SaveResult save(const std::string& name, const std::vector<cs::NewVehicle>& vehicles = kTrain) {
        return cs::saveNamedConsist(*m_ctx, name, vehicles, &m_ids);
    }
    test::TempDir m_home, m_rw;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
    cs::IdSource m_ids = countingIds();
};

const char* const kTwo =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
    "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\" d:id=\"1\">\r\n"
    "\t<Record>\r\n"
    "\t\t<cConsistTemplate d:id=\"111\">\r\n"
    "\t\t\t<Name><Localisation-cUserLocalisedString><English d:type=\"cDeltaString\"></English>"
    "<French d:type=\"cDeltaString\"></French><Italian d:type=\"cDeltaString\"></Italian>"
    "<German d:type=\"cDeltaString\"></German><Spanish d:type=\"cDeltaString\"></Spanish>"
    "<Key d:type=\"cDeltaString\">k1</Key></Localisation-cUserLocalisedString></Name>\r\n"
    "\t\t\t<ConsistEntry><cConsistTemplateEntry d:id=\"5\"><BlueprintID><iBlueprintLibrary-cAbsoluteBlueprintID>"
    "<BlueprintSetID><iBlueprintLibrary-cBlueprintSetID><Provider d:type=\"cDeltaString\">P1</Provider>"
    "<Product d:type=\"cDeltaString\">Q1</Product></iBlueprintLibrary-cBlueprintSetID></BlueprintSetID>"
    "<BlueprintID d:type=\"cDeltaString\">a\\b.xml</BlueprintID></iBlueprintLibrary-cAbsoluteBlueprintID>"
    "</BlueprintID><Flipped d:type=\"bool\">1</Flipped></cConsistTemplateEntry></ConsistEntry>\r\n"
    "\t\t</cConsistTemplate>\r\n"
    "\t\t<cConsistTemplate d:id=\"111\">\r\n"
    "\t\t\t<Name><Localisation-cUserLocalisedString><English d:type=\"cDeltaString\"></English>"
    "<French d:type=\"cDeltaString\"></French><Italian d:type=\"cDeltaString\">Treno</Italian>"
    "<Key d:type=\"cDeltaString\">k1</Key></Localisation-cUserLocalisedString></Name>\r\n"
    "\t\t\t<ConsistEntry><cConsistTemplateEntry d:id=\"6\"><BlueprintID><iBlueprintLibrary-cAbsoluteBlueprintID>"
    "<BlueprintSetID><iBlueprintLibrary-cBlueprintSetID><Provider d:type=\"cDeltaString\">P2</Provider>"
    "<Product d:type=\"cDeltaString\">Q2</Product></iBlueprintLibrary-cBlueprintSetID></BlueprintSetID>"
    "<BlueprintID d:type=\"cDeltaString\">c.xml</BlueprintID></iBlueprintLibrary-cAbsoluteBlueprintID>"
    "</BlueprintID><Flipped d:type=\"bool\">0</Flipped></cConsistTemplateEntry></ConsistEntry>\r\n"
    "\t\t</cConsistTemplate>\r\n"
    "\t\t<cConsistTemplate d:id=\"222\">\r\n"
    "\t\t\t<Name><Localisation-cUserLocalisedString><English d:type=\"cDeltaString\"></English>"
    "<French d:type=\"cDeltaString\">Fret</French><Key d:type=\"cDeltaString\">k2</Key>"
    "</Localisation-cUserLocalisedString></Name>\r\n"
    "\t\t\t<ConsistEntry/>\r\n"
    "\t\t</cConsistTemplate>\r\n"
    "\t</Record>\r\n"
    "</cRecordSet>\r\n";

} // namespace

TEST(ConsistTemplatesParse, NamesFallBackAndConsistsOfOneIdAreOne) {
    cs::TemplatesDocument doc;
    ASSERT_TRUE(cs::parseConsistTemplates(kTwo, doc));
    EXPECT_EQ(doc.header.substr(doc.header.size() - 10), "<Record>\r\n"); // the consist's indentation is its own
    ASSERT_EQ(doc.consists.size(), 2u);
    const cs::ConsistTemplate& first = doc.consists[0];
    EXPECT_EQ(first.id, "111");
    EXPECT_EQ(first.name, ""); // every language empty in the first of the two halves
    EXPECT_EQ(first.key, "k1");
    ASSERT_EQ(first.entries.size(), 2u); // the second consist of the same id joined the first
    EXPECT_EQ(first.entries[0].id, "5");
    EXPECT_EQ(first.entries[0].provider, "P1");
    EXPECT_EQ(first.entries[0].product, "Q1");
    EXPECT_EQ(first.entries[0].blueprintId, "a\\b.xml");
    EXPECT_EQ(first.entries[0].flipped, "1");
    EXPECT_EQ(first.entries[1].provider, "P2");
    EXPECT_EQ(first.entries[1].flipped, "0");
    EXPECT_EQ(doc.consists[1].name, "Fret"); // French when English is empty
    EXPECT_TRUE(doc.consists[1].entries.empty());
}

TEST(ConsistTemplatesParse, ADocumentWithoutConsistsIsInvalidAndNamesEndTheScan) {
    cs::TemplatesDocument doc;
    EXPECT_FALSE(cs::parseConsistTemplates("<cRecordSet><Record/></cRecordSet>", doc));
    // A consist with no <Name> ends the scan: the ones behind it are not read.
    const std::string noName = "<Record><cConsistTemplate d:id=\"1\"><Name><English>A</English><Key>x</Key></Name>"
                               "</cConsistTemplate><cConsistTemplate d:id=\"2\"></cConsistTemplate>"
                               "<cConsistTemplate d:id=\"3\"><Name><English>C</English></Name></cConsistTemplate></Record>";
    ASSERT_TRUE(cs::parseConsistTemplates(noName, doc));
    ASSERT_EQ(doc.consists.size(), 1u);
    EXPECT_EQ(doc.consists[0].name, "A");
}

TEST(ConsistTemplatesText, TokensAreFilledInOnePassAndIdsHaveNineDigits) {
    EXPECT_EQ(cs::fillTemplate("<a>xxxxx</a><b>yyyyy</b>", {{"xxxxx", "yyyyy & xxxxx"}, {"yyyyy", "k"}}),
              "<a>yyyyy & xxxxx</a><b>k</b>");
    cs::IdSource ids;
    for (double f : {0.0, 0.5, 0.999999999999, 1.0}) {
        ids.fraction = [f] { return f; };
        const std::string id = cs::randomId(ids);
        EXPECT_EQ(id.size(), 9u) << f;
        EXPECT_NE(id[0], '0') << "a leading zero would not survive the binary document";
        EXPECT_EQ(id.find_first_not_of("0123456789"), std::string::npos);
    }
    ids.fraction = [] { return 0.0; };
    EXPECT_EQ(cs::randomId(ids), "100000000");
    // The system's source: ids differ from call to call, keys are GUIDs.
    const cs::IdSource system = cs::systemIds();
    EXPECT_NE(cs::randomId(system) + cs::randomId(system) + cs::randomId(system),
              cs::randomId(system) + cs::randomId(system) + cs::randomId(system));
    EXPECT_EQ(system.guid().size(), 36u);
}

TEST(ConsistTemplatesText, TypedNamesAreEscapedAsTheCodecWritesThemAndShownBack) {
    const std::string typed = "D\xC3\xA9j\xC3\xA0 vu, \"quoted\" O'Brien & <Sons>";
    const std::string text = cs::documentText(typed);
    EXPECT_EQ(text, "D\xC3\xA9j\xC3\xA0 vu, &quot;quoted&quot; O&apos;Brien &amp; &lt;Sons&gt;");
    EXPECT_EQ(utf8FromDocument(cs::shownName(text)), typed);
    // A name repaired to Windows-1252 (as a scenario's consist name is) goes in as UTF-8.
    EXPECT_EQ(cs::documentText("Z\xFCrich"), "Z\xC3\xBCrich");
    // Undone once only: a name that spells an escape keeps it.
    EXPECT_EQ(cs::shownName("&amp;lt;"), "&lt;");
}

TEST_F(ConsistTemplatesTest, ANewFileIsTheShippedShapeAndSurvivesTheCodecExactly) {
    const std::string name = "D\xC3\xA9j\xC3\xA0 vu, \"quoted\" O'Brien & <Sons>";
    const cs::SaveResult r = save(name);
    ASSERT_TRUE(r) << r.detail;
    EXPECT_EQ(r.message, cs::kReady);
    EXPECT_TRUE(r.created);
    EXPECT_TRUE(r.backup.empty());
    // What was encoded decodes to exactly the text the templates made.
    cs::IdSource again = countingIds();
    std::string expected;
    std::string error;
    const std::string consist =
        cs::newConsistText(cs::readTemplate(*m_ctx, "ConsistName.txt", error),
                           cs::readTemplate(*m_ctx, "ConsistTemplateEntry.txt", error), name, kTrain, again);
    ASSERT_TRUE(cs::mergedDocument("", false, cs::readTemplate(*m_ctx, "ConsistHeader.txt", error), consist, again, expected));
    ASSERT_TRUE(error.empty()) << error;
    const std::string xml = decoded();
    EXPECT_EQ(xml, expected);
    std::string bin, back;
    ASSERT_TRUE(xmlTextToBin(xml, bin));
    ASSERT_TRUE(serz::decode(bin, back));
    EXPECT_EQ(back, xml);
    // The outline of the simulator's document, and the name as a standard reader reads it.
    std::string shape = "cRecordSet\n"
                        " Record\n"
                        "  cConsistTemplate\n"
                        "   Name\n"
                        "    Localisation-cUserLocalisedString\n"
                        "     English\n     French\n     Italian\n     German\n     Spanish\n"
                        "     Dutch\n     Polish\n     Russian\n     Other\n     Key\n"
                        "   ConsistEntry\n";
    for (std::size_t i = 0; i < kTrain.size(); ++i)
        shape += "    cConsistTemplateEntry\n"
                 "     BlueprintID\n"
                 "      iBlueprintLibrary-cAbsoluteBlueprintID\n"
                 "       BlueprintSetID\n"
                 "        iBlueprintLibrary-cBlueprintSetID\n"
                 "         Provider\n         Product\n"
                 "       BlueprintID\n"
                 "     Flipped\n";
    EXPECT_EQ(outline(xml), shape);
    EXPECT_EQ(englishNames(xml), std::vector<std::string>{name});
    // Read back: the vehicles in order, an empty orientation saved as forward.
    const cs::ReadResult read = cs::readConsistTemplates(*m_ctx);
    ASSERT_TRUE(read.ok()) << read.error;
    ASSERT_EQ(read.doc.consists.size(), 1u);
    const cs::ConsistTemplate& c = read.doc.consists[0];
    EXPECT_EQ(utf8FromDocument(cs::shownName(c.name)), name);
    EXPECT_EQ(c.key.size(), 36u);
    ASSERT_EQ(c.entries.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(c.entries[i].provider, kTrain[i].provider);
        EXPECT_EQ(c.entries[i].product, kTrain[i].product);
        EXPECT_EQ(c.entries[i].blueprintId, kTrain[i].blueprintId);
        EXPECT_EQ(c.entries[i].id.size(), 9u);
    }
    EXPECT_EQ(c.entries[1].flipped, "1");
    EXPECT_EQ(c.entries[2].flipped, "0");
}

TEST_F(ConsistTemplatesTest, AddingToAFileKeepsWhatItHeldAndItsBackup) {
    ASSERT_TRUE(save("First"));
    const std::string firstBin = test::slurp(target());
    const std::string firstXml = decoded();
    ASSERT_TRUE(save("Second", {kTrain[1]}));
    EXPECT_EQ(test::slurp(m_rw / "Content/ConsistTemplates.bin.bak"), firstBin);
    const std::string xml = decoded();
    // Everything before the first file's </Record> line stands unchanged at the start.
    const std::size_t record = firstXml.find("\t</Record>");
    ASSERT_NE(record, std::string::npos);
    EXPECT_EQ(xml.substr(0, record), firstXml.substr(0, record));
    std::string bin, back;
    ASSERT_TRUE(xmlTextToBin(xml, bin));
    ASSERT_TRUE(serz::decode(bin, back));
    EXPECT_EQ(back, xml);
    const cs::ReadResult read = cs::readConsistTemplates(*m_ctx);
    ASSERT_EQ(read.doc.consists.size(), 2u);
    EXPECT_EQ(read.doc.consists[0].name, "First");
    EXPECT_EQ(read.doc.consists[1].name, "Second");
    EXPECT_EQ(read.doc.consists[1].entries.size(), 1u);
    // A third save takes the next backup name.
    ASSERT_TRUE(save("Third"));
    EXPECT_TRUE(fs::exists(m_rw / "Content/ConsistTemplates.bin.bak1"));
}

TEST_F(ConsistTemplatesTest, AnInvalidOrUnreadableFileIsRefusedAndNothingIsWritten) {
    std::string bin;
    ASSERT_TRUE(xmlTextToBin("<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
                             "d:version=\"1.0\">\r\n\t<Record/>\r\n</cRecordSet>\r\n",
                             bin));
    m_rw.write("Content/ConsistTemplates.bin", bin);
    cs::SaveResult r = save("Any");
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kInvalidFile);
    EXPECT_NE(r.detail.find(target().string()), std::string::npos);
    EXPECT_EQ(test::slurp(target()), bin);
    EXPECT_FALSE(fs::exists(m_rw / "Content/ConsistTemplates.bin.bak"));
    EXPECT_EQ(cs::readConsistTemplates(*m_ctx).error, cs::kInvalidFile);
    // Not a document at all: the reason names the file.
    m_rw.write("Content/ConsistTemplates.bin", "not a document");
    r = save("Any");
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kNotWritten);
    EXPECT_NE(r.detail.find("ConsistTemplates.bin"), std::string::npos) << r.detail;
    EXPECT_EQ(test::slurp(target()), "not a document");
    EXPECT_FALSE(fs::exists(m_rw / "Content/ConsistTemplates.bin.bak"));
    EXPECT_TRUE(m_ctx->journal().entries().empty());
}

TEST_F(ConsistTemplatesTest, AFailedWriteLeavesTheOldFileWhole) {
    ASSERT_TRUE(save("First"));
    const std::string before = test::slurp(target());
    for (WriteStep step : {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup, WriteStep::Replace}) {
        test::FaultyFiles faulty(step, std::errc::no_space_on_device);
        m_ctx->files().setFileOps(&faulty);
        const cs::SaveResult r = save("Second");
        m_ctx->files().setFileOps(nullptr);
        EXPECT_FALSE(r) << writeStepName(step);
        EXPECT_EQ(r.message, cs::kNotWritten);
        EXPECT_NE(r.detail.find("ConsistTemplates.bin"), std::string::npos) << r.detail;
        EXPECT_EQ(test::slurp(target()), before) << writeStepName(step);
        std::size_t files = 0;
        for ([[maybe_unused]] const auto& e : fs::directory_iterator(m_rw / "Content"))
            ++files;
        EXPECT_EQ(files, 1u) << "no temporary file or backup is left after a failed " << writeStepName(step);
    }
}

TEST_F(ConsistTemplatesTest, UndoPutsTheFileBackByteForByteOrTakesANewOneAway) {
    ASSERT_TRUE(save("First"));
    const std::string first = test::slurp(target());
    ASSERT_TRUE(save("Second"));
    auto entries = m_ctx->journal().entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries.back().command, cs::kSaveCommand);
    UndoResult u = undoEntry(m_ctx->files(), entries.back().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_EQ(test::slurp(target()), first);
    u = undoEntry(m_ctx->files(), entries.front().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_FALSE(fs::exists(target()));
}

TEST_F(ConsistTemplatesTest, TemplatesAreFoundWhateverTheirCaseAndAMissingOneWritesNothing) {
    test::TempDir data;
    fs::create_directories(data / "Templates");
    for (const char* name : {"ConsistHeader.txt", "ConsistName.txt"})
        fs::copy_file(fs::path(VELMORA_SOURCE_DIR) / "data/Templates" / name, data / "Templates" / name);
    fs::copy_file(fs::path(VELMORA_SOURCE_DIR) / "data/Templates/ConsistTemplateEntry.txt",
                  data / "Templates/ConsistTemplateentry.txt");
    AppContext other(m_home.path(), data.path(), m_ui);
    other.setRailWorksOverride(m_rw.path());
    std::string error;
    EXPECT_FALSE(cs::readTemplate(other, "ConsistTemplateEntry.txt", error).empty()) << error;
    EXPECT_FALSE(cs::readTemplate(other, "ConsistTemplateentry.txt", error).empty()) << error;
    ASSERT_TRUE(cs::saveNamedConsist(other, "Either spelling", kTrain, &m_ids));
    const std::string written = test::slurp(target());
    fs::remove(data / "Templates/ConsistName.txt");
    const cs::SaveResult r = cs::saveNamedConsist(other, "No template", kTrain, &m_ids);
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kNotWritten);
    EXPECT_NE(r.detail.find("ConsistName.txt"), std::string::npos) << r.detail;
    EXPECT_EQ(test::slurp(target()), written);
}

TEST_F(ConsistTemplatesTest, MissingBlueprintsAreFoundAfterTheTextRepair) {
    m_rw.write("Assets/O'Brien/Caf\xC3\xA9/RailVehicles/Coach/Mk1.bin", "x");
    m_rw.write("Assets/Kuju/RailSimulator/RailVehicles/Diesel/Class66/Class66.bin", "x");
    EXPECT_FALSE(cs::blueprintMissing(*m_ctx, {"", kTrain[0].provider, kTrain[0].product, kTrain[0].blueprintId, "0"}));
    EXPECT_FALSE(cs::blueprintMissing(*m_ctx, {"", kTrain[2].provider, kTrain[2].product, kTrain[2].blueprintId, "0"}));
    EXPECT_TRUE(cs::blueprintMissing(*m_ctx, {"", kTrain[1].provider, kTrain[1].product, kTrain[1].blueprintId, "0"}));
    EXPECT_TRUE(cs::blueprintMissing(*m_ctx, {"", "Kuju", "..", "..\\..\\Content\\x.xml", "0"}));
}
