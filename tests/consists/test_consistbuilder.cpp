// The consist builder's grid: every command on it, the generated consists by each randomness
// rule, the wagon pool, and the save of the whole grid with everything that can go wrong.

#include "../core/faultyfiles.h"
#include "../core/tempdir.h"
#include "consistids.h"

#include "velmora/consists/consistbuilder.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <memory>

using namespace velmora;
namespace cs = velmora::consists;
namespace fs = std::filesystem;

namespace {

// Random numbers from a fixed list, round and round.
std::function<double()> fixed(std::vector<double> values) {
    auto at = std::make_shared<std::size_t>(0);
    return [values, at] { return values[(*at)++ % values.size()]; };
}

assets::AssetRow poolRow(const std::string& product, const std::string& path, const std::string& name = "Wagon") {
    return {"DemoRail", product, path, name, "Yes", "Freight Wagon", "", "1"};
}

std::vector<assets::AssetRow> pool(int n) {
    std::vector<assets::AssetRow> rows;
    for (int i = 0; i < n; ++i)
        rows.push_back(poolRow("P" + std::to_string(i), "RailVehicles\\W" + std::to_string(i) + ".bin"));
    return rows;
}

// The products of the grid's rows, one letter string: what a consist is made of.
std::vector<std::string> products(const cs::ConsistBuilder& b) {
    std::vector<std::string> out;
    for (const auto& r : b.rows())
        out.push_back(r.product);
    return out;
}

class ConsistBuilderTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_ctx = std::make_unique<AppContext>(m_home.path(), fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
        m_ctx->setRailWorksOverride(m_rw.path());
    }
    fs::path target() const { return m_rw / "Content/ConsistTemplates.bin"; }
    cs::ConsistBuilder builder() { return cs::ConsistBuilder(test::countingIds()); }
    // A grid of two consists: "Coal" of three wagons, "Mixed" of two.
    cs::ConsistBuilder twoConsists() {
        cs::ConsistBuilder b = builder();
        b.startConsist("Coal");
        for (int i = 0; i < 3; ++i)
            b.addStock({"DemoRail", "HTA" + std::to_string(i), "RailVehicles\\HTA.xml"});
        b.startConsist("Mixed");
        b.addStock({"DemoRail", "Van", "RailVehicles\\Van.xml"});
        b.addStock({"DemoRail", "Tank", "RailVehicles\\Tank.xml"});
        return b;
    }
    test::TempDir m_home, m_rw;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
};

TEST_F(ConsistBuilderTest, StockIsAddedOnlyToAConsistBeingBuiltEachWithItsOwnEntryId) {
    cs::ConsistBuilder b = builder();
    EXPECT_FALSE(b.addStock({"A", "B", "c.xml"}));
    EXPECT_TRUE(b.rows().empty());
    ASSERT_TRUE(b.lastStock()) << "kept as the last added, for Insert";
    EXPECT_FALSE(b.startConsist("")) << "an empty name cancels";
    EXPECT_FALSE(b.building());
    ASSERT_TRUE(b.startConsist("Caf\xC3\xA9 \"Express\" & <Co>"));
    EXPECT_TRUE(b.addStock({"A", "B", "c.xml"}));
    EXPECT_TRUE(b.addStock({"A", "B", "d.xml"}));
    ASSERT_EQ(b.rows().size(), 2u);
    const auto& r0 = b.rows()[0];
    const auto& r1 = b.rows()[1];
    EXPECT_EQ(r0.name, "Caf\xC3\xA9 &quot;Express&quot; &amp; &lt;Co&gt;");
    EXPECT_EQ(r0.id, r1.id);
    EXPECT_EQ(r0.key, r1.key);
    EXPECT_NE(r0.entryId, r1.entryId);
    EXPECT_EQ(r0.id.size(), 9u);
    EXPECT_EQ(r0.flipped, "0");
    EXPECT_TRUE(b.unsaved());
    EXPECT_EQ(b.rowsNamed("Caf\xC3\xA9 \"Express\" & <Co>"), (std::vector<std::size_t>{0, 1}));
}

