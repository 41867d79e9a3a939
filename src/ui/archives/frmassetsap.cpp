#include "frmassetsap.h"

#include "../assets/assetbatch.h"

#include "../assets/assetgridview.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/windowplace.h"
#include "velmora/archives/apassets.h"
#include "velmora/archives/unpack.h"
#include "velmora/assets/scanpath.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/services.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <optional>
#include <set>

namespace velmora::ui {

namespace {

constexpr const char* kAdded = "Selected items have been added to the grid.";

constexpr const char* kInstructions =
    "Select folder in top left box and click 'Find .ap files'\n"
    "All .ap files will appear in the top right box.\n"
    "Select any .ap file and contents will appear in bottom box, depending upon filters selected\n"
    "Select and right click any number of files to send details to the main grid (similar to the Assets editor)\n"
    "Selecting any item on the main grid, you can send it to the main Editor to display .bin file.";

void addRow(QTableWidget* grid, const QStringList& cells) {
    const int r = grid->rowCount();
    grid->insertRow(r);
    for (int c = 0; c < cells.size(); ++c)
        grid->setItem(r, c, new QTableWidgetItem(cells[c]));
}

std::vector<int> selectedRowNumbers(const QTableWidget* grid) {
    std::set<int> rows;
    for (const QModelIndex& index : grid->selectionModel()->selectedRows())
        rows.insert(index.row());
    return {rows.begin(), rows.end()};
}

QString cell(const QTableWidget* grid, int row, int column) {
    const QTableWidgetItem* item = grid->item(row, column);
    return item ? item->text() : QString();
}

} // namespace

frmAssetsAP::frmAssetsAP(AppContext& ctx, QWidget* parent) : QMainWindow(parent), m_ctx(ctx) {
    setObjectName("frmAssetsAP");
    setWindowTitle(tr("Build List of Assets in .AP files"));
    buildWidgets();
    rememberPlace(m_ctx, this, objectName(), {1280, 860});
    m_ctx.clearTempFiles();
    m_start->setText(toQt(m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Assets").string()));
}

void frmAssetsAP::buildWidgets() {
    auto* central = new QWidget;
    setCentralWidget(central);

    m_start = new QLineEdit;
    m_start->setObjectName("Text2");
    QPushButton* browse = folderBrowseButton(this, m_start);
    m_mask = new QComboBox;
    m_mask->setObjectName("Text1");
    m_mask->setEditable(true);
    m_mask->addItems({"*.bin", "*.TgPcDx", "*.GeoPcDx", "*.png", "*.xml"});
    m_category = new QLineEdit;
    m_category->setObjectName("Text5");
    m_rollingStock = new QCheckBox(caption(m_ctx, 84, "Rolling stock only"));
    m_rollingStock->setObjectName("Check1");
    // A change of filter lists the open archive anew.
    connect(m_mask, &QComboBox::currentTextChanged, this, [this] { listEntries(); });
    connect(m_rollingStock, &QCheckBox::toggled, this, [this] { listEntries(); });

    auto* inputs = new QGridLayout;
    inputs->addWidget(new QLabel(tr("Start folder")), 0, 0);
    inputs->addWidget(m_start, 0, 1, 1, 4);
    inputs->addWidget(browse, 0, 5);
    inputs->addWidget(new QLabel(caption(m_ctx, 93, "Mask:")), 1, 0);
    inputs->addWidget(m_mask, 1, 1);
    inputs->addWidget(new QLabel(caption(m_ctx, 94, "Category:")), 1, 2);
    inputs->addWidget(m_category, 1, 3);
    inputs->addWidget(m_rollingStock, 1, 4);

    struct Button {
        const char* name;
        const char* caption;
        void (frmAssetsAP::*slot)();
    };
    const Button buttons[] = {
        {"Command5", "Find .ap files", &frmAssetsAP::Command5_Click},
        {"Command6", "Clear .ap list", &frmAssetsAP::Command6_Click},
        {"Command2", "Clear Grid", &frmAssetsAP::Command2_Click},
        {"Command7", "Clear All", &frmAssetsAP::Command7_Click},
        {"Command8", "Clear Results", &frmAssetsAP::Command8_Click},
        {"Command13", "Select All Results", &frmAssetsAP::Command13_Click},
        {"Command3", "Save Grid", &frmAssetsAP::Command3_Click},
        {"Command1", "Open in Editor", &frmAssetsAP::Command1_Click},
        {"Command9", "Save .ap index", &frmAssetsAP::Command9_Click},
    };
    auto* commands = new QGridLayout;
    int i = 0;
    for (const Button& b : buttons) {
        auto* button = new QPushButton(tr(b.caption));
        button->setObjectName(b.name);
        connect(button, &QPushButton::clicked, this, b.slot);
        commands->addWidget(button, i / 5, i % 5);
        ++i;
    }

    m_instructions = new QPlainTextEdit(tr(kInstructions));
    m_instructions->setObjectName("txtInstructions");
    m_instructions->setReadOnly(true);
    auto* instructions = new QGroupBox(tr("INSTRUCTIONS"));
    (new QVBoxLayout(instructions))->addWidget(m_instructions);

    m_apFiles = makeListGrid("VSFG3", {tr("Folder"), tr("File name")});
    connect(m_apFiles, &QTableWidget::cellClicked, this, [this](int row, int) { VSFG3_Click(row); });
    m_entries = makeListGrid("VSFG2", {tr("Entry"), tr("Path")});
    m_entries->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_entries, &QWidget::customContextMenuRequested, this, [this] { sendSelectedEntries(); });
    m_grid = makeAssetGrid();
    connect(m_grid, &QTableWidget::itemSelectionChanged, this, &frmAssetsAP::updateCounts);
    m_total = new QLabel;
    m_total->setObjectName("Label5");

    auto* top = new QSplitter;
    top->addWidget(instructions);
    top->addWidget(m_apFiles);
    auto* lists = new QSplitter(Qt::Vertical);
    lists->addWidget(top);
    lists->addWidget(m_entries);
    lists->addWidget(m_grid);
    lists->setStretchFactor(2, 2);

    auto* layout = new QVBoxLayout(central);
    layout->addLayout(inputs);
    layout->addLayout(commands);
    layout->addWidget(lists, 1);
    layout->addWidget(m_total);
    updateCounts();

    // The clones and Correct Provider on the main grid's rows, as in the asset screen. They work
    // on the files below Assets: an asset that is only in its archive is named as missing.
    m_batch = new AssetBatchCommands(m_ctx, this, [this] { return selectedAssetRows(); });
    connect(m_batch, &AssetBatchCommands::reportShown, this, &frmAssetsAP::reportShown);
    m_batch->addCloneMenu(menuBar(), {"mnuClone", "mnuCloneDefault"});
    QMenu* edit = menuBar()->addMenu(caption(m_ctx, 303, "Edit Rolling Stock"));
    edit->setObjectName("mnuEditRS");
    QAction* provider = edit->addAction(caption(m_ctx, 514, "Correct Provider"));
    provider->setObjectName("mnuCProv");
    connect(provider, &QAction::triggered, this, [this] { m_batch->editRollingStock(assets::RsCommand::Provider); });
}

std::vector<assets::AssetRow> frmAssetsAP::selectedAssetRows() const {
    std::vector<assets::AssetRow> rows;
    for (const QModelIndex& index : m_grid->selectionModel()->selectedRows()) {
        std::vector<std::string> c;
        for (int column = 0; column < 8; ++column)
            c.push_back(fromQt(cell(m_grid, index.row(), column)));
        rows.push_back({c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7]});
    }
    return rows;
}

void frmAssetsAP::updateCounts() {
    m_total->setText(caption(m_ctx, 88, "Total rows:") + QString(" %1").arg(m_grid->rowCount()));
}

void frmAssetsAP::Command5_Click() {
    const std::filesystem::path folder = fromQt(m_start->text());
    assets::cScanPath scan;
    scan.setFilter("*.ap");
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        if (!iendsWith(name, ".ap"))
            return;
        std::string shown = path;
        while (!shown.empty() && (shown.back() == '/' || shown.back() == '\\'))
            shown.pop_back();
        addRow(m_apFiles, {toQt(shown), toQt(name)});
    };
    scan.StartScan(folder, true, true, true);
    for (const std::string& unreadable : scan.UnreadableFolders())
        m_ctx.log().log("frmAssetsAP", "Command5_Click", err::PermissionDenied, unreadable);
    m_apFiles->resizeColumnsToContents();
    m_ctx.ui().message(kAdded);
}

