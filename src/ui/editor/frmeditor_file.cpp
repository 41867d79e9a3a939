// The text tab of the main screen: open and save, the second view, colouring, font, printing.

#include "frmeditor.h"

#include "../common/desktopui.h"
#include "../common/doctext.h"
#include "velmora/core/services.h"
#include "xmlhighlighter.h"
#include "xmltreemodel.h"

#include <QAction>
#include <QDateTime>
#include <QFileInfo>
#include <QFontDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTextBlock>
#include <QTextDocument>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <utility>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace velmora::ui {

namespace {

QString now() { return QDateTime::currentDateTime().toString("dd/MM/yyyy hh:mm:ss"); }

QString fileDate(const std::string& path) {
    return QFileInfo(toQt(path)).lastModified().toString("dd/MM/yyyy hh:mm:ss");
}

// Gives the heap's free pages back to the system. After a large document glibc would otherwise
// keep hundreds of MB for the process, in the worker's arena as well as the main one.
void releaseFreedMemory() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

constexpr const char* kOpenFilter = "RS Files(*.bin;*.XSec;*.GeoPcDx;*.proxybin)|*.bin;*.XSec*;*.GeoPcDx;*.proxybin";
constexpr const char* kXmlFilter = "XML Files (*.xml;*.cost;*.tgt;*.proxyxml)|*.xml;*.cost;*.tgt;*.proxyxml";

} // namespace

std::optional<std::string> frmEditor::choosePath(const std::string& title, const std::string& filter) {
    if ((m_ctx.openedFromCommandLine || m_openedFromRouteList) && !m_ctx.currentFile.empty())
        return m_ctx.currentFile;
    for (;;) {
        FileRequest request;
        request.title = title;
        request.filter = filter;
        request.startFolder = m_ctx.railWorks();
        auto chosen = m_ctx.ui().chooseFile(request);
        if (!chosen || chosen->empty())
            return std::nullopt;
        if (FileExists(*chosen)) {
            m_ctx.currentFile = chosen->string();
            return m_ctx.currentFile;
        }
        if (m_ctx.ui().ask("The file selected does not exist?", Buttons::OkCancel, Icon::Question, "Retry") !=
            Answer::Ok)
            return std::nullopt;
    }
}

void frmEditor::enableForDocument(bool binary) {
    // A binary document is saved through the codec; an XML document only as text.
    action("mnuSaveRS")->setEnabled(binary);
    action("mnuItSaveAs")->setEnabled(binary);
    action("mnuSavexml")->setEnabled(!binary);
    action("mnuSaveAs")->setEnabled(true);
    action("mnuPrint")->setEnabled(true);
    action("mnuFind")->setEnabled(true);
}

void frmEditor::forgetDocument() {
    // Nothing is open: Save has no path to write to, and never falls back on an earlier one.
    m_doc = {};
    for (const char* name : {"mnuSaveRS", "mnuItSaveAs", "mnuSavexml"})
        action(name)->setEnabled(false);
}

bool frmEditor::documentShown() const {
    return !m_doc.path.empty() && fromQt(m_path->text()) == m_doc.path.string();
}

void frmEditor::showText(QPlainTextEdit* view, const QString& text) {
    m_loading = true;
    view->setPlainText(text);
    m_loading = false;
}

std::string frmEditor::viewBytes(QPlainTextEdit* view) const {
    return documentBytes(view->document(), view == m_text ? m_form : m_form2);
}

void frmEditor::markLoaded(const std::string& path) {
    m_panels[4]->setText("File Loaded: " + now());
    m_showImage->setVisible(iendsWith(path, "TgPcDx"));
    m_loading = false;
    rememberRecent(path);
    // Once the last slice has let go of the loaded text.
    QTimer::singleShot(0, this, [] { releaseFreedMemory(); });
    emit documentLoaded();
}

void frmEditor::openArchivedDocument(const std::string& path, const std::string& from) {
    openChosenPath(path);
    if (m_path->text().isEmpty())
        return;
    m_readOnlyDoc = true;
    m_pathLabel->setText(toQt(from) + tr("  (from the archive: Save asks for another place)"));
}

void frmEditor::mnuOpenRS_Click() {
    if (m_loading)
        return;
    m_readOnlyDoc = false;
    enableForDocument(true);
    // The previous document, its tree and its undo history go before the next one comes in.
    showText(m_text, {});
    m_treeModel->setTree(nullptr);
    m_xmlTree.clear();
    m_selectedNode = nullptr;
    releaseFreedMemory();
    m_path->clear();
    m_pathLabel->clear();
    m_treeLoaded = false;
    const auto path = choosePath("Open RailSim file", kOpenFilter);
    m_openedFromRouteList = false;
    if (!path) {
        forgetDocument();
        return;
    }
    loadBinary(*path);
}

