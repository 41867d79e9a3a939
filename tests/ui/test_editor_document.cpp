// The main screen's document work, offscreen: open a binary document, edit, save with a
// backup, the tree tab and its searches, colouring, the second view, printing.

#include "editor/dlgsearch.h"
#include "editor/frmeditor.h"
#include "editor/xmltreemodel.h"
#include "serz/serz.h"
#include "velmora/core/document.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTreeView>
#include <QTextBlock>
#include <QTextLayout>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

std::string readAll(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& p, const std::string& bytes) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << bytes;
}

std::string numberedTable() {
    std::string t;
    for (int n = 1; n <= 634; ++n)
        t += std::to_string(n) + ",\"English " + std::to_string(n) + "\"\r\n";
    return t + "0,\"\"\r\n";
}

const fs::path kTestData = VELMORA_TESTDATA;

} // namespace

class TestEditorDocument : public QObject {
    Q_OBJECT

    fs::path m_dir;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<AppContext> m_ctx;

    std::unique_ptr<ui::frmEditor> open() {
        m_ctx = std::make_unique<AppContext>(m_dir / "home", m_dir / "data", *m_ui);
        StartupOptions o;
        o.railWorks = m_dir / "rw";
        return std::make_unique<ui::frmEditor>(*m_ctx, o);
    }

    // A copy of a shipped document in the fake install.
    fs::path install(const std::string& shipped, const std::string& as) {
        const fs::path target = m_dir / "rw/Content/Routes/r1" / as;
        fs::create_directories(target.parent_path());
        fs::copy_file(kTestData / shipped, target, fs::copy_options::overwrite_existing);
        return target;
    }

    bool lastMessageContains(const std::string& text) const {
        for (auto it = m_ui->prompts.rbegin(); it != m_ui->prompts.rend(); ++it)
            if (it->text.find(text) != std::string::npos)
                return true;
        return false;
    }

private slots:
    void init() {
        if (!fs::exists(kTestData))
            QSKIP("the shared test documents are not beside this checkout");
        m_dir = fs::temp_directory_path() / ("velmora-uidoc-" + std::to_string(QCoreApplication::applicationPid()));
        fs::remove_all(m_dir);
        writeFile(m_dir / "data/Language/Lang_English.txt", numberedTable());
        writeFile(m_dir / "rw/RailWorks.exe", "");
        fs::create_directories(m_dir / "rw/Assets");
        m_ui = std::make_unique<ScriptedUi>();
    }

    void cleanup() {
        m_ctx.reset();
        fs::remove_all(m_dir);
    }

    void openEditSaveKeepsTheOriginalAsBackup() {
        const fs::path doc = install("routeproperties.bin", "RouteProperties.bin");
        const std::string original = readAll(doc);
        auto editor = open();
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        QVERIFY(editor->textView()->toPlainText().contains("A test RailWorks XML document"));
        QVERIFY(editor->panelText(4).startsWith("File Opened: "));
        QVERIFY(editor->panelText(3).startsWith("File last Modified: "));
        QVERIFY(editor->panelText(5).startsWith("File Loaded: "));
        QVERIFY(editor->action("mnuSaveRS")->isEnabled());
        QVERIFY(!editor->action("mnuSavexml")->isEnabled());
        QVERIFY(!editor->edited());

        // Edit through the Find dialog's Replace All.
        editor->mnuFind_Click();
        auto* search = editor->findChild<ui::dlgSearch*>("dlgSearch");
        QVERIFY(search);
        search->searchBox()->setText("a test railworks xml document");
        search->replacementBox()->setText("An edited document");
        QCOMPARE(search->Command6_Click(), qsizetype(1));
        QCOMPARE(search->status(), QString("1 replaced."));
        QVERIFY(!search->Command4_Click());
        QCOMPARE(search->status(), QString("\"a test railworks xml document\" was not found."));
        QVERIFY(editor->edited());

        editor->mnuSaveRS_Click();
        QVERIFY(editor->saved());
        QVERIFY(editor->panelText(3).startsWith("Finished at "));
        QCOMPARE(readAll(doc.string() + ".bak"), original);
        const std::string saved = readAll(doc);
        QVERIFY(saved.find("An edited document") != std::string::npos);
        std::string xml;
        QVERIFY(serz::decode(saved, xml).ok);
        QVERIFY(xml.find("<English d:type=\"cDeltaString\">An edited document</English>") != std::string::npos);

        // A second save keeps the first backup and takes the next number.
        editor->mnuSaveRS_Click();
        QCOMPARE(readAll(doc.string() + ".bak"), original);
        QVERIFY(fs::exists(doc.string() + ".bak1"));
    }

