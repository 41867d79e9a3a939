// The details grid, its saved forms, the work order and the track index: on the demo install's
// scenarios and on scenario and network texts made to carry commas, quotes, line breaks and
// accents; the index built, read again, stopped half-way and refused for a bad Tracks.bin.

#include "detailsfixture.h"
#include "scenariofixture.h"

#include "../core/faultyfiles.h"
#include "velmora/core/convert.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/instructions.h"
#include "velmora/scenarios/scenariodetails.h"
#include "velmora/scenarios/trackindex.h"
#include "velmora/scenarios/workorder.h"

#include <QXmlStreamReader>

#include <algorithm>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

struct Details : test::ScenarioTest<Details> {
    static constexpr const char* kName = "scenario-details";

    // A document of the hand-made scenario text, as openScenario leaves it.
    static ScenarioDocument crafted() {
        ScenarioDocument d;
        d.scenarioText = test::scenarioXml();
        d.properties.displayName = "O'Connor's <coal> & \"slack\" run";
        d.properties.description = "Line one\nLine two";
        d.properties.scenarioClass = "eStandardScenarioClass";
        d.properties.startTime = "0830";
        d.properties.durationMins = "45";
        d.properties.season = "SEASON_AUTUMN";
        d.consists = readConsists(d.scenarioText, "Scenario.bin", d.error, &d.drivenConsist);
        return d;
    }
    // A route folder whose Networks/Tracks.bin holds these bytes.
    fs::path routeWith(const std::string& tracksBin) {
        const fs::path route = m_work.path() / "route";
        fs::create_directories(route / "Networks");
        std::ofstream(route / "Networks" / "Tracks.bin", std::ios::binary | std::ios::trunc) << tracksBin;
        return route;
    }
    static std::string encoded(const std::string& xml) {
        std::string bin;
        EXPECT_TRUE(xmlTextToBin(xml, bin));
        return bin;
    }
};

using Rows = std::vector<std::vector<std::string>>;

// The rows whose label is `label`.
Rows rowsLabelled(const DetailsGrid& g, const std::string& label) {
    Rows out;
    for (const auto& r : g.rows)
        if (!r.empty() && r[0] == label)
            out.push_back(r);
    return out;
}

bool anyCellHolds(const DetailsGrid& g, const std::string& part) {
    for (const auto& r : g.rows)
        for (const auto& c : r)
            if (c.find(part) != std::string::npos)
                return true;
    return false;
}

// Comma-separated records as a spreadsheet reads them: a quoted cell may hold line breaks.
Rows readCsv(const std::string& text) {
    Rows rows(1);
    std::string cell;
    bool quoted = false, wasQuoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char ch = text[i];
        if (quoted) {
            if (ch == '"' && i + 1 < text.size() && text[i + 1] == '"') {
                cell += '"';
                ++i;
            } else if (ch == '"') {
                quoted = false;
            } else {
                cell += ch;
            }
        } else if (ch == '"' && cell.empty() && !wasQuoted) {
            quoted = wasQuoted = true;
        } else if (ch == ',') {
            rows.back().push_back(cell);
            cell.clear();
            wasQuoted = false;
        } else if (ch == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
            rows.back().push_back(cell);
            cell.clear();
            wasQuoted = false;
            rows.emplace_back();
            ++i;
        } else {
            cell += ch;
        }
    }
    if (!rows.back().empty() || !cell.empty())
        rows.back().push_back(cell);
    else
        rows.pop_back();
    return rows;
}

