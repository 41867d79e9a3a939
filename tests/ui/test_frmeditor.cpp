// The main screen driven through its commands, offscreen.

#include "editor/frmeditor.h"
#include "velmora/core/editorcaptions.h"
#include "velmora/core/settings.h"
#include "velmora/core/userinterface.h"

#include <QAction>
#include <QLabel>
#include <QTabWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
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

// A language table whose entry n reads "<prefix> n", so every caption shows where it came from.
std::string numberedTable(const std::string& prefix) {
    std::string t;
    for (int n = 1; n <= 634; ++n)
        t += std::to_string(n) + ",\"" + prefix + " " + std::to_string(n) + "\"\r\n";
    return t + "0,\"\"\r\n";
}

} // namespace

class TestFrmEditor : public QObject {
    Q_OBJECT

    fs::path m_dir;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<AppContext> m_ctx;

    std::unique_ptr<ui::frmEditor> open(const std::string& document = {}) {
        m_ctx = std::make_unique<AppContext>(m_dir / "home", m_dir / "data", *m_ui);
        StartupOptions o;
        o.railWorks = m_dir / "rw";
        o.commandLinePath = document;
        return std::make_unique<ui::frmEditor>(*m_ctx, o);
    }

private slots:
    void init() {
        m_dir = fs::temp_directory_path() / ("velmora-ui-" + std::to_string(QCoreApplication::applicationPid()));
        fs::remove_all(m_dir);
        writeFile(m_dir / "data/Language/Lang_English.txt", numberedTable("English"));
        writeFile(m_dir / "data/Language/Lang_Test.txt", numberedTable("Test"));
        writeFile(m_dir / "rw/RailWorks.exe", "");
        fs::create_directories(m_dir / "rw/Assets");
        fs::create_directories(m_dir / "rw/Content/Routes");
        m_ui = std::make_unique<ScriptedUi>();
    }

    void cleanup() {
        m_ctx.reset();
        fs::remove_all(m_dir);
    }

    void menuBarHasEveryCommandAndOnlyBuiltOnesAreEnabled() {
        auto editor = open();
        for (const char* name : {"mnuOpenRS", "mnuSaveRS", "mnuItSaveAs", "mnu2bin", "mnuFile2", "mnuXML",
                                 "mnuSavexml", "mnuSaveAs", "mnuOpenTex", "mnuFindAllAP", "mnuNoDet", "mnuMC",
                                 "mnuSce", "mnuFA", "mnuAP", "mnuPrint", "mnuBackup", "mnuInc", "mnuFind",
                                 "mnuFindMult", "mnuDDS", "mnuView", "mnuEditDDS", "mnuDDStoKrs", "mnuEmpt",
                                 "mnuRSBT", "mnuTgpcdx", "mnuTime", "mnuDelRoute", "mnuCheckQD", "mnuAddProv",
                                 "mnuDRS", "mnuRouteInfo", "mnuMap", "mnuMultiMarker", "mnuMkrDCSV",
                                 "mnuCSV2DCSV", "mnuMkRW", "mnuDeveloper", "mnuDevFolders", "mnuIdent", "mnuUUID",
                                 "mnuAE", "mnuAPEdit", "mnuCnt", "mnuAPCont", "mnuClearTemp", "mnuOstrand",
                                 "mnuEC", "mnuBuildCon", "mnuBuildQD", "mnuRollingStock", "mnuPackAss",
                                 "mnuReskin", "mnuPack", "mnuPackSce", "mnuCSV", "mnuExcel", "mnuTxt", "mnuClear",
                                 "mnuCTF", "mnuDont", "mnuNewVer", "mnuEdMax", "mnuWarn", "mnuReadWrite",
                                 "mnuSelRW", "mnuNoMarkers", "mnuListAP", "mnuAcro", "mnuIRF", "mnuViewer",
                                 "mnuQDPreload", "mnuRWPath", "mnuRWB", "mnuLang", "mnuPaths", "mnuSP",
                                 "mnuContents", "mnuAbout", "mnuVer", "mnuWeb", "mnuEmail", "mnuExit"})
            QVERIFY2(editor->action(name), name);
        // Every control the caption table names exists on the screen.
        for (const auto& a : editorCaptionAssignments()) {
            QString control = QString::fromUtf8(a.control.data(), static_cast<qsizetype>(a.control.size()));
            if (control.startsWith("mnu"))
                QVERIFY2(editor->action(control), qPrintable(control));
        }
        QVERIFY(editor->action("mnuOpenRS")->isEnabled());
        QVERIFY(!editor->action("mnuSaveRS")->isEnabled()); // nothing open yet
        QVERIFY(!editor->action("mnuBackup")->isEnabled()); // its tool is not built yet
        QVERIFY(editor->action("mnuDont")->isEnabled());
    }

