#pragma once
// The OK and Cancel buttons of a small dialog, at the right of a row, OK the default. Each
// button has its control name and calls the dialog's own slot.

#include <QHBoxLayout>
#include <QObject>
#include <QPushButton>

namespace velmora::ui {

template <typename Dialog>
QHBoxLayout* okCancelRow(Dialog* dialog, void (Dialog::*ok)(), void (Dialog::*cancel)(),
                         const char* cancelName = "CancelButton") {
    auto* okButton = new QPushButton(QObject::tr("OK"));
    okButton->setObjectName("OKButton");
    okButton->setDefault(true);
    auto* cancelButton = new QPushButton(QObject::tr("Cancel"));
    cancelButton->setObjectName(cancelName);
    QObject::connect(okButton, &QPushButton::clicked, dialog, ok);
    QObject::connect(cancelButton, &QPushButton::clicked, dialog, cancel);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(okButton);
    row->addWidget(cancelButton);
    return row;
}

} // namespace velmora::ui