TEST_F(Details, DemoScenarioGridNamesEveryConsistWithItsVehicles) {
    const fs::path folder = copyOf();
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    ASSERT_TRUE(d.ok()) << d.error;
    const DetailsGrid g = detailsGrid(d, nullptr, "English");
    const Rows names = rowsLabelled(g, "Service Name");
    ASSERT_EQ(names.size(), d.consists.size());
    EXPECT_EQ(names[0][1], "Demo service 1");
    EXPECT_EQ(names[2][1], "Loose Consist");
    const Rows classes = rowsLabelled(g, "Service Class");
    EXPECT_EQ(classes[0][1], "Light Engine");
    EXPECT_EQ(classes[1][1], "Standard Freight");
    EXPECT_EQ(classes[2][1], "");
    const Rows destinations = rowsLabelled(g, "Final Destination");
    EXPECT_EQ(destinations[0][1], "Valley Yard");
    EXPECT_EQ(destinations[2][1], "Not Shown");
    const Rows picking = rowsLabelled(g, "Picking Up ");
    EXPECT_EQ(picking[0][1], "Yes");
    EXPECT_EQ(picking[2][1], "No");
    // Times as HHMM: the consist's start, and the stop due half an hour later.
    const Rows starts = rowsLabelled(g, "Start Time");
    ASSERT_EQ(starts[0].size(), 2u);
    EXPECT_EQ(starts[0][1], d.consists[0].vehicles.front().startTime);
    EXPECT_EQ(starts[0][1].size(), 4u);
    const Rows arrivals = rowsLabelled(g, "Arrival Time ");
    ASSERT_FALSE(arrivals.empty());
    const int start = std::stoi(starts[0][1]), due = std::stoi(arrivals[0][1]);
    EXPECT_EQ((due / 100 * 60 + due % 100) - (start / 100 * 60 + start % 100), 30);
    EXPECT_TRUE(anyCellHolds(g, "Stop at destination: Valley Yard"));
    // Every vehicle stands in a row of its own under its consist, with its number.
    for (const auto& c : d.consists)
        for (const auto& v : c.vehicles)
            EXPECT_TRUE(std::any_of(g.rows.begin(), g.rows.end(), [&](const auto& r) {
                return r.size() >= 3 && r[0].empty() && r[1] == v.name && r[2] == v.number;
            })) << v.name;
    // Without a track index nothing is placed.
    EXPECT_TRUE(rowsLabelled(g, "Location").empty());
    EXPECT_TRUE(rowsLabelled(g, "Origin").empty());
    EXPECT_FALSE(anyCellHolds(g, "On Track in tile"));
}

TEST_F(Details, ServiceClassesUseTheScreensOwnTable) {
    EXPECT_EQ(detailsServiceClass("0"), "Special");
    EXPECT_EQ(detailsServiceClass("4"), "Hight-speed Freight");
    EXPECT_EQ(detailsServiceClass("6"), "Standard Freight");
    EXPECT_EQ(detailsServiceClass("10"), "International");
    for (const char* odd : {"11", "-1", "", "4x", "x"})
        EXPECT_EQ(detailsServiceClass(odd), odd);
}

TEST_F(Details, InstructionsGiveAColumnAPlaceWithTheirTexts) {
    const ScenarioDocument d = crafted();
    ASSERT_EQ(d.consists.size(), 3u);
    ASSERT_EQ(d.drivenConsist, 0);
    const DetailsGrid g = detailsGrid(d, nullptr, "English");
    EXPECT_EQ(rowsLabelled(g, "Service Name")[0][1], "6Z01 Coal, \"empties\"");
    EXPECT_EQ(rowsLabelled(g, "Service Class")[0][1], "Hight-speed Freight");
    const Rows drivers = rowsLabelled(g, "Drivers Instructions");
    ASSERT_EQ(drivers.size(), 1u);
    ASSERT_EQ(drivers[0].size(), 4u); // two places of the shunt, one stop
    EXPECT_EQ(drivers[0][1], "Consist operation (level 1): Valley Sidings - Pick up the coal wagons");
    EXPECT_EQ(drivers[0][3], "Stop at destination (level 1): Valley Yard");
    EXPECT_EQ(rowsLabelled(g, "Arrival Time ")[0], (std::vector<std::string>{"Arrival Time ", "0930", "0945", "1000"}));
    EXPECT_EQ(rowsLabelled(g, "Picking Up Here")[0], (std::vector<std::string>{"Picking Up Here", "No", "No", "Yes"}));
    EXPECT_EQ(rowsLabelled(g, "Triggered Instructions")[0][1], test::kHostileText);
    // The AI consist has no instructions and the loose one no driver.
    EXPECT_EQ(rowsLabelled(g, "Final Destination")[2][1], "Not Shown");
}

