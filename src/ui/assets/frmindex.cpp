#include "frmindex.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "assetgridview.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/indexstock.h"

#include <QApplication>
#include <QItemSelectionModel>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace velmora::ui {

frmIndex::frmIndex(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmIndex");
    setWindowTitle(tr("Rolling-stock index"));
    rememberPlace(ctx, this, objectName(), {900, 600});
    m_grid = makeAssetGrid();
    m_use = new QPushButton(tr("Use Selected Stock"));
    m_use->setObjectName("Command1");
    m_use->setVisible(false);
    connect(m_use, &QPushButton::clicked, this, &frmIndex::Command1_Click);
    connect(m_grid, &QTableWidget::cellClicked, this, [this](int row) {
        if (m_choose)
            m_choose(rowCells(row));
    });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_grid);
    layout->addWidget(m_use);

    const auto file = ctx.reports() / "Index.csv";
    std::vector<assets::AssetRow> rows;
    if (!FileExists(file) || !assets::loadAssetList(file, assets::ListForm::Csv, rows)) {
        ctx.ui().message(scenarios::kNoIndexFile);
        return;
    }
    appendAssetRows(m_grid, rows);
    m_loaded = true;
}

void frmIndex::setChooser(Chooser choose) {
    m_choose = std::move(choose);
    m_use->setVisible(static_cast<bool>(m_choose));
}

std::vector<std::string> frmIndex::rowCells(int row) const { return listRowCells(m_grid, row); }

void frmIndex::Command1_Click() {
    const auto selected = m_grid->selectionModel()->selectedRows();
    if (selected.isEmpty()) {
        m_ctx.ui().message(scenarios::kNoIndexSelection);
        return;
    }
    // The last selected row: the lowest in the grid as it is sorted now.
    int last = -1;
    for (const QModelIndex& index : selected)
        last = std::max(last, index.row());
    if (m_choose)
        m_choose(rowCells(last));
}

frmMain::frmMain(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmMain");
    setWindowTitle(tr("Search For Assets Details"));
    m_asset = new QLineEdit;
    m_asset->setObjectName("txtAsset");
    m_path = new QLineEdit(toQt(ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets").string()));
    m_path->setObjectName("txtPath");
    m_files = new QListWidget;
    m_files->setObjectName("lstFiles");
    m_scan = new QPushButton(tr("Scan"));
    m_scan->setObjectName("cmdScan");
    connect(m_scan, &QPushButton::clicked, this, &frmMain::cmdScan_Click);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_asset);
    layout->addWidget(m_path);
    layout->addWidget(m_scan);
    layout->addWidget(m_files, 1);
}

void frmMain::cmdScan_Click() {
    // The one button is Scan and, while a scan runs, Stop.
    if (m_running) {
        m_stop = true;
        return;
    }
    m_running = true;
    m_stop = false;
    m_scan->setText(tr("Stop"));
    m_files->clear();
    const auto found = assets::searchAssetDetails(fromQt(m_path->text()), fromQt(m_asset->text()),
                                                  [] { QApplication::processEvents(); }, m_stop);
    for (const auto& d : found)
        m_files->addItem(toQt(d.provider + ", " + d.product + ", " + d.path + ", " + d.name + ", " + d.category));
    m_scan->setText(tr("Scan"));
    m_running = false;
}

} // namespace velmora::ui
