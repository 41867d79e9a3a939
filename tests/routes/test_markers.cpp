// Route markers from GPS files: the same points from every kind of file give the same .csv,
// the .dcsv and blueprint decode, bad points and bad files are named while the rest goes on,
// old outputs are kept as numbered backups and one undo takes a run back.

#include "../core/faultyfiles.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/markers.h"

#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace velmora::routes;
namespace fs = std::filesystem;

namespace {

void put(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const auto& l : lines)
        out += l + "\n";
    return out;
}

// The same three points, each kind of file in its own way.
const char* const kGpx = R"(<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="hand"><trk><name>Line</name><trkseg>
  <trkpt lat="51.501234567891" lon="-0.123456789012"><ele>12</ele></trkpt>
  <trkpt lon="-0.2" lat="51.6"/>
  <trkpt lat="51.7000" lon="-0.30"/>
</trkseg></trk></gpx>
)";
const char* const kKml = R"(<?xml version="1.0" encoding="UTF-8"?>
<kml xmlns="http://www.opengis.net/kml/2.2"><Document><Placemark><name>The line</name>
<LineString><coordinates>
  -0.123456789012,51.501234567891,0 -0.2,51.6,0
  -0.30,51.7000,0
</coordinates></LineString></Placemark></Document></kml>
)";
const char* const kWpt = "OziExplorer Waypoint File Version 1.1\r\nWGS 84\r\nReserved 2\r\n"
                         "1,1, 51.501234567891, -0.123456789012,,0,1\r\n"
                         "2,1,51.6,-0.2,,0,1\r\n3,1,  51.7000 ,-0.30\r\n";
const char* const kCsv = "-0.123456789012,51.501234567891\r\n-0.2,51.6\r\n-0.30,51.7000\r\n";

class Markers : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-markers-" + std::to_string(::getpid()) + "-" +
                                             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        m_ctx = std::make_unique<AppContext>(m_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
        m_save = m_dir / "rw" / "Assets" / "Me" / "Markers" / "RouteMarkers";
        fs::create_directories(m_save);
    }
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(m_dir, ec);
    }
    MarkerReport convert(const std::vector<fs::path>& inputs, bool csvOnly = false, fs::path to = {}) {
        ConvertOptions o;
        o.saveFolder = to.empty() ? m_save : to;
        o.csvOnly = csvOnly;
        o.colour = {255, 0, 51};
        return convertMarkers(*m_ctx, inputs, o);
    }
    fs::path input(const std::string& name, const std::string& bytes) {
        put(m_dir / "in" / name, bytes);
        return m_dir / "in" / name;
    }

    fs::path m_dir, m_save;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
};

TEST_F(Markers, SamePointsFromEveryKindOfFileGiveTheSameCsvAndABlueprintThatDecodes) {
    std::vector<std::string> csvs;
    for (const auto& [name, text] : std::vector<std::pair<std::string, std::string>>{
             {"line.gpx", kGpx}, {"line.KML", kKml}, {"line.wpt", kWpt}, {"line.csv", kCsv}}) {
        const fs::path to = m_save / name.substr(5);
        const MarkerReport r = convert({input(name, text)}, false, to);
        ASSERT_TRUE(r.ok) << r.message;
        EXPECT_TRUE(r.problems.empty()) << name << ": " << joined(r.problems);
        EXPECT_EQ(r.message,
                  "All selected Marker files have been converted to .csv files and are located\nin folder " +
                      to.string());
        csvs.push_back(ReadTextFile(to / "line.csv"));
        // A series: its path below Assets in the series slot, the colour as the sliders stood.
        std::string xml;
        ASSERT_TRUE(binToXmlText(to / "line.bin", xml)) << name;
        EXPECT_NE(xml.find("<cRouteMarkerBlueprint>"), std::string::npos);
        const std::size_t series = xml.find("<MarkerSeriesCSV>");
        EXPECT_NE(series, std::string::npos);
        EXPECT_EQ(xml.find(">Me\\Markers\\RouteMarkers\\" + name.substr(5) + "\\line</CsvFile>"),
                  xml.find("</CsvFile>", series) - 30 - name.substr(5).size())
            << xml;
        EXPECT_NE(xml.find(">1</Red>"), std::string::npos);
        EXPECT_NE(xml.find(">0.2</Blue>"), std::string::npos);
        // The .dcsv is a document of the codec too, the points in order, unnamed ones named after the file.
        std::string bin, back;
        ASSERT_TRUE(xmlTextToBin(ReadTextFile(to / "line.dcsv"), bin));
        const fs::path dcsvBin = m_dir / "dcsv.bin";
        put(dcsvBin, bin);
        ASSERT_TRUE(binToXmlText(dcsvBin, back));
        EXPECT_NE(back.find(">-0.123457</X>"), std::string::npos) << back;
        EXPECT_NE(back.find(">51.7</Y>"), std::string::npos);
        EXPECT_NE(back.find(">line</Name>"), std::string::npos);
    }
    EXPECT_EQ(csvs[0], kCsv);
    for (const auto& c : csvs)
        EXPECT_EQ(c, csvs[0]);
}

