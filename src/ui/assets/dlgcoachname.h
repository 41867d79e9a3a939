#pragma once
// dlgCoachName: "Save Rolling-Stock Item", the file name and display name a changed vehicle is
// saved under, with a choice of what the item now is that adds its suffix to both names.

#include "velmora/assets/batchedit.h"

#include <QDialog>

#include <optional>
#include <vector>

class QLineEdit;
class QRadioButton;

namespace velmora::ui {

class dlgCoachName : public QDialog {
    Q_OBJECT
public:
    // The remembered names, and the option chosen at opening (by its suffix, "" for Spare).
    dlgCoachName(std::string fileName, std::string displayName, const std::string& suffix, QWidget* parent = nullptr);

    QLineEdit* fileNameBox() const { return m_text1; }    // Text1
    QLineEdit* displayNameBox() const { return m_text2; } // Text2
    QRadioButton* option(std::size_t i) const { return m_options[i]; } // Option1(i)
    // The names when OK was pressed; nothing after Cancel.
    const std::optional<assets::VariantName>& names() const { return m_names; }

    // Shows the dialog and gives the names, or nothing when cancelled.
    static std::optional<assets::VariantName> ask(const std::string& fileName, const std::string& displayName,
                                                  const std::string& suffix, QWidget* parent);

public slots:
    void Option1_Click(int index);
    void OKButton_Click();
    void Command1_Click(); // Cancel

private:
    std::string m_fileName, m_displayName;
    QLineEdit* m_text1 = nullptr;
    QLineEdit* m_text2 = nullptr;
    std::vector<QRadioButton*> m_options;
    std::optional<assets::VariantName> m_names;
};

} // namespace velmora::ui