TEST_F(ConsistBuilderTest, IndexRowsGiveColumnsZeroOneAndTwoWithTheBinPathAsXml) {
    std::string error;
    const auto s = cs::stockFromIndexRow(poolRow(" O'Brien & Co ", " RailVehicles\\Caf\xE9.bin "), error);
    ASSERT_TRUE(s) << error;
    EXPECT_EQ(s->provider, "DemoRail");
    EXPECT_EQ(s->product, "O&apos;Brien &amp; Co");
    EXPECT_EQ(s->blueprintId, "RailVehicles\\Caf\xC3\xA9.xml");
    EXPECT_FALSE(cs::stockFromIndexRow({"DemoRail", "", "a.bin", "n", "", "", "", ""}, error));
    EXPECT_FALSE(cs::stockFromIndexRow({"DemoRail", "..", "a.bin", "n", "", "", "", ""}, error));
}

TEST_F(ConsistBuilderTest, InsertWalksTheSelectionFromTheLastRowAndMultiRepeats) {
    cs::ConsistBuilder b = twoConsists();
    EXPECT_EQ(b.insertAfter({}), cs::kNoPlaceSelected);
    b.setLastStock({"DemoRail", "New", "RailVehicles\\New.xml"});
    ASSERT_EQ(b.insertAfter({3, 0}), "");
    EXPECT_EQ(products(b), (std::vector<std::string>{"HTA0", "New", "HTA1", "HTA2", "Van", "New", "Tank"}));
    // Each takes the consist columns of the row it follows.
    EXPECT_EQ(b.rows()[1].id, b.rows()[0].id);
    EXPECT_EQ(b.rows()[5].id, b.rows()[4].id);
    EXPECT_EQ(b.rows()[5].name, "Mixed");
    EXPECT_NE(b.rows()[5].entryId, b.rows()[4].entryId);
    ASSERT_EQ(b.insertAfter({6}, 3), "");
    EXPECT_EQ(b.rows().size(), 10u);
    EXPECT_EQ(b.rows()[9].product, "New");
    EXPECT_EQ(b.insertAfter({99}), cs::kNoPlaceSelected);
}

TEST_F(ConsistBuilderTest, InsertWithoutStockIsRefused) {
    ASSERT_TRUE(twoConsists().save(*m_ctx));
    cs::ConsistBuilder b = builder();
    ASSERT_TRUE(b.open(*m_ctx).ok());
    EXPECT_EQ(b.insertAfter({0}), cs::kNoStockSelected);
    EXPECT_EQ(b.rows().size(), 5u);
    EXPECT_FALSE(b.unsaved());
}

TEST_F(ConsistBuilderTest, FlipDeleteRenameAndClear) {
    cs::ConsistBuilder b = twoConsists();
    b.flip({0, 4});
    b.flip({0});
    EXPECT_EQ(b.rows()[0].flipped, "0");
    EXPECT_EQ(b.rows()[4].flipped, "1");
    EXPECT_TRUE(b.rename(1, "Coal & Co"));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(b.rows()[static_cast<std::size_t>(i)].name, "Coal &amp; Co");
    EXPECT_EQ(b.rows()[3].name, "Mixed") << "only the group of the row";
    EXPECT_FALSE(b.rename(1, ""));
    b.remove({4, 0, 4});
    EXPECT_EQ(products(b), (std::vector<std::string>{"HTA1", "HTA2", "Van"}));
    EXPECT_EQ(b.consistNumbers(), (std::vector<std::size_t>{0, 0, 1}));
    b.clear();
    EXPECT_TRUE(b.rows().empty());
    EXPECT_FALSE(b.building());
}

