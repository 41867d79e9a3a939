// The screens of assets and scenarios packed in .ap files, driven offscreen on the demo install.

#include "archives/frmapconsists.h"
#include "archives/frmassetsap.h"
#include "editor/frmeditor.h"
#include "demoscreens.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

int rowOf(const QTableWidget* grid, int column, const QString& text) {
    for (int r = 0; r < grid->rowCount(); ++r)
        if (grid->item(r, column) && grid->item(r, column)->text() == text)
            return r;
    return -1;
}

QString text(const QTableWidget* grid, int row, int column) {
    return grid->item(row, column) ? grid->item(row, column)->text() : QString();
}

} // namespace

class TestFrmAssetsAP : public QObject {
    Q_OBJECT
    test::DemoScreens m_demo;

    // The screen with the .ap files below Assets found and SteamDaysAssets.ap opened.
    std::unique_ptr<ui::frmAssetsAP> opened() {
        auto screen = std::make_unique<ui::frmAssetsAP>(*m_demo.ctx);
        screen->Command5_Click();
        const int row = rowOf(screen->apGrid(), 1, "SteamDaysAssets.ap");
        if (row >= 0)
            screen->VSFG3_Click(row);
        return screen;
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uiassetsap")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(); }

    void findsOpensAndSendsEntriesToTheMainGrid() {
        const int logged = m_demo.ctx->log().count(); // the start may log a missing language file
        auto screen = opened();
        QCOMPARE(screen->windowTitle(), QString("Build List of Assets in .AP files"));
        QVERIFY(m_demo.prompted("Selected items have been added to the grid."));
        const int row = rowOf(screen->apGrid(), 1, "SteamDaysAssets.ap");
        QVERIFY(row >= 0);
        QVERIFY(text(screen->apGrid(), row, 0).endsWith("SteamDays"));
        QCOMPARE(screen->openArchivePath().filename().string(), std::string("SteamDaysAssets.ap"));

        // The DMU's blueprints are there with the mask *.bin; rolling stock only drops them (no
        // Engine, Tender, Freight or Passenger folder).
        QTableWidget* entries = screen->entryGrid();
        QVERIFY(entries->rowCount() >= 2);
        for (int r = 0; r < entries->rowCount(); ++r)
            QVERIFY2(text(entries, r, 1).endsWith("bin", Qt::CaseInsensitive), qPrintable(text(entries, r, 1)));
        screen->rollingStock()->setChecked(true);
        QCOMPARE(entries->rowCount(), 0);
        screen->rollingStock()->setChecked(false);

        screen->Command13_Click();
        m_demo.ui->prompts.clear();
        screen->sendSelectedEntries();
        QVERIFY(m_demo.prompted("Selected items have been added to the grid."));
        QTableWidget* grid = screen->grid();
        const int dmbs = rowOf(grid, 3, "Heritage Class 101 DMBS");
        QVERIFY2(dmbs >= 0, "the DMU's blueprint gives its row");
        QCOMPARE(text(grid, dmbs, 0), QString("Heritage"));
        QCOMPARE(text(grid, dmbs, 1), QString("SteamDays"));
        QVERIFY(text(grid, dmbs, 2).startsWith("RailVehicles\\DMU\\Class101\\"));
        QCOMPARE(m_demo.ctx->log().count(), logged);

        // The textures are plain rows.
        screen->mask()->setCurrentText("*.TgPcDx");
        QVERIFY(entries->rowCount() > 0);
        const int before = grid->rowCount();
        entries->selectRow(0);
        screen->sendSelectedEntries();
        QCOMPARE(grid->rowCount(), before + 1);

        // Open in Editor hands the entry, unpacked to TempFiles, to the main screen's editor.
        QSignalSpy editor(screen.get(), &ui::frmAssetsAP::openInEditor);
        grid->clearSelection();
        grid->selectRow(rowOf(grid, 3, "Heritage Class 101 DMBS"));
        screen->Command1_Click();
        QCOMPARE(editor.count(), 1);
        const fs::path unpacked = editor.at(0).at(0).toString().toStdString();
        QVERIFY(fs::exists(unpacked));
        QVERIFY(unpacked.string().rfind(m_demo.ctx->tempFiles().string(), 0) == 0);

        // Clear All empties the three grids.
        screen->Command7_Click();
        QCOMPARE(screen->apGrid()->rowCount() + entries->rowCount() + grid->rowCount(), 0);
    }

    void correctProviderWorksOnTheMainGridsRows() {
        ui::frmAssetsAP screen(*m_demo.ctx);
        QVERIFY(screen.findChild<QAction*>("mnuClone") && screen.findChild<QAction*>("mnuCloneDefault"));
        QAction* provider = screen.findChild<QAction*>("mnuCProv");
        QVERIFY(provider);
        provider->trigger(); // nothing in the grid, nothing selected
        QVERIFY(m_demo.prompted("You do not appear to have selected any items in the grid?"));

        // A row of an asset that is on disk: its coupling's provider word changes, kept as a backup.
        QTableWidget* grid = screen.grid();
        grid->insertRow(0);
        const QStringList cells = {"DemoRail", "Class66Pack", "RailVehicles\\Freight\\HTA\\HTA_Coal.bin", "HTA", "Yes",
                                   "Freight", "WagonBlueprint", "1"};
        for (int c = 0; c < cells.size(); ++c)
            grid->setItem(0, c, new QTableWidgetItem(cells[c]));
        grid->selectRow(0);
        QCOMPARE(screen.selectedAssetRows().size(), std::size_t(1));
        m_demo.ui->pushText("Class66Pack");
        m_demo.ui->pushText("Class66Pack2");
        provider->trigger();
        const fs::path wagon = m_demo.dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin";
        QVERIFY(fs::exists(wagon.string() + ".bak"));
        QVERIFY(m_demo.prompted("Your asset(s) has been modified as requested."));
        const auto last = lastUndoableEntry(m_demo.ctx->journal().entries());
        QVERIFY(last && undoEntry(m_demo.ctx->files(), *last, false).ok);
    }

    void openInEditorWithoutAnArchiveSaysSo() {
        ui::frmAssetsAP screen(*m_demo.ctx);
        screen.Command1_Click();
        QCOMPARE(m_demo.ui->prompts.back().title, std::string("Error"));
        QVERIFY(m_demo.prompted("You must Open an Archive before you can"));
    }

    void damagedArchiveIsNamedAndLogged() {
        const fs::path bad = m_demo.dir / "rw" / "Assets" / "Heritage" / "Broken, \"Ünï\"" / "Broken.ap";
        fs::create_directories(bad.parent_path());
        std::ofstream(bad, std::ios::binary) << "PK\x03\x04 damaged";
        const int logged = m_demo.ctx->log().count();
        auto screen = std::make_unique<ui::frmAssetsAP>(*m_demo.ctx);
        screen->Command5_Click();
        const int row = rowOf(screen->apGrid(), 1, "Broken.ap");
        QVERIFY(row >= 0);
        screen->VSFG3_Click(row);
        fs::remove_all(bad.parent_path());
        QVERIFY(screen->openArchivePath().empty());
        QCOMPARE(screen->entryGrid()->rowCount(), 0);
        QVERIFY(m_demo.prompted("Broken.ap"));
        QCOMPARE(m_demo.ctx->log().count(), logged + 1);
        QVERIFY(ReadTextFile(m_demo.ctx->log().file()).find("Broken.ap") != std::string::npos);
    }

    void saveApIndexWritesDataApIndex() {
        auto screen = opened();
        screen->Command9_Click();
        QVERIFY(m_demo.prompted("Your AP-Index.csv file is in your Data folder"));
        const std::string index = ReadTextFile(m_demo.ctx->appPath() / "Data" / "AP-Index.csv");
        QVERIFY(index.find(",SteamDaysAssets.ap\r\n") != std::string::npos);
        QCOMPARE(std::count(index.begin(), index.end(), '\n'), static_cast<long>(screen->apGrid()->rowCount()));
    }

    void mainScreenOpensBothScreens() {
        AppContext ctx(m_demo.dir / "home-editor", m_demo.dir / "data", *m_demo.ui);
        StartupOptions o;
        o.railWorks = m_demo.dir / "rw";
        ui::frmEditor editor(ctx, o);
        for (const char* name : {"mnuAPEdit", "mnuAPCont"}) {
            QVERIFY2(editor.action(name)->isEnabled(), name);
            editor.action(name)->trigger();
        }
        QVERIFY(editor.findChild<ui::frmAssetsAP*>());
        QVERIFY(editor.findChild<ui::frmAPConsists*>());
        editor.action("mnuAPEdit")->trigger();
        QCOMPARE(editor.findChildren<ui::frmAssetsAP*>().size(), 1); // the open screen is raised again
    }

    void routeIndexIsBuiltOnlyAfterOk() {
        const fs::path index = m_demo.ctx->reports() / "RouteIndex.csv";
        fs::create_directories(index.parent_path());
        std::ofstream(index, std::ios::binary) << "old,index\r\n";
        ui::frmAPConsists screen(*m_demo.ctx);
        screen.action("mnuRInd")->trigger(); // Cancel at the question
        QVERIFY(m_demo.prompted("This option will extract RouteProperties.xml files from all .ap"));
        QCOMPARE(ReadTextFile(index), std::string("old,index\r\n"));
        m_demo.ui->pushAnswer(Answer::Ok);
        screen.action("mnuRInd")->trigger();
        QVERIFY(m_demo.prompted("RouteIndex.csv written to 'Reports' folder"));
        const std::string written = ReadTextFile(index);
        QVERIFY(written != "old,index\r\n");
        QVERIFY(written.find("MainContent") == std::string::npos);
        QVERIFY(written.find(',') != std::string::npos);
    }

    void apConsistsReadsScenariosOutOfRouteArchives() {
        ui::frmAPConsists screen(*m_demo.ctx);
        screen.Command11_Click();
        QVERIFY(m_demo.prompted("You do not appear to have selected any .ap files?"));
        screen.Command5_Click();
        QVERIFY(m_demo.prompted("All selected .ap items have been added to the grid."));
        screen.Command1_Click();
        QVERIFY(m_demo.prompted("You have already run 'Find .ap files'"));
        QTableWidget* grid = screen.grid();
        int main = -1;
        for (int r = 0; r < grid->rowCount(); ++r)
            if (text(grid, r, 0).endsWith("MainContent.ap"))
                main = r;
        QVERIFY2(main >= 0, "the packed route's archive is found");
        const int before = grid->rowCount();
        grid->selectRow(main);
        screen.Command11_Click();
        QVERIFY(grid->rowCount() > before - 1);
        QVERIFY(text(grid, main, 0).contains("MainContent.ap|Scenarios\\"));
        QVERIFY(!text(grid, main, 3).isEmpty());
        QVERIFY(!text(grid, main, 1).isEmpty());

        // Saved and loaded back, the grid is the same.
        const fs::path saved = m_demo.ctx->reports() / "ap scenarios, \"one\".csv";
        m_demo.ui->pushPath(saved);
        screen.Command3_Click();
        QVERIFY(fs::exists(saved));
        const QString first = text(grid, main, 3);
        const int rows = grid->rowCount();
        screen.Command10_Click();
        QCOMPARE(grid->rowCount(), 0);
        m_demo.ui->pushPath(saved);
        screen.Command9_Click();
        QCOMPARE(grid->rowCount(), rows);
        QCOMPARE(text(grid, main, 3), first);

        // The xml listing refuses .ap details, and the other way round.
        screen.Command8_Click();
        QVERIFY(m_demo.prompted("You do not appear to have selected any .xml files?"));
    }
};

int runTestFrmAssetsAP(int argc, char** argv) {
    TestFrmAssetsAP t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmassetsap.moc"
