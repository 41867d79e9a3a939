#include "frmprovider.h"

#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/windowplace.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/providers.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

frmProvider::frmProvider(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmProvider");
    setWindowTitle(tr("Route Providers and Products"));
    rememberPlace(ctx, this, objectName(), {900, 600});
    m_routes = new QListWidget;
    m_routes->setObjectName("List1");
    m_grid = new QTableWidget(0, 3);
    m_grid->setObjectName("List3");
    m_grid->setHorizontalHeaderLabels({tr("Use"), tr("Provider"), tr("Product")});
    m_grid->horizontalHeader()->setStretchLastSection(true);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // A click on the first column sets or clears the row's mark.
    connect(m_grid, &QTableWidget::cellClicked, this, [this](int row, int column) {
        if (column == 0 && m_grid->item(row, 0))
            m_grid->item(row, 0)->setText(m_grid->item(row, 0)->text() == "X" ? "" : "X");
    });
    m_entries = routes::listRoutes(ctx);
    for (const auto& r : m_entries)
        m_routes->addItem(toQt(r.name));

    struct Button {
        const char* name;
        const char* caption;
        void (frmProvider::*slot)();
    };
    const Button buttons[] = {
        {"Command1", "Show Providers", &frmProvider::Command1_Click},
        {"Command3", "Display Providers", &frmProvider::Command3_Click},
        {"Command4", "Select All", &frmProvider::Command4_Click},
        {"Command5", "Clear All", &frmProvider::Command5_Click},
        {"Command6", "Hide Unused", &frmProvider::Command6_Click},
        {"Command7", "Print List", &frmProvider::Command7_Click},
        {"Command2", "Update Providers", &frmProvider::Command2_Click},
    };
    auto* grid = new QGridLayout;
    int i = 0;
    for (const Button& b : buttons) {
        auto* button = new QPushButton(tr(b.caption));
        button->setObjectName(b.name);
        connect(button, &QPushButton::clicked, this, b.slot);
        grid->addWidget(button, i / 4, i % 4);
        ++i;
    }
    auto* lists = new QHBoxLayout;
    lists->addWidget(m_routes, 1);
    lists->addWidget(m_grid, 2);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists, 1);
    layout->addLayout(grid);
}

const routes::RouteEntry* frmProvider::selectedRoute() {
    const int row = m_routes->currentRow();
    if (row < 0 || row >= static_cast<int>(m_entries.size())) {
        m_ctx.ui().message("Select a route in the list first.");
        return nullptr;
    }
    return &m_entries[static_cast<std::size_t>(row)];
}

int frmProvider::rowFor(const std::string& provider, const std::string& product) {
    const QString p = toQt(provider), q = toQt(product);
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (m_grid->item(r, 1)->text().compare(p, Qt::CaseInsensitive) == 0 &&
            m_grid->item(r, 2)->text().compare(q, Qt::CaseInsensitive) == 0)
            return r;
    const int r = m_grid->rowCount();
    m_grid->insertRow(r);
    m_grid->setItem(r, 0, new QTableWidgetItem(""));
    m_grid->setItem(r, 1, new QTableWidgetItem(p));
    m_grid->setItem(r, 2, new QTableWidgetItem(q));
    return r;
}

void frmProvider::Command1_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    for (const auto& [provider, product] : routes::routeProviders(m_ctx, *route))
        m_grid->item(rowFor(provider, product), 0)->setText("X");
    const auto missing = routes::missingProductFolders(m_ctx, *route);
    if (missing.empty())
        return;
    std::string text = "The following folders listed in RouteProperties.xml don't exist in Assets\r\n\r\n";
    for (const auto& m : missing)
        text += m + "\r\n";
    frmReport::show(m_ctx, tr("Missing product folders"), text, this);
}

void frmProvider::Command3_Click() {
    for (const auto& [provider, product] : routes::assetProducts(m_ctx))
        rowFor(provider, product);
}

void frmProvider::Command4_Click() {
    for (int r = 0; r < m_grid->rowCount(); ++r)
        m_grid->item(r, 0)->setText("X");
}

void frmProvider::Command5_Click() {
    for (int r = 0; r < m_grid->rowCount(); ++r)
        m_grid->item(r, 0)->setText("");
}

void frmProvider::Command6_Click() {
    for (int r = 0; r < m_grid->rowCount(); ++r)
        m_grid->setRowHidden(r, m_grid->item(r, 0)->text() != "X");
}

void frmProvider::Command7_Click() {
    std::string text;
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (!m_grid->isRowHidden(r))
            text += fromQt(m_grid->item(r, 0)->text() + "\t" + m_grid->item(r, 1)->text() + "\t" + m_grid->item(r, 2)->text()) + "\r\n";
    frmReport::show(m_ctx, tr("Providers and Products"), text, this);
}

void frmProvider::Command2_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    std::vector<routes::ProductPair> pairs;
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (m_grid->item(r, 0)->text() == "X")
            pairs.emplace_back(fromQt(m_grid->item(r, 1)->text()), fromQt(m_grid->item(r, 2)->text()));
    if (pairs.empty()) {
        m_ctx.ui().message("Mark the providers and products the route uses first.");
        return;
    }
    const routes::EditReport report = routes::updateProviders(m_ctx, *route, pairs, false);
    m_ctx.ui().message(report.message, report.ok ? Icon::Information : Icon::Warning);
}

} // namespace velmora::ui
