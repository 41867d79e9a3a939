#include "dlgsounds.h"

#include "../common/dialogbuttons.h"
#include "velmora/assets/soundedits.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

// dlgFreightAudio shows the answers of its last use; they last as long as the program runs.
FreightAudioChoice& lastFreightAudio() {
    static FreightAudioChoice last;
    return last;
}

} // namespace

dlgFreightAudio::dlgFreightAudio(const FreightAudioChoice& last, QWidget* parent) : QDialog(parent) {
    setObjectName("dlgFreightAudio");
    setWindowTitle(tr("Freight Wagon Sounds"));
    m_check1 = new QCheckBox(tr("If BogieAudioControlName is blank do you want it added"));
    m_check1->setObjectName("Check1");
    m_check1->setChecked(last.addBogie);
    m_check2 = new QCheckBox(tr("If there is no 'Wagon Sound' entry do you want it added"));
    m_check2->setObjectName("Check2");
    m_check2->setChecked(last.addWagonSound);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_check1);
    layout->addWidget(m_check2);
    layout->addLayout(okCancelRow(this, &dlgFreightAudio::OKButton_Click, &dlgFreightAudio::CancelButton_Click));
}

void dlgFreightAudio::OKButton_Click() {
    m_choice = FreightAudioChoice{m_check1->isChecked(), m_check2->isChecked()};
    accept();
}

void dlgFreightAudio::CancelButton_Click() { reject(); }

std::optional<FreightAudioChoice> dlgFreightAudio::ask(QWidget* parent) {
    dlgFreightAudio dialog(lastFreightAudio(), parent);
    dialog.exec();
    if (dialog.choice())
        lastFreightAudio() = *dialog.choice();
    return dialog.choice();
}

dlgBogie::dlgBogie(QWidget* parent) : QDialog(parent) {
    setObjectName("dlgBogie");
    setWindowTitle(tr("Change BogieAudioControlName"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Change BogieAudioControlName to  'Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\........'")));
    for (const auto& word : assets::bogieSounds()) {
        auto* option = new QRadioButton(QString::fromStdString(word));
        option->setObjectName(QStringLiteral("Option1_%1").arg(m_options.size()));
        layout->addWidget(option);
        m_options.push_back(option);
    }
    if (!m_options.empty())
        m_options.front()->setChecked(true);
    layout->addLayout(okCancelRow(this, &dlgBogie::OKButton_Click, &dlgBogie::CancelButton_Click));
}

QRadioButton* dlgBogie::option(int index) const {
    return index >= 0 && index < static_cast<int>(m_options.size()) ? m_options[static_cast<std::size_t>(index)] : nullptr;
}

void dlgBogie::OKButton_Click() {
    const auto& words = assets::bogieSounds();
    for (std::size_t i = 0; i < m_options.size() && i < words.size(); ++i)
        if (m_options[i]->isChecked())
            m_choice = words[i];
    if (m_choice)
        accept();
}

void dlgBogie::CancelButton_Click() { reject(); }

std::optional<std::string> dlgBogie::ask(QWidget* parent) {
    dlgBogie dialog(parent);
    dialog.exec();
    return dialog.choice();
}

} // namespace velmora::ui