TEST_F(Markers, KmlTracksAndPlacemarks) {
    // A line makes the file a track: placemark names are not read and the points are one series.
    GpsRead r = readKml(
        R"(<kml><Placemark><name>Start</name><Point><coordinates>1,2,0</coordinates></Point></Placemark>
        <Placemark><name>Track</name><LineString><coordinates>3,4,0 5,6,0</coordinates></LineString></Placemark></kml>)",
        "a.kml", false);
    ASSERT_EQ(r.sets.size(), 1u);
    EXPECT_FALSE(r.sets[0].named);
    EXPECT_EQ(pointCsvText(r.sets[0]), "3,4\r\n5,6\r\n");
    // Two lines give two outputs; a ring counts only in Convert Fully.
    const char* two = "<kml><LineString><coordinates>1,2,0</coordinates></LineString>"
                      "<LineString><coordinates>3,4,0</coordinates></LineString>"
                      "<LinearRing><coordinates>7,8,0</coordinates></LinearRing></kml>";
    EXPECT_EQ(readKml(two, "b.kml", false).sets.size(), 2u);
    EXPECT_EQ(readKml(two, "b.kml", true).sets.size(), 3u);
    // An item that does not end in ,0 ends its block; the next block is read again.
    r = readKml("<kml><LineString><coordinates>1,2,0 3,4,15 5,6,0</coordinates></LineString>"
                "<LineString><coordinates>7,8,0</coordinates></LineString></kml>",
                "c.kml", false);
    ASSERT_EQ(r.sets.size(), 2u);
    EXPECT_EQ(pointCsvText(r.sets[0]), "1,2\r\n");
    ASSERT_EQ(r.problems.size(), 1u);
    EXPECT_NE(r.problems[0].find("c.kml: line 1: the coordinates item '3,4,15' does not end in ,0"),
              std::string::npos);
    // Points: each placemark's name, blanks made "_", "NoName" without one.
    r = readKml(
        "<kml>\n<Placemark><name>  Old  Mill "
        "</name><Point><coordinates>1.5,2.5,0</coordinates></Point></Placemark>\n"
        "<Placemark><Point><coordinates> 3,4 </coordinates></Point></Placemark>\n"
        "<Placemark><Point><coordinates>5,6,0</coordinates></Point><name>After</name></Placemark></kml>",
        "d.kml", false);
    ASSERT_EQ(r.sets.size(), 1u);
    EXPECT_TRUE(r.sets[0].named);
    EXPECT_EQ(pointCsvText(r.sets[0]), "1.5,2.5,Old__Mill\r\n3,4,NoName\r\n5,6,After\r\n");
}

