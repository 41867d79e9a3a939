// Find, Find All and Replace All of the main screen on a document of several MB, offscreen:
// counts, marks, one undo step, Abort part-way, and what Save then writes.

#include "editor/dlgsearch.h"
#include "editor/frmeditor.h"
#include "serz/serz.h"
#include "velmora/core/userinterface.h"

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QTextDocument>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

constexpr int kEntries = 50000; // two "d:type" on each, so 100,000 hits

std::string readAll(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// About 4.6 MB of XML, above the size that loads in the background; names with a non-ASCII
// letter, so that the text crosses the slices of the load as UTF-8.
std::string largeXml() {
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                      "<cBlueprintLoader xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n";
    for (int i = 0; i < kEntries; ++i)
        xml += "\t<Name d:type=\"cDeltaString\">needle M\xC3\xBChle " + std::to_string(i % 1000) +
               " of the rolling stock in the yard</Name>\r\n\t<Count d:type=\"sUInt32\">" + std::to_string(i) +
               "</Count>\r\n";
    return xml + "</cBlueprintLoader>\r\n";
}

int occurrences(const QString& text, const QString& what) { return static_cast<int>(text.count(what)); }

} // namespace

class TestEditorSearch : public QObject {
    Q_OBJECT

    fs::path m_dir;
    fs::path m_doc;
    std::string m_bin; // the document as each test starts with it
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<AppContext> m_ctx;
    std::unique_ptr<ui::frmEditor> m_editor;
    ui::dlgSearch* m_search = nullptr;

    // The main screen with the large document open and the Find dialog shown.
    void openLarge() {
        m_ctx = std::make_unique<AppContext>(m_dir / "home", m_dir / "data", *m_ui);
        StartupOptions o;
        o.railWorks = m_dir / "rw";
        m_editor = std::make_unique<ui::frmEditor>(*m_ctx, o);
        QSignalSpy loaded(m_editor.get(), &ui::frmEditor::documentLoaded);
        m_ui->pushPath(m_doc);
        m_editor->mnuOpenRS_Click();
        QVERIFY(loaded.count() == 1 || loaded.wait(120000));
        QVERIFY(m_editor->textView()->toPlainText().endsWith("</cBlueprintLoader>\n"));
        m_editor->mnuFind_Click();
        m_search = m_editor->findChild<ui::dlgSearch*>("dlgSearch");
        QVERIFY(m_search);
    }

    QTextDocument* document() const { return m_editor->textView()->document(); }

private slots:
    void initTestCase() {
        m_dir = fs::temp_directory_path() / ("velmora-uisearch-" + std::to_string(QCoreApplication::applicationPid()));
        fs::remove_all(m_dir);
        fs::create_directories(m_dir / "rw/Assets");
        std::ofstream(m_dir / "rw/RailWorks.exe").close();
        QVERIFY(serz::encode(largeXml(), m_bin).ok);
        m_doc = m_dir / "rw/Large.bin";
    }
    void init() {
        m_ui = std::make_unique<ScriptedUi>();
        std::ofstream(m_doc, std::ios::binary | std::ios::trunc) << m_bin;
    }
    void cleanup() {
        m_editor.reset();
        m_ctx.reset();
    }
    void cleanupTestCase() { fs::remove_all(m_dir); }

