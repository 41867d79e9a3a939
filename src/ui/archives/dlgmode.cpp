#include "dlgmode.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace velmora::ui {

dlgMode::dlgMode(archives::UnpackMode initial, QWidget* parent) : QDialog(parent) {
    setObjectName("dlgMode");
    setWindowTitle(tr("Select 7zip Mode"));
    auto* frame = new QGroupBox;
    frame->setObjectName("Frame1");
    auto* group = new QButtonGroup(this);
    auto* options = new QVBoxLayout(frame);
    for (int i = 0; i < archives::kUnpackModes; ++i) {
        m_options[i] = new QRadioButton(archives::unpackModeCaption(static_cast<archives::UnpackMode>(i)));
        m_options[i]->setObjectName(QString("Option1_%1").arg(i));
        group->addButton(m_options[i], i);
        options->addWidget(m_options[i]);
    }
    m_options[static_cast<int>(initial)]->setChecked(true);
    auto* ok = new QPushButton(tr("OK"));
    ok->setObjectName("OKButton");
    ok->setDefault(true);
    auto* cancel = new QPushButton(tr("Cancel"));
    cancel->setObjectName("CancelButton");
    connect(ok, &QPushButton::clicked, this, &dlgMode::OKButton_Click);
    connect(cancel, &QPushButton::clicked, this, &dlgMode::CancelButton_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addLayout(buttons);
}

void dlgMode::OKButton_Click() {
    m_chosen.reset();
    for (int i = 0; i < archives::kUnpackModes; ++i)
        if (m_options[i]->isChecked())
            m_chosen = static_cast<archives::UnpackMode>(i);
    accept();
}

void dlgMode::CancelButton_Click() {
    m_chosen.reset();
    reject();
}

std::optional<archives::UnpackMode> dlgMode::choose(archives::UnpackMode initial, QWidget* parent) {
    dlgMode dialog(initial, parent);
    dialog.exec();
    return dialog.mode();
}

} // namespace velmora::ui