TEST_F(Markers, GpxWptAndCsvReaders) {
    // No track: the waypoints; a track: its points only.
    GpsRead r =
        readGpx(R"(<gpx><wpt lat="1" lon="2"><name>x</name></wpt><wpt lon="4" lat="3"/></gpx>)", "w.gpx");
    ASSERT_EQ(r.sets.size(), 1u);
    EXPECT_EQ(pointCsvText(r.sets[0]), "2,1\r\n4,3\r\n");
    r = readGpx(R"(<gpx><wpt lat="1" lon="2"/><trk><trkseg><trkpt lat="5" lon="6"/></trkseg></trk></gpx>)",
                "t.gpx");
    EXPECT_EQ(pointCsvText(r.sets.at(0)), "6,5\r\n");
    r = readGpx("<gpx><metadata/></gpx>", "empty.gpx");
    EXPECT_TRUE(r.sets.empty());
    EXPECT_EQ(joined(r.problems), "empty.gpx: holds no track points and no waypoints\n");
    // No line with 1,1,: nothing at all.
    r = readWpt("OziExplorer Waypoint File Version 1.1\r\n2,5,51,0\r\n", "n.wpt");
    EXPECT_TRUE(r.sets.empty());
    EXPECT_EQ(joined(r.problems), "n.wpt: holds no line with 1,1, where the waypoints begin\n");
    // A csv line with one field is named by its line; a name keeps its commas; a leading line feed goes.
    r = readPointCsv("1,2,A, B\r\n\nlonely\r\n\n3,4\r\n", "p.csv");
    ASSERT_EQ(r.sets.size(), 1u);
    EXPECT_EQ(pointCsvText(r.sets[0]), "1,2,A, B\r\n3,4\r\n");
    EXPECT_EQ(joined(r.problems),
              "p.csv: line 3: 'lonely' has one field, not a longitude and a latitude; it was left out\n");
}

TEST_F(Markers, OutOfRangeAndBadFilesAreNamedAndTheRestIsConverted) {
    const fs::path range = input("range.csv", "1,2\r\n10,95.5\r\n190,10\r\nabc,1\r\n3,4\r\n");
    const fs::path fake = input("fake.gpx", std::string("\x89PNG\r\n\x1a\n\0\0binary", 16));
    const fs::path text = input("text.kml", "just some words, not a kml\r\n");
    const fs::path other = input("notes.txt", "1,2\r\n");
    const fs::path good = input("good.wpt", kWpt);
    const MarkerReport r = convert({range, fake, text, other, good});
    ASSERT_TRUE(r.ok);
    const std::string p = joined(r.problems);
    EXPECT_NE(
        p.find(range.string() + ": line 2: the latitude 95.5 is beyond 90 degrees; the point was left out"),
        std::string::npos)
        << p;
    EXPECT_NE(p.find(range.string() + ": line 3: the longitude 190 is beyond 180 degrees"),
              std::string::npos);
    EXPECT_NE(p.find(range.string() + ": line 4: the longitude 'abc' is not a number"), std::string::npos);
    EXPECT_NE(p.find(fake.string() + ": line 1: is not a GPX file"), std::string::npos) << p;
    EXPECT_NE(p.find(text.string() + ": line 1: is not a KML file"), std::string::npos) << p;
    EXPECT_NE(p.find(other.string() + ": You have not selected a .kml,.wpt,.mkr,.gpx or .csv file?"),
              std::string::npos);
    EXPECT_EQ(ReadTextFile(m_save / "range.csv"), "1,2\r\n3,4\r\n");
    EXPECT_EQ(ReadTextFile(m_save / "good.csv"), kCsv);
    EXPECT_FALSE(fs::exists(m_save / "fake.csv"));
    EXPECT_FALSE(fs::exists(m_save / "text.dcsv"));
    // Process takes GPS files only.
    const MarkerReport csvOnly = convert({range}, true, m_dir / "out");
    EXPECT_EQ(joined(csvOnly.problems),
              range.string() + ": You have not selected a .kml,.wpt,.mkr or .gpx file?\n");
}

