// The asset screen driven through its commands, offscreen.

#include "assets/frmassets.h"
#include "common/frmreport.h"
#include "assets/frmindex.h"
#include "velmora/core/convert.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;

namespace {
void writeFile(const fs::path& p, const std::string& bytes) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << bytes;
}
} // namespace

class TestFrmAssets : public QObject {
    Q_OBJECT

    fs::path m_dir;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<AppContext> m_ctx;

    void start(const fs::path& root) {
        m_ctx = std::make_unique<AppContext>(m_dir / "home", m_dir / "data", *m_ui);
        StartupOptions o;
        o.railWorks = root;
        o.askForRoot = false;
        runStartup(*m_ctx, o);
    }

    // A small simulator install holding `files` (below Assets, with their bytes), started.
    void startWith(const std::vector<std::pair<std::string, std::string>>& files) {
        const fs::path rw = m_dir / "rw";
        writeFile(rw / "RailWorks.exe", "");
        writeFile(rw / "Content/Routes/.keep", "");
        for (const auto& [name, bytes] : files)
            writeFile(rw / "Assets" / name, bytes);
        start(rw);
    }

    // Add to List of the text files on a new screen.
    static void listTextFiles(ui::frmAssets& screen) {
        screen.findChild<QComboBox*>("Text1")->setCurrentText("*.txt");
        screen.Command1_Click();
    }

    bool said(const std::string& text) const {
        for (const auto& p : m_ui->prompts)
            if (p.text.find(text) != std::string::npos)
                return true;
        return false;
    }

private slots:
    void init() {
        m_dir = fs::temp_directory_path() / ("velmora-uiassets-" + std::to_string(QCoreApplication::applicationPid()));
        fs::remove_all(m_dir);
        m_ui = std::make_unique<ScriptedUi>();
    }
    void cleanup() {
        m_ctx.reset();
        fs::remove_all(m_dir);
    }

    void addToListFindAndSaveTheIndex() {
        startWith({{"DTG/Class66/Docs/ReadMe.txt", "x"}, {"DTG/Class66/Docs/Notes.txt", "x"}, {"Kuju/Core/Other.txt", "x"}});
        ui::frmAssets screen(*m_ctx);
        listTextFiles(screen);
        QCOMPARE(screen.grid()->rowCount(), 3);
        QVERIFY(said("Selected items have been added to the grid."));
        // A second Add to List appends, numbering from 1 again.
        screen.Command1_Click();
        QCOMPARE(screen.grid()->rowCount(), 6);
        QCOMPARE(screen.rows()[3].index, std::string("1"));

        // Show All with nothing to find keeps every row.
        screen.findChild<QComboBox*>("Combo1")->setCurrentIndex(3);
        screen.findChild<QLineEdit*>("Text6")->setText("");
        screen.Command8_Click();
        QCOMPARE(screen.grid()->rowCount(), 6);

        // Find steps through the matches of a column; Show All keeps only them.
        screen.findChild<QComboBox*>("Combo1")->setCurrentIndex(0);
        screen.findChild<QLineEdit*>("Text6")->setText("kuju");
        screen.Command14_Click();
        QCOMPARE(screen.selectedRows().size(), std::size_t(1));
        QCOMPARE(screen.selectedRows()[0].provider, std::string("Kuju"));
        screen.Command8_Click();
        QCOMPARE(screen.grid()->rowCount(), 2);

        // Save Stock Index asks first; No leaves everything alone.
        m_ui->pushAnswer(Answer::No);
        screen.Command13_Click();
        QVERIFY(!fs::exists(m_dir / "home/Reports/Index.csv"));
        m_ui->pushAnswer(Answer::Yes);
        screen.Command13_Click();
        QVERIFY(fs::exists(m_dir / "home/Reports/Index.csv"));
        m_ui->pushAnswer(Answer::Yes);
        screen.Command13_Click();
        QVERIFY(fs::exists(m_dir / "home/Reports/Index.csv.bak"));

        ui::frmIndex index(*m_ctx);
        QVERIFY(index.loaded());
        QCOMPARE(index.grid()->rowCount(), 2);
    }

