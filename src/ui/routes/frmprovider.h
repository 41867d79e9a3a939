#pragma once
// frmProvider: the Provider/Product list a route preloads, against the product folders below
// Assets. Rows marked "X" are the list Update Providers writes.

#include "velmora/core/appcontext.h"
#include "velmora/routes/routes.h"

#include <QDialog>

class QListWidget;
class QTableWidget;

namespace velmora::ui {

class frmProvider : public QDialog {
    Q_OBJECT
public:
    explicit frmProvider(AppContext& ctx, QWidget* parent = nullptr);
    QListWidget* routeList() const { return m_routes; } // List1
    QTableWidget* grid() const { return m_grid; }        // List3: mark, provider, product

public slots:
    void Command1_Click(); // Show Providers: the route's pairs marked, missing folders reported
    void Command3_Click(); // Display Providers: every product folder below Assets
    void Command4_Click(); // Select All
    void Command5_Click(); // Clear All
    void Command6_Click(); // Hide Unused
    void Command7_Click(); // Print List
    void Command2_Click(); // Update Providers

private:
    const routes::RouteEntry* selectedRoute();
    // A row for the pair, or the row it has already (compared without regard to case).
    int rowFor(const std::string& provider, const std::string& product);

    AppContext& m_ctx;
    std::vector<routes::RouteEntry> m_entries;
    QListWidget* m_routes;
    QTableWidget* m_grid;
};

} // namespace velmora::ui
