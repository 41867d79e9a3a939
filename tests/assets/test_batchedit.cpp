// The batch row loop and Change Name on the demo install: what is written, what is passed over
// and why, one undo for the whole batch, and a failure half-way that leaves every file whole.

#include "../common/demofixture.h"
#include "../core/faultyfiles.h"
#include "velmora/assets/batchedit.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/listcommands.h"
#include "velmora/assets/renaming.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

using namespace velmora;
using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

const char* const kLoco = "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin";
const char* const kWagon = "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin";
const char* const kCoach = "Heritage/SteamDays/RailVehicles/Passenger/Mk1/Mk1_BSK.bin";

class BatchEdit : public test::DemoInstallTest<BatchEdit> {
public:
    static constexpr const char* kName = "batchedit";

protected:
    AssetRow row(const std::string& relative) {
        AssetRow r;
        EXPECT_TRUE(rowForBlueprint(relative, s_dir / "rw/Assets", r)) << relative;
        return r;
    }
    fs::path file(const std::string& relative) { return s_dir / "rw/Assets" / relative; }
    std::string english(const std::string& relative) {
        std::string xml, value;
        EXPECT_TRUE(binToXmlText(file(relative), xml));
        std::size_t pos = 1;
        GetDetail(xml, pos, "English", value);
        return value;
    }
    // Takes the newest batch back, so that each test starts from the install as generated.
    void undoLast() {
        const auto last = lastUndoableEntry(m_ctx->journal().entries());
        ASSERT_TRUE(last);
        const UndoResult u = undoEntry(m_ctx->files(), *last, false);
        ASSERT_TRUE(u.ok) << u.message;
    }
};

// The variant gets the display name it was given, nothing else changes.
RowEdit renamed(const RowInput& in) {
    RowEdit e;
    e.xml = in.xml;
    renameBlueprint(e.xml, in.newDisplayName);
    return e;
}

RowEditor appendComment(const std::string& word) {
    return [word](const RowInput& in) {
        RowEdit e;
        e.xml = in.xml;
        std::size_t pos = 1;
        PutDetail(e.xml, pos, "English", word);
        return e;
    };
}

} // namespace

TEST(Naming, NumbersAndSuffixes) {
    EXPECT_EQ(numberedName("Coach", 0, 1), "Coach");
    EXPECT_EQ(numberedName("Coach", 1, 3), "Coach 2");
    EXPECT_EQ(numberedName("Coach #", 2, 3), "Coach 3");
    EXPECT_EQ(numberedName("Coach#", 0, 1), "Coach1"); // a final # numbers even one item
    AssetRow row;
    row.path = "RailVehicles\\Freight\\HTA\\HTA_Coal.v2.bin";
    EXPECT_EQ(blueprintStem(row), "HTA_Coal.v2");
    EXPECT_EQ(coachOptions().size(), 8u);
    EXPECT_STREQ(coachOptions()[coachOptionOf("_dead")].caption, "Dead");
    EXPECT_STREQ(coachOptions()[coachOptionOf("")].caption, "Spare");
    const VariantName v = withSuffix("Mk1_BSK", "Mk1 BSK", "_MT");
    EXPECT_EQ(v.fileName, "Mk1_BSK_MT");
    EXPECT_EQ(v.displayName, "Mk1 BSK_MT");
}

TEST(Naming, DisplayNameReachesEveryLanguageTheDocumentHas) {
    std::string xml = "<Name d:type=\"cDeltaString\">old</Name>\n<English d:type=\"cDeltaString\">old</English>\n"
                      "<French d:type=\"cDeltaString\"></French>\n<Dutch d:type=\"cDeltaString\">old</Dutch>\n";
    putDisplayName(xml, "new");
    for (const char* tag : {"Name", "English", "French", "Dutch"})
        EXPECT_NE(xml.find(std::string(">new</") + tag + ">"), std::string::npos) << tag << "\n" << xml;
    EXPECT_EQ(xml.find("old"), std::string::npos);
    EXPECT_EQ(xml.find("Polish"), std::string::npos); // never added where the document has none
    EXPECT_NE(xml.find("<Dutch d:type=\"cDeltaString\">new</Dutch>"), std::string::npos);
}

