#include "frmqd.h"

#include "../assets/assetgridview.h"
#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "frmqdselect.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/indexstock.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <set>

namespace velmora::ui {

namespace cs = velmora::consists;
namespace fs = std::filesystem;

namespace {

std::set<int> selectedRows(const QTableWidget* grid) {
    std::set<int> rows;
    for (const QModelIndex& index : grid->selectionModel()->selectedRows())
        rows.insert(index.row());
    return rows;
}

std::string cell(const QTableWidget* grid, int row, int column) {
    const QTableWidgetItem* item = grid->item(row, column);
    return item ? fromQt(item->text()) : std::string();
}

} // namespace

frmQD::frmQD(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmQD");
    setWindowTitle(caption(ctx, 387, "Build QD Consists or Fragments"));
    rememberPlace(ctx, this, objectName(), {1000, 700});

    auto* bar = new QMenuBar(this);
    struct Entry {
        const char* name;
        int language;
        const char* caption;
        void (frmQD::*slot)();
    };
    const Entry files[] = {{"mnuSelInd", 582, "Select Index File", &frmQD::mnuSelInd_Click},
                           {"mnuExit", 9, "Exit", nullptr}};
    const Entry edits[] = {{"mnuNew", 583, "New QD Consist", &frmQD::mnuNew_Click},
                           {"mnuQDF", 584, "New QD Fragment", &frmQD::mnuQDF_Click},
                           {"mnuDel", 586, "Delete Selected", &frmQD::mnuDel_Click},
                           {"mnuFlip", 587, "Flip Selected", &frmQD::mnuFlip_Click},
                           {"mnuInsert", 588, "Insert after Selected", &frmQD::mnuInsert_Click},
                           {"mnuMulti", 589, "Insert Multiple Times", &frmQD::mnuMulti_Click},
                           {"mnuBQD", 590, "Build QD Consist", &frmQD::mnuBQD_Click},
                           {"mnuBQDF", 591, "Build QD Fragment", &frmQD::mnuBQDF_Click},
                           {"mnuClear", 592, "Clear Grid", &frmQD::mnuClear_Click}};
    auto add = [&](QMenu* menu, const Entry& e) {
        QAction* a = menu->addAction(caption(ctx, e.language, e.caption));
        a->setObjectName(e.name);
        connect(a, &QAction::triggered, this, e.slot ? std::function<void()>([this, s = e.slot] { (this->*s)(); })
                                                     : std::function<void()>([this] { close(); }));
        m_actions[e.name] = a;
    };
    QMenu* fileMenu = bar->addMenu(tr("&File"));
    for (const Entry& e : files)
        add(fileMenu, e);
    QMenu* editMenu = bar->addMenu(tr("&Consist"));
    for (const Entry& e : edits)
        add(editMenu, e);

    m_vehicles = makeListGrid("VSFG", {tr("Provider"), tr("Product"), tr("Blueprint"), tr("Flipped")});
    m_stock = makeAssetGrid();
    m_fragments = makeListGrid("VSFG2", {tr("Fragment"), tr("Provider"), tr("Product"), tr("Blueprint"), tr("Flipped")});
    connect(m_fragments, &QTableWidget::cellDoubleClicked, this, [this](int row) { VSFG2_DblClick(row); });
    auto* addStock = new QPushButton(tr("Add Selected Stock"));
    addStock->setObjectName("Command2");
    connect(addStock, &QPushButton::clicked, this, &frmQD::Command2_Click);
    m_find = new QLineEdit;
    m_find->setObjectName("Text1");
    auto* next = new QPushButton(tr("&Next"));
    next->setObjectName("Command3");
    connect(next, &QPushButton::clicked, this, &frmQD::Command3_Click);
    m_hint = new QLabel;
    m_hint->setObjectName("Label1");
    m_hint->setWordWrap(true);

    auto* tools = new QHBoxLayout;
    tools->addWidget(addStock);
    tools->addStretch(1);
    tools->addWidget(m_find);
    tools->addWidget(next);
    auto* lower = new QWidget;
    auto* lowerLayout = new QHBoxLayout(lower);
    lowerLayout->setContentsMargins(0, 0, 0, 0);
    auto* stockBox = new QVBoxLayout;
    stockBox->addWidget(new QLabel(caption(ctx, 594, "Available Stock")));
    stockBox->addWidget(m_stock, 1);
    auto* fragmentBox = new QVBoxLayout;
    fragmentBox->addWidget(new QLabel(caption(ctx, 593, "Available Fragments (double click to add)")));
    fragmentBox->addWidget(m_fragments, 1);
    lowerLayout->addLayout(stockBox, 3);
    lowerLayout->addLayout(fragmentBox, 1);
    auto* split = new QSplitter(Qt::Vertical);
    split->addWidget(m_vehicles);
    split->addWidget(lower);
    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(bar);
    layout->addWidget(m_hint);
    layout->addWidget(split, 1);
    layout->addLayout(tools);

    // frmPreload first: without a folder inside a product there is nothing to build into.
    const auto folder = ctx.ui().chooseFolder(fromQt(caption(ctx, 603, "PreLoad folder")),
                                              ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets"));
    if (!folder)
        return;
    std::string error;
    m_target = cs::preloadTarget(ctx, *folder, error);
    if (!m_target) {
        ctx.ui().message(error, Icon::Warning);
        return;
    }
    setWindowTitle(windowTitle() + " - " + toQt(m_target->folder.string()));
    loadIndex(ctx.reports() / "Index.csv");
    loadFragments();
}

void frmQD::loadIndex(const fs::path& file) {
    m_stock->setRowCount(0);
    std::vector<assets::AssetRow> rows;
    std::string error;
    if (!FileExists(file)) {
        m_ctx.ui().message(scenarios::kNoIndexFile);
        return;
    }
    if (!assets::loadAssetList(file, assets::listFormOf(file), rows, &error)) {
        m_ctx.ui().message(error.empty() ? file.string() + ": the file cannot be read" : error, Icon::Warning);
        return;
    }
    appendAssetRows(m_stock, rows);
    m_lastHit = -1;
}

void frmQD::loadFragments() {
    m_fragments->setRowCount(0);
    for (const cs::QDVehicle& f : cs::availableFragments(*m_target)) {
        const int row = m_fragments->rowCount();
        m_fragments->insertRow(row);
        const std::string name = f.blueprintId.substr(f.blueprintId.rfind('\\') + 1);
        int column = 0;
        for (const std::string& text : {name.substr(0, name.size() - 4), f.provider, f.product, f.blueprintId, f.flipped})
            m_fragments->setItem(row, column++, new QTableWidgetItem(toQt(text)));
    }
}

void frmQD::addVehicle(const cs::QDVehicle& v, int at) {
    const int row = at < 0 ? m_vehicles->rowCount() : at;
    m_vehicles->insertRow(row);
    int column = 0;
    for (const std::string& text : {v.provider, v.product, v.blueprintId, v.flipped})
        m_vehicles->setItem(row, column++, new QTableWidgetItem(toQt(text)));
}

std::vector<cs::QDVehicle> frmQD::vehicleRows() const {
    std::vector<cs::QDVehicle> rows;
    for (int r = 0; r < m_vehicles->rowCount(); ++r)
        rows.push_back({cell(m_vehicles, r, 0), cell(m_vehicles, r, 1), cell(m_vehicles, r, 2), cell(m_vehicles, r, 3)});
    return rows;
}

void frmQD::mnuSelInd_Click() {
    const auto file = m_ctx.ui().chooseFile({fromQt(caption(m_ctx, 582, "Select Index File")), m_ctx.reports(),
                                             "Comma Separated (*.csv)|*.csv|Tabbed text file (*.txt)|*.txt", false});
    if (file)
        loadIndex(*file);
}

void frmQD::mnuNew_Click() {
    m_hint->setText(caption(m_ctx, 595, "") + "\n" + caption(m_ctx, 596, "") + "\n" + caption(m_ctx, 597, ""));
}

void frmQD::mnuQDF_Click() { m_hint->setText(caption(m_ctx, 599, "") + "\n" + caption(m_ctx, 600, "")); }

void frmQD::mnuDel_Click() {
    const std::set<int> rows = selectedRows(m_vehicles);
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        m_vehicles->removeRow(*it);
}

void frmQD::mnuFlip_Click() {
    for (int row : selectedRows(m_vehicles))
        m_vehicles->item(row, 3)->setText(toQt(cs::flippedOther(cell(m_vehicles, row, 3))));
}

void frmQD::insertLastAdded(int times) {
    const std::set<int> rows = selectedRows(m_vehicles);
    if (rows.empty()) {
        m_ctx.ui().message("You do not appear to have selected somewhere to place rolling stock");
        return;
    }
    if (!m_lastAdded) {
        m_ctx.ui().message(scenarios::kNoIndexSelection);
        return;
    }
    // From the last to the first, so that the row numbers stay true as rows go in.
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        for (int n = 0; n < times; ++n)
            addVehicle(*m_lastAdded, *it + 1);
}

void frmQD::mnuInsert_Click() { insertLastAdded(1); }

void frmQD::mnuMulti_Click() {
    const auto answer = m_ctx.ui().inputText("How many instances do you wish to install?", "Install multiple times", "");
    bool number = false;
    const int times = answer ? toQt(*answer).trimmed().toInt(&number) : 0;
    if (!number || times <= 0)
        return; // zero or empty cancels
    insertLastAdded(std::min(times, 255));
}

void frmQD::Command2_Click() {
    const std::set<int> rows = selectedRows(m_stock);
    if (rows.empty()) {
        m_ctx.ui().message(scenarios::kNoIndexSelection);
        return;
    }
    for (int row : rows) {
        std::vector<std::string> cells;
        for (int c = 0; c < m_stock->columnCount(); ++c)
            cells.push_back(cell(m_stock, row, c));
        std::string error;
        const auto stock = scenarios::readIndexRow(cells, error);
        if (!stock) {
            m_ctx.ui().message(error, Icon::Warning);
            continue;
        }
        cs::QDVehicle v{stock->provider, stock->product, stock->path, "eFalse"};
        if (iendsWith(v.blueprintId, "bin"))
            v.blueprintId.replace(v.blueprintId.size() - 3, 3, "xml");
        addVehicle(v);
        m_lastAdded = v;
    }
}

void frmQD::Command3_Click() {
    const QString wanted = m_find->text();
    if (wanted.isEmpty() || m_stock->rowCount() == 0)
        return;
    const int nameColumn = 3;
    for (int n = 1; n <= m_stock->rowCount(); ++n) {
        const int row = (m_lastHit + n) % m_stock->rowCount();
        const QTableWidgetItem* item = m_stock->item(row, nameColumn);
        if (item && item->text().contains(wanted, Qt::CaseInsensitive)) {
            m_lastHit = row;
            m_stock->clearSelection();
            m_stock->selectRow(row);
            m_stock->scrollToItem(m_stock->item(row, 0));
            return;
        }
    }
}

void frmQD::VSFG2_DblClick(int row) {
    const cs::QDVehicle v{cell(m_fragments, row, 1), cell(m_fragments, row, 2), cell(m_fragments, row, 3), "eFalse"};
    addVehicle(v);
    m_lastAdded = v;
}

void frmQD::mnuClear_Click() { m_vehicles->setRowCount(0); }

void frmQD::mnuBQD_Click() {
    frmQDSelect select(m_ctx, this);
    if (select.exec() != QDialog::Accepted)
        return;
    const cs::QDBuildResult r = cs::buildQDConsist(m_ctx, *m_target, select.metadata(), vehicleRows());
    if (!r) {
        m_ctx.ui().message(r.message + (r.detail == r.message ? "" : "\n" + r.detail), Icon::Warning);
        return;
    }
    m_lastBuilt = r.file;
    m_ctx.ui().message(r.message);
}

void frmQD::mnuBQDF_Click() {
    for (;;) {
        const auto name = m_ctx.ui().inputText(fromQt(caption(m_ctx, 615, "Type a name for your new QD Fragment:")),
                                               fromQt(caption(m_ctx, 602, "Quick Drive Fragment")), "");
        if (!name || name->empty())
            return;
        if (!cs::isFragmentName(*name)) {
            m_ctx.ui().message(cs::kFragmentRefused, Icon::Warning);
            continue;
        }
        const cs::QDBuildResult r = cs::buildQDFragment(m_ctx, *m_target, *name, vehicleRows());
        if (!r) {
            m_ctx.ui().message(r.message + (r.detail == r.message ? "" : "\n" + r.detail), Icon::Warning);
            return;
        }
        m_lastBuilt = r.file;
        loadFragments();
        return;
    }
}

} // namespace velmora::ui
