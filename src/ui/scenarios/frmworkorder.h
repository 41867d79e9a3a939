#pragma once
// frmWorkOrder, "Display Work Order": the driver's order for a scenario as rich text (RTB1), with
// the font, size and colour of the chosen text, saved as HTML or printed.

#include "velmora/core/appcontext.h"
#include "velmora/scenarios/scenariolist.h"
#include "velmora/scenarios/scenario.h"

#include <QDialog>

class QComboBox;
class QFontComboBox;
class QPrinter;
class QTextCharFormat;
class QTextEdit;
class QToolBar;

namespace velmora::ui {

class frmWorkOrder : public QDialog {
    Q_OBJECT
public:
    frmWorkOrder(AppContext& ctx, const scenarios::ScenarioRef& ref, const scenarios::ScenarioDocument& doc,
                 QWidget* parent = nullptr);

    QTextEdit* text() const { return m_rtb; }             // RTB1
    QFontComboBox* fontName() const { return m_fontName; } // cmbFontName
    QComboBox* fontSize() const { return m_fontSize; }     // cmbFontSize
    QComboBox* fontColor() const { return m_fontColor; }   // cmbFontColor

    // Prints the order on a printer already set up (Command1 asks for one first).
    void printTo(QPrinter& printer) const;

public slots:
    void Command3_Click(); // Save
    void Command1_Click(); // Print
    void Command2_Click(); // Exit
    void cmbFontColor_Click(int index);

private:
    // The format goes to the selected text, or to all of it when nothing is selected.
    void applyFormat(const QTextCharFormat& format);

    AppContext& m_ctx;
    std::string m_name; // the scenario's name, for the file name offered
    QTextEdit* m_rtb;
    QFontComboBox* m_fontName;
    QComboBox* m_fontSize;
    QComboBox* m_fontColor;
    QToolBar* m_tools; // tlbRTF
};

} // namespace velmora::ui
