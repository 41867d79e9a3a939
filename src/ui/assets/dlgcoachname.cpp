#include "dlgcoachname.h"

#include "../common/desktopui.h"
#include "../common/dialogbuttons.h"
#include "velmora/assets/renaming.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace velmora::ui {

dlgCoachName::dlgCoachName(std::string fileName, std::string displayName, const std::string& suffix, QWidget* parent)
    : QDialog(parent), m_fileName(std::move(fileName)), m_displayName(std::move(displayName)) {
    setObjectName("dlgCoachName");
    setWindowTitle(tr("Save Rolling-Stock Item"));
    m_text1 = new QLineEdit;
    m_text1->setObjectName("Text1");
    m_text2 = new QLineEdit;
    m_text2->setObjectName("Text2");
    auto* names = new QFormLayout;
    names->addRow(tr("Item will be saved as:- "), m_text1);
    names->addRow(tr("File Internal Name as:-"), m_text2);

    auto* frame = new QGroupBox(tr("Is this item now:-"));
    auto* group = new QButtonGroup(this);
    auto* column = new QVBoxLayout(frame);
    const auto& choices = assets::coachOptions();
    for (std::size_t i = 0; i < choices.size(); ++i) {
        auto* b = new QRadioButton(QString::fromUtf8(choices[i].caption));
        b->setObjectName(QString("Option1_%1").arg(i));
        group->addButton(b, static_cast<int>(i));
        column->addWidget(b);
        m_options.push_back(b);
    }
    connect(group, &QButtonGroup::idClicked, this, &dlgCoachName::Option1_Click);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(names);
    layout->addWidget(frame);
    layout->addLayout(okCancelRow(this, &dlgCoachName::OKButton_Click, &dlgCoachName::Command1_Click, "Command1"));

    const std::size_t chosen = assets::coachOptionOf(suffix);
    m_options[chosen]->setChecked(true);
    Option1_Click(static_cast<int>(chosen));
}

void dlgCoachName::Option1_Click(int index) {
    const auto& choices = assets::coachOptions();
    if (index < 0 || static_cast<std::size_t>(index) >= choices.size())
        return;
    const assets::VariantName v = assets::withSuffix(m_fileName, m_displayName, choices[index].suffix);
    m_text1->setText(toQt(v.fileName));
    m_text2->setText(toQt(v.displayName));
}

void dlgCoachName::OKButton_Click() {
    // Both boxes as they stand: the user may have changed either by hand.
    m_names = assets::VariantName{fromQt(m_text1->text().trimmed()), fromQt(m_text2->text())};
    accept();
}

void dlgCoachName::Command1_Click() {
    m_names.reset();
    reject();
}

std::optional<assets::VariantName> dlgCoachName::ask(const std::string& fileName, const std::string& displayName,
                                                     const std::string& suffix, QWidget* parent) {
    dlgCoachName dialog(fileName, displayName, suffix, parent);
    dialog.exec();
    return dialog.names();
}

} // namespace velmora::ui
