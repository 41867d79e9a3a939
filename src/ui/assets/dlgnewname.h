#pragma once
// dlgNewName and dlgNewName22: "Clone Object with this new name", the new file name, display
// name and target folder of a clone; dlgNewName22 adds the category of a reskin blueprint.

#include "velmora/assets/clone.h"

#include <QDialog>

#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;

namespace velmora::ui {

class dlgNewName : public QDialog {
    Q_OBJECT
public:
    explicit dlgNewName(const assets::CloneNames& prefill, QWidget* parent = nullptr);

    QLineEdit* fileNameBox() const { return m_text1; }     // Text1
    QLineEdit* displayNameBox() const { return m_text2; }  // Text2
    QLineEdit* folderBox() const { return m_text3; }       // Text3
    QLabel* problem() const { return m_problem; }
    // The names when OK was pressed with every box filled; nothing after Cancel.
    const std::optional<assets::CloneNames>& names() const { return m_names; }

    // Shows the dialog (with the category box for a reskin blueprint) and gives the names.
    static std::optional<assets::CloneNames> ask(const assets::CloneNames& prefill, bool withCategory, QWidget* parent);

public slots:
    void OKButton_Click();
    void CancelButton_Click();

protected:
    QLineEdit* m_text1 = nullptr;
    QLineEdit* m_text2 = nullptr;
    QLineEdit* m_text3 = nullptr;
    QComboBox* m_category = nullptr; // dlgNewName22's Combo1
    QLabel* m_problem = nullptr;     // what is missing before OK can close
    std::optional<assets::CloneNames> m_names;
};

// The same with the category box.
class dlgNewName22 : public dlgNewName {
    Q_OBJECT
public:
    explicit dlgNewName22(const assets::CloneNames& prefill, QWidget* parent = nullptr);
    QComboBox* categoryBox() const { return m_category; } // Combo1
};

} // namespace velmora::ui