    void aDemoInstallBlueprintEditedAndSaved() {
        const fs::path root = m_dir / "demo";
        QVERIFY(demo::generateDemoInstall(root, {}).ok);
        const fs::path loco = root / "Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin";
        const std::string original = readAll(loco);
        auto editor = open();
        m_ui->pushPath(loco);
        editor->mnuOpenRS_Click();
        QVERIFY(editor->textView()->toPlainText().contains("<Name d:type=\"cDeltaString\">DemoRail Class 66 EWS</Name>"));
        // The edit a reskinner makes: the display name.
        QTextCursor c = editor->textView()->document()->find("DemoRail Class 66 EWS</Name>");
        QVERIFY(!c.isNull());
        c.insertText("DemoRail Class 66 Weathered</Name>");
        QVERIFY(editor->edited());
        editor->mnuSaveRS_Click();
        QVERIFY(editor->saved());
        QCOMPARE(readAll(loco.string() + ".bak"), original);
        std::string xml;
        QVERIFY(serz::decode(readAll(loco), xml).ok);
        QVERIFY(xml.find("<Name d:type=\"cDeltaString\">DemoRail Class 66 Weathered</Name>") != std::string::npos);
        QVERIFY(xml.find("<English d:type=\"cDeltaString\">DemoRail Class 66 EWS</English>") != std::string::npos);
    }

    void undoLastChangeAsksFirstAndPutsTheDocumentBack() {
        const fs::path doc = install("routeproperties.bin", "RouteProperties.bin");
        const std::string original = readAll(doc);
        auto editor = open();
        QVERIFY(editor->action("mnuUndoLast")->isEnabled());
        editor->mnuUndoLast_Click();
        QVERIFY(lastMessageContains("There is no change left to undo."));

        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        QTextCursor c = editor->textView()->document()->find("A test RailWorks XML document");
        QVERIFY(!c.isNull());
        c.insertText("An edited document");
        editor->mnuSaveRS_Click();
        QVERIFY(editor->saved());
        const std::string saved = readAll(doc);
        QVERIFY(saved != original);

        // Go to Line: the cursor to the line named; a line past the end is said.
        m_ui->pushText("3");
        editor->mnuGoToLine_Click();
        QCOMPARE(editor->textView()->textCursor().blockNumber(), 2);
        m_ui->pushText("999999");
        editor->mnuGoToLine_Click();
        QVERIFY(lastMessageContains("There is no line 999999 in this document"));
        QVERIFY(editor->textView()->marginWidth() > 0);

        // Asked first, showing the change; No leaves everything as it is.
        m_ui->pushAnswer(Answer::No);
        editor->mnuUndoLast_Click();
        QVERIFY(lastMessageContains("Undo this change?"));
        QVERIFY(lastMessageContains("Save " + doc.string()));
        QCOMPARE(readAll(doc), saved);

        m_ui->pushAnswer(Answer::Yes);
        editor->mnuUndoLast_Click();
        QCOMPARE(readAll(doc), original);
        QVERIFY(lastMessageContains("open it again to see it"));
        editor->mnuUndoLast_Click();
        QVERIFY(lastMessageContains("There is no change left to undo."));

        // Every backup name taken: asked before overwriting with no backup; No keeps the file.
        for (int n = 1; n <= 50; ++n)
            writeFile(doc.string() + ".bak" + std::to_string(n), "old");
        const std::string before = readAll(doc);
        m_ui->pushAnswer(Answer::No);
        editor->mnuSaveRS_Click();
        QVERIFY(lastMessageContains("all 51 backup names"));
        QCOMPARE(readAll(doc), before);
        m_ui->pushAnswer(Answer::Yes);
        editor->mnuSaveRS_Click();
        QVERIFY(editor->saved());
        QCOMPARE(readAll(doc), saved);
    }