void frmEditor::loadBinary(const std::string& path) {
    m_panels[3]->setText("File Opened: " + now());
    m_path->setText(toQt(path));
    m_panels[2]->setText("File last Modified: " + fileDate(path));
    m_pathLabel->setText(toQt(path));
    m_ctx.openedFromCommandLine = false;

    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    const bool background = !ec && size > static_cast<std::uintmax_t>(kBackgroundLoadBytes);

    // The conversion, on a worker thread for a large document. A large text stays in its bytes
    // and is decoded slice by slice as it goes into the view: it is never held whole twice.
    struct Job {
        EditorDocument doc;
        ConvertResult result;
        std::string bytes; // a large document's text, not yet decoded
        QString text;      // a small one's, decoded
        TextForm form;
    };
    auto job = std::make_shared<Job>();
    auto work = [job, path, temp = m_ctx.tempFiles()] {
        job->result = openBinaryDocument(path, temp, job->doc, job->bytes);
        if (!job->result)
            return;
        job->form = formOf(job->bytes);
        if (job->bytes.size() <= static_cast<std::size_t>(kBackgroundLoadBytes)) {
            job->text = decodePart(job->bytes, job->form);
            job->bytes = {};
        }
    };
    auto finish = [this, job, path] {
        m_doc = job->doc;
        ClearCurrentFile(toQt(m_doc.tempXml().string()));
        if (!job->result) {
            forgetDocument();
            m_path->clear();
            m_pathLabel->clear();
            m_loading = false;
            m_ctx.ui().message(job->result.message, Icon::Warning, "Open RailSim file");
            emit documentLoaded();
            return;
        }
        m_form = job->form;
        showText(m_text, {});
        // Small documents go in at once; large ones in slices that keep the window alive.
        if (job->bytes.empty()) {
            showText(m_text, std::exchange(job->text, {}));
            markLoaded(path);
            return;
        }
        auto bytes = std::make_shared<std::string>(std::exchange(job->bytes, {}));
        m_loading = true;
        // Loading is not an edit: with the undo history off it keeps no record per line.
        m_text->document()->setUndoRedoEnabled(false);
        m_ctx.ui().beginProgress("Loading " + path, static_cast<std::int64_t>(bytes->size()));
        auto offset = std::make_shared<std::size_t>(0);
        auto slice = std::make_shared<std::function<void()>>();
        QPointer<frmEditor> self(this);
        *slice = [self, bytes, offset, slice, path] {
            if (!self)
                return;
            constexpr std::size_t kSlice = 2 * 1024 * 1024;
            // Cut after a line end, which never falls inside a character or a CR LF pair.
            const std::size_t nl = bytes->find('\n', std::min(bytes->size(), *offset + kSlice));
            const std::size_t end = nl == std::string::npos ? bytes->size() : nl + 1;
            QTextCursor c(self->m_text->document());
            c.movePosition(QTextCursor::End);
            c.insertText(decodePart(std::string_view(*bytes).substr(*offset, end - *offset), self->m_form));
            *offset = end;
            self->m_ctx.ui().progress(static_cast<std::int64_t>(*offset));
            if (*offset < bytes->size() && !self->m_ctx.ui().cancelled()) {
                QTimer::singleShot(0, self, *slice);
                return;
            }
            self->m_ctx.ui().endProgress();
            self->m_text->document()->setUndoRedoEnabled(true);
            const bool stopped = *offset < bytes->size();
            *bytes = {};
            *slice = nullptr; // breaks the cycle
            if (stopped) {
                // A part of a document must never be saved over the whole one.
                self->showText(self->m_text, {});
                self->m_path->clear();
                self->forgetDocument();
                self->m_loading = false;
                emit self->documentLoaded();
                return;
            }
            self->markLoaded(path);
        };
        QTimer::singleShot(0, this, *slice);
    };
    if (!background) {
        work();
        finish();
        return;
    }
    m_loading = true;
    m_panels[4]->setText("Converting " + toQt(path));
    QThread* thread = QThread::create(work);
    connect(thread, &QThread::finished, this, finish);
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start();
}

void frmEditor::mnuXML_Click() {
    if (m_loading)
        return;
    m_readOnlyDoc = false;
    enableForDocument(false);
    const auto path = choosePath("Open .xml file", kXmlFilter);
    m_openedFromRouteList = false;
    m_ctx.openedFromCommandLine = false;
    if (!path) {
        forgetDocument();
        return;
    }
    std::string xml;
    const ConvertResult r = openXmlDocument(*path, m_ctx.tempFiles(), m_doc, xml);
    if (!r) {
        forgetDocument();
        m_ctx.ui().message(r.message, Icon::Warning, "Open .xml file");
        return;
    }
    m_panels[3]->setText("File Opened: " + now());
    m_panels[2]->setText("File last Modified: " + fileDate(*path));
    m_path->setText(toQt(*path));
    m_pathLabel->setText(toQt(*path));
    TextForm form;
    const QString text = decodeDocument(xml, form);
    m_form = form;
    showText(m_text, text);
    // An XML document's tree is built at once.
    ClearCurrentFile(toQt(m_doc.tempXml().string()));
    m_treeLoaded = LoadXMLFile();
    markLoaded(*path);
}

