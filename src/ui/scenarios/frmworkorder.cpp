#include "frmworkorder.h"

#include "commandrow.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/instructions.h"
#include "velmora/scenarios/workorder.h"

#include <QAction>
#include <QComboBox>
#include <QFontComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTextCharFormat>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextEdit>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace velmora::ui {

namespace {

// cmbFontColor: "Default" takes the colour away again.
const std::pair<const char*, Qt::GlobalColor> kColours[] = {
    {"Default", Qt::transparent}, {"Black", Qt::black}, {"Blue", Qt::blue}, {"Green", Qt::darkGreen}, {"Red", Qt::red}};

} // namespace

frmWorkOrder::frmWorkOrder(AppContext& ctx, const scenarios::ScenarioRef& ref, const scenarios::ScenarioDocument& doc,
                           QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_name(doc.properties.displayName) {
    setObjectName("frmWorkOrder");
    setWindowTitle(tr("Display Work Order") + " - " + toQt(doc.properties.displayName));

    m_rtb = new QTextEdit;
    m_rtb->setObjectName("RTB1");
    m_rtb->setAcceptRichText(true);
    m_fontName = new QFontComboBox;
    m_fontName->setObjectName("cmbFontName");
    m_fontSize = new QComboBox;
    m_fontSize->setObjectName("cmbFontSize");
    for (int size : {8, 9, 10, 11, 12, 14, 16, 18, 20, 24, 28, 36})
        m_fontSize->addItem(QString::number(size));
    m_fontSize->setCurrentText("10");
    m_fontColor = new QComboBox;
    m_fontColor->setObjectName("cmbFontColor");
    for (const auto& [name, colour] : kColours)
        m_fontColor->addItem(tr(name));
    connect(m_fontName, &QFontComboBox::currentFontChanged, this, [this](const QFont& font) {
        QTextCharFormat f;
        f.setFontFamilies({font.family()});
        applyFormat(f);
    });
    connect(m_fontSize, &QComboBox::textActivated, this, [this](const QString& size) {
        QTextCharFormat f;
        f.setFontPointSize(size.toDouble());
        applyFormat(f);
    });
    connect(m_fontColor, &QComboBox::activated, this, &frmWorkOrder::cmbFontColor_Click);

    m_tools = new QToolBar;
    m_tools->setObjectName("tlbRTF");
    // tlbRTF: bold, italic and underline of the chosen text.
    const std::pair<const char*, void (*)(QTextCharFormat&, bool)> styles[] = {
        {"Bold", [](QTextCharFormat& f, bool on) { f.setFontWeight(on ? QFont::Bold : QFont::Normal); }},
        {"Italic", [](QTextCharFormat& f, bool on) { f.setFontItalic(on); }},
        {"Underline", [](QTextCharFormat& f, bool on) { f.setFontUnderline(on); }}};
    for (const auto& [name, set] : styles) {
        QAction* action = m_tools->addAction(tr(name));
        action->setCheckable(true);
        connect(action, &QAction::toggled, this, [this, set = set](bool on) {
            QTextCharFormat f;
            set(f, on);
            applyFormat(f);
        });
    }

    auto* fonts = new QHBoxLayout;
    fonts->addWidget(m_tools);
    fonts->addWidget(m_fontName);
    fonts->addWidget(m_fontSize);
    fonts->addWidget(new QLabel(tr("Colour")));
    fonts->addWidget(m_fontColor);
    fonts->addStretch(1);

    QHBoxLayout* buttons = commandRow<frmWorkOrder>(this, {{"Command3", "&Save", &frmWorkOrder::Command3_Click},
                                                           {"Command1", "&Print", &frmWorkOrder::Command1_Click},
                                                           {"Command2", "&Exit", &frmWorkOrder::Command2_Click}});

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fonts);
    layout->addWidget(m_rtb, 1);
    layout->addLayout(buttons);
    rememberPlace(m_ctx, this, objectName(), {800, 900});

    m_rtb->setHtml(QString::fromStdString(scenarios::workOrderHtml(doc, ref.route.name, scenarios::documentLanguage(m_ctx))));
}

void frmWorkOrder::applyFormat(const QTextCharFormat& format) {
    QTextCursor cursor = m_rtb->textCursor();
    if (!cursor.hasSelection())
        cursor.select(QTextCursor::Document);
    cursor.mergeCharFormat(format);
}

void frmWorkOrder::cmbFontColor_Click(int index) {
    if (index < 0 || index >= static_cast<int>(std::size(kColours)))
        return;
    if (kColours[index].second != Qt::transparent) {
        QTextCharFormat f;
        f.setForeground(QColor(kColours[index].second));
        applyFormat(f);
        return;
    }
    // "Default": the colour is taken off each run of the text, its other formats kept.
    QTextCursor cursor = m_rtb->textCursor();
    if (!cursor.hasSelection())
        cursor.select(QTextCursor::Document);
    const int start = cursor.selectionStart(), end = cursor.selectionEnd();
    std::vector<std::pair<std::pair<int, int>, QTextCharFormat>> runs;
    QTextDocument* document = m_rtb->document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const int from = std::max(fragment.position(), start);
            const int to = std::min(fragment.position() + fragment.length(), end);
            if (from < to)
                runs.push_back({{from, to}, fragment.charFormat()});
        }
    for (auto& [range, format] : runs) {
        QTextCursor run(document);
        run.setPosition(range.first);
        run.setPosition(range.second, QTextCursor::KeepAnchor);
        format.clearForeground();
        run.setCharFormat(format);
    }
}

void frmWorkOrder::Command3_Click() {
    MakePath(m_ctx.reports());
    const std::filesystem::path start = m_ctx.reports() / (fileNameFromText(utf8FromDocument(m_name)) + " Work Order.html");
    const auto chosen = m_ctx.ui().chooseFile({"Save Work Order", start, "Web page (*.html)|*.html", true});
    if (!chosen)
        return;
    std::filesystem::path file = *chosen;
    if (!iendsWith(file.filename().string(), ".html") && !iendsWith(file.filename().string(), ".htm"))
        file += ".html";
    JournalCommand command(&m_ctx.journal(), "Save Work Order " + file.filename().string());
    if (const WriteResult written = m_ctx.files().write(file, m_rtb->toHtml().toStdString()); !written)
        m_ctx.ui().message(written.message, Icon::Warning);
}

void frmWorkOrder::printTo(QPrinter& printer) const { m_rtb->document()->print(&printer); }

void frmWorkOrder::Command1_Click() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted)
        printTo(printer);
}

void frmWorkOrder::Command2_Click() { close(); }

} // namespace velmora::ui
