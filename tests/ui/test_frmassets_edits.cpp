// The asset screen's Edit Assets, Update Sounds and Add Cab Occlusions menus on the demo
// install, offscreen: one command of each with its questions, the grid kept in step, the rows
// passed over reported, and one undo taking a batch back.

#include "assets/dlgsounds.h"
#include "assetscreen.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

const char* const kWagon = "RailVehicles\\Freight\\HTA\\HTA_Coal.bin";
const char* const kCoach = "RailVehicles\\Passenger\\Mk1\\Mk1_BSK.bin";
} // namespace

class TestFrmAssetsEdits : public QObject {
    Q_OBJECT
    test::DemoScreens m_demo;

    fs::path assets() const { return m_demo.dir / "rw/Assets"; }
    fs::path wagon() const { return assets() / "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin"; }
    fs::path coach() const { return assets() / "Heritage/SteamDays/RailVehicles/Passenger/Mk1/Mk1_BSK.bin"; }

    // The wagon's shape, found as the asset checks find it.
    fs::path wagonShape() const {
        std::string id = test::documentDetail(wagon(), "GeometryID");
        std::replace(id.begin(), id.end(), '\\', '/');
        const auto open = id.find('[');
        if (open != std::string::npos)
            id.erase(open, id.find(']', open) - open + 1);
        return assets() / (id + ".GeoPcDx");
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uiassetsedits")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(true); }

    void changeCategoryAsksThenFollowsInTheGrid() {
        ui::frmAssets screen(*m_demo.ctx);
        QSignalSpy reports(&screen, &ui::frmAssets::reportShown);
        const fs::path cafe = assets() / "Alpenbahn/Gotthard/Scenery/Buildings/Caf\u00e9 Alpina.bin";
        test::listAndSelect(screen, assets(), {"Scenery\\Buildings\\Caf\u00e9 Alpina.bin", kWagon}, false);
        m_demo.ui->pushAnswer(Answer::Ok);
        m_demo.ui->pushText("ExcludeFromBrowserList"); // the leading e is added
        screen.action("mnuCategory")->trigger();
        QCOMPARE(test::documentDetail(cafe, "Category"), std::string("eExcludeFromBrowserList"));
        QVERIFY(fs::exists(cafe.string() + ".bak"));
        // A rail vehicle's browse information has no Description to put a Category behind: it is
        // passed over, named in the report, and its grid cell stays.
        QVERIFY(reports.last().at(0).toString().contains("HTA_Coal"));
        const auto rows = screen.selectedRows();
        QCOMPARE(rows[0].category, std::string("ExcludeFromBrowserList"));
        QVERIFY(rows[1].category != "ExcludeFromBrowserList");
        test::undoLast(*m_demo.ctx);
        QCOMPARE(test::documentDetail(cafe, "Category"), std::string("eBuildings"));

        // Cancel at the warning: nothing asked further, nothing written.
        const auto entries = m_demo.ctx->journal().entries().size();
        screen.action("mnuCategory")->trigger();
        QCOMPARE(m_demo.ctx->journal().entries().size(), entries);
    }

    void changeLodsNeedsBothValuesAndRewritesTheShape() {
        ui::frmAssets screen(*m_demo.ctx);
        test::listAndSelect(screen, assets(), {kWagon});
        auto* min = screen.findChild<QLineEdit*>("Text3");
        auto* max = screen.findChild<QLineEdit*>("Text4");
        min->setText("20");
        max->clear();
        m_demo.ui->pushAnswer(Answer::Ok);
        screen.action("mnuLod")->trigger();
        QVERIFY(m_demo.prompted("Please enter both a Min LOD and a Max LOD value."));

        const fs::path shape = wagonShape();
        QVERIFY2(fs::exists(shape), shape.string().c_str());
        const std::string blueprintBefore = test::documentXml(wagon());
        max->setText("2000");
        m_demo.ui->pushAnswer(Answer::Ok);
        screen.action("mnuLod")->trigger();
        // The demo's distances 50, 250, 1000 go onto 20 .. 2000; the blueprint is not touched.
        QCOMPARE(std::stod(test::documentDetail(shape, "e", "<LOD")), 20.0);
        QVERIFY(fs::exists(shape.string() + ".bak"));
        QCOMPARE(test::documentXml(wagon()), blueprintBefore);
        test::undoLast(*m_demo.ctx);
        QCOMPARE(std::stod(test::documentDetail(shape, "e", "<LOD")), 50.0);
    }

    void theSoundDialogsKeepTheirAnswers() {
        {
            ui::dlgFreightAudio first({false, false});
            first.bogieBox()->setChecked(true);
            first.findChild<QPushButton*>("OKButton")->click();
            QVERIFY(first.choice() && first.choice()->addBogie && !first.choice()->addWagonSound);
        }
        ui::dlgBogie bogie;
        QVERIFY(bogie.option(3));
        bogie.option(3)->setChecked(true);
        bogie.findChild<QPushButton*>("OKButton")->click();
        QCOMPARE(*bogie.choice(), std::string("RA_BG_Mk3"));
        ui::dlgBogie cancelled;
        cancelled.findChild<QPushButton*>("CancelButton")->click();
        QVERIFY(!cancelled.choice());
    }

    void bogieSoundsThenMk3CoachSoundsWithTheMissingPackReported() {
        ui::frmAssets screen(*m_demo.ctx);
        QSignalSpy reports(&screen, &ui::frmAssets::reportShown);
        test::listAndSelect(screen, assets(), {kCoach});
        screen.dialogs().bogie = [] { return std::optional<std::string>("BG_Modern"); };
        m_demo.ui->pushAnswer(Answer::Ok);
        screen.action("mnuBacn")->trigger();
        QCOMPARE(test::documentDetail(coach(), "BogieAudioControlName"),
                 std::string("Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Modern"));

        m_demo.ui->pushAnswer(Answer::Ok);
        screen.action("mnuMk3")->trigger();
        QCOMPARE(test::documentDetail(coach(), "BogieAudioControlName"),
                 std::string("Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\RA_BG_Mk3"));
        // The demo install has no sound pack: the report names the bogie sound that is not there.
        QVERIFY(!reports.isEmpty());
        QVERIFY(reports.last().at(0).toString().contains("RA_BG_Mk3"));
        test::undoLast(*m_demo.ctx);
        QCOMPARE(test::documentDetail(coach(), "BogieAudioControlName"),
                 std::string("Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Modern"));

        // A wagon command on a coach it cannot change: passed over and named in the report.
        test::listAndSelect(screen, assets(), {kCoach});
        screen.dialogs().freightAudio = [] { return std::optional(std::pair{false, false}); };
        m_demo.ui->pushAnswer(Answer::Ok);
        screen.action("mnuNewWag")->trigger();
        QVERIFY(reports.last().at(0).toString().contains("Mk1_BSK"));
    }

    void occlusionsWithoutTheirFolderWriteNothing() {
        ui::frmAssets screen(*m_demo.ctx);
        test::listAndSelect(screen, assets(), {kWagon});
        const std::string before = test::documentXml(wagon());
        const auto entries = m_demo.ctx->journal().entries().size();
        m_demo.ui->pushAnswer(Answer::Ok);
        screen.action("mnuAdd37")->trigger();
        QVERIFY(m_demo.prompted("Occlusions"));
        QCOMPARE(test::documentXml(wagon()), before);
        QCOMPARE(m_demo.ctx->journal().entries().size(), entries);
    }
};

int runTestFrmAssetsEdits(int argc, char** argv) {
    TestFrmAssetsEdits t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmassets_edits.moc"