void frmEditor::mnuSaveRS_Click() {
    // Only ever to the document whose path is shown.
    if (m_loading || !documentShown() || m_doc.isXml)
        return;
    // A copy taken out of an archive is not written back into TempFiles.
    if (m_readOnlyDoc) {
        mnuItSaveAs_Click();
        return;
    }
    JournalCommand command(&m_ctx.journal(), "Save " + m_doc.path.string());
    const SaveResult r = saveBinaryDocument(m_ctx.files(), m_doc, viewBytes(m_text),
                                            [this](const std::string& step) { m_panels[2]->setText(toQt(step)); });
    if (!r.ok) {
        m_ctx.ui().message(r.message, Icon::Critical);
        return;
    }
    m_saved = true;
}

void frmEditor::mnuUndoLast_Click() {
    const auto entries = m_ctx.journal().entries();
    const auto last = lastUndoableEntry(entries);
    if (!last) {
        m_ctx.ui().message("There is no change left to undo.");
        return;
    }
    const UndoPlan plan = planUndo(entries, *last);
    std::string question = "Undo this change?\n\n" + describeEntry(*plan.entry);
    if (!plan.conflicts.empty()) {
        question += "\nThese files have changed since:\n";
        for (const std::string& c : plan.conflicts)
            question += "  " + c + "\n";
        question += "\nUndo it anyway? What stands there now is kept as a numbered backup.";
    }
    if (m_ctx.ui().ask(question, Buttons::YesNo, plan.conflicts.empty() ? Icon::Question : Icon::Warning) !=
        Answer::Yes)
        return;
    const UndoResult r = undoEntry(m_ctx.files(), *last, true);
    std::string text = r.message;
    const auto& back = r.restored;
    if (!m_doc.path.empty() && std::find(back.begin(), back.end(), m_doc.path) != back.end())
        text += "\n\nThe document in the editor has been put back on disk: open it again to see it.";
    m_ctx.ui().message(text, r.ok ? Icon::Information : Icon::Warning);
}

void frmEditor::mnuItSaveAs_Click() {
    if (m_loading || !documentShown() || m_doc.isXml)
        return;
    FileRequest request;
    request.title = "Save as xml format files";
    request.filter = "xml Files (*.xml)|*.xml";
    request.startFolder = m_ctx.tempFiles();
    request.save = true;
    auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return;
    JournalCommand command(&m_ctx.journal(), "Save As " + chosen->string());
    const SaveResult r = saveBinaryDocumentAs(m_ctx.files(), m_doc, viewBytes(m_text), *chosen);
    if (!r.ok) {
        m_ctx.ui().message(r.message, Icon::Critical);
        return;
    }
    m_saved = true;
    m_ctx.ui().message("Your file has been saved as:-\n" + r.written.string());
}

namespace {
// Save .xml and Save As write the text as it stands, with no conversion.
void saveViewAsText(AppContext& ctx, const std::string& bytes, const char* title, const char* filter) {
    FileRequest request;
    request.title = title;
    request.filter = filter;
    request.startFolder = ctx.tempFiles();
    request.save = true;
    auto chosen = ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return;
    if (bytes.empty()) {
        ctx.ui().message("An error occurred while writing " + chosen->string(), Icon::Warning);
        return;
    }
    JournalCommand command(&ctx.journal(), std::string(title) + " " + chosen->string());
    const WriteResult written = ctx.files().write(*chosen, bytes);
    if (!written)
        ctx.ui().message(written.message, Icon::Critical);
}
} // namespace

void frmEditor::mnuSavexml_Click() {
    saveViewAsText(m_ctx, viewBytes(m_text), "Save .xml format files", kXmlFilter);
}

void frmEditor::mnuSaveAs_Click() {
    saveViewAsText(m_ctx, viewBytes(m_text), "Save KRS format files", "KRS Files (*.xml)|*.xml");
}

void frmEditor::mnuClear_Click() {
    if (m_loading)
        return;
    showText(m_text, {});
    showText(m_text2, {});
    m_path->clear();
    m_pathLabel->clear();
    m_path2->clear();
    m_path2Label->clear();
    m_treeModel->setTree(nullptr);
    m_xmlTree.clear();
    m_treeLoaded = false;
    m_treeFile.clear();
    m_panels[3]->clear();
    m_panels[4]->clear();
    forgetDocument();
    releaseFreedMemory();
}