TEST_F(Details, CsvKeepsHostileCellsWholeAndTabbedTextKeepsRowsOnOneLine) {
    const DetailsGrid g = detailsGrid(crafted(), nullptr, "English");
    const fs::path csv = m_work.path() / "Réports, \"grid\"" / "details.csv";
    std::string error;
    ASSERT_TRUE(saveDetailsGrid(m_ctx->files(), csv, g, &error)) << error;
    const Rows back = readCsv(test::slurp(csv));
    ASSERT_EQ(back.size(), g.rows.size());
    for (std::size_t r = 0; r < g.rows.size(); ++r)
        EXPECT_EQ(back[r], g.rows[r].empty() ? std::vector<std::string>{""} : g.rows[r]) << "row " << r;

    const fs::path txt = m_work.path() / "details.txt";
    ASSERT_TRUE(saveDetailsGrid(m_ctx->files(), txt, g, &error)) << error;
    const auto lines = test::linesOf(test::slurp(txt));
    ASSERT_EQ(lines.size(), g.rows.size());
    const auto triggered = std::find_if(lines.begin(), lines.end(),
                                        [](const std::string& l) { return l.rfind("Triggered Instructions\t", 0) == 0; });
    ASSERT_NE(triggered, lines.end());
    EXPECT_EQ(csvCells(*triggered, '\t')[1], "Couple up, then \"go\" & wait;  at Caf\xE9 Halt");

    // .xls is a SpreadsheetML workbook: well-formed XML, the text in UTF-8.
    const fs::path xls = m_work.path() / "details.xls";
    ASSERT_TRUE(saveDetailsGrid(m_ctx->files(), xls, g, &error)) << error;
    const std::string sheet = test::slurp(xls);
    QXmlStreamReader reader(QByteArray::fromStdString(sheet));
    int cells = 0;
    bool hostile = false;
    while (!reader.atEnd())
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == QLatin1String("Data")) {
            ++cells;
            hostile = hostile || reader.readElementText().startsWith("Couple up, then \"go\" & wait;");
        }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    EXPECT_TRUE(hostile);
    EXPECT_GT(cells, 20);
    EXPECT_NE(sheet.find("Caf\xC3\xA9 Halt"), std::string::npos);

    // Another ending is refused, naming the file; nothing is written.
    const fs::path odd = m_work.path() / "details.doc";
    EXPECT_FALSE(saveDetailsGrid(m_ctx->files(), odd, g, &error));
    EXPECT_NE(error.find(odd.string()), std::string::npos);
    EXPECT_FALSE(fs::exists(odd));
}

TEST_F(Details, FailedGridSaveLeavesTheOldFileWhole) {
    const DetailsGrid g = detailsGrid(crafted(), nullptr, "English");
    const fs::path csv = m_work.path() / "details.csv";
    std::ofstream(csv, std::ios::binary) << "old,grid\r\n";
    test::FaultyFiles faulty(WriteStep::Write);
    m_ctx->files().setFileOps(&faulty);
    std::string error;
    EXPECT_FALSE(saveDetailsGrid(m_ctx->files(), csv, g, &error));
    m_ctx->files().setFileOps(nullptr);
    EXPECT_NE(error.find(csv.string()), std::string::npos) << error;
    EXPECT_EQ(test::slurp(csv), "old,grid\r\n");
}

