#pragma once
// Find and replace in the text view, modeless beside the main screen.

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace velmora::ui {

class dlgSearch : public QDialog {
    Q_OBJECT
public:
    dlgSearch(QPlainTextEdit* view, QWidget* parent = nullptr);

    QLineEdit* searchBox() const { return m_what; }       // Text2
    QLineEdit* replacementBox() const { return m_with; }  // Text3
    QCheckBox* wholeWordBox() const { return m_whole; }   // Check1
    // What the last command found or replaced, in the dialog itself ("lblStatus").
    QString status() const;

public slots:
    bool Command4_Click();      // Find: from the first character
    bool Command2_Click();      // Find Next: from the cursor plus one
    void Command5_Click();      // Replace the selection
    qsizetype Command6_Click(); // Replace All
    void Command1_Click();      // Clear All

private:
    bool findFrom(qsizetype from);
    void say(const QString& text);
    QPlainTextEdit* m_view;
    QLabel* m_status;
    QLineEdit* m_what;
    QLineEdit* m_with;
    QCheckBox* m_whole;
};

} // namespace velmora::ui