void frmAssetsAP::VSFG3_Click(int row) {
    if (row < 0 || row >= m_apFiles->rowCount())
        return;
    // The files of the archive opened before go with it.
    m_ctx.clearTempFiles();
    const std::filesystem::path file =
        std::filesystem::path(fromQt(cell(m_apFiles, row, 0))) / fromQt(cell(m_apFiles, row, 1));
    m_zip.close();
    m_archive.clear();
    m_entries->setRowCount(0);
    if (!m_zip.open(file)) {
        // Named on screen and in the error log; the lists keep nothing of it.
        m_ctx.log().log("frmAssetsAP", "VSFG3_Click", err::FileNotFound, m_zip.error());
        return;
    }
    m_archive = file;
    listEntries();
}

void frmAssetsAP::listEntries() {
    m_entries->setRowCount(0);
    if (!m_zip.isOpen())
        return;
    archives::ApEntryFilter filter;
    filter.mask = fromQt(m_mask->currentText());
    filter.rollingStockOnly = m_rollingStock->isChecked();
    for (const archives::ApListedEntry& e : archives::listApEntries(m_zip, filter))
        addRow(m_entries, {QString::number(e.index), toQt(e.path)});
    m_entries->resizeColumnsToContents();
}

void frmAssetsAP::sendSelectedEntries() {
    if (!m_zip.isOpen())
        return;
    std::vector<std::uint64_t> chosen;
    for (const int row : selectedRowNumbers(m_entries))
        chosen.push_back(cell(m_entries, row, 0).toULongLong());
    if (chosen.empty())
        return;
    assets::AssetListOptions options;
    options.mask = fromQt(m_mask->currentText());
    options.category = fromQt(m_category->text());
    options.rollingStockOnly = m_rollingStock->isChecked();
    options.languageTag = m_ctx.settings.language;
    const archives::ApRowsResult result = archives::apAssetRows(m_zip, chosen, options);
    for (const std::string& problem : result.unreadable)
        m_ctx.log().log("frmAssetsAP", "VSFG2_MouseDown", err::Conversion, problem);
    appendAssetRows(m_grid, result.rows);
    updateCounts();
    m_ctx.ui().message(kAdded);
}