    void aDocumentTheCodecRefusesShowsWhyAndChangesNothing() {
        const fs::path doc = m_dir / "rw/Content/Routes/r1/Broken.bin";
        writeFile(doc, "SERZ but not really");
        auto editor = open();
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        QVERIFY(lastMessageContains(doc.string()));
        QVERIFY(editor->textView()->toPlainText().isEmpty());
        QCOMPARE(readAll(doc), std::string("SERZ but not really"));
    }

    void aFailedSaveLeavesTheDocumentAlone() {
        const fs::path doc = install("Bogie01.bin", "Bogie01.bin");
        const std::string original = readAll(doc);
        auto editor = open();
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        editor->textView()->setPlainText("<cBlueprintLoader><unbalanced></cBlueprintLoader>");
        editor->mnuSaveRS_Click();
        QVERIFY(lastMessageContains(recompressFailedMessage()));
        QVERIFY(!editor->saved());
        QCOMPARE(readAll(doc), original);
        QVERIFY(!fs::exists(doc.string() + ".bak"));
    }

    // Save writes only to the document whose path is shown: never to an earlier one after a
    // cancelled or failed Open or after Clear Screen.
    void saveNeverFallsBackOnAnEarlierDocument() {
        const fs::path doc = install("routeproperties.bin", "RouteProperties.bin");
        const std::string original = readAll(doc);
        auto editor = open();
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        QVERIFY(editor->action("mnuSaveRS")->isEnabled());
        editor->mnuOpenRS_Click(); // the file dialog cancelled
        QVERIFY(!editor->action("mnuSaveRS")->isEnabled());
        QVERIFY(!editor->action("mnuItSaveAs")->isEnabled());
        editor->textView()->setPlainText(QString::fromLatin1(QByteArray::fromStdString(ReadTextFile(m_ctx->tempFiles() / "RouteProperties.xml"))));
        editor->mnuSaveRS_Click();
        QCOMPARE(readAll(doc), original);
        QVERIFY(!fs::exists(doc.string() + ".bak"));

        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        editor->mnuClear_Click();
        QVERIFY(!editor->action("mnuSaveRS")->isEnabled());
        editor->textView()->setPlainText(QString::fromLatin1(QByteArray::fromStdString(ReadTextFile(m_ctx->tempFiles() / "RouteProperties.xml"))));
        editor->mnuSaveRS_Click();
        QVERIFY(!fs::exists(doc.string() + ".bak"));
        // The tree tab after Clear Screen builds nothing from the cleared document.
        editor->findChild<QTabWidget*>("SSTab1")->setCurrentIndex(1);
        QVERIFY(!editor->treeLoaded());

        // A document that does not convert leaves nothing to save over either.
        const fs::path broken = m_dir / "rw/Content/Routes/r1/Broken.bin";
        writeFile(broken, "SERZ but not really");
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        m_ui->pushPath(broken);
        editor->mnuOpenRS_Click();
        QVERIFY(!editor->action("mnuSaveRS")->isEnabled());
        editor->mnuSaveRS_Click();
        QVERIFY(!fs::exists(doc.string() + ".bak"));
    }

    // Errors are said once: Save .xml of an empty view, a tree that cannot be built.
    void errorsAreShownOnce() {
        auto editor = open();
        m_ui->pushPath(m_dir / "empty.xml");
        editor->mnuSavexml_Click();
        std::size_t warnings = 0;
        for (const auto& p : m_ui->prompts)
            warnings += p.text.find("An error occurred while writing") != std::string::npos;
        QCOMPARE(warnings, std::size_t(1));
        QVERIFY(!fs::exists(m_dir / "empty.xml"));

        const fs::path bad = m_dir / "rw/Bad.xml";
        writeFile(bad, "<cThing><unbalanced></cThing>");
        m_ui->pushPath(bad);
        editor->mnuXML_Click();
        const std::size_t before = m_ui->prompts.size();
        auto* tabs = editor->findChild<QTabWidget*>("SSTab1");
        for (int visit = 0; visit < 3; ++visit) {
            tabs->setCurrentIndex(0);
            tabs->setCurrentIndex(1);
        }
        QVERIFY(!editor->treeLoaded());
        QCOMPARE(m_ui->prompts.size(), before);
    }