    void captionsComeFromTheLanguageTableAndSwitchAtOnce() {
        auto editor = open();
        QCOMPARE(editor->action("mnuFileS")->text(), QString("English 1"));
        QCOMPARE(editor->menu("mnuFileS")->title(), QString("English 1"));
        QCOMPARE(editor->action("mnuBackup")->text(), QString("English 278")); // the later entry stands
        QCOMPARE(editor->action("mnuRollingStock")->text(), QString("English 389"));
        QCOMPARE(editor->action("mnuMap")->text(), QString("English 126"));
        // No entry for this one: it keeps its design caption.
        QCOMPARE(editor->action("mnuEmail")->text(), QString("Send me Email"));
        QCOMPARE(editor->findChild<QLabel*>("StatusPanel1")->text(), QString("English 321"));

        editor->applyLanguage("Lang_Test.txt");
        QCOMPARE(editor->action("mnuFileS")->text(), QString("Test 1"));
        QCOMPARE(editor->action("mnuDont")->text(), QString("Test 319"));
        QCOMPARE(editor->findChild<QLabel*>("StatusPanel3")->text(), QString("Test"));
        Settings back;
        loadSettings(m_dir / "home/VLpreferences.txt", back, nullptr);
        QCOMPARE(QString::fromStdString(back.language), QString("Test"));
    }

    void togglesAreTickedAndSaved() {
        auto editor = open();
        QVERIFY(!editor->action("mnuDont")->isChecked());
        editor->action("mnuDont")->trigger();
        QVERIFY(editor->action("mnuDont")->isChecked());
        editor->action("mnuEdMax")->trigger();
        Settings back;
        QVERIFY(loadSettings(m_dir / "home/VLpreferences.txt", back, nullptr));
        QVERIFY(back.dontAskOnClose);
        QCOMPARE(back.editorState, std::int16_t(2));

        // The next start shows the ticks as saved and the window maximised.
        editor.reset();
        auto again = open();
        QVERIFY(again->action("mnuDont")->isChecked());
        QVERIFY(again->action("mnuEdMax")->isChecked());
        QVERIFY(again->startup().maximised);
    }

    void closingWritesSettingsFirstAndCanBeCancelled() {
        auto editor = open();
        const fs::path settings = m_dir / "home/VLpreferences.txt";
        bool writtenWhenAsked = false;
        m_ui->onPrompt = [&](const ScriptedUi::Prompt& p) {
            if (p.text == "Do you really wish to exit Velmora?")
                writtenWhenAsked = fs::exists(settings);
        };
        editor->show();
        m_ui->pushAnswer(Answer::No);
        QVERIFY(!editor->close());
        QVERIFY(writtenWhenAsked);
        QVERIFY(editor->isVisible());

        m_ui->pushAnswer(Answer::Yes);
        QVERIFY(editor->close());
    }

    void documentOnTheCommandLineOpensWithoutADialog() {
        const fs::path doc = m_dir / "rw/Content/Routes/r1/RouteProperties.xml";
        writeFile(doc, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cRouteProperties/>\r\n");
        auto editor = open("\"" + doc.string() + "\"");
        QVERIFY(editor->startup().maximised);
        QVERIFY(editor->textView()->toPlainText().contains("cRouteProperties"));
        QVERIFY(!editor->edited());
        QCOMPARE(m_ui->prompts.size(), std::size_t(0));
        // Only a binary document counts as edited: an XML file is saved as text anyway.
        editor->textView()->appendPlainText("x");
        QVERIFY(!editor->edited());
    }

    void routeIndexFillsTheRouteTab() {
        writeFile(m_dir / "home/Reports/RouteIndex.csv", "folder-a,Route A\r\nfolder-b,Route B\r\n\r\n");
        auto editor = open();
        editor->findChild<QTabWidget*>("SSTab1")->setCurrentIndex(2);
        auto* grid = editor->findChild<QTableWidget*>("VSFG1");
        QCOMPARE(grid->rowCount(), 2);
        QCOMPARE(grid->item(1, 1)->text(), QString("Route B"));
    }
};

#include "test_frmeditor.moc"

int runTestFrmEditor(int argc, char** argv) {
    TestFrmEditor t;
    return QTest::qExec(&t, argc, argv);
}
