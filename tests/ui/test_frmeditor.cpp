// The main screen driven through its commands, offscreen.

#include "assets/frmassets.h"
#include "assets/frmcontent.h"
#include "common/frmabout.h"
#include "common/frmreport.h"
#include "common/mnemonics.h"
#include "editor/frmeditor.h"
#include "routes/frmdelroute.h"
#include "routes/frmlistrs.h"
#include "scenarios/frmconsistdupe.h"
#include "velmora/backup/housekeeping.h"
#include "velmora/core/about.h"
#include "velmora/core/editorcaptions.h"
#include "velmora/core/settings.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/version.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QTimer>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
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

// Every entry that cannot be chosen says why in its tooltip (a tooltip Qt makes from the caption
// does not count), and every menu shows its tooltips.
void everyDisabledEntrySaysWhy(ui::frmEditor& editor) {
    for (QAction* a : editor.findChildren<QAction*>())
        if (!a->isEnabled() && !a->isSeparator() && !a->menu())
            QVERIFY2(!a->toolTip().isEmpty() && a->toolTip() != QString(a->text()).remove('&'),
                     qPrintable(a->objectName() + ": " + a->text()));
    for (QMenu* m : editor.findChildren<QMenu*>())
        QVERIFY2(m->toolTipsVisible(), qPrintable(m->objectName()));
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

    void theUsualKeysReachTheirCommands() {
        auto editor = open();
        QCOMPARE(editor->action("mnuOpenRS")->shortcut(), QKeySequence(QKeySequence::Open));
        QCOMPARE(editor->action("mnuSaveRS")->shortcut(), QKeySequence(QKeySequence::Save));
        QCOMPARE(editor->action("mnuFind")->shortcut(), QKeySequence(QKeySequence::Find));
        QCOMPARE(editor->action("mnuContents")->shortcut(), QKeySequence(QKeySequence::HelpContents));
        QCOMPARE(editor->action("mnuExit")->shortcut(), QKeySequence(QKeySequence::Quit));
        QCOMPARE(editor->action("mnuGoToLine")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_G));
        // Find Next with no search yet opens the Find dialog.
        auto* findNext = editor->findChild<QAction*>("findNext");
        QVERIFY(findNext);
        QCOMPARE(findNext->shortcut(), QKeySequence(QKeySequence::FindNext));
        findNext->trigger();
        QVERIFY(editor->findChild<QDialog*>("dlgSearch"));
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
        QVERIFY(editor->action("mnuDont")->isEnabled());
        // What works is live; what does not says what it waits for.
        for (const char* name : {"mnuCSV", "mnuExcel", "mnuTxt", "mnuCTF", "mnuClearTemp", "mnuQDPreload",
                                 "mnuCheckQD", "mnuCnt"})
            QVERIFY2(editor->action(name)->isEnabled(), name);
        // The Content Editor entry opens the content list, one screen however often it is chosen.
        editor->action("mnuCnt")->trigger();
        editor->action("mnuCnt")->trigger();
        QCOMPARE(editor->findChildren<ui::frmContent*>().size(), 1);
        QVERIFY(editor->findChild<ui::frmContent*>()->isVisible());
        QCOMPARE(editor->action("mnuSaveRS")->toolTip(), QString("Works while a document is open"));
        everyDisabledEntrySaysWhy(*editor);
        QCOMPARE(editor->action("mnuEmail")->toolTip(), QString("Waits for the mail screen"));
        QVERIFY(editor->action("mnuAbout")->isEnabled());

        // With a document open, and again once the screen is cleared.
        const fs::path doc = m_dir / "rw/Content/Routes/r1/RouteProperties.xml";
        writeFile(doc, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cRouteProperties/>\r\n");
        editor.reset();
        editor = open(doc.string());
        everyDisabledEntrySaysWhy(*editor);
        editor->action("mnuClear")->trigger();
        everyDisabledEntrySaysWhy(*editor);
    }

    void helpContentsOpensTheGuideAndAboutTellsWhatThisIs() {
        auto editor = open();
        writeFile(m_dir / "data/Help/guide.html", "<html><body>guide</body></html>");
        editor->action("mnuContents")->trigger();
        QCOMPARE(m_ui->opened, std::vector<fs::path>{m_dir / "data/Help/guide.html"});
        QVERIFY(m_ui->prompts.empty()); // no PDF reader is asked for

        QString shown;
        QTimer::singleShot(0, [&] {
            auto* about = qobject_cast<ui::frmAbout*>(QApplication::activeModalWidget());
            if (!about)
                return;
            shown = about->text();
            about->findChild<QCheckBox*>("chkDontShow")->setChecked(true);
            about->accept();
        });
        editor->action("mnuAbout")->trigger();
        QVERIFY(shown.startsWith(QString("Velmora %1\n").arg(Version::text)));
        QVERIFY(shown.contains("Licence: "));
        QVERIFY(shown.contains(QString("  Qt %1").arg(qVersion())));
        QVERIFY(shown.contains("  libzip "));
        QCOMPARE(shown.toStdString(), aboutText());
        QVERIFY(m_ctx->aboutTick); // the About screen's own tick, written when the program closes
    }

    void theReportsAndOptionsCommandsThatWork() {
        auto editor = open();
        // A saved grid report in the grid screen, a text report in the report screen.
        writeFile(m_dir / "home/Reports/Demo_Assets.csv", "C:\\RW\\Assets\\A\\B\\x.bin,,1\r\n\"a, b.bin\",,2\r\n");
        m_ui->pushPath(m_dir / "home/Reports/Demo_Assets.csv");
        ui::frmListRS* grid = editor->openGridReport("Comma Separated (*.csv)|*.csv");
        QVERIFY(grid);
        QCOMPARE(grid->rows(), (std::vector<std::string>{"C:\\RW\\Assets\\A\\B\\x.bin\t\t1", "a, b.bin\t\t2"}));
        writeFile(m_dir / "home/Reports/Notes.txt", "line one\r\nline two");
        m_ui->pushPath(m_dir / "home/Reports/Notes.txt");
        ui::frmReport* report = editor->mnuTxt_Click();
        QVERIFY(report);
        QVERIFY(report->findChild<QPlainTextEdit*>("Text1")->toPlainText().contains("line two"));

        // Clear Temp Files empties the program's scratch folder and makes it again.
        writeFile(m_ctx->tempFiles() / "old.xml", "x");
        editor->action("mnuCTF")->trigger();
        QVERIFY(!fs::exists(m_ctx->tempFiles() / "old.xml"));
        QVERIFY(fs::is_directory(m_ctx->tempFiles()));

        // PreLoad Folder goes to the settings.
        m_ui->pushPath(m_dir / "rw/Assets/DemoRail/PreLoad");
        editor->action("mnuQDPreload")->trigger();
        Settings back;
        loadSettings(m_dir / "home/VLpreferences.txt", back, nullptr);
        QCOMPARE(QString::fromStdString(back.preloadFolder), QString::fromStdString((m_dir / "rw/Assets/DemoRail/PreLoad").string()));

        // Compare Consists opens the consist transfer, once however often it is chosen.
        QVERIFY(editor->action("mnuEC")->isEnabled());
        editor->action("mnuEC")->trigger();
        editor->action("mnuEC")->trigger();
        QCOMPARE(editor->findChildren<ui::frmConsistDupe*>().size(), 1);
        QVERIFY(editor->findChild<ui::frmConsistDupe*>()->isVisible());

        // Clear Railworks\Temp: a file at a time, or the lot.
        writeFile(m_dir / "rw/Temp/a.tmp", "a");
        writeFile(m_dir / "rw/Temp/b.tmp", "b");
        ui::frmFolder6 temp(*m_ctx);
        QCOMPARE(temp.files()->count(), 2);
        temp.files()->item(0)->setSelected(true);
        temp.Command1_Click();
        QVERIFY(!fs::exists(m_dir / "rw/Temp/a.tmp"));
        QCOMPARE(temp.files()->count(), 1);
        temp.Command2_Click();
        QCOMPARE(temp.files()->count(), 0);
        QVERIFY(fs::is_directory(m_dir / "rw/Temp"));
    }

    void theBackupAndReadWriteEntriesCopyAndReport() {
        auto editor = open();
        for (const char* name : {"mnuBackup", "mnuInc", "mnuReadWrite", "mnuSelRW", "mnuVer", "mnuWeb"})
            QVERIFY2(editor->action(name)->isEnabled(), name);
        auto lastMessage = [&] { return m_ui->prompts.empty() ? std::string() : m_ui->prompts.back().text; };
        writeFile(m_dir / "rw/Assets/Kuju/Caf\xc3\xa9, \"x\".bin", "a");
        // With no backup folder set the user is told to set one, and nothing is made.
        editor->action("mnuBackup")->trigger();
        QCOMPARE(lastMessage(), std::string(backup::kNoBackupPath));
        m_ctx->settings.railWorksBackup = (m_dir / "backups").string();
        fs::create_directories(m_dir / "backups/VL_Backup1");
        editor->action("mnuBackup")->trigger();
        QVERIFY2(lastMessage().rfind("TrainSimulator 2019 Assets,Contents,Source and Root folders have been copied to\n" +
                                         (m_dir / "backups/VL_Backup2").string(), 0) == 0,
                 lastMessage().c_str());
        QVERIFY(fs::exists(m_dir / "backups/VL_Backup2/Assets/Kuju/Caf\xc3\xa9, \"x\".bin"));
        editor->action("mnuInc")->trigger();
        QVERIFY(fs::exists(m_dir / "backups/Incremental Backup/RailWorks.exe"));
        QVERIFY(lastMessage().find("Changed files in TrainSimulator 2019") != std::string::npos);

        // Read/Write for the whole tree, then for a chosen folder; a folder outside is refused.
        fs::permissions(m_dir / "rw/RailWorks.exe", fs::perms::owner_read);
        editor->action("mnuReadWrite")->trigger();
        QCOMPARE(lastMessage(), std::string("All files are now Read/Write"));
        QVERIFY((fs::status(m_dir / "rw/RailWorks.exe").permissions() & fs::perms::owner_write) != fs::perms::none);
        m_ui->pushPath(m_dir / "backups");
        editor->action("mnuSelRW")->trigger();
        QVERIFY(lastMessage().find("lies outside the Rail Works folder") != std::string::npos);
        QCOMPARE(m_ui->prompts.back().icon, Icon::Warning);
    }

    void everyScreenTakesItsCaptionsFromTheLanguageTable() {
        auto editor = open();
        editor->applyLanguage("Lang_Test.txt");
        // Each screen reads its entries when it is opened, so these show the new language.
        ui::frmAssets assets(*m_ctx);
        QCOMPARE(assets.findChild<QPushButton*>("Command1")->text(), QString("Test 87"));
        QCOMPARE(assets.windowTitle(), QString("Test 67"));
        ui::frmDelRoute routes(*m_ctx, false);
        QCOMPARE(routes.findChild<QPushButton*>("Command4")->text(), QString("Test 117"));
        ui::frmListRS grid(*m_ctx, ui::ReportKind::Used, "t", {});
        QCOMPARE(grid.findChild<QPushButton*>("Command1")->text(), QString("Test 123"));
        ui::frmReport report(*m_ctx, "t", "text");
        QCOMPARE(report.findChild<QPushButton*>("cmdSave")->text(), QString("Test 201"));
        QCOMPARE(report.findChild<QPushButton*>("cmdExit")->text(), QString("Test 9"));
    }

    void captionsComeFromTheLanguageTableAndSwitchAtOnce() {
        auto editor = open();
        // Captions are compared without the mnemonics the screen adds.
        auto text = [&](const char* name) { return editor->action(name)->text().remove('&'); };
        QCOMPARE(text("mnuFileS"), QString("English 1"));
        QCOMPARE(editor->menu("mnuFileS")->title().remove('&'), QString("English 1"));
        QCOMPARE(text("mnuBackup"), QString("English 278")); // the later entry stands
        QCOMPARE(text("mnuRollingStock"), QString("English 389"));
        QCOMPARE(text("mnuMap"), QString("English 126"));
        // No entry for this one: it keeps its design caption.
        QCOMPARE(text("mnuEmail"), QString("Send me Email"));
        QCOMPARE(editor->findChild<QLabel*>("StatusPanel1")->text(), QString("English 321"));

        editor->applyLanguage("Lang_Test.txt");
        QCOMPARE(text("mnuFileS"), QString("Test 1"));
        QCOMPARE(text("mnuDont"), QString("Test 319"));
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

    void everyMenuEntryHasAKeyOfItsOwn() {
        auto editor = open();
        // A long menu may run out of letters (this table's captions are all "English <n>"), but
        // no two entries of a menu ever share a key.
        auto check = [](const QList<QAction*>& actions, const QString& where, bool everyOne) {
            QString taken;
            for (QAction* a : actions) {
                if (a->isSeparator() || a->text().isEmpty())
                    continue;
                const qsizetype amp = a->text().indexOf('&');
                QVERIFY2(!everyOne || amp >= 0, qPrintable(where + ": " + a->text()));
                if (amp < 0)
                    continue;
                const QChar key = a->text()[amp + 1].toLower();
                QVERIFY2(!taken.contains(key), qPrintable(where + ": " + a->text() + " shares its key"));
                taken += key;
            }
        };
        check(editor->menuBar()->actions(), "menu bar", true);
        for (QMenu* m : editor->menuBar()->findChildren<QMenu*>())
            if (m->objectName() != "mnuRecent") // numbered entries, checked below
                check(m->actions(), m->objectName(), false);
        QString none;
        QCOMPARE(ui::withMnemonic("Load & Save", none), QString("&Load && Save"));
        QString taken = "ls";
        QCOMPARE(ui::withMnemonic("Load & Save", taken), QString("L&oad && Save"));
        QCOMPARE(ui::withMnemonic("E&xit", taken), QString("E&xit"));
    }

    void recentFilesReopenWithoutADialog() {
        const fs::path a = m_dir / "rw/Content/Routes/r1/RouteProperties.xml";
        const fs::path b = m_dir / "rw/Caf\xc3\xa9 & Co/Other.xml"; // an accent and an ampersand
        writeFile(a, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cRouteProperties/>\r\n");
        writeFile(b, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cOther/>\r\n");
        {
            auto editor = open();
            for (const fs::path& p : {a, b}) {
                m_ui->pushPath(p);
                editor->mnuXML_Click();
            }
        }
        // The next run lists them newest first, and one click opens a document again.
        auto editor = open();
        QMenu* recent = editor->menu("mnuRecent");
        QVERIFY(recent);
        emit recent->aboutToShow();
        QList<QAction*> entries;
        for (QAction* act : recent->actions())
            if (!act->data().toByteArray().isEmpty())
                entries << act;
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0]->data().toByteArray().toStdString(), b.string());
        QVERIFY(entries[0]->text().startsWith("&1 "));
        QVERIFY(entries[0]->text().contains("&& Co")); // the ampersand shown, not taken as a key
        const std::size_t prompts = m_ui->prompts.size();
        entries[1]->trigger();
        QVERIFY(editor->textView()->toPlainText().contains("cRouteProperties"));
        QCOMPARE(m_ui->prompts.size(), prompts); // no file dialog
        QCOMPARE(m_ctx->desktop().recentFiles().front(), a.string());

        // A document that has gone is said and taken off the list.
        fs::remove(b);
        emit recent->aboutToShow();
        for (QAction* act : recent->actions())
            if (act->data().toByteArray().toStdString() == b.string())
                act->trigger();
        QVERIFY(m_ui->prompts.back().text.find("no longer exists") != std::string::npos);
        QCOMPARE(m_ctx->desktop().recentFiles().size(), std::size_t(1));
    }

    void theRouteTabListsTheRouteFolders() {
        const std::string guid = "0a1b2c3d-0000-1111-2222-333344445555";
        writeFile(m_dir / "rw/Content/Routes" / guid / "RouteProperties.xml",
                  "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cRouteProperties><ID><cGUID><DevString "
                  "d:type=\"cDeltaString\">" + guid + "</DevString></cGUID></ID><DisplayName>"
                  "<Localisation-cUserLocalisedString><English d:type=\"cDeltaString\">Folder Route</English>"
                  "</Localisation-cUserLocalisedString></DisplayName></cRouteProperties>\r\n");
        // The index is out of date: it does not know the route.
        writeFile(m_dir / "home/Reports/RouteIndex.csv", "folder-a,Route A\r\n");
        auto editor = open();
        editor->findChild<QTabWidget*>("SSTab1")->setCurrentIndex(2);
        auto* grid = editor->findChild<QTableWidget*>("VSFG1");
        QCOMPARE(grid->rowCount(), 1);
        QCOMPARE(grid->item(0, 0)->text(), QString::fromStdString(guid));
        QCOMPARE(grid->item(0, 1)->text(), QString("Folder Route"));
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
