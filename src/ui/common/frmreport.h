#pragma once
// frmReport: the one text report screen. Any tool hands it a text; the user reads it, saves it
// under Reports, prints it or changes its font.

#include "velmora/core/appcontext.h"

#include <QDialog>

class QPlainTextEdit;
class QPrinter;

namespace velmora::ui {

class frmReport : public QDialog {
    Q_OBJECT
public:
    frmReport(AppContext& ctx, const QString& title, const std::string& text, QWidget* parent = nullptr);

    QPlainTextEdit* textBox() const { return m_text; } // Text1
    // Save: a text file under Reports, chosen by the user; true when written.
    bool saveReport();
    void printReport(QPrinter& printer);

    // Shows a report modelessly; the screen deletes itself when closed.
    static frmReport* show(AppContext& ctx, const QString& title, const std::string& text, QWidget* parent);

private:
    AppContext& m_ctx;
    QPlainTextEdit* m_text;
};

} // namespace velmora::ui