TEST_F(BatchEdit, ChangeNameNumbersEveryRowAndOneUndoTakesTheBatchBack) {
    const std::vector<AssetRow> rows = {row(kLoco), row(kWagon), row(kCoach)};
    const std::string before = english(kWagon);
    BatchOptions o;
    o.command = "Change Name";
    const BatchResult r = runBatch(*m_ctx, rows, o, changeNameEditor("Fleet", rows.size()), nullptr);
    ASSERT_TRUE(r.error.empty()) << r.error;
    EXPECT_EQ(r.rowsWritten, 3u) << describe(r);
    EXPECT_EQ(english(kLoco), "Fleet 1");
    EXPECT_EQ(english(kCoach), "Fleet 3");
    EXPECT_TRUE(fs::exists(file(kWagon).string() + ".bak")); // the old file, under its backup name
    const auto entries = m_ctx->journal().entries();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries.back().command, "Change Name");
    EXPECT_EQ(entries.back().files.size(), 3u);

    undoLast();
    EXPECT_EQ(english(kWagon), before);
    EXPECT_NE(english(kLoco), "Fleet 1");
}

TEST_F(BatchEdit, HostileNamesStayInsideTheirElement) {
    const std::string typed = "Tom & Jerry's <\"Spécial\">, Zürich";
    BatchOptions o;
    o.command = "Change Name";
    const BatchResult r = runBatch(*m_ctx, {row(kWagon)}, o, changeNameEditor(typed, 1), nullptr);
    ASSERT_EQ(r.rowsWritten, 1u) << describe(r);
    std::string xml;
    ASSERT_TRUE(binToXmlText(file(kWagon), xml));
    std::size_t pos = 1;
    std::string value;
    GetDetail(xml, pos, "English", value);
    EXPECT_EQ(utf8FromDocument(shownName(value)), typed);
    undoLast();
}

TEST_F(BatchEdit, UnreadableAndRefusedRowsArePassedOverAndNamedWhileTheRestIsWritten) {
    // A document that does not decode, beside two that do.
    const std::string broken = "DemoRail/Class66Pack/RailVehicles/Freight/HTA/Broken.bin";
    { std::ofstream(file(broken), std::ios::binary) << "SERZ\0\0\1\0 not a document"; }
    const std::vector<AssetRow> rows = {row(kWagon), row(broken), row(kCoach)};
    const auto brokenBytes = ReadTextFile(file(broken));
    BatchOptions o;
    o.command = "Correct test";
    const BatchResult r = runBatch(*m_ctx, rows, o, [](const RowInput& in) {
        RowEdit e = appendComment("changed")(in);
        if (in.row->path.find("Mk1") != std::string::npos)
            e.passedOver = "not a wagon";
        return e;
    }, nullptr);
    EXPECT_EQ(r.rowsWritten, 1u);
    ASSERT_EQ(r.passedOver.size(), 2u);
    EXPECT_NE(r.passedOver[0].row.find("Broken.bin"), std::string::npos);
    EXPECT_NE(r.passedOver[0].reason.find("Broken.bin"), std::string::npos) << r.passedOver[0].reason;
    EXPECT_EQ(r.passedOver[1].reason, "not a wagon");
    EXPECT_EQ(ReadTextFile(file(broken)), brokenBytes);
    const std::string text = describe(r);
    EXPECT_NE(text.find("2 items were passed over"), std::string::npos) << text;
    undoLast();
    fs::remove(file(broken));
}