    void theTreeTabParsesOnFirstUseAndSearches() {
        const fs::path doc = install("routeproperties.bin", "RouteProperties.bin");
        auto editor = open();
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        QVERIFY(!editor->treeLoaded());
        QCOMPARE(editor->windowTitle(), QString::fromStdString("XML File Editor - " + doc.string()));
        editor->findChild<QTabWidget*>("SSTab1")->setCurrentIndex(1);
        QVERIFY(editor->treeLoaded());
        QVERIFY(editor->tree().size() > 10);
        QCOMPARE(editor->tree().document()->name, QString("cRouteProperties"));

        // Find All marks every hit; Find stops at the first the user accepts.
        editor->setTreeSearchText("english");
        editor->Command3_Click();
        QVERIFY(!editor->boldNodes().isEmpty());
        const auto all = editor->boldNodes().size();
        m_ui->pushAnswer(Answer::Cancel); // Continue
        m_ui->pushAnswer(Answer::Ok);
        editor->Command2_Click();
        QVERIFY(all >= 1);

        editor->setTreeSearchText("no such node anywhere");
        editor->Command2_Click();
        QVERIFY(lastMessageContains("Not found"));

        // Editing a node's text marks the tree dirty in the caption.
        auto* tree = editor->findChild<QTreeView*>("trevwContents");
        tree->setCurrentIndex(tree->model()->index(0, 0));
        editor->findChild<QPlainTextEdit*>("txtCharacters")->setPlainText("changed");
        QVERIFY(editor->windowTitle().endsWith("*"));
    }

    void treeEditsMarkTheCaptionAndRefuseBlanksInNames() {
        const fs::path doc = install("routeproperties.bin", "RouteProperties.bin");
        auto editor = open();
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        editor->findChild<QTabWidget*>("SSTab1")->setCurrentIndex(1);
        auto* tree = editor->findChild<QTreeView*>("trevwContents");
        auto* model = tree->model();
        const QModelIndex root = model->index(0, 0);
        QVERIFY(!editor->windowTitle().endsWith("*"));
        // The root's attribute: its value is shown and can be changed.
        tree->setCurrentIndex(root);
        auto* attributes = editor->findChild<QListWidget*>("lstAttributes");
        QVERIFY(attributes->count() >= 1);
        attributes->setCurrentRow(0);
        auto* value = editor->findChild<QLineEdit*>("txtAttributeValue");
        QVERIFY(!value->text().isEmpty());
        QTest::keyClicks(value, "9");
        QVERIFY(editor->windowTitle().endsWith("*"));
        QVERIFY(editor->tree().document()->attributes[0].second.endsWith("9"));
        // A node name with a blank is refused with the screen's words.
        QVERIFY(!model->setData(model->index(0, 0, root), "Two words", Qt::EditRole));
        QVERIFY(lastMessageContains("Node names cannot have spaces!"));
        QVERIFY(model->setData(model->index(0, 0, root), "Renamed", Qt::EditRole));
        QCOMPARE(editor->tree().document()->children[0]->name, QString("Renamed"));
    }