void frmAssetsAP::Command1_Click() {
    if (!m_zip.isOpen()) {
        m_ctx.ui().message("You must Open an Archive before you can\n            Extract anything from it!", Icon::Critical,
                           "Error");
        return;
    }
    // The entry of the main grid's row (its Index), else of the results' row.
    std::optional<std::uint64_t> index;
    if (const auto rows = selectedRowNumbers(m_grid); !rows.empty())
        index = cell(m_grid, rows.front(), 7).toULongLong();
    else if (const auto entries = selectedRowNumbers(m_entries); !entries.empty())
        index = cell(m_entries, entries.front(), 0).toULongLong();
    if (!index || *index >= m_zip.count()) {
        m_ctx.ui().message("Select an item of the main grid first.");
        return;
    }
    archives::UnpackOptions options;
    options.destination = m_ctx.tempFiles();
    options.only = {*index};
    options.keepBackups = false;
    const archives::UnpackResult r = archives::unpackArchive(m_ctx.files(), m_archive, options, nullptr);
    if (!r.ok || r.written.empty()) {
        std::string why = r.error;
        for (const std::string& refused : r.refused)
            why += (why.empty() ? "" : "\n") + refused;
        m_ctx.log().log("frmAssetsAP", "Command1_Click", err::FileNotFound,
                        why.empty() ? m_archive.string() + ": the entry could not be unpacked" : why);
        return;
    }
    const std::filesystem::path file = r.written.front();
    if (iendsWith(file.string(), ".xml")) {
        const std::string text = ReadTextFile(file);
        frmReport::show(m_ctx, toQt(file.filename().string()), text, this);
        emit reportShown(toQt(text));
        return;
    }
    emit openInEditor(toQt(file.string()));
}

void frmAssetsAP::Command9_Click() {
    std::vector<std::filesystem::path> files;
    for (int r = 0; r < m_apFiles->rowCount(); ++r)
        files.push_back(std::filesystem::path(fromQt(cell(m_apFiles, r, 0))) / fromQt(cell(m_apFiles, r, 1)));
    std::string error;
    if (!archives::writeApIndex(m_ctx, files, &error)) {
        m_ctx.ui().message(error, Icon::Warning);
        return;
    }
    m_ctx.ui().message(archives::kApIndexSaved);
}

void frmAssetsAP::Command6_Click() { m_apFiles->setRowCount(0); }

void frmAssetsAP::Command2_Click() {
    m_grid->setRowCount(0);
    updateCounts();
}

void frmAssetsAP::Command8_Click() { m_entries->setRowCount(0); }

void frmAssetsAP::Command7_Click() {
    Command6_Click();
    Command8_Click();
    Command2_Click();
}

void frmAssetsAP::Command13_Click() { m_entries->selectAll(); }

void frmAssetsAP::Command3_Click() { saveAssetGridAs(m_ctx, assetGridRows(m_grid)); }

} // namespace velmora::ui
