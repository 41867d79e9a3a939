#pragma once
// frmReport: the one text report screen. Any tool hands it a text; the user reads it with line
// numbers, finds in it, saves it under Reports, prints it or changes its font. Lines that name a
// missing file are marked with the word "missing" in the margin and a tint, and the window says
// how many there are.

#include "velmora/core/appcontext.h"

#include <QDialog>

#include <vector>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPrinter;

namespace velmora::ui {

class NumberedView;

class frmReport : public QDialog {
    Q_OBJECT
public:
    frmReport(AppContext& ctx, const QString& title, const std::string& text, QWidget* parent = nullptr);

    QPlainTextEdit* textBox() const; // Text1
    NumberedView* view() const { return m_text; }
    QLineEdit* findBox() const { return m_find; } // txtFind
    // lblSummary: the lines, and the missing files when the report looks for them.
    QString summary() const;

    // Marks the lines (0-based) that name a missing file. `looked` says the report looked for
    // missing files, so that none marked means "no missing files" rather than nothing said.
    void markMissing(const std::vector<int>& lines, bool looked);
    // Selects the next line holding the find box's text, from the cursor on, round to the top;
    // false (and the summary says so) when there is none.
    bool findNext();

    // Save: a text file under Reports, chosen by the user; true when written.
    bool saveReport();
    void printReport(QPrinter& printer);

    // Shows a report modelessly; the screen deletes itself when closed.
    static frmReport* show(AppContext& ctx, const QString& title, const std::string& text, QWidget* parent);

private:
    void updateSummary(const QString& note = {});
    AppContext& m_ctx;
    NumberedView* m_text;
    QLineEdit* m_find;
    QLabel* m_summary;
    int m_missing = -1; // -1: the report does not look for missing files
};

} // namespace velmora::ui