    // The tree is for browsing: its edits do not reach the text nor what Save writes, the
    // document is not marked changed by them, and the tab says so.
    void treeEditsAreNotSavedAndTheTabSaysSo() {
        const fs::path doc = install("routeproperties.bin", "RouteProperties.bin");
        auto editor = open();
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        editor->findChild<QTabWidget*>("SSTab1")->setCurrentIndex(1);
        auto* note = editor->findChild<QLabel*>("lblTreeNote");
        QVERIFY(note && note->isHidden());
        XmlNode* english = nullptr;
        for (XmlNode* n : editor->tree().nodes())
            if (n->characters == "A test RailWorks XML document")
                english = n;
        QVERIFY(english);
        auto* tree = editor->findChild<QTreeView*>("trevwContents");
        tree->setCurrentIndex(static_cast<ui::XmlTreeModel*>(tree->model())->indexOf(english));
        editor->findChild<QPlainTextEdit*>("txtCharacters")->setPlainText("Edited in the tree");
        QCOMPARE(english->characters, QString("Edited in the tree"));
        QVERIFY(editor->windowTitle().endsWith("*"));
        QVERIFY(!note->isHidden());
        QVERIFY(note->text().contains("not saved"));
        QVERIFY(!editor->edited());
        QVERIFY(!editor->textView()->toPlainText().contains("Edited in the tree"));

        editor->mnuSaveRS_Click();
        QVERIFY(editor->saved());
        std::string xml;
        QVERIFY(serz::decode(readAll(doc), xml).ok);
        QVERIFY(xml.find("A test RailWorks XML document") != std::string::npos);
        QVERIFY(xml.find("Edited in the tree") == std::string::npos);

        // The next document starts with a clean tree and no note.
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        QVERIFY(note->isHidden());
        QVERIFY(!editor->windowTitle().endsWith("*"));
    }

    // What Save .xml writes is the text byte for byte: a no-break space stays one, in UTF-8 and in
    // single-byte text alike, and the line ends stay as they were.
    void saveXmlKeepsEveryByte() {
        auto editor = open();
        for (const std::string& bytes : {std::string("<a>50\xC2\xA0km M\xC3\xBChle</a>\r\n<b/>\r\n"),
                                         std::string("<a>50\xA0km M\xFChle</a>\n<b/>\n")}) {
            const fs::path doc = m_dir / "rw/Text.xml";
            writeFile(doc, bytes);
            m_ui->pushPath(doc);
            editor->mnuXML_Click();
            QVERIFY(editor->textView()->document()->toRawText().contains(QChar(0xA0)));
            const fs::path out = m_dir / "out.xml";
            fs::remove(out);
            m_ui->pushPath(out);
            editor->mnuSavexml_Click();
            QCOMPARE(readAll(out), bytes);
        }
    }

    void treeSearchesRefuseMoreThan65500Nodes() {
        for (int count : {65500, 65501}) {
            std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<r>";
            for (int i = 1; i < count; ++i)
                xml += "<e/>";
            xml += "</r>";
            const fs::path doc = m_dir / ("big" + std::to_string(count) + ".xml");
            writeFile(doc, xml);
            auto editor = open();
            m_ui->prompts.clear();
            m_ui->pushPath(doc);
            editor->mnuXML_Click();
            QCOMPARE(editor->tree().size(), std::size_t(count));
            editor->setTreeSearchText("r");
            editor->Command3_Click();
            QCOMPARE(lastMessageContains(treeTooLongMessage()), count > 65500);
        }
    }

    void highlightingIsRefusedForGeometryAndTexturesAndNeedsText() {
        auto editor = open();
        editor->Command1_Click();
        QVERIFY(lastMessageContains("No text selected"));
        QVERIFY(!editor->highlighted());

        const fs::path shape = install("Bogie01.bin", "Bogie01.GeoPcDx");
        m_ui->pushPath(shape);
        editor->mnuOpenRS_Click();
        QVERIFY(!editor->textView()->toPlainText().isEmpty());
        editor->Command1_Click();
        QVERIFY(lastMessageContains("Do not highlight the text in GeoPcDx or TgPcDx files\n"
                                    "as the data blob section causes the option to lock up."));
        QVERIFY(!editor->highlighted());

        m_ui->pushPath(install("Bogie01.bin", "Bogie01.bin"));
        editor->mnuOpenRS_Click();
        editor->Command1_Click();
        QVERIFY(editor->highlighted());
        QCOMPARE(editor->findChild<QPushButton*>("Command1")->text(), QString("English 311"));
        // A dark theme chosen while the colouring is on: the plain text follows the new palette.
        auto plainColour = [&] {
            const QTextBlock block = editor->textView()->document()->findBlockByNumber(1);
            for (const auto& range : block.layout()->formats())
                if (range.format.hasProperty(QTextFormat::ForegroundBrush))
                    return range.format.foreground().color();
            return QColor();
        };
        QPalette dark = editor->palette();
        dark.setColor(QPalette::Base, QColor(30, 30, 30));
        dark.setColor(QPalette::Text, QColor(230, 230, 230));
        editor->setPalette(dark);
        QTRY_VERIFY(plainColour().isValid() && plainColour().lightness() > 128);
        editor->Command1_Click();
        QCOMPARE(editor->findChild<QPushButton*>("Command1")->text(), QString("English 62"));
    }

