// The asset screen's batch commands on the demo install, offscreen: Rename Selected Asset, a
// clone, a rolling-stock edit in place and one that makes variants, and their dialogs.

#include "assets/dlgcoachname.h"
#include "assets/dlgnewname.h"
#include "assets/dlgrsedits.h"
#include "assetscreen.h"
#include "velmora/assets/renaming.h"

#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QtTest>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

const char* const kLoco = "RailVehicles\\Diesel\\Class66\\Engine\\Class66_EWS.bin";
const char* const kWagon = "RailVehicles\\Freight\\HTA\\HTA_Coal.bin";
const char* const kCoach = "RailVehicles\\Passenger\\Mk1\\Mk1_BSK.bin";

} // namespace

class TestFrmAssetsBatch : public QObject {
    Q_OBJECT
    test::DemoScreens m_demo;

    fs::path assets() const { return m_demo.dir / "rw/Assets"; }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uiassetsbatch")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(true); }

    void renameSelectedAssetNumbersTheRowsAndTheGrid() {
        ui::frmAssets screen(*m_demo.ctx);
        auto* rename = screen.findChild<QPushButton*>("Command17");
        QVERIFY(rename && rename->isEnabled());
        test::listAndSelect(screen, assets(), {kWagon, kCoach});
        m_demo.ui->pushText("Fleet #");
        rename->click();
        QCOMPARE(test::documentDetail(assets() / "DemoRail/Class66Pack" / "RailVehicles/Freight/HTA/HTA_Coal.bin", "English"),
                 std::string("Fleet 1"));
        QCOMPARE(test::documentDetail(assets() / "Heritage/SteamDays/RailVehicles/Passenger/Mk1/Mk1_BSK.bin", "English"),
                 std::string("Fleet 2"));
        const auto names = screen.selectedRows();
        QCOMPARE(names[0].name, std::string("Fleet 1"));
        QCOMPARE(m_demo.ctx->journal().entries().back().command, std::string("Change Name"));
        test::undoLast(*m_demo.ctx);
        QVERIFY(test::documentDetail(assets() / "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin", "English") != "Fleet 1");
    }

    void theNamingDialogsKeepWhatTheUserTyped() {
        ui::dlgCoachName coach("Mk1_BSK", "Mk1 BSK", "_MT");
        QCOMPARE(coach.fileNameBox()->text(), QString("Mk1_BSK_MT"));
        coach.option(6)->click(); // Dead
        QCOMPARE(coach.displayNameBox()->text(), QString("Mk1 BSK_DEAD"));
        coach.displayNameBox()->setText("Mk1 withdrawn");
        coach.findChild<QPushButton*>("OKButton")->click();
        QVERIFY(coach.names());
        QCOMPARE(coach.names()->fileName, std::string("Mk1_BSK_DEAD"));
        QCOMPARE(coach.names()->displayName, std::string("Mk1 withdrawn"));

        ui::dlgNewName name(assets::CloneNames{"Shed_", "Shed_", "", ""});
        name.findChild<QPushButton*>("OKButton")->click();
        QVERIFY(!name.names()); // the folder box is empty: the dialog stays open and says so
        QVERIFY(name.problem()->text().contains("failed to complete"));

        // The lamp dialogs offer the table's templates and the nine train types.
        assets::LampTable table;
        std::string error;
        QVERIFY(assets::readLampTable(m_demo.ctx->dataPath() / "Templates/UKLights.txt", table, error));
        ui::dlgHead head(table);
        QCOMPARE(head.templates()->count(), static_cast<int>(table.heads.size()));
        QCOMPARE(head.trainTypes()->count(), 9);
        head.trainTypes()->setCurrentRow(4);
        head.findChild<QPushButton*>("OKButton")->click();
        QCOMPARE(head.choice()->second, std::size_t(4));
        ui::dlgTail tail(table);
        tail.templates()->selectRow(static_cast<int>(table.tails.size()) - 1);
        tail.findChild<QPushButton*>("OKButton")->click();
        QCOMPARE(*tail.choice(), table.tails.size() - 1);

        ui::dlgMass mass;
        mass.massBox()->setText("12,5t");
        mass.capacityBox()->setText("50");
        mass.findChild<QPushButton*>("OKButton")->click();
        QVERIFY(!mass.values());
        mass.massBox()->setText("12.5");
        mass.findChild<QPushButton*>("OKButton")->click();
        QCOMPARE(mass.values()->first, std::string("12.5"));
    }

    void cloneSelectedAssetMakesAnIndependentLoco() {
        ui::frmAssets screen(*m_demo.ctx);
        test::listAndSelect(screen, assets(), {kLoco});
        screen.dialogs().newName = [](assets::CloneNames names, bool withCategory) {
            if (withCategory)
                return std::optional<assets::CloneNames>();
            names.fileName = "Class66_Clone";
            names.displayName = "Class 66 clone";
            names.targetFolder = "DemoRail\\Class66Pack\\RailVehicles\\Diesel\\Class66\\EngineClone\\";
            return std::optional<assets::CloneNames>(names);
        };
        screen.action("mnuClone")->trigger();
        const fs::path clone = assets() / "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/EngineClone/Class66_Clone.bin";
        QVERIFY(fs::exists(clone));
        QCOMPARE(test::documentDetail(clone, "English"), std::string("Class 66 clone"));
        QVERIFY(QString::fromStdString(test::documentDetail(clone, "GeometryID")).contains("EngineClone"));
        QVERIFY(m_demo.prompted("Your clone has been made."));
        test::undoLast(*m_demo.ctx);
        QVERIFY(!fs::exists(clone));
    }

    void massEditInPlaceAndDeadVariantsStopAtCancel() {
        ui::frmAssets screen(*m_demo.ctx);
        const fs::path wagon = assets() / "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin";
        test::listAndSelect(screen, assets(), {kWagon});
        screen.dialogs().mass = [] { return std::optional(std::pair<std::string, std::string>{"31.5", "50"}); };
        screen.action("mnuMass")->trigger();
        QCOMPARE(test::documentDetail(wagon, "Mass"), std::string("31.5"));
        QVERIFY(fs::exists(wagon.string() + ".bak"));
        test::undoLast(*m_demo.ctx);
        QVERIFY(test::documentDetail(wagon, "Mass") != "31.5");

        // Dead: a variant beside each source; Cancel on the second row ends the command there.
        test::listAndSelect(screen, assets(), {kLoco, kCoach});
        int asked = 0;
        screen.dialogs().coachName = [&](const std::string& file, const std::string& display, const std::string& suffix) {
            return ++asked == 1 ? std::optional(assets::withSuffix(file, display, suffix)) : std::nullopt;
        };
        screen.action("mnuDead")->trigger();
        QCOMPARE(asked, 2);
        const fs::path dead = assets() / "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS_Dead.bin";
        QVERIFY(fs::exists(dead));
        QVERIFY(test::documentDetail(dead, "ChildName").empty()); // no children left: no engine sound
        QVERIFY(!fs::exists(assets() / "Heritage/SteamDays/RailVehicles/Passenger/Mk1/Mk1_BSK_Dead.bin"));
        test::undoLast(*m_demo.ctx);
    }
};

int runTestFrmAssetsBatch(int argc, char** argv) {
    TestFrmAssetsBatch t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmassets_batch.moc"