TEST_F(Markers, HostileNamesAndUtf16MarkerFiles) {
    const fs::path kml = input(
        "names.kml",
        "<kml>"
        "<Placemark><name>Zürich Hbf</name><Point><coordinates>8.54,47.37,0</coordinates></Point></Placemark>"
        "<Placemark><name>A, B &amp; \"C\" 'D' "
        "&lt;E&gt;</name><Point><coordinates>1,2</coordinates></Point></Placemark>"
        "<Placemark><name>tab&#9;and&#10;line</name><Point><coordinates>3,4</coordinates></Point></Placemark>"
        "</kml>");
    // UTF-16 with its byte order mark, as the marker files are.
    std::u16string mkrText =
        u"\uFEFFMarkers\r\nMarker (  -0.5   51.25  Café  Nord )\r\nMarker ( 2.5 48.75\tQuai )\r\n";
    const fs::path mkr =
        input("café.mkr", std::string(reinterpret_cast<const char*>(mkrText.data()), mkrText.size() * 2));
    const MarkerReport r = convert({kml, mkr});
    ASSERT_TRUE(r.ok);
    EXPECT_TRUE(r.problems.empty()) << joined(r.problems);
    EXPECT_EQ(ReadTextFile(m_save / "names.csv"),
              "8.54,47.37,Zürich_Hbf\r\n1,2,A,_B_&_\"C\"_'D'_<E>\r\n3,4,tab_and_line\r\n");
    // Read as the program reads .mkr files: Windows-1252 text.
    EXPECT_EQ(ReadTextFile(m_save / "café.csv"), "-0.5,51.25,Caf\xE9 Nord\r\n2.5,48.75,Quai\r\n");
    // The .dcsv holds every name escaped and in UTF-8, and decodes.
    const std::string dcsv = ReadTextFile(m_save / "names.dcsv");
    EXPECT_NE(dcsv.find(">A,_B_&amp;_&quot;C&quot;_&apos;D&apos;_&lt;E&gt;</Name>"), std::string::npos)
        << dcsv;
    std::string bin;
    EXPECT_TRUE(xmlTextToBin(ReadTextFile(m_save / "café.dcsv"), bin));
    EXPECT_NE(ReadTextFile(m_save / "café.dcsv").find(">Café Nord</Name>"), std::string::npos);
    // A named file's blueprint names its .dcsv in the named slot.
    std::string xml;
    ASSERT_TRUE(binToXmlText(m_save / "names.bin", xml));
    EXPECT_LT(xml.find(">Me\\Markers\\RouteMarkers\\names</CsvFile>"), xml.find("<MarkerSeriesCSV>")) << xml;
}

TEST_F(Markers, RunsKeepOldOutputsAsNumberedBackupsAndUndoTakesARunBack) {
    const fs::path gpx = input("run.gpx", kGpx);
    ASSERT_TRUE(convert({gpx}).ok);
    const std::string first = ReadTextFile(m_save / "run.dcsv");
    put(gpx, std::string(kGpx).replace(std::string(kGpx).find("51.6"), 4, "51.65"));
    ASSERT_TRUE(convert({gpx}).ok);
    ASSERT_TRUE(convert({gpx}).ok);
    for (const char* ext : {".csv", ".dcsv", ".bin"}) {
        EXPECT_TRUE(fs::exists(m_save / (std::string("run") + ext + ".bak"))) << ext;
        EXPECT_TRUE(fs::exists(m_save / (std::string("run") + ext + ".bak1"))) << ext;
        EXPECT_FALSE(fs::exists(m_save / (std::string("run") + ext + ".bak2"))) << ext;
    }
    EXPECT_EQ(ReadTextFile(m_save / "run.dcsv.bak"), first);
    EXPECT_NE(ReadTextFile(m_save / "run.csv").find("51.65"), std::string::npos);
    // One undo takes the whole last run back.
    const auto last = lastUndoableEntry(m_ctx->journal().entries());
    ASSERT_TRUE(last);
    const UndoResult undone = undoEntry(m_ctx->files(), *last, false);
    ASSERT_TRUE(undone.ok) << undone.message;
    EXPECT_EQ(undone.restored.size(), 3u);
}

TEST_F(Markers, AFailedWriteIsNamedAndLeavesTheOldOutputWhole) {
    const fs::path gpx = input("kept.gpx", kGpx);
    put(m_save / "kept.csv", "old\r\n");
    test::FaultyFiles failing(WriteStep::Replace);
    m_ctx->files().setFileOps(&failing);
    const MarkerReport r = convert({gpx}, true);
    m_ctx->files().setFileOps(nullptr);
    ASSERT_EQ(r.problems.size(), 1u);
    EXPECT_NE(r.problems[0].find((m_save / "kept.csv").string()), std::string::npos) << r.problems[0];
    EXPECT_EQ(ReadTextFile(m_save / "kept.csv"), "old\r\n");
    EXPECT_TRUE(r.files.empty());
}

