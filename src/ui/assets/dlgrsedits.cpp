#include "dlgrsedits.h"

#include "../common/desktopui.h"
#include "../common/dialogbuttons.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

// A single-precision number, as dlgMass reads its boxes.
bool isNumber(const QString& text) {
    bool ok = false;
    text.trimmed().toFloat(&ok);
    return ok;
}

} // namespace

dlgHead::dlgHead(const assets::LampTable& table, QWidget* parent) : QDialog(parent) {
    setObjectName("dlgHead");
    setWindowTitle(tr("Add head-lights"));
    m_list1 = new QListWidget;
    m_list1->setObjectName("List1");
    for (const auto& t : table.heads)
        m_list1->addItem(toQt(t.name));
    m_list2 = new QListWidget;
    m_list2->setObjectName("List2");
    for (const auto& t : assets::trainTypes())
        m_list2->addItem(QString::fromUtf8(t.name));
    if (m_list1->count())
        m_list1->setCurrentRow(0);
    m_list2->setCurrentRow(0);
    auto* lists = new QGridLayout;
    lists->addWidget(new QLabel(tr("Lamp template")), 0, 0);
    lists->addWidget(new QLabel(tr("Train type")), 0, 1);
    lists->addWidget(m_list1, 1, 0);
    lists->addWidget(m_list2, 1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists);
    layout->addLayout(okCancelRow(this, &dlgHead::OKButton_Click, &dlgHead::CancelButton_Click));
}

void dlgHead::OKButton_Click() {
    if (m_list1->currentRow() < 0 || m_list2->currentRow() < 0)
        return;
    m_choice = std::pair{static_cast<std::size_t>(m_list1->currentRow()), static_cast<std::size_t>(m_list2->currentRow())};
    accept();
}

void dlgHead::CancelButton_Click() {
    m_choice.reset();
    reject();
}

std::optional<std::pair<std::size_t, std::size_t>> dlgHead::ask(const assets::LampTable& table, QWidget* parent) {
    dlgHead dialog(table, parent);
    dialog.exec();
    return dialog.choice();
}

dlgTail::dlgTail(const assets::LampTable& table, QWidget* parent) : QDialog(parent) {
    setObjectName("dlgTail");
    setWindowTitle(tr("Add tail-lights"));
    m_list1 = new QTableWidget(static_cast<int>(table.tails.size()), 3);
    m_list1->setObjectName("List1");
    m_list1->setHorizontalHeaderLabels({tr("Lamp template"), tr("Lamps"), tr("Row")});
    m_list1->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list1->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list1->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (std::size_t i = 0; i < table.tails.size(); ++i) {
        const auto& t = table.tails[i];
        const int r = static_cast<int>(i);
        m_list1->setItem(r, 0, new QTableWidgetItem(toQt(t.name)));
        m_list1->setItem(r, 1, new QTableWidgetItem(t.columns[9] == "2" ? "2" : "1"));
        m_list1->setItem(r, 2, new QTableWidgetItem(QString::number(r))); // the hidden row number
    }
    m_list1->setColumnHidden(2, true);
    m_list1->horizontalHeader()->setStretchLastSection(true);
    if (!table.tails.empty())
        m_list1->selectRow(0);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list1);
    layout->addLayout(okCancelRow(this, &dlgTail::OKButton_Click, &dlgTail::CancelButton_Click));
}

void dlgTail::OKButton_Click() {
    const int row = m_list1->currentRow();
    if (row < 0)
        return;
    m_choice = static_cast<std::size_t>(m_list1->item(row, 2)->text().toULong());
    accept();
}

void dlgTail::CancelButton_Click() {
    m_choice.reset();
    reject();
}

std::optional<std::size_t> dlgTail::ask(const assets::LampTable& table, QWidget* parent) {
    dlgTail dialog(table, parent);
    dialog.exec();
    return dialog.choice();
}

dlgMass::dlgMass(QWidget* parent) : QDialog(parent) {
    setObjectName("dlgMass");
    setWindowTitle(tr("Correct Mass/Capacity of Selected"));
    auto* note = new QLabel(tr("The same mass and capacity are given to all the selected freight cars."));
    note->setWordWrap(true);
    m_mass = new QLineEdit;
    m_mass->setObjectName("Text1_0");
    m_capacity = new QLineEdit;
    m_capacity->setObjectName("Text1_1");
    auto* form = new QFormLayout;
    form->addRow(tr("New Mass"), m_mass);
    form->addRow(tr("New Capacity"), m_capacity);
    m_problem = new QLabel;
    m_problem->setStyleSheet("color: #b00020");
    m_problem->setVisible(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(note);
    layout->addLayout(form);
    layout->addWidget(m_problem);
    layout->addLayout(okCancelRow(this, &dlgMass::OKButton_Click, &dlgMass::CancelButton_Click));
}

void dlgMass::OKButton_Click() {
    if (!isNumber(m_mass->text()) || !isNumber(m_capacity->text())) {
        m_problem->setText(tr("Please give the mass and the capacity as numbers, such as 12.5"));
        m_problem->setVisible(true);
        return;
    }
    m_values = std::pair{fromQt(m_mass->text().trimmed()), fromQt(m_capacity->text().trimmed())};
    accept();
}

void dlgMass::CancelButton_Click() {
    m_values.reset();
    reject();
}

std::optional<std::pair<std::string, std::string>> dlgMass::ask(QWidget* parent) {
    dlgMass dialog(parent);
    dialog.exec();
    return dialog.values();
}

} // namespace velmora::ui
