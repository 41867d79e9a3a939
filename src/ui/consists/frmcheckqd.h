#pragma once
// frmCheckQD, "Check QD consists and fragments": walks Assets for Quick Drive documents off the
// GUI thread, lists each with what it names in a grid that sorts by any column and narrows to
// rows holding a search text, marks what is missing, and opens frmEdQD on a listed consist.

#include "velmora/consists/qdcheck.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace velmora::ui {

class frmCheckQD : public QDialog {
    Q_OBJECT
public:
    explicit frmCheckQD(AppContext& ctx, QWidget* parent = nullptr);

    void Command1_Click(); // Check all QD Consists
    void Command2_Click(); // Check all QD Fragments
    void Command7_Click(); // List All QD Consists (asks first)
    void Command6_Click(); // Edit selected QD consist
    void Command4_Click(); // Clear Grid
    void Command5_Click(); // Save Grid
    void Command8_Click(); // Save Spreadsheet

    QTableWidget* grid() const { return m_grid; }
    QLineEdit* searchBox() const { return m_search; }
    const consists::QdListing& listing() const { return m_listing; }

private:
    // The walk in the background, then the grid; false when it was aborted.
    bool walk(consists::QdView view);
    void fillGrid();
    void applySearch();
    void saveGrid(bool spreadsheet);

    AppContext& m_ctx;
    QTableWidget* m_grid;
    QLineEdit* m_search;
    QLabel* m_summary;
    consists::QdListing m_listing;
    consists::QdView m_view = consists::QdView::Consists;
    bool m_listed = false;
};

} // namespace velmora::ui
