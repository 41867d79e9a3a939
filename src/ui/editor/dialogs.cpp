#include "dialogs.h"

#include "../common/desktopui.h"
#include "velmora/core/language.h"
#include "velmora/core/services.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

dlgLang::dlgLang(const AppContext& ctx, QWidget* parent) : QDialog(parent) {
    setObjectName("dlgLang");
    setWindowTitle(tr("Language"));
    m_list = new QListWidget;
    m_list->setObjectName("List1");
    const std::string current = "Lang_" + ctx.settings.language + ".txt";
    for (const auto& name : listLanguageFiles(ctx.languageFolders())) {
        m_list->addItem(toQt(name));
        if (name == current)
            m_list->setCurrentRow(m_list->count() - 1);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
}

QString dlgLang::chosenFile() const {
    auto* item = m_list->currentItem();
    return item ? item->text() : QString();
}

dlgOptions::dlgOptions(const AppContext& ctx, QWidget* parent) : QDialog(parent) {
    setObjectName("dlgOptions");
    setWindowTitle(tr("Options"));
    auto* form = new QFormLayout;
    for (const auto& [label, value] : optionsSummary(ctx)) {
        auto* field = new QLineEdit(toQt(value));
        field->setReadOnly(true);
        field->setMinimumWidth(420);
        form->addRow(toQt(label), field);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

dlgGUID::dlgGUID(QWidget* parent) : QDialog(parent) {
    setObjectName("dlgGUID");
    setWindowTitle(tr("Generate GUID/UUID"));
    m_text = new QPlainTextEdit;
    m_text->setObjectName("Text1");
    m_text->setReadOnly(true);
    m_text->setPlainText(toQt(formatGuidForms(makeGuidForms())));
    auto* again = new QPushButton(tr("New"));
    connect(again, &QPushButton::clicked, this, [this] { m_text->setPlainText(toQt(formatGuidForms(makeGuidForms()))); });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->addButton(again, QDialogButtonBox::ActionRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(buttons);
    resize(420, 220);
}

QString dlgGUID::text() const { return m_text->toPlainText(); }

dlgTime::dlgTime(QWidget* parent) : QDialog(parent) {
    setObjectName("dlgTime");
    setWindowTitle(tr("Convert RW time to hrs/mins"));
    m_seconds = new QLineEdit;
    m_seconds->setObjectName("Text1");
    m_result = new QLineEdit;
    m_result->setObjectName("Text2");
    m_result->setReadOnly(true);
    connect(m_seconds, &QLineEdit::textChanged, this, [this](const QString& t) {
        bool ok = false;
        double seconds = t.trimmed().toDouble(&ok);
        m_result->setText(ok ? toQt(TimeToHoursMinutes(seconds)) : QString());
    });
    auto* form = new QFormLayout;
    form->addRow(tr("Seconds"), m_seconds);
    form->addRow(tr("hhmm"), m_result);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

} // namespace velmora::ui
