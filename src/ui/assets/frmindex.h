#pragma once
// frmIndex, "Rolling-stock index": Reports/Index.csv in a read-only grid with list selection.

#include "velmora/core/appcontext.h"

#include <QDialog>

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

private:
    QTableWidget* m_grid;
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
