// The content list and the Content Editor driven offscreen on a demo install: the list with its
// names, the shared list commands, a row opened and stored back with its backup, and one undo
// that takes each store and each delete back.

#include "assets/frmcontent.h"
#include "assets/frmedcont.h"
#include "common/frmreport.h"
#include "demoscreens.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>
#include <fstream>
#include <sys/stat.h>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

std::string bytesOf(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace

class TestFrmContent : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;

    // The first row whose cells pass the test, or -1.
    template <typename Test> static int rowWhere(const ui::frmContent& screen, Test test) {
        const auto rows = screen.rows();
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (test(rows[i]))
                return static_cast<int>(i);
        return -1;
    }
    // Undoes the newest journal entry, which must be the one named.
    void undoLast(const std::string& command) {
        const auto entries = m_demo.ctx->journal().entries();
        QVERIFY(!entries.empty());
        QCOMPARE(entries.back().command, command);
        const UndoResult undone = undoEntry(m_demo.ctx->files(), entries.back().id, false);
        QVERIFY2(undone.ok, undone.message.c_str());
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uicontent")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(); }

    void theListCarriesRouteAndScenarioNames() {
        ui::frmContent screen(*m_demo.ctx);
        QCOMPARE(screen.windowTitle(), QString("Build List of Content"));
        QCOMPARE(screen.findChild<QLabel*>("Label1")->text(),
                 QString("Double-Click in first column to view/edit file."));
        QCOMPARE(screen.findChild<QComboBox*>("Text1")->currentText(), QString("*.*"));
        screen.Command1_Click();
        QVERIFY(m_demo.prompted("Selected items have been added to the grid."));
        const auto rows = screen.rows();
        QVERIFY(rows.size() > 50);
        QVERIFY(screen.findChild<QLabel*>("Label5")->text().endsWith(QString::number(rows.size())));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            QVERIFY(!rows[i].route.empty());
            QCOMPARE(rows[i].index, std::to_string(i + 1));
        }
        // A file directly in a route's folder: no Sub-Folder, the name is all the rest.
        const int properties =
            rowWhere(screen, [](const auto& r) { return r.fileName == "RouteProperties.xml"; });
        QVERIFY(properties >= 0);
        QCOMPARE(rows[static_cast<std::size_t>(properties)].subFolder, std::string());
        // The accented route name shows as such, and comes back from the grid byte for byte.
        const int gotthard = rowWhere(screen, [](const auto& r) {
            return utf8FromDocument(r.routeName) == "Gotthard S\xC3\xBC"
                                                    "drampe";
        });
        QVERIFY(gotthard >= 0);
        QCOMPARE(screen.grid()->item(gotthard, 1)->text(), QString::fromUtf8("Gotthard S\xC3\xBC"
                                                                             "drampe"));
        // A scenario's files carry its name; other folders carry none.
        const int scenario = rowWhere(screen, [](const auto& r) { return r.name == "O'Connor's coal run"; });
        QVERIFY(scenario >= 0);
        QCOMPARE(rows[static_cast<std::size_t>(scenario)].subFolder, std::string("Scenarios"));
        for (const auto& r : rows)
            if (r.subFolder != "Scenarios")
                QVERIFY2(r.name.empty(), r.relativePath().c_str());

        // Find in the Name column, with the first letter in either case; a second Find steps on.
        screen.findChild<QComboBox*>("Combo1")->setCurrentIndex(3);
        screen.findChild<QLineEdit*>("Text6")->setText("o'Connor");
        screen.Command14_Click();
        QCOMPARE(screen.selectedRows().size(), std::size_t(1));
        const std::string first = screen.selectedRows()[0].fileName;
        QCOMPARE(screen.selectedRows()[0].name, std::string("O'Connor's coal run"));
        screen.Command14_Click();
        QCOMPARE(screen.selectedRows()[0].name, std::string("O'Connor's coal run"));
        QVERIFY(screen.selectedRows()[0].fileName != first);

        // Save List, Clear List, Load List and Restore give the same rows back.
        const fs::path list = m_demo.dir / "home/Reports/content.csv";
        m_demo.ui->pushPath(list);
        screen.Command3_Click();
        QVERIFY(fs::exists(list));
        screen.Command5_Click();
        QCOMPARE(screen.grid()->rowCount(), 0);
        m_demo.ui->pushPath(list);
        screen.Command11_Click();
        QCOMPARE(screen.rows().size(), rows.size());
        QCOMPARE(screen.rows()[static_cast<std::size_t>(gotthard)].cells(),
                 rows[static_cast<std::size_t>(gotthard)].cells());
        screen.Command5_Click();
        screen.Command18_Click();
        QCOMPARE(screen.rows().size(), rows.size());

        // Show All keeps only the rows Find stops at; Hide Columns hides one.
        screen.findChild<QComboBox*>("Combo1")->setCurrentIndex(2);
        screen.findChild<QLineEdit*>("Text6")->setText("Scenarios");
        screen.Command8_Click();
        QVERIFY(screen.grid()->rowCount() > 0);
        for (const auto& r : screen.rows())
            QCOMPARE(r.subFolder, std::string("Scenarios"));
        screen.Command16_Click();
        QVERIFY(screen.selectedRows().empty());
        screen.findChild<QCheckBox*>("Check2_6")->setChecked(true);
        QVERIFY(screen.grid()->isColumnHidden(6));
    }

    void aBinaryDocumentIsStoredWithItsBackupAndUndoTakesItBack() {
        ui::frmContent screen(*m_demo.ctx);
        screen.Command1_Click();
        const int row = rowWhere(screen, [](const auto& r) { return r.fileName == "Tracks.bin"; });
        QVERIFY(row >= 0);
        const fs::path file = screen.rowFile(screen.rows()[static_cast<std::size_t>(row)]);
        const std::string original = bytesOf(file);
        emit screen.grid()->cellDoubleClicked(row, 0);
        ui::frmEdCont* editor = screen.editor();
        QVERIFY(editor && editor->isVisible());
        QCOMPARE(editor->windowTitle(), QString("Content Editor"));
        QCOMPARE(editor->findChild<QLineEdit*>("Text1")->text(), QString("Tracks.bin"));
        QString text = editor->text()->toPlainText();
        QVERIFY(text.contains("<cRecordSet"));
        // A binary document is never written as its text.
        QVERIFY(!editor->action("mnuTG")->isEnabled());

        const QString at = "d:type=\"cDeltaString\">";
        QVERIFY(text.contains(at));
        text.replace(text.indexOf(at), at.size(), at + QString::fromUtf8("Chang\xC3\xA9, \"1\" "));
        editor->text()->setPlainText(text);
        QSignalSpy saved(editor, &ui::frmEdCont::saved);
        editor->mnuSave_Click();
        QCOMPARE(saved.count(), 1);
        QVERIFY(saved.at(0).at(0).toBool());
        QCOMPARE(bytesOf(file.string() + ".bak"), original);
        std::string xml;
        QVERIFY(binToXmlText(file, xml));
        // The converter writes the quotes back as entities.
        QVERIFY(xml.find("Chang\xC3\xA9, &quot;1&quot; ") != std::string::npos);

        undoLast("Save " + file.string());
        QCOMPARE(bytesOf(file), original);
    }

    void aTextFileIsStoredAsItStandsAndATextureShowsItsPicture() {
        ui::frmContent screen(*m_demo.ctx);
        screen.Command1_Click();
        const int row = rowWhere(screen, [](const auto& r) { return r.fileName == "RouteProperties.xml"; });
        const fs::path file = screen.rowFile(screen.rows()[static_cast<std::size_t>(row)]);
        const std::string original = bytesOf(file);
        screen.openRow(row);
        ui::frmEdCont* editor = screen.editor();
        QVERIFY(editor->action("mnuTG")->isEnabled());
        editor->text()->setPlainText(editor->text()->toPlainText() + "\n<!-- checked -->");
        editor->mnuSavexml_Click();
        QVERIFY(bytesOf(file).find("<!-- checked -->") != std::string::npos);
        QCOMPARE(bytesOf(file.string() + ".bak"), original);
        undoLast("Save " + file.string());
        QCOMPARE(bytesOf(file), original);

        // A texture: its document as text, and Display Image for the picture.
        const int texture = rowWhere(screen, [](const auto& r) { return iendsWith(r.fileName, ".TgPcDx"); });
        QVERIFY(texture >= 0);
        screen.openRow(texture);
        auto* display = editor->findChild<QPushButton*>("Command1");
        QVERIFY(display->isVisibleTo(editor));
        editor->Command1_Click();
        QVERIFY(!editor->findChild<QLabel*>("Picture1")->pixmap().isNull());

        // A file of another kind is not opened, and the box says what is.
        const std::size_t before = m_demo.ui->prompts.size();
        const int other = rowWhere(screen, [](const auto& r) { return iendsWith(r.fileName, ".MD5"); });
        QVERIFY(other >= 0);
        screen.openRow(other);
        QCOMPARE(m_demo.ui->prompts.size(), before + 1);
        QVERIFY(m_demo.prompted("shows binary documents"));
    }

    void deleteSelectedAsksAndOneUndoPutsTheFilesBack() {
        ui::frmContent screen(*m_demo.ctx);
        screen.findChild<QComboBox*>("Text1")->setCurrentText("*.MD5");
        screen.Command1_Click();
        const int count = screen.grid()->rowCount();
        QVERIFY(count >= 2);
        const fs::path first = screen.rowFile(screen.rows()[0]);
        const fs::path second = screen.rowFile(screen.rows()[1]);
        screen.grid()->selectRow(0);
        m_demo.ui->pushAnswer(Answer::Cancel);
        screen.Command6_Click();
        QVERIFY(fs::exists(first));

        screen.Command15_Click();
        m_demo.ui->pushAnswer(Answer::Ok);
        screen.Command6_Click();
        QVERIFY(!fs::exists(first) && !fs::exists(second));
        QCOMPARE(screen.grid()->rowCount(), 0);
        QVERIFY(m_demo.prompted("Selected items have been removed from the grid."));
        undoLast("Delete Selected");
        QVERIFY(fs::exists(first) && fs::exists(second));
        screen.Command1_Click();
        QCOMPARE(screen.grid()->rowCount(), count);
    }

    void placesThatCannotBeReadAreNamed() {
        const fs::path route = m_demo.dir / "rw/Content/Routes/ffffffff-0000-0000-0000-00000000fifo";
        fs::create_directories(route / "Scenery");
        std::ofstream(route / "Scenery/tile.bin") << "x";
        QCOMPARE(::mkfifo((route / "RouteProperties.xml").c_str(), 0600), 0);
        ui::frmContent screen(*m_demo.ctx);
        screen.Command1_Click();
        QVERIFY(m_demo.prompted("could not be read, so the list is not complete"));
        QVERIFY(m_demo.prompted("RouteProperties.xml: not a regular file"));
        QVERIFY(rowWhere(screen,
                         [](const auto& r) { return r.fileName == "tile.bin" && r.routeName.empty(); }) >= 0);
        fs::remove_all(route);
    }
};

int runTestFrmContent(int argc, char** argv) {
    TestFrmContent t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmcontent.moc"
