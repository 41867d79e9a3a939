#include "dlgnewname.h"

#include "../common/desktopui.h"
#include "../common/dialogbuttons.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

dlgNewName::dlgNewName(const assets::CloneNames& prefill, QWidget* parent) : QDialog(parent) {
    setObjectName("dlgNewName");
    setWindowTitle(tr("Clone Object with this new name"));
    m_text1 = new QLineEdit(toQt(prefill.fileName));
    m_text1->setObjectName("Text1");
    m_text2 = new QLineEdit(toQt(prefill.displayName));
    m_text2->setObjectName("Text2");
    m_text3 = new QLineEdit(toQt(prefill.targetFolder));
    m_text3->setObjectName("Text3");
    m_text3->setMinimumWidth(420);
    auto* form = new QFormLayout;
    form->addRow(tr("File Name:"), m_text1);
    form->addRow(tr("Internal Name:"), m_text2);
    form->addRow(tr("Folder Name"), m_text3);
    m_category = new QComboBox;
    m_category->setObjectName("Combo1");
    for (const auto& c : assets::cloneCategories())
        m_category->addItem(toQt(c));
    if (!prefill.category.empty())
        m_category->setCurrentText(toQt(prefill.category));
    form->addRow(tr("Category"), m_category);
    m_category->setVisible(false);
    form->labelForField(m_category)->setVisible(false);

    m_problem = new QLabel;
    m_problem->setObjectName("Label1");
    m_problem->setStyleSheet("color: #b00020");
    m_problem->setVisible(false);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_problem);
    layout->addLayout(okCancelRow(this, &dlgNewName::OKButton_Click, &dlgNewName::CancelButton_Click));
}

void dlgNewName::OKButton_Click() {
    if (m_text1->text().trimmed().isEmpty() || m_text2->text().trimmed().isEmpty() ||
        m_text3->text().trimmed().isEmpty()) {
        // Said in the dialog itself, which stays open for the missing box.
        m_problem->setText(tr("You have failed to complete one of the boxes?"));
        m_problem->setVisible(true);
        return;
    }
    assets::CloneNames n;
    n.fileName = fromQt(m_text1->text().trimmed());
    n.displayName = fromQt(m_text2->text());
    n.targetFolder = fromQt(m_text3->text().trimmed());
    if (objectName() == "dlgNewName22")
        n.category = fromQt(m_category->currentText());
    m_names = n;
    accept();
}

void dlgNewName::CancelButton_Click() {
    m_names.reset();
    reject();
}

dlgNewName22::dlgNewName22(const assets::CloneNames& prefill, QWidget* parent) : dlgNewName(prefill, parent) {
    setObjectName("dlgNewName22");
    m_category->setVisible(true);
    if (auto* form = findChild<QFormLayout*>())
        if (QWidget* label = form->labelForField(m_category))
            label->setVisible(true);
}

std::optional<assets::CloneNames> dlgNewName::ask(const assets::CloneNames& prefill, bool withCategory, QWidget* parent) {
    if (withCategory) {
        dlgNewName22 dialog(prefill, parent);
        dialog.exec();
        return dialog.names();
    }
    dlgNewName dialog(prefill, parent);
    dialog.exec();
    return dialog.names();
}

} // namespace velmora::ui
