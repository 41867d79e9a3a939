#include "frmreport.h"

#include "desktopui.h"
#include "velmora/core/services.h"

#include <QFontDialog>
#include <QHBoxLayout>
#include <QPlainTextEdit>
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
    resize(800, 600);
    m_text = new QPlainTextEdit;
    m_text->setObjectName("Text1");
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont mono(QStringLiteral("Courier New"));
    mono.setStyleHint(QFont::Monospace);
    m_text->setFont(mono);
    m_text->setPlainText(toQt(text));

    auto button = [this](const char* name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    QPushButton* save = button("cmdSave", caption(m_ctx, 201, "Save Report"));
    QPushButton* print = button("cmdPrint", caption(m_ctx, 8, "Print"));
    QPushButton* font = button("cmdFont", tr("Font"));
    QPushButton* close = button("cmdExit", caption(m_ctx, 9, "Exit"));
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

    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {save, print, font})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addLayout(buttons);
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
