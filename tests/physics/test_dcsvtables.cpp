// The .dcsv tables: an unchanged table saved is the same file byte for byte, a changed point
// changes that point alone, rows added in X order and taken away, ragged rows and text in a
// number column named with their row, axis titles from a curve's name, and the picture drawn.

#include "../common/demofixture.h"
#include "../core/faultyfiles.h"
#include "curveimage.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/physics/dcsvtable.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

#include <fstream>

using namespace velmora;
using namespace velmora::physics;
namespace fs = std::filesystem;

namespace {

struct DcsvTables : test::DemoInstallTest<DcsvTables> {
    static constexpr const char* kName = "dcsvtables";
    static fs::path throttle() {
        return s_dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Simulation/"
                       "Class66_EWS_TractiveEffortVsThrottle.dcsv";
    }
    // A table as XML text, one row a pair; an empty cell leaves its element out.
    static fs::path xmlTable(const std::string& name, const std::vector<std::pair<std::string, std::string>>& rows) {
        std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<cCSVContainer xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
                          "d:version=\"1.0\" d:id=\"1\">\n\t<CsvItem>\n";
        int id = 2;
        for (const auto& [x, y] : rows) {
            xml += "\t\t<cCSVItem d:id=\"" + std::to_string(id++) + "\">\n";
            if (!x.empty())
                xml += "\t\t\t<X d:type=\"cDeltaString\">" + x + "</X>\n";
            if (!y.empty())
                xml += "\t\t\t<Y d:type=\"cDeltaString\">" + y + "</Y>\n";
            xml += "\t\t</cCSVItem>\n";
        }
        xml += "\t</CsvItem>\n</cCSVContainer>\n";
        const fs::path file = s_dir / name;
        std::ofstream(file, std::ios::binary) << xml;
        return file;
    }
};

TEST_F(DcsvTables, AnUnchangedTableIsSavedByteForByte) {
    const std::string before = ReadTextFile(throttle());
    DcsvTable t;
    ASSERT_EQ(readTable(throttle(), t), "");
    ASSERT_EQ(t.points.size(), 9u);
    EXPECT_EQ(t.points[8].x, "1");
    // Writing a point's own values changes nothing.
    ASSERT_EQ(setPoint(t, 4, t.points[4].x, t.points[4].y), "");
    EXPECT_FALSE(t.changed);
    ASSERT_EQ(saveTable(*m_ctx, t, "test"), "");
    EXPECT_EQ(ReadTextFile(throttle()), before);
}

TEST_F(DcsvTables, ChangedAddedAndRemovedPointsReachTheFile) {
    DcsvTable t;
    ASSERT_EQ(readTable(throttle(), t), "");
    std::string before;
    ASSERT_TRUE(binToXmlText(throttle(), before));
    ASSERT_EQ(rowOfX(t, 0.5), 4);
    ASSERT_EQ(setPoint(t, 4, "0.5", "0.45"), "");
    fs::path backup;
    ASSERT_EQ(saveTable(*m_ctx, t, "test", &backup), "");
    EXPECT_TRUE(fs::exists(backup));
    std::string after;
    ASSERT_TRUE(binToXmlText(throttle(), after));
    // One line differs: the Y of the fifth point.
    std::size_t differing = 0;
    for (std::size_t a = 0, b = 0; a < before.size() && b < after.size();) {
        const std::size_t ea = before.find('\n', a), eb = after.find('\n', b);
        const std::string la = before.substr(a, ea - a), lb = after.substr(b, eb - b);
        if (la != lb) {
            ++differing;
            EXPECT_NE(lb.find(">0.45</Y>"), std::string::npos) << lb;
        }
        a = ea + 1;
        b = eb + 1;
    }
    EXPECT_EQ(differing, 1u);

    ASSERT_EQ(addPoint(t, "0.3", "0.3"), "");
    ASSERT_EQ(addPoint(t, "-1", "0"), "");
    ASSERT_EQ(addPoint(t, "2", "1.2"), "");
    ASSERT_EQ(t.points.size(), 12u);
    EXPECT_EQ(t.points.front().x, "-1");
    EXPECT_EQ(t.points[4].x, "0.3");
    EXPECT_EQ(t.points.back().x, "2");
    ASSERT_EQ(removePoint(t, 0), "");
    ASSERT_EQ(saveTable(*m_ctx, t, "test"), "");
    DcsvTable again;
    ASSERT_EQ(readTable(throttle(), again), "");
    ASSERT_EQ(again.points.size(), 11u);
    EXPECT_EQ(again.points[3].y, "0.3");
    EXPECT_EQ(again.points[5].y, "0.45");
    EXPECT_EQ(again.points.back().y, "1.2");

    // Wrong numbers change nothing; a table keeps its last row.
    const std::string xml = again.xml;
    EXPECT_NE(setPoint(again, 1, "0.1", "lots").find("row 2: Y: 'lots' is not a number"), std::string::npos);
    EXPECT_NE(addPoint(again, "x", "1").find("X 'x' is not a number"), std::string::npos);
    EXPECT_EQ(again.xml, xml);
    DcsvTable one;
    one.file = "one.dcsv";
    one.binary = false;
    one.xml = "<cCSVContainer><CsvItem><cCSVItem><X>1</X><Y>2</Y></cCSVItem></CsvItem></cCSVContainer>";
    one.points = {{"1", "2", 1, 2}};
    EXPECT_NE(removePoint(one, 0).find("the last row of a table stays"), std::string::npos);
    // Two rows of one X: a row by X is then ambiguous.
    ASSERT_EQ(addPoint(one, "1", "3"), "");
    EXPECT_EQ(rowOfX(one, 1), -2);
    EXPECT_EQ(rowOfX(one, 7), -1);
}

TEST_F(DcsvTables, RaggedRowsAndTextInANumberColumnAreNamedWithTheirRow) {
    DcsvTable t;
    const fs::path ragged = xmlTable("Ragged, \"Curve\" é.dcsv", {{"0", "0"}, {"1", ""}, {"2", "2"}});
    std::string problem = readTable(ragged, t);
    EXPECT_NE(problem.find(ragged.string() + ": row 2 has no Y"), std::string::npos) << problem;
    const fs::path text = xmlTable("Text.dcsv", {{"0", "0"}, {"1", "1"}, {"abc", "2"}});
    problem = readTable(text, t);
    EXPECT_NE(problem.find("row 3: X 'abc' is not a number"), std::string::npos) << problem;
    const fs::path missing = s_dir / "Nö such, \"table\".dcsv";
    problem = readTable(missing, t);
    EXPECT_NE(problem.find(missing.string()), std::string::npos) << problem;
}

TEST_F(DcsvTables, AFailedWriteLeavesTheOldTable) {
    DcsvTable t;
    ASSERT_EQ(readTable(throttle(), t), "");
    const std::string before = ReadTextFile(throttle());
    ASSERT_EQ(setPoint(t, 1, t.points[1].x, "0.9"), "");
    test::FaultyFiles faults(WriteStep::Replace, std::errc::io_error);
    m_ctx->files().setFileOps(&faults);
    const std::string problem = saveTable(*m_ctx, t, "test");
    m_ctx->files().setFileOps(nullptr);
    EXPECT_NE(problem.find("TractiveEffortVsThrottle.dcsv"), std::string::npos) << problem;
    EXPECT_EQ(ReadTextFile(throttle()), before);
}

TEST(CurveNames, GiveAxisTitles) {
    EXPECT_EQ(axisTitlesOf("TractiveEffortVsSpeed").x, "Speed");
    EXPECT_EQ(axisTitlesOf("TractiveEffortVsSpeed").y, "Tractive effort");
    EXPECT_EQ(axisTitlesOf("TractiveForceVSpeed").x, "Speed");
    EXPECT_EQ(axisTitlesOf("TractiveEffortVThrottle").x, "Throttle");
    EXPECT_EQ(axisTitlesOf("Class66_EWS_BurnRateVsSteamUsageRate.dcsv").x, "Steam usage rate");
    EXPECT_EQ(axisTitlesOf("ConditionChangeVSTemp").y, "Condition change");
    EXPECT_EQ(axisTitlesOf("Numbers").x, "");
}

TEST(CurvePictures, AreDrawnWithTheirRange) {
    // One point: no line, and a range that still has width.
    const PlotRange one = plotRange({{5, 0.5}});
    EXPECT_LT(one.minX, 5);
    EXPECT_GT(one.maxX, 5);
    EXPECT_LT(one.minY, one.maxY);
    const PlotRange many = plotRange({{0, 1}, {150, 300}, {40, -2}});
    EXPECT_EQ(many.minX, 0);
    EXPECT_EQ(many.maxX, 150);
    EXPECT_EQ(many.minY, -2);
    EXPECT_EQ(many.maxY, 300);
    const auto app = ensureGuiApplication();
    const QImage image = renderCurve({"Curve", "Speed", "Tractive effort", {{0, 1}, {50, 0.5}, {100, 0.2}}}, 400, 300);
    ASSERT_EQ(image.size(), QSize(400, 300));
    int red = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y) == QColor(255, 0, 0))
                ++red;
    EXPECT_GT(red, 50); // the line is drawn
}

} // namespace