TEST_F(Markers, OutsideAssetsConvertFullyAsksFirst) {
    const fs::path gpx = input("t.gpx", kGpx);
    m_ui.pushAnswer(Answer::No);
    MarkerReport r = convert({gpx}, false, m_dir / "test");
    EXPECT_FALSE(r.ok);
    EXPECT_FALSE(fs::exists(m_dir / "test" / "t.csv"));
    ASSERT_FALSE(m_ui.prompts.empty());
    EXPECT_EQ(m_ui.prompts.back().text,
              "You are not saving into your Assets folder? If this is only a Test your .bin "
              "file will be invalid.\nDo you wish to continue?");
    m_ui.pushAnswer(Answer::Yes);
    r = convert({gpx}, false, m_dir / "test");
    ASSERT_TRUE(r.ok);
    EXPECT_TRUE(fs::exists(m_dir / "test" / "t.bin"));
    // Process (csv only) never asks.
    const std::size_t asked = m_ui.prompts.size();
    EXPECT_TRUE(convert({gpx}, true, m_dir / "test2").ok);
    EXPECT_EQ(m_ui.prompts.size(), asked);
    // A .csv in the folder it would be written to is not its own output.
    put(m_dir / "test" / "own.csv", kCsv);
    m_ui.pushAnswer(Answer::Yes);
    r = convert({m_dir / "test" / "own.csv"}, false, m_dir / "test");
    EXPECT_NE(joined(r.problems).find("would be overwritten by its own output"), std::string::npos);
    EXPECT_EQ(ReadTextFile(m_dir / "test" / "own.csv"), kCsv);
}

TEST_F(Markers, FolderListingSurvivesFifosAndLinkLoops) {
    const fs::path folder = m_dir / "in";
    input("a.kml", kKml);
    input("b.txt", "x");
    ASSERT_EQ(::mkfifo((folder / "pipe.gpx").c_str(), 0600), 0);
    fs::create_symlink(folder / "loop.wpt", folder / "loop.wpt");
    fs::create_directory_symlink(folder, folder / "self.kml");
    const auto files = markerFilesIn(folder, {"kml", "gpx", "wpt", "mkr", "csv"});
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].filename(), "a.kml");
    // Named directly, a FIFO is named and never opened.
    const MarkerReport r = convert({folder / "pipe.gpx", folder / "loop.wpt", files[0]});
    EXPECT_EQ(r.problems.size(), 2u) << joined(r.problems);
    EXPECT_TRUE(fs::exists(m_save / "a.bin"));
}

TEST_F(Markers, ColoursTemplatesAndPaths) {
    EXPECT_EQ(colourText(0), "0.0000");
    EXPECT_EQ(colourText(255), "1.0000");
    EXPECT_EQ(colourText(128), "0.5020");
    EXPECT_EQ(pathBelowAssets(fs::path("/rw/assets/P/Q/RouteMarkers/x")), "P\\Q\\RouteMarkers\\x");
    EXPECT_EQ(pathBelowAssets(fs::path("/tmp/x")), "");
    // A named file's blueprint has no colour; the tokens of a value are not filled again.
    const std::string xml =
        routeMarkerXml("aaaa|bbbb|cccc|dddd|eeee|ffff|gggg", "bbbb", "P\\cccc", true, {255, 255, 255});
    EXPECT_EQ(xml, "bbbb|P\\cccc||0.0000|0.0000|0.0000|0.0000");
    // The templates shipped make a document that the codec takes.
    std::string bin;
    EXPECT_TRUE(xmlTextToBin(
        routeMarkerXml(ReadTextFile(fs::path(VELMORA_SOURCE_DIR) / "data/Templates/routemarker.txt"), "x",
                       "P\\Q\\x", false, {1, 2, 3}),
        bin));
}