TEST_F(BatchEdit, VariantsGoBesideTheSourceUnderPlainNamesOnly) {
    const std::vector<AssetRow> rows = {row(kWagon), row(kCoach), row(kWagon)};
    BatchOptions o;
    o.command = "Make Selected Stock Dead";
    o.store = Store::NewName;
    o.names = {{"HTA_Coal_Dead", "HTA Dead"}, {"../../Escaped", "x"}, {"HTA_Coal_Dead", "again"}};
    const BatchResult r = runBatch(*m_ctx, rows, o, renamed, nullptr);
    EXPECT_EQ(r.rowsWritten, 1u) << describe(r);
    EXPECT_TRUE(fs::exists(file("DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal_Dead.bin")));
    EXPECT_EQ(english("DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal_Dead.bin"), "HTA Dead");
    ASSERT_EQ(r.passedOver.size(), 2u);
    EXPECT_NE(r.passedOver[0].reason.find("not a file name"), std::string::npos);
    EXPECT_NE(r.passedOver[1].reason.find("earlier row"), std::string::npos);
    EXPECT_FALSE(fs::exists(s_dir / "rw/Assets/Heritage/Escaped.bin"));

    // The same variant again: its name is taken now, and only a Yes replaces it.
    const std::string dead = "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal_Dead.bin";
    const auto first = ReadTextFile(file(dead));
    o.names = {{"HTA_Coal_Dead", "HTA Dead again"}};
    ScriptedUi ui;
    ui.pushAnswer(Answer::No);
    BatchResult again = runBatch(*m_ctx, {row(kWagon)}, o, renamed, &ui);
    EXPECT_EQ(again.rowsWritten, 0u);
    ASSERT_EQ(again.passedOver.size(), 1u);
    EXPECT_NE(again.passedOver[0].reason.find("exists already"), std::string::npos);
    EXPECT_EQ(ReadTextFile(file(dead)), first);
    ui.pushAnswer(Answer::Yes);
    again = runBatch(*m_ctx, {row(kWagon)}, o, renamed, &ui);
    EXPECT_EQ(again.rowsWritten, 1u);
    EXPECT_EQ(english(dead), "HTA Dead again");
    EXPECT_EQ(ReadTextFile(file(dead + ".bak")), first);
    undoLast();
    undoLast();
    EXPECT_FALSE(fs::exists(file(dead)));
}

TEST_F(BatchEdit, AFailureWhileStoringPutsBackWhatTheBatchHadWritten) {
    const std::vector<AssetRow> rows = {row(kLoco), row(kWagon), row(kCoach)};
    const std::string loco = ReadTextFile(file(kLoco)), wagon = ReadTextFile(file(kWagon)),
                      coach = ReadTextFile(file(kCoach));
    // The third file fails to take its name, as on a disk that went away.
    test::FaultyFiles faults(WriteStep::Replace, std::errc::io_error, 2);
    m_ctx->files().setFileOps(&faults);
    BatchOptions o;
    o.command = "Correct test";
    const BatchResult r = runBatch(*m_ctx, rows, o, appendComment("half"), nullptr);
    m_ctx->files().setFileOps(nullptr);
    EXPECT_FALSE(r.error.empty());
    EXPECT_NE(r.error.find("put back"), std::string::npos) << r.error;
    EXPECT_EQ(ReadTextFile(file(kLoco)), loco);
    EXPECT_EQ(ReadTextFile(file(kWagon)), wagon);
    EXPECT_EQ(ReadTextFile(file(kCoach)), coach);
    for (const auto& e : fs::directory_iterator(file(kCoach).parent_path()))
        EXPECT_EQ(e.path().filename().string().find(".velmora-tmp"), std::string::npos) << e.path();
}

TEST_F(BatchEdit, AFullDiskWhileStagingWritesNothingAndNamesEveryRow) {
    const std::vector<AssetRow> rows = {row(kLoco), row(kWagon)};
    const std::string loco = ReadTextFile(file(kLoco)), wagon = ReadTextFile(file(kWagon));
    test::FaultyFiles full(WriteStep::Write, std::errc::no_space_on_device);
    m_ctx->files().setFileOps(&full);
    BatchOptions o;
    o.command = "Correct test";
    o.threads = 1;
    const BatchResult r = runBatch(*m_ctx, rows, o, appendComment("full"), nullptr);
    m_ctx->files().setFileOps(nullptr);
    EXPECT_EQ(r.rowsWritten, 0u);
    EXPECT_NE(r.error.find(file(kLoco).filename().string()), std::string::npos) << r.error;
    EXPECT_NE(r.error.find("nothing of it was written"), std::string::npos) << r.error;
    EXPECT_EQ(ReadTextFile(file(kLoco)), loco);
    EXPECT_EQ(ReadTextFile(file(kWagon)), wagon);
}

TEST_F(BatchEdit, AbortBeforeStoringWritesNothing) {
    ScriptedUi ui;
    ui.cancelAfter(0);
    const std::string wagon = ReadTextFile(file(kWagon));
    BatchOptions o;
    o.command = "Correct test";
    o.threads = 1;
    std::vector<AssetRow> rows(200, row(kWagon));
    const RowEditor slow = [](const RowInput& in) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return appendComment("aborted")(in);
    };
    const BatchResult r = runBatch(*m_ctx, rows, o, slow, &ui);
    EXPECT_TRUE(r.stopped);
    EXPECT_TRUE(r.written.empty());
    EXPECT_EQ(ReadTextFile(file(kWagon)), wagon);
}