TEST_F(ConsistBuilderTest, EachRandomnessRulePicksItsRows) {
    // 0: one row, chosen once, for every wagon.
    EXPECT_EQ(cs::pickPoolRows(10, 4, 0, fixed({0.55, 0.0})), (std::vector<std::size_t>(4, 5)));
    // 1 to 9 alike: half (rounded to even) from the first half of the pool, the rest from the second.
    for (int r : {1, 5, 9})
        EXPECT_EQ(cs::pickPoolRows(10, 5, r, fixed({0.0, 0.99, 0.5, 0.0, 0.99})),
                  (std::vector<std::size_t>{0, 4, 7, 5, 9}))
            << r;
    EXPECT_EQ(cs::pickPoolRows(10, 7, 3, fixed({0.0})).size(), 7u);
    EXPECT_EQ(cs::pickPoolRows(10, 7, 3, fixed({0.0}))[3], 0u) << "7/2 rounds to 4 wagons from the first half";
    EXPECT_EQ(cs::pickPoolRows(10, 7, 3, fixed({0.0}))[4], 5u);
    // A pool of one row serves both halves.
    EXPECT_EQ(cs::pickPoolRows(1, 3, 4, fixed({0.7})), (std::vector<std::size_t>{0, 0, 0}));
    // 10: any row of the whole pool, the last one included.
    EXPECT_EQ(cs::pickPoolRows(4, 4, 10, fixed({0.0, 0.3, 0.6, 0.999})), (std::vector<std::size_t>{0, 1, 2, 3}));
    // Above 10, below 0, an empty pool, no wagons: nothing.
    EXPECT_TRUE(cs::pickPoolRows(10, 4, 11, fixed({0.5})).empty());
    EXPECT_TRUE(cs::pickPoolRows(10, 4, -1, fixed({0.5})).empty());
    EXPECT_TRUE(cs::pickPoolRows(0, 4, 0, fixed({0.5})).empty());
    EXPECT_TRUE(cs::pickPoolRows(10, 0, 10, fixed({0.5})).empty());
}

TEST_F(ConsistBuilderTest, GenerateAddsThePickedPoolRowsAndSkipsRefusedOnes) {
    cs::ConsistBuilder b = builder();
    ASSERT_TRUE(b.startConsist("Random"));
    auto rows = pool(4);
    rows[2].product = "..";
    std::vector<std::string> problems;
    EXPECT_EQ(b.generate(rows, 4, 10, fixed({0.0, 0.3, 0.6, 0.9}), &problems), 3);
    EXPECT_EQ(products(b), (std::vector<std::string>{"P0", "P1", "P3"}));
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].find("Pool row 3"), std::string::npos) << problems[0];
    EXPECT_EQ(b.rows()[0].blueprintId, "RailVehicles\\W0.xml");
    EXPECT_EQ(b.generate({}, 5, 0, fixed({0.5})), 0) << "an empty pool adds nothing";
    EXPECT_EQ(b.generate(rows, 5, 12, fixed({0.5})), 0);
    EXPECT_EQ(b.rows().size(), 3u);
}

TEST_F(ConsistBuilderTest, APoolIsReadByItsEndingAndShortRowsAreRefusedByLine) {
    const std::string header = "Provider,Product,Path,Name,In Scene,Category,Blueprint,Index\r\n";
    m_home.write("pool.csv", header + "DemoRail,HTA,RailVehicles\\HTA.bin,\"HTA, red\",Yes,Freight Wagon,,1\r\n"
                                      "DemoRail,Van,RailVehicles\\Van.bin,Van,Yes,Freight Wagon,,2\r\n");
    std::vector<assets::AssetRow> rows;
    std::string error;
    ASSERT_TRUE(cs::loadPool(m_home / "pool.csv", rows, error)) << error;
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].name, "HTA, red");
    m_home.write("pool.TXT", "DemoRail\tVan\tRailVehicles\\Van.bin\tVan\tYes\tFreight Wagon\t\t2\r\n");
    ASSERT_TRUE(cs::loadPool(m_home / "pool.TXT", rows, error)) << error;
    EXPECT_EQ(rows.size(), 1u);
    m_home.write("short.csv", header + "DemoRail,HTA,RailVehicles\\HTA.bin,HTA,Yes,Freight Wagon,,1\r\n\r\n"
                                       "DemoRail,Van,RailVehicles\\Van.bin\r\n");
    EXPECT_FALSE(cs::loadPool(m_home / "short.csv", rows, error));
    EXPECT_NE(error.find("short.csv, line 4: 3 cells"), std::string::npos) << error;
    EXPECT_EQ(rows.size(), 1u) << "a refused pool leaves the old one";
    EXPECT_FALSE(cs::loadPool(m_home / "absent.csv", rows, error));
    EXPECT_NE(error.find("absent.csv"), std::string::npos) << error;
    m_home.write("pool.doc", header);
    EXPECT_FALSE(cs::loadPool(m_home / "pool.doc", rows, error));
}