TEST_F(Markers, PrecisionOfADcsvComesBackFromItsSourceCsv) {
    const fs::path root = m_dir / "rw";
    m_ctx->setRailWorksOverride(root);
    put(root / "Source" / "Me" / "Markers" / "RouteMarkers" / "exact.csv",
        "-0.123456789012,51.501234567891,A\r\n2.5,3.25,B\r\n");
    const fs::path dcsv = m_save / "exact.dcsv";
    const std::string rounded =
        "<cCSVArray><CSVItem>\r\n<cCSVItem><X d:type=\"sFloat64\">-0.123457</X><Y "
        "d:type=\"sFloat64\">51.5012</Y><Name>A</Name></cCSVItem>\r\n"
        "<cCSVItem><X d:type=\"sFloat64\">2.5</X><Y "
        "d:type=\"sFloat64\">3.25</Y><Name>B</Name></cCSVItem>\r\n</CSVItem></cCSVArray>\r\n";
    put(dcsv, rounded);
    put(m_save / "orphan.dcsv", rounded);
    const MarkerReport r = improveDcsv(*m_ctx, {dcsv, m_save / "orphan.dcsv"});
    EXPECT_EQ(r.message, "Precision of .DCSV files has been improved, a backup has been made.");
    EXPECT_EQ(joined(r.problems),
              "The original Source .csv for " + (m_save / "orphan.dcsv").string() + " could not be found\n");
    const std::string now = ReadTextFile(dcsv);
    EXPECT_NE(now.find(">-0.123456789012</X><Y d:type=\"sFloat64\">51.501234567891</Y><Name>A</Name>"),
              std::string::npos)
        << now;
    EXPECT_NE(now.find(">2.5</X>"), std::string::npos);
    EXPECT_EQ(ReadTextFile(m_save / "exact.dcsv.bak"), rounded);
    EXPECT_EQ(ReadTextFile(m_save / "orphan.dcsv"), rounded);
}

TEST_F(Markers, MakeBlueprintFromTheShippedSources) {
    const fs::path out = m_dir / "blue";
    MarkerReport r =
        makeMarkerBlueprint(*m_ctx, BlueKind::Route, "My \"Route\"", {"named", "series.CSV"}, out);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.message, "Your template has been written to:-\n" + out.string());
    const std::string text = ReadTextFile(out / "My _Route_.xml");
    EXPECT_NE(text.find(">My &quot;Route&quot;</Name>"), std::string::npos);
    EXPECT_NE(text.find(">named.csv</CsvFile>"), std::string::npos);
    EXPECT_NE(text.find(">series.CSV</CsvFile>"), std::string::npos);
    std::string bin;
    EXPECT_TRUE(xmlTextToBin(text, bin));
    r = makeMarkerBlueprint(*m_ctx, BlueKind::Series, "s", {"a"}, out);
    EXPECT_NE(ReadTextFile(out / "s.xml")
                  .find("<MarkerSeriesCSV>\r\n\t\t\t\t<cCSVContainer>\r\n\t\t\t\t\t<CsvFile "
                        "d:type=\"cDeltaString\">a.csv<"),
              std::string::npos);
    EXPECT_FALSE(makeMarkerBlueprint(*m_ctx, BlueKind::Named, "n", {""}, out).ok);
}

// Whatever the bytes, every point read is a pair of numbers in range, its .csv reads back the
// same and its .dcsv encodes: cut and scrambled forms of every kind of file.
TEST_F(Markers, ReadersKeepTheirPromisesOnScrambledInput) {
    const std::string hdr = ReadTextFile(fs::path(VELMORA_SOURCE_DIR) / "data/Templates/DCSVHeader.txt");
    const std::string body = ReadTextFile(fs::path(VELMORA_SOURCE_DIR) / "data/Templates/DCSVBody.txt");
    const std::string mkr = "Marker ( -0.5 51.25 Caf\xE9 \"N\" )\r\nMarker ( 2.5 48.75\tQuai & <x> )\r\n";
    const std::string kml =
        "<kml><Placemark><name>A &amp; B</name><Point><coordinates>1,2,0</coordinates></Point>"
        "</Placemark></kml>";
    std::mt19937 random(20261124);
    std::size_t points = 0;
    for (const std::string& seed :
         {std::string(kGpx), std::string(kKml), kml, std::string(kWpt), mkr, std::string(kCsv)})
        for (int round = 0; round < 400; ++round) {
            std::string text = seed;
            const int changes = 1 + static_cast<int>(random() % 4);
            for (int c = 0; c < changes && !text.empty(); ++c) {
                const std::size_t at = random() % text.size();
                switch (random() % 4) {
                case 0:
                    text[at] = static_cast<char>(random() % 256);
                    break;
                case 1:
                    text.erase(at, 1 + random() % 8);
                    break;
                case 2:
                    text.insert(at, std::string(1, "<>,&\"' \t\r\n0-.e"[random() % 16]));
                    break;
                default:
                    text.resize(at);
                    break;
                }
            }
            for (const GpsRead& read : {readKml(text, "f", true), readGpx(text, "f"), readWpt(text, "f"),
                                        readMkr(text, "f"), readPointCsv(text, "f")})
                for (const MarkerSet& set : read.sets) {
                    ASSERT_FALSE(set.points.empty());
                    points += set.points.size();
                    const std::string csv = pointCsvText(set);
                    const GpsRead back = readPointCsv(csv, "back");
                    ASSERT_EQ(back.sets.size(), 1u) << csv;
                    EXPECT_EQ(pointCsvText(back.sets[0]), csv);
                    EXPECT_TRUE(back.problems.empty()) << joined(back.problems);
                    std::string bin;
                    EXPECT_TRUE(xmlTextToBin(dcsvText(hdr, body, set, "f"), bin)) << csv;
                }
        }
    EXPECT_GT(points, 1000u);
}

