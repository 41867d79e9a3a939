#include "frmreport.h"

#include "desktopui.h"
#include "numberedview.h"
#include "windowplace.h"
#include "velmora/core/services.h"

#include <QFontDatabase>
#include <QFontDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTextDocument>
#include <QVBoxLayout>

namespace velmora::ui {

frmReport::frmReport(AppContext& ctx, const QString& title, const std::string& text, QWidget* parent)
    : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmReport");
    setWindowTitle(title);
    m_text = new NumberedView;
    m_text->setObjectName("Text1");
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    // Reports line their columns up with spaces: a fixed-width face the system has.
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_text->setPlainText(toQt(text));

    m_find = new QLineEdit;
    m_find->setObjectName("txtFind");
    m_find->setPlaceholderText(tr("Find in the report"));
    m_find->setClearButtonEnabled(true);
    connect(m_find, &QLineEdit::returnPressed, this, &frmReport::findNext);
    m_summary = new QLabel;
    m_summary->setObjectName("lblSummary");

    auto button = [this](const char* name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    QPushButton* next = button("cmdFindNext", tr("Find Next"));
    QPushButton* save = button("cmdSave", caption(m_ctx, 201, "Save Report"));
    QPushButton* print = button("cmdPrint", caption(m_ctx, 8, "Print"));
    QPushButton* font = button("cmdFont", tr("Font"));
    QPushButton* close = button("cmdExit", caption(m_ctx, 9, "Exit"));
    connect(next, &QPushButton::clicked, this, &frmReport::findNext);
    connect(save, &QPushButton::clicked, this, &frmReport::saveReport);
    connect(print, &QPushButton::clicked, this, [this] {
        QPrinter printer;
        QPrintDialog dialog(&printer, this);
        if (dialog.exec() == QDialog::Accepted)
            printReport(printer);
    });
    connect(font, &QPushButton::clicked, this, [this] {
        bool ok = false;
        const QFont chosen = QFontDialog::getFont(&ok, m_text->font(), this);
        if (ok)
            m_text->setFont(chosen);
    });
    connect(close, &QPushButton::clicked, this, &QDialog::accept);

    auto* findRow = new QHBoxLayout;
    findRow->addWidget(m_find, 1);
    findRow->addWidget(next);
    findRow->addWidget(m_summary);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {save, print, font})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(findRow);
    layout->addWidget(m_text, 1);
    layout->addLayout(buttons);
    updateSummary();
    rememberPlace(m_ctx, this, objectName(), {900, 650});
}

QPlainTextEdit* frmReport::textBox() const { return m_text; }

QString frmReport::summary() const { return m_summary->text(); }

void frmReport::markMissing(const std::vector<int>& lines, bool looked) {
    std::map<int, QString> marks;
    for (int line : lines)
        marks[line] = tr("missing");
    m_text->setLineMarks(marks, missingTint(m_text->palette()));
    m_missing = looked || !lines.empty() ? static_cast<int>(marks.size()) : -1;
    updateSummary();
}

void frmReport::updateSummary(const QString& note) {
    QString text = tr("%n line(s)", nullptr, m_text->blockCount());
    if (m_missing == 0)
        text += tr(", no missing files");
    else if (m_missing > 0)
        text += tr(", %n missing file(s)", nullptr, m_missing);
    if (!note.isEmpty())
        text += " - " + note;
    m_summary->setText(text);
}

bool frmReport::findNext() {
    const QString wanted = m_find->text();
    if (wanted.isEmpty())
        return false;
    if (m_text->find(wanted)) {
        updateSummary();
        return true;
    }
    // Round to the top once.
    const QTextCursor from = m_text->textCursor();
    m_text->moveCursor(QTextCursor::Start);
    if (m_text->find(wanted)) {
        updateSummary();
        return true;
    }
    m_text->setTextCursor(from);
    updateSummary(tr("\"%1\" was not found").arg(wanted));
    return false;
}

bool frmReport::saveReport() {
    MakePath(m_ctx.reports());
    FileRequest request;
    request.title = "Save Report";
    request.filter = "Text Files (*.txt)|*.txt|Comma Separated (*.csv)|*.csv";
    request.startFolder = m_ctx.reports();
    request.save = true;
    auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return false;
    std::string text = fromQt(m_text->toPlainText());
    std::string crlf;
    crlf.reserve(text.size() + text.size() / 20);
    for (char c : text) {
        if (c == '\n')
            crlf += '\r';
        crlf += c;
    }
    // An older report of that name is kept as a numbered backup.
    JournalCommand command(&m_ctx.journal(), "Save Report " + chosen->string());
    const WriteResult written = m_ctx.files().write(*chosen, utf8ToCp1252(crlf));
    if (!written)
        m_ctx.ui().message(written.message, Icon::Warning);
    return written.ok;
}

void frmReport::printReport(QPrinter& printer) {
    QTextDocument page;
    page.setDefaultFont(m_text->font());
    page.setPlainText(m_text->toPlainText());
    page.print(&printer);
}

frmReport* frmReport::show(AppContext& ctx, const QString& title, const std::string& text, QWidget* parent) {
    auto* report = new frmReport(ctx, title, text, parent);
    report->setAttribute(Qt::WA_DeleteOnClose);
    report->QDialog::show();
    return report;
}

} // namespace velmora::ui
