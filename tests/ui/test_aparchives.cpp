// The .ap archive screens on a demo install, offscreen: the .ap mode of the grid report, its
// unpack and delete commands with their undo, the archive manager and the zip maker.

#include "archives/apgrid.h"
#include "archives/apmenus.h"
#include "archives/dlgmode.h"
#include "archives/frmnewap.h"
#include "archives/frmnewzip.h"
#include "archives/ziptestkit.h"
#include "common/frmreport.h"
#include "editor/frmeditor.h"
#include "velmora/archives/aptable.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "demoscreens.h"

#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QCheckBox>
#include <QLineEdit>
#include <QTableWidget>
#include <QItemSelectionModel>
#include <QtTest>

#include <filesystem>
#include <fstream>
#include <memory>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

std::string readAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeAll(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

// The .ap files the install holds below Assets and Content, counted the plain way.
std::vector<fs::path> apFilesOf(const fs::path& rw) {
    std::vector<fs::path> found;
    for (const char* top : {"Assets", "Content"})
        for (const auto& e : fs::recursive_directory_iterator(rw / top))
            if (e.is_regular_file() && iendsWith(e.path().filename().string(), ".ap"))
                found.push_back(e.path());
    return found;
}

int rowOf(ui::frmListRS& screen, const fs::path& ap) {
    const auto rows = screen.rows();
    for (std::size_t r = 0; r < rows.size(); ++r)
        if (rows[r].substr(0, rows[r].find('\t')) == ap.string())
            return static_cast<int>(r);
    return -1;
}

void selectRow(QTableWidget* grid, int row) {
    grid->clearSelection();
    grid->selectionModel()->select(grid->model()->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

} // namespace

class TestApArchives : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    fs::path rw() const { return m_demo.dir / "rw"; }

    // The grid of the .ap files below Assets, with the commands of its mode.
    std::unique_ptr<ui::frmListRS> assetGrid(ui::ApGridCommands*& commands) {
        archives::ApFindOptions o;
        o.search = archives::ApSearch::Assets;
        auto screen = std::unique_ptr<ui::frmListRS>(ui::showApTable(
            *m_ctx, archives::findApFiles(rw(), o, nullptr), true, "Assets", nullptr));
        screen->setAttribute(Qt::WA_DeleteOnClose, false);
        commands = screen->findChild<ui::ApGridCommands*>();
        return screen;
    }

    std::optional<long> lastEntry() const { return lastUndoableEntry(m_ctx->journal().entries()); }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uiap")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start();
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void apModeListsEveryArchiveWithItsState() {
        const auto expected = apFilesOf(rw());
        QVERIFY(!expected.empty());
        auto* screen = ui::runApSearchMenu(*m_ctx, "mnuFindAllAP", nullptr);
        QVERIFY(screen);
        std::unique_ptr<ui::frmListRS> owner(screen);
        screen->setAttribute(Qt::WA_DeleteOnClose, false);
        QTableWidget* grid = screen->grid();
        QCOMPARE(grid->rowCount(), static_cast<int>(expected.size()));
        QCOMPARE(grid->columnCount(), 5); // Status, File, Date, Size, Folder size
        QCOMPARE(grid->horizontalHeaderItem(0)->text(), QString("Status"));
        auto* commands = screen->findChild<ui::ApGridCommands*>();
        QVERIFY(commands);
        bool anyRed = false;
        const auto rows = screen->rows();
        for (int r = 0; r < grid->rowCount(); ++r) {
            const std::string path = rows[static_cast<std::size_t>(r)].substr(0, rows[static_cast<std::size_t>(r)].find('\t'));
            QCOMPARE(screen->statusText(r), QString(archives::apStateText(archives::apState(path))));
            QVERIFY(grid->item(r, 2)->text().contains(QRegularExpression("^\\d{8}$")));
            // A red row is one not unpacked, and says so in words.
            if (screen->rowMissing(r)) {
                anyRed = true;
                QCOMPARE(screen->statusText(r), QString("Not unpacked"));
                QVERIFY(grid->item(r, 1)->foreground().color() != grid->palette().color(QPalette::Text));
            }
        }
        QCOMPARE(commands->legend()->isVisibleTo(screen), anyRed);
        QCOMPARE(commands->legend()->text(), QString(archives::kRedRowsLegend));
        QVERIFY(screen->findChild<QMenuBar*>()->findChild<QMenu*>("mnuSort"));

        // Sorting keeps each row's state with its path.
        commands->mnuSD_Click();
        QCOMPARE(grid->rowCount(), static_cast<int>(expected.size()));
        for (int r = 0; r < grid->rowCount(); ++r) {
            const std::string row = screen->rows()[static_cast<std::size_t>(r)];
            QCOMPARE(screen->statusText(r), QString(archives::apStateText(archives::apState(row.substr(0, row.find('\t'))))));
        }

        // Command22 selects the routes' MainContent.ap rows and no other.
        int mainContent = 0;
        for (const auto& p : expected)
            mainContent += p.filename() == "MainContent.ap";
        commands->Command22_Click();
        QCOMPARE(static_cast<int>(screen->selectedFirstCells().size()), mainContent);
        for (const auto& cell : screen->selectedFirstCells())
            QVERIFY(iendsWith(cell, "MainContent.ap"));
    }

    void searchesWithoutDetailAndOfMainContent() {
        std::unique_ptr<ui::frmListRS> plain(ui::runApSearchMenu(*m_ctx, "mnuNoDet", nullptr));
        plain->setAttribute(Qt::WA_DeleteOnClose, false);
        QCOMPARE(plain->grid()->columnCount(), 2);
        QCOMPARE(plain->grid()->rowCount(), static_cast<int>(apFilesOf(rw()).size()));
        std::unique_ptr<ui::frmListRS> main(ui::runApSearchMenu(*m_ctx, "mnuMC", nullptr));
        main->setAttribute(Qt::WA_DeleteOnClose, false);
        QVERIFY(main->grid()->rowCount() >= 1);
        for (const auto& row : main->rows())
            QVERIFY(iendsWith(row.substr(0, row.find('\t')), "MainContent.ap"));
    }

    void unpackSelectedOverwritesWithBackupsAndUndoTakesItBack() {
        const fs::path folder = rw() / "Assets/Testé, Provider/Pack \"One\"";
        const fs::path ap = folder / "Pack.ap";
        fs::create_directories(folder);
        QVERIFY(test::makeZip(ap, {{"RailVehicles/Engine/Loco.bin", "first"}, {"Audio/horn.txt", "toot"}}));
        ui::ApGridCommands* commands = nullptr;
        auto screen = assetGrid(commands);
        const int row = rowOf(*screen, ap);
        QVERIFY(row >= 0);
        QCOMPARE(screen->statusText(row), QString("Not unpacked"));
        QVERIFY(!commands->button("Command12")->isVisibleTo(screen.get()));

        // Cancel at the question leaves the disk as it was.
        selectRow(screen->grid(), row);
        commands->Command14_Click();
        QVERIFY(!fs::exists(folder / "RailVehicles"));
        QVERIFY(!commands->lastReport());

        m_ui->pushAnswer(Answer::Ok);
        commands->Command14_Click();
        QCOMPARE(readAll(folder / "RailVehicles/Engine/Loco.bin"), std::string("first"));
        QCOMPARE(readAll(folder / "Audio/horn.txt"), std::string("toot"));
        QVERIFY(m_demo.prompted("All selected folders have been unpacked and files made read/write."));
        QVERIFY(commands->lastReport());
        QVERIFY(commands->lastReport()->textBox()->toPlainText().contains("Pack.ap"));
        QVERIFY(commands->button("Command12")->isVisibleTo(screen.get()));

        // A second unpack overwrites and keeps what was there as a backup; undo puts it back.
        writeAll(folder / "RailVehicles/Engine/Loco.bin", "edited");
        m_ui->pushAnswer(Answer::Ok);
        commands->Command14_Click();
        QCOMPARE(readAll(folder / "RailVehicles/Engine/Loco.bin"), std::string("first"));
        bool backup = false;
        for (const auto& e : fs::directory_iterator(folder / "RailVehicles/Engine"))
            backup = backup || (e.path().filename() != "Loco.bin" && readAll(e.path()) == "edited");
        QVERIFY(backup);
        const auto entry = lastEntry();
        QVERIFY(entry);
        QVERIFY(undoEntry(m_ctx->files(), *entry, false).ok);
        QCOMPARE(readAll(folder / "RailVehicles/Engine/Loco.bin"), std::string("edited"));
        fs::remove_all(folder);
    }

    void abortWhileUnpackingPutsNothingInPlace() {
        const fs::path folder = rw() / "Assets/AbortProv/AbortProd";
        fs::create_directories(folder);
        std::vector<test::TestEntry> entries;
        for (int i = 0; i < 40; ++i)
            entries.push_back({"Scenery/file" + std::to_string(i) + ".bin", std::string(200000, char('a' + i % 26))});
        QVERIFY(test::makeZip(folder / "Big.ap", entries));
        ui::ApGridCommands* commands = nullptr;
        auto screen = assetGrid(commands);
        selectRow(screen->grid(), rowOf(*screen, folder / "Big.ap"));
        m_ui->pushAnswer(Answer::Ok);
        m_ui->cancelAfter(0);
        commands->Command14_Click();
        QVERIFY(!fs::exists(folder / "Scenery/file0.bin"));
        QVERIFY(!fs::exists(folder / "Scenery/file39.bin"));
        fs::remove_all(folder);
    }

    void unpackModeDialogGivesTheModeOrNothing() {
        ui::dlgMode dialog(archives::UnpackMode::Overwrite);
        QCOMPARE(dialog.windowTitle(), QString("Select 7zip Mode"));
        QVERIFY(dialog.option(2)->isChecked());
        QCOMPARE(dialog.option(3)->text(), QString(archives::unpackModeCaption(archives::UnpackMode::Skip)));
        dialog.option(3)->setChecked(true);
        dialog.OKButton_Click();
        QVERIFY(dialog.mode() == archives::UnpackMode::Skip);
        dialog.CancelButton_Click();
        QVERIFY(!dialog.mode());

        // A chooser that gives nothing stops Command14 before its question.
        const fs::path folder = rw() / "Assets/ModeProv/ModeProd";
        fs::create_directories(folder);
        QVERIFY(test::makeZip(folder / "Mode.ap", {{"Scenery/a.txt", "new"}}));
        writeAll(folder / "Scenery/a.txt", "old");
        ui::ApGridCommands* commands = nullptr;
        auto screen = assetGrid(commands);
        selectRow(screen->grid(), rowOf(*screen, folder / "Mode.ap"));
        commands->setModeChooser([] { return std::nullopt; });
        commands->Command14_Click();
        QVERIFY(!m_demo.prompted("This will unpack all selected .ap files"));
        // Skip leaves the file that is there.
        commands->setModeChooser([] { return archives::UnpackMode::Skip; });
        m_ui->pushAnswer(Answer::Ok);
        commands->Command14_Click();
        QCOMPARE(readAll(folder / "Scenery/a.txt"), std::string("old"));
        fs::remove_all(folder);
    }

    void deleteFoldersAsksAndUndoBringsTheFolderBack() {
        const fs::path folder = rw() / "Assets/DelProv/DelProd";
        fs::create_directories(folder);
        QVERIFY(test::makeZip(folder / "Del.ap", {{"Scenery/a.txt", "a"}}));
        writeAll(folder / "Scenery/a.txt", "a");
        ui::ApGridCommands* commands = nullptr;
        auto screen = assetGrid(commands);
        selectRow(screen->grid(), rowOf(*screen, folder / "Del.ap"));
        commands->Command12_Click(); // no answer: Cancel
        QVERIFY(fs::exists(folder / "Del.ap"));
        m_ui->pushAnswer(Answer::Ok);
        commands->Command12_Click();
        QVERIFY(m_demo.prompted("This will DELETE all selected folders - You have been warned!!!"));
        QVERIFY(m_demo.prompted("All selected folders have been deleted."));
        QVERIFY(!fs::exists(folder));
        const auto entry = lastEntry();
        QVERIFY(entry);
        QVERIFY(undoEntry(m_ctx->files(), *entry, false).ok);
        QCOMPARE(readAll(folder / "Scenery/a.txt"), std::string("a"));
        QVERIFY(fs::exists(folder / "Del.ap"));
        fs::remove_all(folder);
    }

    void entryListingOfTheSelectedArchive() {
        const fs::path folder = rw() / "Assets/ListProv/ListProd";
        fs::create_directories(folder);
        QVERIFY(test::makeZip(folder / "List.ap", {{"Scenery/Café, \"quoted\".txt", "x"}}));
        ui::ApGridCommands* commands = nullptr;
        auto screen = assetGrid(commands);
        selectRow(screen->grid(), rowOf(*screen, folder / "List.ap"));
        m_ui->pushAnswer(Answer::Ok);
        commands->Command19_Click();
        QVERIFY(commands->lastReport());
        QVERIFY(commands->lastReport()->textBox()->toPlainText().contains(QString::fromUtf8("Café, \"quoted\".txt")));
        fs::remove_all(folder);
    }

    void hostileEntryIsRefusedAndNamed() {
        const fs::path folder = rw() / "Assets/EvilProv/EvilProd";
        fs::create_directories(folder);
        QVERIFY(test::makeZip(folder / "Evil.ap", {{"../../escape.txt", "out"}, {"Scenery/ok.txt", "in"}}));
        ui::ApGridCommands* commands = nullptr;
        auto screen = assetGrid(commands);
        selectRow(screen->grid(), rowOf(*screen, folder / "Evil.ap"));
        m_ui->pushAnswer(Answer::Ok);
        commands->Command14_Click();
        QVERIFY(!fs::exists(rw() / "Assets/escape.txt"));
        QVERIFY(!fs::exists(rw() / "Assets/EvilProv/escape.txt"));
        QVERIFY(m_demo.prompted("1 problem(s) while unpacking:"));
        QVERIFY(!m_demo.prompted("All selected folders have been unpacked"));
        QVERIFY(commands->lastReport());
        QVERIFY(commands->lastReport()->textBox()->toPlainText().contains("escape.txt"));

        // The archive manager refuses it too, and names it.
        ui::frmNewAP manager(*m_ctx, {});
        QVERIFY(manager.openArchive(folder / "Evil.ap"));
        const fs::path out = m_demo.dir / "evilout";
        fs::create_directories(out);
        m_ui->pushPath(out);
        m_ui->pushAnswer(Answer::Ok);
        manager.mnuExt_Click();
        QVERIFY(!fs::exists(m_demo.dir / "escape.txt"));
        QVERIFY(!fs::exists(out.parent_path().parent_path() / "escape.txt"));
        QVERIFY(manager.lastReport());
        QVERIFY(manager.lastReport()->textBox()->toPlainText().contains("escape.txt"));
        fs::remove_all(folder);
    }

    void archiveManagerListsExtractsAndFinds() {
        ui::frmNewAP manager(*m_ctx, {});
        // Nothing open: the error, and no folder is asked for.
        const std::size_t before = m_ui->prompts.size();
        manager.mnuExt_Click();
        QCOMPARE(m_ui->prompts.size(), before + 1);
        QCOMPARE(m_ui->prompts.back().text,
                 std::string("You must Open an Archive before you can\n            Extract anything from it!"));
        QCOMPARE(m_ui->prompts.back().title, std::string("Error"));
        manager.mnuFind_Click();
        QVERIFY(m_demo.prompted("            Find anything in it!"));

        const fs::path ap = m_demo.dir / "Manager.ap";
        QVERIFY(test::makeZip(ap, {{"RailVehicles/Loco.bin", "loco"}, {"Scenery/Tree.xml", "<tree/>"}, {"Scenery/", ""}}));
        QVERIFY(manager.openArchive(ap));
        QCOMPARE(manager.windowTitle(), QString::fromStdString("Archive - " + ap.string()));
        QCOMPARE(manager.grid()->rowCount(), 3);
        QVERIFY(manager.grid()->horizontalHeaderItem(1)->text() == "File Name");
        QVERIFY(manager.statusText().contains("Files: 2"));
        QVERIFY(manager.statusText().contains("Dirs: 1"));

        manager.grid()->clearSelection();
        manager.mnuExtSel_Click();
        QVERIFY(m_demo.prompted("You have not selected any items to unpack"));

        // Find File selects the row; a miss says so.
        m_ui->pushText("tree.xml");
        manager.mnuFind_Click();
        const auto selected = manager.grid()->selectionModel()->selectedRows();
        QCOMPARE(selected.size(), 1);
        QVERIFY(manager.grid()->item(selected.front().row(), 1)->text().contains("Tree.xml"));
        m_ui->pushText("Nowhere");
        manager.mnuFind_Click();
        QVERIFY(m_demo.prompted("The file  Nowherewas not found."));

        // The selection, without its folders when Fullpath is off.
        const fs::path out = m_demo.dir / "managerout";
        m_ui->pushPath(out);
        m_ui->pushAnswer(Answer::Ok);
        manager.fullPath()->setChecked(false);
        manager.mnuExtSel_Click();
        QVERIFY(m_demo.prompted("Save Selected Files to: " + out.string()));
        QCOMPARE(m_ui->prompts.back().title, std::string("Confirm Save Path"));
        QCOMPARE(readAll(out / "Tree.xml"), std::string("<tree/>"));
        QVERIFY(!fs::exists(out / "Loco.bin"));
        QVERIFY(manager.statusText().startsWith("Extract Completed"));

        // Cancel at "Save to: " extracts nothing.
        const fs::path all = m_demo.dir / "managerall";
        m_ui->pushPath(all);
        manager.mnuExt_Click();
        QVERIFY(m_demo.prompted("Save to: " + all.string()));
        QVERIFY(!fs::exists(all / "RailVehicles"));
        fs::remove_all(out);
    }

    void splitArchivesAreNotOpened() {
        const fs::path zip = m_demo.dir / "Split.zip";
        QVERIFY(test::makeZip(zip, {{"a.txt", "a"}}));
        writeAll(m_demo.dir / "Split.z01", "part");
        QVERIFY(ui::frmNewAP::splitParts(zip) == std::vector<fs::path>{m_demo.dir / "Split.z01"});
        ui::frmNewAP manager(*m_ctx, {});
        QVERIFY(!manager.openArchive(zip));
        QVERIFY(m_demo.prompted("Split archives are read through 7-Zip and are not opened here."));
        QCOMPARE(manager.grid()->rowCount(), 0);
        // A damaged archive is named in the message.
        writeAll(m_demo.dir / "Broken.ap", "not a zip");
        QVERIFY(!manager.openArchive(m_demo.dir / "Broken.ap"));
        QVERIFY(m_demo.prompted("Broken.ap"));
    }

    void entryOpensInTheEditorAsADocumentSavedElsewhere() {
        // A real binary document from the demo's packed product.
        fs::path packed;
        for (const auto& p : apFilesOf(rw()))
            if (p.filename() != "MainContent.ap")
                packed = p;
        QVERIFY(!packed.empty());
        StartupOptions o;
        o.railWorks = rw();
        o.askForRoot = false;
        ui::frmEditor editor(*m_ctx, o);
        // Every .ap entry of the main menu is live.
        for (const char* name : {"mnuAP", "mnuListAP", "mnuFindAllAP", "mnuNoDet", "mnuMC", "mnuSce", "mnuFA",
                                 "mnuAPEdit", "mnuAPCont"})
            QVERIFY2(editor.action(name)->isEnabled(), name);
        m_ui->pushPath(packed);
        editor.action("mnuListAP")->trigger();
        const auto listings = editor.findChildren<ui::frmReport*>();
        QCOMPARE(listings.size(), 1);
        QVERIFY(listings.front()->textBox()->toPlainText().contains("files,"));
        ui::frmNewAP manager(*m_ctx, [&](const fs::path& file, const std::string& from) {
            editor.openArchivedDocument(file.string(), from);
        });
        QVERIFY(manager.openArchive(packed));
        int binRow = -1;
        for (int r = 0; r < manager.grid()->rowCount() && binRow < 0; ++r)
            if (manager.grid()->item(r, 1)->text().endsWith(".bin", Qt::CaseInsensitive))
                binRow = r;
        QVERIFY(binRow >= 0);
        QVERIFY(manager.openEntry(binRow));
        QTRY_VERIFY(!editor.textView()->toPlainText().isEmpty());
        QVERIFY(editor.documentReadOnly());
        const fs::path copy = editor.document().path;
        QVERIFY(copy.string().find("TempFiles") != std::string::npos);
        const std::string before = readAll(copy);
        // Save asks where, rather than writing into TempFiles; no answer writes nothing.
        const std::size_t asked = m_ui->prompts.size();
        editor.mnuSaveRS_Click();
        QVERIFY(m_ui->prompts.size() > asked);
        QVERIFY(m_ui->prompts.back().kind == ScriptedUi::Prompt::Kind::File);
        QCOMPARE(readAll(copy), before);
    }

    void zipMakerMakesWhatTheManagerLists() {
        const fs::path in = m_demo.dir / "zipin";
        writeAll(in / "Café, \"one\".txt", "one");
        writeAll(in / "sub/two.bin", "two");
        writeAll(in / "sub/skip.log", "log");
        ui::frmNewZip maker(*m_ctx);
        QCOMPARE(maker.wildcards()->text(), QString("*.*"));
        QCOMPARE(maker.levelLabel()->text(), QString("Compression Level = 6"));
        maker.level()->setValue(9);
        QCOMPARE(maker.levelLabel()->text(), QString("Compression Level = 9"));

        // Parts wanted but no size given.
        maker.multiple()->setChecked(true);
        QVERIFY(!maker.Command2_Click());
        QVERIFY(m_demo.prompted("You have selected 'Produce multiple Zips', but have not entered a"));
        maker.multiple()->setChecked(false);

        m_ui->pushPath(in);
        maker.mnuAddFold_Click();
        QCOMPARE(maker.grid()->rowCount(), 1);
        maker.wildcards()->setText("*.txt;*.bin");
        const fs::path out = m_demo.dir / "made";
        m_ui->pushPath(out);
        m_ui->pushAnswer(Answer::Ok);
        QVERIFY(maker.Command2_Click());
        QVERIFY(m_demo.prompted("Click OK to start processing zip file (may take a little time)"));
        QCOMPARE(maker.lastResult().files, std::uint64_t{2});

        ui::frmNewAP manager(*m_ctx, {});
        QVERIFY(manager.openArchive(m_demo.dir / "made.zip"));
        QStringList names;
        for (int r = 0; r < manager.grid()->rowCount(); ++r)
            names << manager.grid()->item(r, 1)->text();
        QVERIFY2(names.join("|").contains(QString::fromUtf8("Café, \"one\".txt")), qPrintable(names.join("|")));
        QVERIFY2(names.join("|").contains("two.bin"), qPrintable(names.join("|")));
        QVERIFY(!names.join("|").contains("skip.log"));

        // In parts of about the size asked for, through 7-Zip.
        if (!fs::exists("/usr/bin/7zz") && !fs::exists("/usr/local/bin/7zz"))
            QSKIP("7-Zip (7zz) is not installed");
        std::string noise(300000, '\0');
        std::uint32_t state = 2463534242u;
        for (char& c : noise) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            c = static_cast<char>(state & 0xff);
        }
        writeAll(in / "noise.bin", noise);
        maker.level()->setValue(0);
        maker.multiple()->setChecked(true);
        maker.partSize()->setText("0.1");
        m_ui->pushPath(m_demo.dir / "parts.zip");
        m_ui->pushAnswer(Answer::Ok);
        QVERIFY2(maker.Command2_Click(), maker.lastResult().message.c_str());
        QVERIFY(maker.lastResult().parts.size() >= 3);
        for (const auto& part : maker.lastResult().parts)
            QVERIFY(fs::file_size(part) <= 110 * 1024);
    }
};

int runTestApArchives(int argc, char** argv) {
    TestApArchives t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_aparchives.moc"