void frmEditor::Command6_Click() { mnuClear_Click(); }

void frmEditor::mnu2bin_Click() {
    m_secondView = !m_secondView;
    action("mnu2bin")->setChecked(m_secondView);
    action("mnuFile2")->setEnabled(m_secondView);
    for (QWidget* w : {static_cast<QWidget*>(m_path2), static_cast<QWidget*>(m_path2Label),
                       static_cast<QWidget*>(m_text2), static_cast<QWidget*>(findChild<QLabel*>("Label3"))})
        if (w)
            w->setVisible(m_secondView);
    if (m_highlighted && m_secondView && !m_highlighter2)
        m_highlighter2 = new XmlHighlighter(m_text2->document(), m_text2->palette());
}

void frmEditor::mnufile2_Click() {
    if (!m_secondView)
        return;
    FileRequest request;
    request.title = "Open RailSim file";
    request.filter = kOpenFilter;
    request.startFolder = m_ctx.railWorks();
    auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return;
    if (!FileExists(*chosen)) {
        m_ctx.ui().message("The file selected does not exist?", Icon::Warning);
        return;
    }
    EditorDocument second;
    std::string xml;
    const ConvertResult r = openBinaryDocument(*chosen, m_ctx.tempFiles(), second, xml);
    if (!r) {
        m_ctx.ui().message(r.message, Icon::Warning, "Open RailSim file");
        return;
    }
    m_path2->setText(toQt(chosen->string()));
    m_path2Label->setText(toQt(chosen->string()));
    TextForm form;
    const QString text = decodeDocument(xml, form);
    m_form2 = form;
    showText(m_text2, text);
}

void frmEditor::Command1_Click() { setHighlight(!m_highlighted); }

void frmEditor::setHighlight(bool on) {
    if (on) {
        const QString path = m_path->text();
        if (path.endsWith("geopcdx", Qt::CaseInsensitive) || path.endsWith("tgpcdx", Qt::CaseInsensitive)) {
            m_ctx.ui().message("Do not highlight the text in GeoPcDx or TgPcDx files\n"
                               "as the data blob section causes the option to lock up.",
                               Icon::Warning);
            return;
        }
        if (m_text->document()->isEmpty()) {
            m_ctx.ui().message("No text selected", Icon::Information);
            return;
        }
        // Coloured at once (the highlighter colours as it is made) rather than on the next turn
        // of the event loop.
        m_highlighter = new XmlHighlighter(m_text->document(), m_text->palette());
        if (m_secondView)
            m_highlighter2 = new XmlHighlighter(m_text2->document(), m_text2->palette());
    } else {
        delete m_highlighter;
        delete m_highlighter2;
        m_highlighter = nullptr;
        m_highlighter2 = nullptr;
        for (QPlainTextEdit* view : {static_cast<QPlainTextEdit*>(m_text), m_text2}) {
            QFont f = view->font();
            f.setPointSize(11);
            view->setFont(f);
        }
    }
    m_highlighted = on;
    const int entry = on ? 311 : 62;
    m_highlight->setText(m_ctx.lang.has(entry) ? toQt(m_ctx.lang.text(entry))
                                               : (on ? tr("Remove Highlight") : tr("Highlight XML")));
}

void frmEditor::Command5_Click() {
    bool ok = false;
    QFont preset(QStringLiteral("Courier New"), m_text->font().pointSize());
    const QFont chosen = QFontDialog::getFont(&ok, preset, this, tr("Change Font"));
    if (!ok)
        return;
    applyFont(chosen);
}

void frmEditor::applyFont(const QFont& font) {
    m_text->setFont(font);
    if (m_secondView)
        m_text2->setFont(font);
    // The size is remembered for the next start.
    m_ctx.settings.fontSize = QString::number(font.pointSize()).toStdString();
    m_ctx.writeSettings();
}

void frmEditor::mnuPrint_Click() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    dialog.setOption(QAbstractPrintDialog::PrintSelection, m_text->textCursor().hasSelection());
    if (dialog.exec() != QDialog::Accepted)
        return;
    printText(printer, dialog.printRange() == QAbstractPrintDialog::Selection);
}

void frmEditor::printText(QPrinter& printer, bool selectionOnly) {
    // Tabs are taken out of the text first, as the printed page cannot show them.
    const QString text = m_text->toPlainText();
    if (text.contains('\t')) {
        QString untabbed = text;
        untabbed.remove('\t');
        QTextCursor c(m_text->document());
        c.select(QTextCursor::Document);
        c.insertText(untabbed);
    }
    QTextDocument page;
    page.setDefaultFont(m_text->font());
    page.setPlainText(selectionOnly ? m_text->textCursor().selectedText().replace(QChar::ParagraphSeparator, '\n')
                                    : m_text->toPlainText());
    page.print(&printer);
}

} // namespace velmora::ui
