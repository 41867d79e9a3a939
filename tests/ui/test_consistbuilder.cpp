// The Saved Consists screen on a demo install, offscreen: the saved consists shaded and named row
// by row, a consist generated from the index through dlgConGen and saved; Exit asking while rows
// are unsaved; no saved consists at all; missing stock told in one box and marked on its rows.

#include "../core/tempdir.h"
#include "consists/frmconsistbuilder.h"
#include "demoscreens.h"
#include "editor/frmeditor.h"
#include "velmora/consists/consistbuilder.h"
#include "velmora/core/textboundary.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;
namespace cs = velmora::consists;

namespace {

void writeBytes(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

QString cell(const QTableWidget* grid, int row, int column) {
    const QTableWidgetItem* item = grid->item(row, column);
    return item ? item->text() : QString();
}

} // namespace

class TestConsistBuilder : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;
    std::string m_original;

    fs::path file() const { return m_demo.dir / "rw/Content/ConsistTemplates.bin"; }
    void writeIndex() {
        writeBytes(m_demo.dir / "home/Reports/Index.csv",
                   "Provider,Product,Path,Name,In Scene,Category,Blueprint,Index\r\n"
                   "DemoRail,Class66Pack,RailVehicles\\Freight\\HTA\\HTA_Coal.bin,HTA coal,Yes,Freight Wagon,,1\r\n"
                   "DemoRail,Class66Pack,RailVehicles\\Freight\\HTA\\Reskins\\HTA_Livery1.bin,HTA livery 1,Yes,"
                   "Freight Wagon,,2\r\n"
                   "Heritage,SteamDays,RailVehicles\\Passenger\\Mk1\\Mk1_BSK.bin,Mk1 BSK,Yes,Passenger,,3\r\n");
    }

private slots:
    void initTestCase() {
        QVERIFY(m_demo.generate("uiconsistbuilder"));
        m_original = test::slurp(file());
    }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        writeBytes(file(), m_original);
        for (const auto& e : fs::directory_iterator(file().parent_path()))
            if (e.path().filename().string().starts_with("ConsistTemplates.bin."))
                fs::remove(e.path());
        fs::remove_all(m_demo.dir / "home/Reports");
        m_demo.start(true);
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void aGeneratedConsistIsSavedAndReadBack() {
        writeIndex();
        ui::frmConsistBuilder screen(*m_ctx);
        QVERIFY(screen.opened());
        QVERIFY(!m_demo.prompted(cs::kMissingTitle));
        for (const char* name : {"mnuSelIndex", "mnuNew", "mnuDel", "mnuFlip", "mnuInsert", "mnuMulti", "mnuRename",
                                 "mnuPool", "mnuGenCon", "mnuClear"})
            QVERIFY2(screen.action(name), name);
        for (const char* name : {"Command1", "Command2", "Command3", "Command8"})
            QVERIFY2(screen.button(name), name);
        QCOMPARE(screen.button("Command8")->text(), QString("&Save"));
        QCOMPARE(screen.index()->rowCount(), 3);
        QTableWidget* grid = screen.grid();
        QCOMPARE(grid->rowCount(), 13); // the demo's four saved consists
        // Each row names its consist; consists alternate in shade.
        QCOMPARE(cell(grid, 0, 0), QString("Class 66 coal"));
        QCOMPARE(cell(grid, 4, 0), QString("Re 460 InterRegio"));
        QVERIFY(grid->item(0, 0)->background() == grid->item(3, 0)->background());
        QVERIFY(grid->item(0, 0)->background() != grid->item(4, 0)->background());
        QCOMPARE(cell(grid, 0, 8), QString());

        // Find: the next name from the row after the last hit.
        screen.findText()->setText("hta");
        screen.Command3_Click();
        QCOMPARE(screen.index()->currentRow(), 0);
        screen.Command3_Click();
        QCOMPARE(screen.index()->currentRow(), 1);

        // Generate Consist: the name, then dlgConGen; randomness 0 repeats one row.
        const std::string name = "Caf\xC3\xA9 \"Nord\" & Co";
        m_ui->pushText(name);
        screen.onConGen = [](ui::dlgConGen& d) {
            d.wagons()->setText("5");
            d.randomness()->setText("0");
            d.accept();
        };
        screen.setRandom([] { return 0.9; });
        screen.action("mnuGenCon")->trigger();
        QCOMPARE(grid->rowCount(), 18);
        for (int r = 13; r < 18; ++r) {
            QCOMPARE(cell(grid, r, 0), QString::fromUtf8(name.c_str()));
            QCOMPARE(cell(grid, r, 5), QString("RailVehicles\\Passenger\\Mk1\\Mk1_BSK.xml"));
        }
        QVERIFY(screen.builder().unsaved());

        screen.button("Command8")->click();
        QVERIFY(m_demo.prompted(cs::kReady));
        QVERIFY(!screen.builder().unsaved());
        QCOMPARE(test::slurp(m_demo.dir / "rw/Content/ConsistTemplates.bin.bak"), m_original);
        const cs::ReadResult back = cs::readConsistTemplates(*m_ctx);
        QVERIFY(back.ok());
        QCOMPARE(back.doc.consists.size(), std::size_t(5));
        QCOMPARE(utf8FromDocument(cs::shownName(back.doc.consists[4].name)), name);
        QCOMPARE(back.doc.consists[4].entries.size(), std::size_t(5));
        QCOMPARE(m_ctx->journal().entries().size(), std::size_t(1));

        // Saved, Exit leaves without asking.
        const std::size_t prompts = m_ui->prompts.size();
        screen.show();
        screen.button("Command1")->click();
        QVERIFY(!screen.isVisible());
        QCOMPARE(m_ui->prompts.size(), prompts);
    }