TEST_F(ConsistBuilderTest, ASavedGridReadsBackEqualWithAccentsQuotesAndAmpersands) {
    cs::ConsistBuilder b = twoConsists();
    b.startConsist("Caf\xC3\xA9 \"Nord\" & 'Sud'");
    b.addStock({"O&apos;Brien", "Caf\xC3\xA9", "RailVehicles\\Mk1.xml"});
    b.flip({5});
    const cs::SaveResult r = b.save(*m_ctx);
    ASSERT_TRUE(r) << r.detail;
    EXPECT_EQ(r.message, cs::kReady);
    EXPECT_TRUE(r.created);
    EXPECT_FALSE(b.unsaved());
    cs::ConsistBuilder back = builder();
    const cs::OpenResult o = back.open(*m_ctx);
    ASSERT_TRUE(o.ok()) << o.error;
    EXPECT_TRUE(o.exists);
    EXPECT_EQ(back.rows(), b.rows());
    EXPECT_EQ(utf8FromDocument(cs::shownName(back.rows()[5].name)), "Caf\xC3\xA9 \"Nord\" & 'Sud'");
    EXPECT_EQ(o.missing.size(), 6u) << "none of the stock is installed";
    // Saved again unchanged, the file is the same bytes.
    const std::string first = test::slurp(target());
    ASSERT_TRUE(back.save(*m_ctx));
    EXPECT_EQ(test::slurp(target()), first);
    EXPECT_TRUE(fs::exists(m_rw / "Content/ConsistTemplates.bin.bak"));
}

TEST_F(ConsistBuilderTest, OpeningMissingInvalidAndMergedConsists) {
    cs::ConsistBuilder b = builder();
    cs::OpenResult o = b.open(*m_ctx);
    EXPECT_TRUE(o.ok());
    EXPECT_FALSE(o.exists);
    m_rw.write("Content/ConsistTemplates.bin", "not a document");
    o = b.open(*m_ctx);
    EXPECT_FALSE(o.ok());
    EXPECT_NE(o.error.find("ConsistTemplates.bin"), std::string::npos) << o.error;
    EXPECT_TRUE(b.rows().empty());
    std::string bin;
    ASSERT_TRUE(xmlTextToBin("<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cRecordSet "
                             "xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\" d:id=\"1\">\r\n"
                             "\t<Record>\r\n\t</Record>\r\n</cRecordSet>\r\n",
                             bin, "t"));
    m_rw.write("Content/ConsistTemplates.bin", bin);
    o = b.open(*m_ctx);
    EXPECT_EQ(o.error, cs::kInvalidFile);
    // Stock that is installed is not reported missing.
    m_rw.write("Assets/DemoRail/Van/RailVehicles/Van.bin", "x");
    fs::remove(target());
    ASSERT_TRUE(twoConsists().save(*m_ctx));
    o = b.open(*m_ctx);
    ASSERT_TRUE(o.ok());
    EXPECT_EQ(o.missing.size(), 4u);
    EXPECT_FALSE(b.rowMissing(*m_ctx, 3));
    EXPECT_TRUE(b.rowMissing(*m_ctx, 0));
}