    void listsComeBackInEachFormAndTheGridCommandsWork() {
        startWith({{"DTG/Class66/a.txt", "xx"}, {"DTG/Class66/b, with comma.txt", "xx"}, {"Kuju/Core/empty.txt", ""}});
        ui::frmAssets screen(*m_ctx);
        listTextFiles(screen);
        QCOMPARE(screen.grid()->rowCount(), 3);
        const auto built = screen.rows();

        for (const char* name : {"list.csv", "list.xls", "list.txt"}) {
            const fs::path file = m_dir / "home/Reports" / name;
            m_ui->pushPath(file);
            screen.Command3_Click();
            QVERIFY2(fs::exists(file), name);
            m_ui->pushPath(file);
            screen.Command3_Click();
            QVERIFY2(fs::exists(file.string() + ".bak"), "a list saved over keeps the old one");
            screen.Command5_Click();
            QCOMPARE(screen.grid()->rowCount(), 0);
            m_ui->pushPath(file);
            screen.Command11_Click();
            QCOMPARE(screen.rows().size(), built.size());
            for (std::size_t i = 0; i < built.size(); ++i)
                QVERIFY2(screen.rows()[i].relativePath() == built[i].relativePath(),
                         (std::string(name) + ": " + screen.rows()[i].relativePath() + " | " + built[i].relativePath()).c_str());
            // Restore reads the last list again after the grid was cleared.
            screen.Command5_Click();
            screen.Command18_Click();
            QCOMPARE(screen.rows().size(), built.size());
        }

        screen.Command15_Click();
        QCOMPARE(screen.selectedRows().size(), std::size_t(3));
        screen.Command16_Click();
        QCOMPARE(screen.selectedRows().size(), std::size_t(0));
        auto* hideFirst = screen.findChild<QCheckBox*>("Check2_0");
        hideFirst->setChecked(true);
        QVERIFY(screen.grid()->isColumnHidden(0));
        hideFirst->setChecked(false);
        QVERIFY(!screen.grid()->isColumnHidden(0));

        // Find Zero Length Files lists the files of no more than one byte.
        screen.Command5_Click();
        screen.Command10_Click();
        QCOMPARE(screen.grid()->rowCount(), 1);
        QVERIFY(screen.rows().front().relativePath().find("empty.txt") != std::string::npos);
    }

    void deleteSelectedWarnsAndRebuilds() {
        startWith({{"DTG/Class66/a.txt", "x"}, {"DTG/Class66/b.txt", "x"}});
        const fs::path rw = m_dir / "rw";
        ui::frmAssets screen(*m_ctx);
        listTextFiles(screen);
        screen.grid()->selectRow(0);
        m_ui->pushAnswer(Answer::Cancel);
        screen.Command6_Click();
        QVERIFY(fs::exists(rw / "Assets/DTG/Class66/a.txt"));
        screen.grid()->selectRow(0);
        m_ui->pushAnswer(Answer::Ok);
        screen.Command6_Click();
        QVERIFY(!fs::exists(rw / "Assets/DTG/Class66/a.txt"));
        QVERIFY(fs::exists(rw / "Assets/DTG/Class66/b.txt"));
        QCOMPARE(screen.grid()->rowCount(), 1);
        QVERIFY(said("Selected items have been removed from the grid."));
    }

    void rollingStockOfTheDemoInstall() {
        const fs::path rw = m_dir / "demo";
        if (!demo::generateDemoInstall(rw, {}).ok)
            QSKIP("the demo install could not be generated (no codec yet)");
        start(rw);
        ui::frmAssets screen(*m_ctx);
        screen.findChild<QCheckBox*>("Check1")->setChecked(true);
        screen.Command1_Click();
        QVERIFY(screen.grid()->rowCount() > 5);
        screen.resize(1300, 800);
        screen.show();
        QVERIFY(screen.grab().save(QCoreApplication::applicationDirPath() + "/asset-screen.png"));
        for (const auto& row : screen.rows())
            QVERIFY2(row.name != "No Name" && !row.name.empty(), row.relativePath().c_str());
        screen.grid()->selectRow(0);
        screen.showRowPicture(0);
        QVERIFY(screen.windowTitle().startsWith("Assets Listing "));

        // Check Loco on the Class 66: its report names the loco and finds nothing missing.
        const auto rows = screen.rows();
        int loco = -1;
        for (int i = 0; i < static_cast<int>(rows.size()); ++i)
            if (rows[static_cast<std::size_t>(i)].path.find("Class66_EWS.bin") != std::string::npos)
                loco = i;
        QVERIFY(loco >= 0);
        screen.grid()->clearSelection();
        screen.grid()->selectRow(loco);
        QSignalSpy shown(&screen, &ui::frmAssets::reportShown);
        screen.action("mnuCheckLoco")->trigger();
        QCOMPARE(shown.count(), 1);
        const QString report = shown.at(0).at(0).toString();
        QVERIFY(report.contains("Class66_EWS.bin"));
        // The report window says in words that nothing is missing.
        auto* reportScreen = screen.findChild<ui::frmReport*>("frmReport");
        QVERIFY(reportScreen);
        QVERIFY(reportScreen->summary().contains("no missing files"));
        QVERIFY(screen.action("mnuWhere")->isEnabled());

        // Child entries: shown for the loco, one removed into a new item beside it.
        screen.Command9_Click();
        auto* children = screen.findChild<QListWidget*>("List1");
        QVERIFY(children->count() >= 1);
        const QString removed = children->item(0)->text();
        children->item(0)->setSelected(true);
        m_ui->pushText("Class66_EWS_NoSound");
        m_ui->pushText("DemoRail Class 66 quiet");
        screen.Command12_Click();
        const fs::path folder = rw / "Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine";
        QVERIFY(fs::exists(folder / "Class66_EWS_NoSound.bin"));
        QVERIFY2(fs::exists(folder / "Class66_EWS.bin"), "the source stays");
        std::string xml;
        QVERIFY(binToXmlText(folder / "Class66_EWS_NoSound.bin", xml));
        QVERIFY(xml.find(">" + removed.toStdString() + "<") == std::string::npos);
        QVERIFY(xml.find("<Name d:type=\"cDeltaString\">DemoRail Class 66 quiet</Name>") != std::string::npos);
    }
};

int runTestFrmAssets(int argc, char** argv) {
    TestFrmAssets t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmassets.moc"
