// The marker screens driven offscreen on a demo install: GPS files of a folder converted with
// the colour of the sliders, the modes' file lists, markers typed into a route, a blueprint
// source made by hand, and the editor's menu entries that open them.

#include "demoscreens.h"
#include "editor/frmeditor.h"
#include "routes/frmmarkers.h"
#include "routes/frmmkre.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

void put(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

} // namespace

class TestFrmMarkers : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;
    fs::path m_gps, m_save;

private slots:
    void initTestCase() {
        QVERIFY(m_demo.generate("uimarkers"));
        m_gps = m_demo.dir / "gps";
        put(m_gps / "line.gpx", "<gpx><trk><trkseg><trkpt lat=\"46.5\" lon=\"8.591234567\"/>"
                                "<trkpt lat=\"46.6\" lon=\"8.6\"/></trkseg></trk></gpx>");
        put(m_gps / "line2.kml",
            "<kml><LineString><coordinates>8.591234567,46.5,0 8.6,46.6,0</coordinates></LineString></kml>");
        put(m_gps / "line3.wpt", "OziExplorer\r\n1,1,46.5,8.591234567\r\n2,1,46.6,8.6\r\n");
        put(m_gps / "broken.gpx", "no xml at all");
        put(m_gps / "points.csv", "8.5,46.5,Göschenen\r\n");
        put(m_gps / "readme.txt", "not listed");
        QCOMPARE(::mkfifo((m_gps / "pipe.kml").c_str(), 0600), 0);
        m_save = m_demo.dir / "rw" / "Assets" / "Me" / "Line" / "RouteMarkers";
    }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start(true);
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void convertFullyWithTheSlidersColour() {
        ui::frmMarkers screen(*m_ctx, 1);
        QCOMPARE(screen.windowTitle(), QString("Select Folder for saving your Markers"));
        screen.saveFolder()->setText(QString::fromStdString(m_save.string()));
        screen.sourceFolder()->setText(QString::fromStdString(m_gps.string()));
        screen.findChild<QPushButton*>("Command4")->click();
        QVERIFY(
            m_demo.prompted("Now select your Marker Files\n(Must NOT be in the folder you are saving to)."));
        QVERIFY(fs::is_directory(m_ctx->tempFiles()));
        // The pattern's files only, and never the pipe.
        QCOMPARE(screen.pattern(), QString("*.kml;*.gpx;*.wpt;*.mkr;*.csv"));
        QCOMPARE(screen.fileList()->count(), 5);
        screen.findChild<QScrollBar*>("HScroll1_0")->setValue(255);
        screen.findChild<QScrollBar*>("HScroll1_2")->setValue(128);
        QCOMPARE(screen.findChild<QLabel*>("Label3_0")->text(), QString("1.0000"));
        QCOMPARE(screen.findChild<QLabel*>("Label3_1")->text(), QString("0.0000"));
        QCOMPARE(screen.findChild<QLabel*>("Label3_2")->text(), QString("0.5020"));
        screen.findChild<QPushButton*>("Command1")->click();
        QCOMPARE(screen.fileList()->selectedItems().size(), 5);
        screen.findChild<QPushButton*>("Command6")->click();
        QVERIFY(m_demo.prompted(
            "All selected Marker files have been converted to .csv files and are located\nin folder " +
            m_save.string()));
        // The broken file is named; the rest is converted, the same points the same .csv.
        QCOMPARE(screen.lastReport().problems.size(), std::size_t(1));
        QVERIFY(screen.lastReport().problems[0].find("broken.gpx") != std::string::npos);
        const std::string csv = ReadTextFile(m_save / "line.csv");
        QCOMPARE(csv, std::string("8.591234567,46.5\r\n8.6,46.6\r\n"));
        QCOMPARE(ReadTextFile(m_save / "line2.csv"), csv);
        QCOMPARE(ReadTextFile(m_save / "line3.csv"), csv);
        QVERIFY(ReadTextFile(m_save / "points.dcsv").find(">Göschenen</Name>") != std::string::npos);
        std::string xml;
        QVERIFY(binToXmlText(m_save / "line.bin", xml));
        QVERIFY(xml.find(">1</Red>") != std::string::npos);
        QVERIFY(xml.find(">Me\\Line\\RouteMarkers\\line</CsvFile>") != std::string::npos);
        // One undo takes the whole run back.
        const auto last = lastUndoableEntry(m_ctx->journal().entries());
        QVERIFY(last);
        QVERIFY(undoEntry(m_ctx->files(), *last, false).ok);
        QVERIFY(!fs::exists(m_save / "line.bin"));
    }

    void processMakesTheCsvOfGpsFilesOnly() {
        ui::frmMarkers screen(*m_ctx, 1);
        const fs::path out = m_demo.dir / "csvonly";
        screen.saveFolder()->setText(QString::fromStdString(out.string()));
        screen.sourceFolder()->setText(QString::fromStdString(m_gps.string()));
        screen.Command4_Click();
        screen.Command1_Click();
        screen.findChild<QPushButton*>("Command3")->click();
        QVERIFY(fs::exists(out / "line.csv"));
        QVERIFY(!fs::exists(out / "line.dcsv"));
        QVERIFY(!fs::exists(out / "points.csv"));
        // The .csv and the broken file are named in the report.
        const auto& problems = screen.lastReport().problems;
        QCOMPARE(problems.size(), std::size_t(2));
        QVERIFY(problems[1].find("points.csv: You have not selected a .kml,.wpt,.mkr or .gpx file?") !=
                std::string::npos);
    }

    void theModesPickTheFilesAndCommands() {
        ui::frmMarkers csv(*m_ctx, 4);
        csv.sourceFolder()->setText(QString::fromStdString(m_gps.string()));
        csv.Command4_Click();
        QCOMPARE(csv.fileList()->count(), 1);
        QVERIFY(csv.findChild<QPushButton*>("Command3")->isHidden());
        QVERIFY(!csv.findChild<QPushButton*>("Command6")->isHidden());
        ui::frmMarkers direct(*m_ctx, 3);
        QVERIFY(direct.findChild<QPushButton*>("Command3")->isHidden());
        ui::frmMarkers dcsv(*m_ctx, 2);
        QVERIFY(!dcsv.findChild<QPushButton*>("Command5")->isHidden());
        QVERIFY(dcsv.findChild<QPushButton*>("Command6")->isHidden());
        // Process DCSV: the numbers come back from the .csv beside the Source tree.
        put(m_demo.dir / "rw" / "Source" / "Me" / "Line" / "RouteMarkers" / "exact.csv",
            "8.591234567,46.5123456789,A\r\n");
        put(m_save / "exact.dcsv",
            "<cCSVArray><X d:type=\"sFloat64\">8.59123</X><Y d:type=\"sFloat64\">46.5123</Y></cCSVArray>");
        dcsv.sourceFolder()->setText(QString::fromStdString(m_save.string()));
        dcsv.Command4_Click();
        QVERIFY(!dcsv.fileList()->findItems("exact.dcsv", Qt::MatchExactly).isEmpty());
        dcsv.Command1_Click();
        dcsv.findChild<QPushButton*>("Command5")->click();
        QVERIFY(m_demo.prompted("Precision of .DCSV files has been improved, a backup has been made."));
        QVERIFY(ReadTextFile(m_save / "exact.dcsv").find(">46.5123456789</Y>") != std::string::npos);
    }

    void markersTypedIntoARoute() {
        ui::frmMKRE screen(*m_ctx);
        int row = -1;
        for (int r = 0; r < screen.routeList()->count(); ++r)
            if (screen.routeList()->item(r)->text().contains("Demo Valley Line"))
                row = r;
        QVERIFY(row >= 0);
        screen.routeList()->setCurrentRow(row);
        screen.latitude()->setText("46.6");
        screen.markerName()->setText("Signal & Box");
        screen.findChild<QPushButton*>("Command3")->click();
        QVERIFY(m_demo.prompted("You have not given a longitude"));
        QCOMPARE(screen.markerList()->count(), 0);
        screen.longitude()->setText("8.6");
        screen.Command3_Click();
        QCOMPARE(screen.markerList()->count(), 1);
        screen.Command1_Click();
        QVERIFY(screen.status()->text().startsWith("Adding Markers to Demo Valley Line"));
        screen.fileName()->setText("Signals");
        screen.findChild<QPushButton*>("Command4")->click();
        QVERIFY2(screen.lastReport().ok, screen.lastReport().message.c_str());
        QCOMPARE(screen.lastReport().files.size(), std::size_t(2));
        QVERIFY(ReadTextFile(screen.lastReport().files[0]).find(">Signal &amp; Box</Name>") !=
                std::string::npos);
        QVERIFY(screen.lastReport().files[0].parent_path().filename() == "RouteMarkers");
    }

    void makeBlueprintByHand() {
        ui::frmBlue screen(*m_ctx);
        screen.mode()->setCurrentIndex(2);
        screen.name()->setText("Whole line");
        screen.csv(0)->setText("named");
        screen.csv(1)->setText("series.csv");
        screen.folder()->setText(QString::fromStdString((m_demo.dir / "bp").string()));
        screen.findChild<QPushButton*>("Command1")->click();
        QVERIFY(m_demo.prompted("Your template has been written to:-"));
        const std::string text = ReadTextFile(m_demo.dir / "bp" / "Whole line.xml");
        QVERIFY(text.find(">named.csv<") != std::string::npos &&
                text.find(">series.csv<") != std::string::npos);
    }

    void theEditorsMenuOpensTheMarkerScreens() {
        StartupOptions o;
        o.railWorks = m_demo.dir / "rw";
        o.askForRoot = false;
        ui::frmEditor editor(*m_ctx, o);
        for (const char* name : {"mnuMultiMarker", "mnuMkrDCSV", "mnuCSV2DCSV", "mnuMkRW"})
            QVERIFY2(editor.action(name)->isEnabled(), name);
        editor.action("mnuCSV2DCSV")->trigger();
        auto screens = editor.findChildren<ui::frmMarkers*>();
        QCOMPARE(screens.size(), 1);
        QCOMPARE(screens[0]->markerMode(), 4);
        QVERIFY(screens[0]->isModal());
        screens[0]->close();
        editor.action("mnuMkRW")->trigger();
        editor.action("mnuMkRW")->trigger();
        QCOMPARE(editor.findChildren<ui::frmMKRE*>().size(), 1);
    }
};

int runTestFrmMarkers(int argc, char** argv) {
    TestFrmMarkers t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmmarkers.moc"
