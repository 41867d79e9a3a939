#pragma once
// frmIndex, "Rolling-stock index": Reports/Index.csv in a read-only grid with list selection.
// A screen that chooses stock from it (the scenario editor's Use Index File) gives it a chooser:
// then Command1 hands over the cells of the last selected row, and so does a click on a row.

#include "velmora/core/appcontext.h"

#include <QDialog>

#include <functional>
#include <string>
#include <vector>

class QLineEdit;
class QListWidget;
class QPushButton;
class QTableWidget;

namespace velmora::ui {

class frmIndex : public QDialog {
    Q_OBJECT
public:
    explicit frmIndex(AppContext& ctx, QWidget* parent = nullptr);
    // False (after saying so) when there is no index yet.
    bool loaded() const { return m_loaded; }
    QTableWidget* grid() const { return m_grid; }

    // The cells of a row, in the index's column order.
    using Chooser = std::function<void(const std::vector<std::string>& cells)>;
    void setChooser(Chooser choose);
    // Use Selected Stock: the last selected row to the chooser, or "You do not appear to have
    // selected any rolling stock".
    void Command1_Click();

private:
    std::vector<std::string> rowCells(int row) const;

    AppContext& m_ctx;
    QTableWidget* m_grid;
    QPushButton* m_use;
    Chooser m_choose;
    bool m_loaded = false;
};

// frmMain, "Search For Assets Details": finds a blueprint by file name below Assets.
class frmMain : public QDialog {
    Q_OBJECT
public:
    explicit frmMain(AppContext& ctx, QWidget* parent = nullptr);
    void cmdScan_Click();

private:
    AppContext& m_ctx;
    QLineEdit* m_asset;
    QLineEdit* m_path;
    QListWidget* m_files;
    QPushButton* m_scan;
    bool m_running = false;
    bool m_stop = false;
};

} // namespace velmora::ui