TEST_F(Details, WorkOrderRunsInItsOrderWithWagonsAndOperations) {
    const std::string html = workOrderHtml(crafted(), "Demo <Valley> Line", "English");
    std::size_t at = 0;
    for (const char* label : {"Route:- ", "Scenario:- ", "Description: ", "Briefing:", "Start Time: ", "Duration: ",
                              "Season: ", "Service: ", "Final Destination: ", "Initial Rolling Stock:-",
                              "Wagon Numbers:- ", "Instruction: ", "At Location: ", "Operation: "}) {
        const std::size_t next = html.find(label, at);
        ASSERT_NE(next, std::string::npos) << label << " after " << at;
        at = next;
    }
    EXPECT_NE(html.find("W101, W102, W103"), std::string::npos);
    EXPECT_NE(html.find("Couple to Front of train"), std::string::npos);
    EXPECT_NE(html.find("Drop off wagon(s)"), std::string::npos);
    EXPECT_NE(html.find("Class 66 (66001)"), std::string::npos);
    EXPECT_EQ(html.find("There are no wagon numbers"), std::string::npos);
    // Document text is escaped; the accent is UTF-8.
    EXPECT_NE(html.find("Demo &lt;Valley&gt; Line"), std::string::npos);
    EXPECT_NE(html.find("O&#39;Connor&#39;s &lt;coal&gt; &amp; &quot;slack&quot; run"), std::string::npos);
    EXPECT_EQ(html.find("<coal>"), std::string::npos);
    EXPECT_NE(html.find("Line one<br>Line two"), std::string::npos);
    EXPECT_NE(html.find("<meta charset=\"utf-8\">"), std::string::npos);
}

TEST_F(Details, WorkOrderWithoutNumbersSaysSoAndFreeRoamHasNoSingleOrder) {
    const ScenarioDocument d = openScenario(*m_ctx, copyOf());
    ASSERT_TRUE(d.ok()) << d.error;
    const std::string html = workOrderHtml(d, "Demo Valley Line", "English");
    EXPECT_NE(html.find("There are no wagon numbers in this scenario,<br>Work Order can be constructed."),
              std::string::npos);
    EXPECT_EQ(html.find("Wagon Numbers:- "), std::string::npos);
    EXPECT_NE(html.find("Service: </b>Demo service 1"), std::string::npos);

    for (const char* name : {"Free roam", "Timetable: morning"}) {
        const ScenarioDocument other = openScenario(*m_ctx, copyOf(name));
        ASSERT_TRUE(other.ok()) << other.error;
        EXPECT_FALSE(hasSingleOrder(other));
        const std::string order = workOrderHtml(other, "Demo Valley Line", "English");
        EXPECT_NE(order.find("Scenario:- "), std::string::npos);
        EXPECT_NE(order.find("has no single work order"), std::string::npos) << name;
        EXPECT_EQ(order.find("Service: "), std::string::npos) << name;
    }
}

TEST_F(Details, OperationsInTheOrdersWords) {
    EXPECT_EQ(operationText("AddToFront"), "Couple to Front of train");
    EXPECT_EQ(operationText("AddToBack"), "Couple to back of train");
    EXPECT_EQ(operationText("DropOffRailVehicle"), "Drop off wagon(s)");
    EXPECT_EQ(operationText("PickingUp"), "Pick Up");
    EXPECT_EQ(operationText("MarshallRailVehicles"), "Marshall");
    EXPECT_EQ(operationText("Default"), "");
    EXPECT_EQ(operationText("Uncouple"), "Uncouple");
}

