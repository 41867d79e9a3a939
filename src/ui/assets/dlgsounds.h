#pragma once
// The dialogs of the sound updates: dlgFreightAudio ("Freight Wagon Sounds", two questions the
// wagon commands ask first) and dlgBogie (the bogie sound Change BogieAudioControlName sets).

#include <QDialog>

#include <optional>
#include <string>
#include <vector>

class QCheckBox;
class QRadioButton;

namespace velmora::ui {

// The two answers of dlgFreightAudio.
struct FreightAudioChoice {
    bool addBogie = false;      // Check1
    bool addWagonSound = false; // Check2
};

class dlgFreightAudio : public QDialog {
    Q_OBJECT
public:
    // Shows the last answers ticked as they were.
    explicit dlgFreightAudio(const FreightAudioChoice& last, QWidget* parent = nullptr);
    QCheckBox* bogieBox() const { return m_check1; }       // Check1
    QCheckBox* wagonSoundBox() const { return m_check2; }  // Check2
    const std::optional<FreightAudioChoice>& choice() const { return m_choice; }
    // The answers given with OK (and kept for the next time); nothing after Cancel.
    static std::optional<FreightAudioChoice> ask(QWidget* parent);

public slots:
    void OKButton_Click();
    void CancelButton_Click();

private:
    QCheckBox* m_check1 = nullptr;
    QCheckBox* m_check2 = nullptr;
    std::optional<FreightAudioChoice> m_choice;
};

class dlgBogie : public QDialog {
    Q_OBJECT
public:
    explicit dlgBogie(QWidget* parent = nullptr);
    QRadioButton* option(int index) const; // Option1(index), in the order of bogieSounds()
    const std::optional<std::string>& choice() const { return m_choice; }
    // The chosen bogie sound's word (BG_Steam ...); nothing after Cancel.
    static std::optional<std::string> ask(QWidget* parent);

public slots:
    void OKButton_Click();
    void CancelButton_Click();

private:
    std::vector<QRadioButton*> m_options;
    std::optional<std::string> m_choice;
};

} // namespace velmora::ui