TEST_F(ConsistBuilderTest, AnEmptyGridIsNotWritten) {
    ASSERT_TRUE(twoConsists().save(*m_ctx));
    const std::string before = test::slurp(target());
    cs::ConsistBuilder b = builder();
    ASSERT_TRUE(b.open(*m_ctx).ok());
    b.clear();
    const cs::SaveResult r = b.save(*m_ctx);
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kNothingToSave);
    EXPECT_EQ(test::slurp(target()), before);
}

TEST_F(ConsistBuilderTest, AFailedWriteLeavesTheOldFileWhole) {
    ASSERT_TRUE(twoConsists().save(*m_ctx));
    const std::string before = test::slurp(target());
    for (WriteStep step : {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup, WriteStep::Replace}) {
        cs::ConsistBuilder b = builder();
        ASSERT_TRUE(b.open(*m_ctx).ok());
        b.flip({0});
        test::FaultyFiles faulty(step, std::errc::no_space_on_device);
        m_ctx->files().setFileOps(&faulty);
        const cs::SaveResult r = b.save(*m_ctx);
        m_ctx->files().setFileOps(nullptr);
        EXPECT_FALSE(r) << writeStepName(step);
        EXPECT_EQ(r.message, cs::kNotWritten);
        EXPECT_NE(r.detail.find("ConsistTemplates.bin"), std::string::npos) << r.detail;
        EXPECT_TRUE(b.unsaved());
        EXPECT_EQ(test::slurp(target()), before) << writeStepName(step);
    }
}

TEST_F(ConsistBuilderTest, AMissingTemplateWritesNothing) {
    test::TempDir data;
    fs::create_directories(data / "Templates");
    fs::copy_file(fs::path(VELMORA_SOURCE_DIR) / "data/Templates/ConsistHeader.txt", data / "Templates/ConsistHeader.txt");
    AppContext other(m_home.path(), data.path(), m_ui);
    other.setRailWorksOverride(m_rw.path());
    const cs::SaveResult r = twoConsists().save(other);
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kNotWritten);
    EXPECT_NE(r.detail.find("ConsistName.txt"), std::string::npos) << r.detail;
    EXPECT_FALSE(fs::exists(target()));
}

TEST_F(ConsistBuilderTest, WithEveryBackupNameTakenTheFileIsOnlyReplacedWhenTheUserAgrees) {
    ASSERT_TRUE(twoConsists().save(*m_ctx));
    const std::string before = test::slurp(target());
    m_rw.write("Content/ConsistTemplates.bin.bak", "old");
    for (int n = 1; n <= 50; ++n)
        m_rw.write("Content/ConsistTemplates.bin.bak" + std::to_string(n), "old");
    cs::ConsistBuilder b = builder();
    ASSERT_TRUE(b.open(*m_ctx).ok());
    b.flip({1});
    m_ui.pushAnswer(Answer::No);
    cs::SaveResult r = b.save(*m_ctx);
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kNotWritten);
    EXPECT_EQ(test::slurp(target()), before);
    m_ui.pushAnswer(Answer::Yes);
    r = b.save(*m_ctx);
    ASSERT_TRUE(r) << r.detail;
    EXPECT_NE(test::slurp(target()), before);
    EXPECT_EQ(test::slurp(m_rw / "Content/ConsistTemplates.bin.bak50"), "old");
}

TEST_F(ConsistBuilderTest, OneSaveIsOneJournalEntryThatUndoesByteForByte) {
    ASSERT_TRUE(twoConsists().save(*m_ctx, "First"));
    const std::string first = test::slurp(target());
    cs::ConsistBuilder b = builder();
    ASSERT_TRUE(b.open(*m_ctx).ok());
    b.remove({0, 1});
    ASSERT_TRUE(b.save(*m_ctx, "consists delete"));
    auto entries = m_ctx->journal().entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries.back().command, "consists delete");
    const UndoResult u = undoEntry(m_ctx->files(), entries.back().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_EQ(test::slurp(target()), first);
}

} // namespace