TEST_F(Details, IndexIsBuiltOnceThenReadAndPlacesVehiclesByTile) {
    const fs::path route = routeWith(encoded(test::tracksXml({{"RIBBON-A", 1, -2}, {"ribbon-b", 1, -3}, {"ribbon-c", 0, 0}})));
    const fs::path file = m_work.path() / "Index" / "route.txt";
    std::vector<std::int64_t> steps;
    const IndexResult built = buildTrackIndex(*m_ctx, route, file, [&](std::int64_t done, std::int64_t) {
        steps.push_back(done);
        return true;
    });
    ASSERT_TRUE(built) << built.message;
    EXPECT_FALSE(steps.empty());
    EXPECT_EQ(built.index.ribbons.size(), 3u);
    // The index is the program's own cache: no backup, no journal entry.
    const auto entries = m_ctx->journal().entries();
    for (const JournalEntry& e : entries)
        for (const JournalFile& f : e.files)
            EXPECT_NE(f.path, file);
    EXPECT_FALSE(fs::exists(file.string() + ".bak"));

    // Read back, with Tracks.bin gone: the index alone places the vehicles.
    fs::remove(route / "Networks" / "Tracks.bin");
    std::string error;
    const auto index = readTrackIndex(file, &error);
    ASSERT_TRUE(index) << error;
    EXPECT_EQ(index->ribbons.size(), 3u);
    ASSERT_TRUE(index->tileOf("ribbon-a"));
    EXPECT_EQ(tileText(*index->tileOf("Ribbon-A")), "+000001-000002");

    const DetailsGrid g = detailsGrid(crafted(), &*index, "English");
    const Rows origins = rowsLabelled(g, "Origin");
    ASSERT_EQ(origins.size(), 3u);
    EXPECT_EQ(origins[0][1], "On Track in tile +000001-000002");
    // A ribbon the index does not know: the vehicle's own tile.
    EXPECT_EQ(origins[1][1], "On Track in tile +000005+000006");
    const Rows locations = rowsLabelled(g, "Location");
    ASSERT_EQ(locations.size(), 3u);
    EXPECT_EQ(locations[0], (std::vector<std::string>{"Location", "On Track in tile +000001-000002",
                                                      "On Track in tile +000001-000003"}));
}

TEST_F(Details, StoppedIndexingLeavesNoIndex) {
    const fs::path route = routeWith(encoded(test::tracksXml({{"a", 1, 1}, {"b", 2, 2}})));
    const fs::path file = m_work.path() / "Index" / "route.txt";
    for (int stopAt : {0, 1}) {
        int calls = 0;
        const IndexResult r = buildTrackIndex(*m_ctx, route, file, [&](std::int64_t, std::int64_t) { return calls++ < stopAt; });
        EXPECT_FALSE(r);
        EXPECT_TRUE(r.stopped);
        EXPECT_TRUE(r.index.ribbons.empty());
        EXPECT_FALSE(fs::exists(file)) << "stopped at call " << stopAt;
    }
}

TEST_F(Details, BadTracksBinIsNamedAndGivesNoIndex) {
    const fs::path file = m_work.path() / "Index" / "route.txt";
    auto check = [&](const fs::path& route, const char* what) {
        const IndexResult r = buildTrackIndex(*m_ctx, route, file);
        EXPECT_FALSE(r) << what;
        EXPECT_FALSE(r.stopped) << what;
        EXPECT_NE(r.message.find((route / "Networks" / "Tracks.bin").string()), std::string::npos) << r.message;
        EXPECT_NE(r.message.find("the track index was not made"), std::string::npos) << r.message;
        EXPECT_FALSE(fs::exists(file)) << what;
    };
    check(routeWith("SERZ, but no document follows"), "garbage");
    // A document, but no XML: the codec's own XML document of a different shape still parses, so
    // break the bytes half-way.
    std::string half = encoded(test::tracksXml({{"a", 1, 1}}));
    half.resize(half.size() / 2);
    check(routeWith(half), "cut short");
    // Larger than any network the program reads: refused before it is read.
    const fs::path huge = routeWith("");
    fs::resize_file(huge / "Networks" / "Tracks.bin", (std::uint64_t{1} << 30) + 1);
    check(huge, "huge");
    fs::remove(huge / "Networks" / "Tracks.bin");
    check(huge, "missing");
}

TEST_F(Details, ForeignIndexFileIsNotReadAsAnIndex) {
    const fs::path file = m_work.path() / "Index" / "route.txt";
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "a\t1\t2\r\n";
    std::string error;
    EXPECT_FALSE(readTrackIndex(file, &error));
    EXPECT_NE(error.find(file.string()), std::string::npos);
    EXPECT_FALSE(readTrackIndex(m_work.path() / "none.txt", &error));
    EXPECT_EQ(trackIndexFile(*m_ctx, "../../escape"), m_ctx->appPath() / "Index" / (fileNameFromText("../../escape") + ".txt"));
    EXPECT_EQ(trackIndexFile(*m_ctx, "../../escape").parent_path(), m_ctx->appPath() / "Index");
}

} // namespace