    void theSecondViewFollowsTheFirstViewsCursor() {
        auto editor = open();
        m_ui->pushPath(install("Bogie01.bin", "Bogie01.bin"));
        editor->mnuOpenRS_Click();
        QVERIFY(!editor->action("mnuFile2")->isEnabled());
        editor->mnu2bin_Click();
        QVERIFY(editor->action("mnuFile2")->isEnabled());
        m_ui->pushPath(install("bogie_audio_control.proxybin", "Audio.proxybin"));
        editor->mnufile2_Click();
        QVERIFY(!editor->secondView()->toPlainText().isEmpty());
        QTextCursor c = editor->textView()->textCursor();
        c.setPosition(40);
        editor->textView()->setTextCursor(c);
        QCOMPARE(editor->secondView()->textCursor().position(), 40);
    }

    void printingToPdfWorksWithoutAScreen() {
        auto editor = open();
        m_ui->pushPath(install("routeproperties.bin", "RouteProperties.bin"));
        editor->mnuOpenRS_Click();
        QPrinter printer;
        printer.setOutputFormat(QPrinter::PdfFormat);
        const fs::path pdf = m_dir / "print.pdf";
        printer.setOutputFileName(QString::fromStdString(pdf.string()));
        editor->printText(printer, false);
        QVERIFY(fs::exists(pdf) && fs::file_size(pdf) > 1000);
        QVERIFY(!editor->textView()->toPlainText().contains('\t'));
    }

    void aLargeDocumentLoadsInTheBackground() {
        // About 8 MB of XML: above the size that loads at once.
        std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                          "<cBlueprintLoader xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n";
        // Numbers rather than names: a document holds at most 65,535 distinct strings.
        for (int i = 0; i < 160000; ++i)
            xml += "\t<Name d:type=\"cDeltaString\">value number " + std::to_string(i % 1000) +
                   "</Name>\r\n\t<Count d:type=\"sUInt32\">" + std::to_string(i) + "</Count>\r\n";
        xml += "</cBlueprintLoader>\r\n";
        std::string bin;
        QVERIFY(serz::encode(xml, bin).ok);
        const fs::path doc = m_dir / "rw/Big.bin";
        writeFile(doc, bin);
        auto editor = open();
        QSignalSpy loaded(editor.get(), &ui::frmEditor::documentLoaded);
        m_ui->pushPath(doc);
        editor->mnuOpenRS_Click();
        QVERIFY(loaded.count() == 1 || loaded.wait(60000));
        QVERIFY(editor->textView()->toPlainText().endsWith("</cBlueprintLoader>\n"));
        QVERIFY(editor->textView()->toPlainText().contains("<Count d:type=\"sUInt32\">159999</Count>"));
        QVERIFY(!editor->edited());
    }

    void screenshotOfTheEditorWithADocumentAndItsTree() {
        auto editor = open();
        editor->resize(1200, 800);
        m_ui->pushPath(install("routeproperties.bin", "RouteProperties.bin"));
        editor->mnuOpenRS_Click();
        editor->Command1_Click();
        editor->show();
        const QString dir = QCoreApplication::applicationDirPath();
        QVERIFY(editor->grab().save(dir + "/editor-text.png"));
        editor->findChild<QTabWidget*>("SSTab1")->setCurrentIndex(1);
        auto* tree = editor->findChild<QTreeView*>("trevwContents");
        tree->expandToDepth(2);
        tree->setCurrentIndex(tree->model()->index(0, 0, tree->model()->index(0, 0)));
        QVERIFY(editor->grab().save(dir + "/editor-tree.png"));
    }
};

#include "test_editor_document.moc"

int runTestEditorDocument(int argc, char** argv) {
    TestEditorDocument t;
    return QTest::qExec(&t, argc, argv);
}