    void findAllListsAndMarksEveryHitAndFindSaysWhenThereIsNone() {
        openLarge();
        QVERIFY(document()->availableUndoSteps() == 0); // loading is not an edit
        m_search->searchBox()->setText("D:TYPE");
        QCOMPARE(m_search->findAll(), qsizetype(2 * kEntries));
        QCOMPARE(m_search->status(), QString("100000 found."));
        QCOMPARE(m_search->hitList()->model()->rowCount(), 2 * kEntries);
        QCOMPARE(m_editor->textView()->marks().size(), std::size_t(2 * kEntries));
        QVERIFY(std::is_sorted(m_editor->textView()->marks().begin(), m_editor->textView()->marks().end()));
        QVERIFY(!m_ui->progressLabels.empty() && m_ui->progressLabels.back() == "Find All: D:TYPE");
        QVERIFY(!m_editor->textView()->isReadOnly());
        // Each row names its line; the last hit is on the line before the closing tag.
        auto* hits = m_search->hitList()->model();
        QVERIFY(hits->index(0, 0).data().toString().startsWith("Line 3: <Name d:type=\"cDeltaString\">needle"));
        QVERIFY(hits->index(2 * kEntries - 1, 0).data().toString().startsWith(
            QString("Line %1: <Count").arg(2 * kEntries + 2)));
        QCOMPARE(m_editor->textView()->textCursor().selectedText(), QString("d:type"));

        // Whole words: "needle" stands alone, "need" does not.
        m_search->wholeWordBox()->setChecked(true);
        m_search->searchBox()->setText("need");
        QCOMPARE(m_search->findAll(), qsizetype(0));
        QCOMPARE(m_search->status(), QString("\"need\" was not found."));
        QVERIFY(m_editor->textView()->marks().empty());
        m_search->searchBox()->setText("needle");
        QCOMPARE(m_search->findAll(), qsizetype(kEntries));
        m_search->wholeWordBox()->setChecked(false);

        // Find and Find Next go from hit to hit; past the last one they say so.
        m_search->searchBox()->setText("</cBlueprintLoader>");
        QVERIFY(m_search->Command4_Click());
        QVERIFY(!m_search->Command2_Click());
        QCOMPARE(m_search->status(), QString("\"</cBlueprintLoader>\" was not found after the cursor."));
        m_search->searchBox()->setText("no such text");
        QVERIFY(!m_search->Command4_Click());
        QCOMPARE(m_search->status(), QString("\"no such text\" was not found."));

        // An edit makes the places stale: marks and list go.
        QTextCursor c(document());
        c.insertText("x");
        QVERIFY(m_editor->textView()->marks().empty());
        QCOMPARE(m_search->hitList()->model()->rowCount(), 0);

        // Abort part-way: the hits found so far are listed, and the count says it stopped.
        m_ui->cancelAfter(30000);
        m_search->searchBox()->setText("d:type");
        const qsizetype some = m_search->findAll();
        QVERIFY(some > 0 && some < 2 * kEntries);
        QVERIFY(m_search->status().startsWith(QString("Find All was aborted: %1 found").arg(some)));
        QCOMPARE(m_search->hitList()->model()->rowCount(), static_cast<int>(some));
    }

    void replaceAllIsOneUndoStepAndSaveWritesIt() {
        openLarge();
        m_search->searchBox()->setText("NEEDLE");
        m_search->replacementBox()->setText("pin");
        QCOMPARE(m_search->Command6_Click(), qsizetype(kEntries));
        QCOMPARE(m_search->status(), QString("50000 replaced."));
        QVERIFY(!m_ui->progressLabels.empty() && m_ui->progressLabels.back() == "Replace All: NEEDLE");
        QVERIFY(m_editor->edited());
        QVERIFY(!m_editor->textView()->isReadOnly());
        QString text = m_editor->textView()->toPlainText();
        QCOMPARE(occurrences(text, "needle"), 0);
        QCOMPARE(occurrences(text, QString::fromUtf8(">pin M\xC3\xBChle ")), kEntries);

        // One step back and forth, though it ran in slices.
        document()->undo();
        QCOMPARE(occurrences(m_editor->textView()->toPlainText(), "needle"), kEntries);
        document()->redo();
        QCOMPARE(occurrences(m_editor->textView()->toPlainText(), "pin"), kEntries);

        m_search->searchBox()->setText("needle");
        QCOMPARE(m_search->Command6_Click(), qsizetype(0));
        QCOMPARE(m_search->status(), QString("\"needle\" was not found."));

        m_editor->mnuSaveRS_Click();
        QVERIFY(m_editor->saved());
        std::string xml;
        QVERIFY(serz::decode(readAll(m_doc), xml).ok);
        QVERIFY(xml.find("needle") == std::string::npos);
        QVERIFY(xml.find("<Name d:type=\"cDeltaString\">pin M\xC3\xBChle 999 of the rolling stock in the yard</Name>\r\n") !=
                std::string::npos);
        QVERIFY(xml.find("<Count d:type=\"sUInt32\">49999</Count>") != std::string::npos);
    }

    void anAbortedReplaceAllLeavesTheTextAsItWas() {
        openLarge();
        // An edit of the user's own first: the Abort must not take it back with its own.
        QTextCursor c(document());
        c.movePosition(QTextCursor::End);
        c.insertText("<!-- mine -->");
        QString text = m_editor->textView()->toPlainText();
        const QString before = text;
        m_ui->cancelAfter(40000);
        m_search->searchBox()->setText("needle");
        m_search->replacementBox()->setText("pin");
        QCOMPARE(m_search->Command6_Click(), qsizetype(0));
        QVERIFY(m_ui->lastProgress >= 40000 && m_ui->lastProgress < 2 * kEntries);
        QCOMPARE(m_search->status(), QString("Replace All was aborted: nothing was replaced, the text is as it was."));
        QVERIFY(m_editor->textView()->toPlainText() == before);
        QVERIFY(!m_editor->textView()->isReadOnly());
        document()->undo();
        text = m_editor->textView()->toPlainText();
        QVERIFY(!text.contains("<!-- mine -->"));
        QCOMPARE(occurrences(text, "needle"), kEntries);
    }
};

#include "test_editor_search.moc"

int runTestEditorSearch(int argc, char** argv) {
    TestEditorSearch t;
    return QTest::qExec(&t, argc, argv);
}
