#pragma once
// Find and replace in the text view, modeless beside the main screen. Find All lists and marks
// every hit; Find All and Replace All walk a large document in slices with progress and Abort.

#include "velmora/core/userinterface.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListView;

namespace velmora::ui {

class HitListModel;
class NumberedView;

class dlgSearch : public QDialog {
    Q_OBJECT
public:
    dlgSearch(NumberedView* view, UserInterface& ui, QWidget* parent = nullptr);

    QLineEdit* searchBox() const { return m_what; }       // Text2
    QLineEdit* replacementBox() const { return m_with; }  // Text3
    QCheckBox* wholeWordBox() const { return m_whole; }   // Check1
    QListView* hitList() const { return m_hitList; }      // the hits of Find All
    // What the last command found or replaced, in the dialog itself ("lblStatus").
    QString status() const;

public slots:
    bool Command4_Click();      // Find: from the first character
    bool Command2_Click();      // Find Next: from the cursor plus one
    void Command5_Click();      // Replace the selection
    qsizetype Command6_Click(); // Replace All; an Abort leaves the text as it was
    void Command1_Click();      // Clear All
    qsizetype findAll();        // Find All: lists and marks every hit

private:
    bool findFrom(qsizetype from);
    void select(int at);
    void say(const QString& text);
    // The view is read-only while a long command walks it, and commands do not nest.
    bool beginLongCommand();
    void endLongCommand();

    NumberedView* m_view;
    UserInterface& m_ui;
    QLabel* m_status;
    QLineEdit* m_what;
    QLineEdit* m_with;
    QCheckBox* m_whole;
    QListView* m_hitList;
    HitListModel* m_hits;
    bool m_busy = false;
    bool m_wasReadOnly = false;
};

} // namespace velmora::ui