class RouteMarkers : public Markers {
protected:
    void SetUp() override {
        Markers::SetUp();
        ASSERT_TRUE(demo::generateDemoInstall(m_dir / "demo", {}).ok);
        StartupOptions o;
        o.railWorks = m_dir / "demo";
        o.askForRoot = false;
        runStartup(*m_ctx, o);
        m_routes = listRoutes(*m_ctx);
        ASSERT_FALSE(m_routes.empty());
    }
    std::vector<RouteEntry> m_routes;
};

TEST_F(RouteMarkers, SavedIntoTheRoutesOwnFolderWithARunningNumberAndCachesBackOnUndo) {
    EXPECT_EQ(checkTypedMarker("", "1", "n"), "You have not given a longitude");
    EXPECT_EQ(checkTypedMarker("1", "", "n"), "You have not given a latitude");
    EXPECT_EQ(checkTypedMarker("1", "2", ""), "You have not given a name");
    EXPECT_NE(checkTypedMarker("1", "91", "n").find("beyond 90"), std::string::npos);
    const RouteEntry& route = m_routes.front();
    std::string error;
    const fs::path folder = routeMarkerFolder(*m_ctx, route, error);
    ASSERT_FALSE(folder.empty()) << error;
    EXPECT_EQ(folder.filename(), "RouteMarkers");
    std::vector<fs::path> caches;
    for (const auto& e : fs::recursive_directory_iterator(m_dir / "demo" / "Assets"))
        if (e.path().filename() == "Blueprints.pak")
            caches.push_back(e.path());
    ASSERT_FALSE(caches.empty());

    RouteMarkerOptions o;
    o.baseName = "Signals, \"east\"";
    o.points = {{"8.5", "46.6", "Göschenen"}, {"8.6", "46.7", "Airolo"}};
    MarkerReport r = saveRouteMarkers(*m_ctx, route, o);
    ASSERT_TRUE(r.ok) << r.message << joined(r.problems);
    EXPECT_TRUE(fs::exists(folder / "Signals, _east_.dcsv"));
    EXPECT_TRUE(fs::exists(folder / "Signals, _east_.bin"));
    o.clearBlueprintCaches = true;
    r = saveRouteMarkers(*m_ctx, route, o);
    ASSERT_TRUE(r.ok) << r.message << joined(r.problems);
    EXPECT_TRUE(fs::exists(folder / "Signals, _east_1.dcsv"));
    for (const auto& c : caches)
        EXPECT_FALSE(fs::exists(c)) << c;
    const auto last = lastUndoableEntry(m_ctx->journal().entries());
    ASSERT_TRUE(last);
    ASSERT_TRUE(undoEntry(m_ctx->files(), *last, false).ok);
    for (const auto& c : caches)
        EXPECT_TRUE(fs::exists(c)) << c;
    EXPECT_FALSE(fs::exists(folder / "Signals, _east_1.dcsv"));
    EXPECT_TRUE(fs::exists(folder / "Signals, _east_.dcsv"));
}

} // namespace