    void exitAsksWhileRowsAreUnsaved() {
        writeIndex();
        ui::frmConsistBuilder screen(*m_ctx);
        screen.show();
        screen.grid()->selectRow(0);
        screen.action("mnuFlip")->trigger();
        QCOMPARE(cell(screen.grid(), 0, 6), QString("1"));
        screen.button("Command1")->click();
        QVERIFY(m_demo.prompted("You have not saved the changes to your consists."));
        QVERIFY(screen.isVisible());
        m_ui->pushAnswer(Answer::Yes);
        screen.button("Command1")->click();
        QVERIFY(!screen.isVisible());
        QCOMPARE(test::slurp(file()), m_original);
    }

    void insertAndAddNeedTheirSelections() {
        writeIndex();
        ui::frmConsistBuilder screen(*m_ctx);
        screen.button("Command2")->click();
        QVERIFY(m_demo.prompted(cs::kNoStockSelected));
        screen.action("mnuInsert")->trigger();
        QVERIFY(m_demo.prompted(cs::kNoPlaceSelected));
        // Stock chosen in the top box goes in behind each selected row, three times over.
        screen.index()->selectRow(1);
        screen.grid()->selectRow(3);
        m_ui->pushText("3");
        screen.action("mnuMulti")->trigger();
        QCOMPARE(screen.grid()->rowCount(), 16);
        QCOMPARE(cell(screen.grid(), 4, 0), QString("Class 66 coal"));
        QCOMPARE(cell(screen.grid(), 6, 5), QString("RailVehicles\\Freight\\HTA\\Reskins\\HTA_Livery1.xml"));
        QCOMPARE(cell(screen.grid(), 7, 0), QString("Re 460 InterRegio"));
    }

    void withoutSavedConsistsTheScreenAsksFirst() {
        fs::remove(file());
        {
            ui::frmConsistBuilder screen(*m_ctx);
            QVERIFY(!screen.opened());
            QVERIFY(m_demo.prompted("You currently don't have any saved consists."));
        }
        m_ui->pushAnswer(Answer::Yes);
        ui::frmConsistBuilder screen(*m_ctx);
        QVERIFY(screen.opened());
        QCOMPARE(screen.grid()->rowCount(), 0);
        QVERIFY(m_demo.prompted("You do not appear to have an index file named Index.csv."));
    }

    void missingStockIsToldInOneBoxAndMarkedOnItsRows() {
        cs::ConsistBuilder b;
        QVERIFY(b.open(*m_ctx).ok());
        b.startConsist("Ghost");
        b.addStock({"Nobody", "Nothing", "RailVehicles\\Gone1.xml"});
        b.addStock({"Nobody", "Nothing", "RailVehicles\\Gone2.xml"});
        QVERIFY(b.save(*m_ctx));
        ui::frmConsistBuilder screen(*m_ctx);
        int boxes = 0;
        for (const auto& p : m_ui->prompts)
            if (p.title == cs::kMissingTitle) {
                ++boxes;
                QVERIFY(p.text.find("Gone1.bin") != std::string::npos);
                QVERIFY(p.text.find("Gone2.bin") != std::string::npos);
            }
        QCOMPARE(boxes, 1);
        // Rows 11 and 12 are the demo's "Sludge trip": its wagon is missing, its engine is not.
        QCOMPARE(cell(screen.grid(), 12, 8), QString("missing"));
        QCOMPARE(cell(screen.grid(), 11, 8), QString());
        QCOMPARE(cell(screen.grid(), 13, 8), QString("missing"));
        QVERIFY(screen.grid()->item(13, 0)->background() != screen.grid()->item(11, 0)->background());
    }

    void theMainMenuOpensIt() {
        StartupOptions o;
        o.railWorks = m_demo.dir / "rw";
        o.askForRoot = false;
        ui::frmEditor editor(*m_ctx, o);
        QAction* entry = editor.findChild<QAction*>("mnuBuildCon");
        QVERIFY(entry);
        QVERIFY(entry->isEnabled());
        entry->trigger();
        entry->trigger();
        QCOMPARE(editor.findChildren<ui::frmConsistBuilder*>().size(), 1);
        QVERIFY(editor.findChild<ui::frmConsistBuilder*>()->isVisible());
    }
};

int runTestConsistBuilder(int argc, char** argv) {
    TestConsistBuilder t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_consistbuilder.moc"
