// Find in Multiple Files on the demo install, offscreen: the folder's documents listed by
// pattern, one shown as XML, the preview's own find, a replace in every selected document with
// its backups and one journal entry, and one undo taking the run back.

#include "demoscreens.h"

#include "common/numberedview.h"
#include "editor/frmfolder5.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QtTest>

using namespace velmora;
namespace fs = std::filesystem;

class TestFrmFolder5 : public QObject {
    Q_OBJECT
    test::DemoScreens m_demo;

    fs::path folder() const { return m_demo.dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Generated/Set1"; }
    static std::string xmlOf(const fs::path& file) {
        std::string xml;
        binToXmlText(file, xml);
        return xml;
    }
    static void click(ui::frmFolder5& screen, const char* button) {
        auto* b = screen.findChild<QPushButton*>(button);
        QVERIFY2(b, button);
        b->click();
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uifolder5")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(true); }

    void listsByPatternAndShowsTheFirstSelected() {
        ui::frmFolder5 screen(*m_demo.ctx);
        QCOMPARE(screen.folderBox()->text().toStdString(), (m_demo.dir / "rw").string());
        QVERIFY(screen.preview()->toPlainText().isEmpty());
        screen.folderBox()->setText(QString::fromStdString(folder().string()));
        screen.Dir1_Click();
        QCOMPARE(screen.fileList()->count(), 30);
        screen.patternBox()->clear(); // an empty pattern lists every file
        QVERIFY(screen.fileList()->count() > 30);
        QCOMPARE(screen.fileList()->findItems("Obj50.GeoPcDx", Qt::MatchExactly).size(), 1);
        screen.patternBox()->setText("*.bin");
        // With nothing selected, Display and the replace do nothing.
        click(screen, "Command7");
        QVERIFY(screen.preview()->toPlainText().isEmpty());
        click(screen, "Command8");
        QVERIFY(m_demo.ctx->journal().entries().empty());

        screen.fileList()->item(2)->setSelected(true);
        click(screen, "Command7");
        QVERIFY(screen.preview()->toPlainText().contains(">Class66Pack object 52</English>"));
        // The preview's own find ignores case, as dlgSearch's does.
        screen.searchBox()->setText("CLASS66PACK object 52");
        QVERIFY(screen.Command4_Click());
        QCOMPARE(screen.preview()->textCursor().selectedText(), QString("Class66Pack object 52"));
        click(screen, "Command1");
        QVERIFY(screen.searchBox()->text().isEmpty());
        QVERIFY(screen.preview()->toPlainText().isEmpty());
    }

    void replaceInSelectedFilesThenUndo() {
        ui::frmFolder5 screen(*m_demo.ctx);
        screen.folderBox()->setText(QString::fromStdString(folder().string()));
        screen.Dir1_Click();
        click(screen, "Command3");
        const auto files = screen.selectedFiles();
        QCOMPARE(files.size(), std::size_t(30));
        const std::string before = xmlOf(files[0]);
        QVERIFY(before.find(">Class66Pack object 50<") != std::string::npos);
        screen.searchBox()->setText("class66pack OBJECT");
        screen.replacementBox()->setText("Class66Pack & \u00e9 object");
        // "&" alone does not encode: every document is left whole, each named.
        click(screen, "Command8");
        QCOMPARE(screen.lastRun().changed, std::size_t(0));
        QVERIFY(m_demo.prompted("Serz.exe was unable to recompress this file"));
        QCOMPARE(xmlOf(files[0]), before);
        QVERIFY(!fs::exists(files[0].string() + ".bak"));

        screen.replacementBox()->setText("Class66Pack &amp; \u00e9 object");
        click(screen, "Command8");
        QCOMPARE(screen.lastRun().changed, std::size_t(30));
        QVERIFY(xmlOf(files[0]).find(">Class66Pack &amp; \u00e9 object 50<") != std::string::npos);
        QVERIFY(fs::exists(files[0].string() + ".bak"));
        QVERIFY(screen.preview()->toPlainText().contains(QString::fromUtf8(">Class66Pack &amp; \u00e9 object 79<")));
        const auto entries = m_demo.ctx->journal().entries();
        QCOMPARE(entries.size(), std::size_t(1));
        QCOMPARE(entries[0].files.size(), std::size_t(30));

        const auto undo = undoEntry(m_demo.ctx->files(), entries[0].id, false);
        QVERIFY2(undo.ok, undo.message.c_str());
        QCOMPARE(xmlOf(files[0]), before);
        QCOMPARE(xmlOf(files[29]).find("&amp;"), std::string::npos);
    }
};

int runTestFrmFolder5(int argc, char** argv) {
    TestFrmFolder5 t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmfolder5.moc"
