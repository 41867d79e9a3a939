#include "frmassets.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "../common/frmreport.h"
#include "../routes/frmdelroute.h"
#include "assetgridview.h"
#include "textureimage.h"
#include "velmora/assets/assetlist.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/textures/texture.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace velmora::ui {

namespace {

QPushButton* commandButton(const char* name, const QString& caption) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    return b;
}

QImage pictureOf(const assets::RowPicture& p) {
    if (p.source == assets::RowPicture::Source::Texture)
        return textureImage(textures::readTexture(p.file));
    return QImage(QString::fromStdString(p.file.string()));
}

} // namespace

frmAssets::frmAssets(AppContext& ctx, QWidget* parent)
    : ListScreen(ctx, assets::assetColumns(), "Assets", parent), m_checks(ctx) {
    setObjectName("frmAssets");
    setWindowTitle(caption(m_ctx, 67, "Build List of Assets"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    buildWidgets();
    // Big enough at first to show the grid's columns and a screenful of rows.
    rememberPlace(m_ctx, this, objectName(), {1280, 820});
    m_start->setText(toQt(m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Assets").string()));
    hideChildControls();
    const bool missingList = FileExists(m_ctx.reports() / "MissingAssets.csv");
    for (const char* name : {"Command19", "Command21"})
        if (auto* b = findChild<QPushButton*>(name))
            b->setEnabled(missingList);
}

void frmAssets::buildWidgets() {
    auto* central = new QWidget;
    setCentralWidget(central);

    m_start = startFolder();
    QPushButton* browse = browseButton();
    m_mask = maskBox();
    m_mask->addItems({"*.bin", "*_WI*.TgPcDx", "*.xml", "*.cost*;*.tgt", "*.bak*"});
    m_category = new QLineEdit;
    m_category->setObjectName("Text5");
    m_rollingStock = new QCheckBox(caption(m_ctx, 84, "Rolling stock only"));
    m_rollingStock->setObjectName("Check1");
    m_excludePreload = new QCheckBox(caption(m_ctx, 71, "Exclude PreLoad"));
    m_excludePreload->setObjectName("Check3");
    m_defaultFolders = new QCheckBox(caption(m_ctx, 72, "Default folders"));
    m_defaultFolders->setObjectName("Check4");
    m_minLod = new QLineEdit;
    m_minLod->setObjectName("Text3");
    m_maxLod = new QLineEdit;
    m_maxLod->setObjectName("Text4");
    // LOD limits are used by the batch edits; cut back to what the simulator accepts.
    connect(m_minLod, &QLineEdit::editingFinished, this, [this] {
        if (m_minLod->text().toInt() > 4000)
            m_minLod->setText("4000");
    });
    connect(m_maxLod, &QLineEdit::editingFinished, this, [this] {
        if (m_maxLod->text().toInt() > 10000)
            m_maxLod->setText("10000");
    });

    auto* inputs = new QGridLayout;
    inputs->addWidget(new QLabel(tr("Start folder")), 0, 0);
    inputs->addWidget(m_start, 0, 1, 1, 4);
    inputs->addWidget(browse, 0, 5);
    inputs->addWidget(new QLabel(caption(m_ctx, 93, "Mask:")), 1, 0);
    inputs->addWidget(m_mask, 1, 1);
    inputs->addWidget(new QLabel(caption(m_ctx, 94, "Category:")), 1, 2);
    inputs->addWidget(m_category, 1, 3);
    inputs->addWidget(new QLabel(caption(m_ctx, 73, "Min LOD")), 2, 0);
    inputs->addWidget(m_minLod, 2, 1);
    inputs->addWidget(new QLabel(caption(m_ctx, 74, "Max LOD")), 2, 2);
    inputs->addWidget(m_maxLod, 2, 3);
    inputs->addWidget(m_rollingStock, 3, 0, 1, 2);
    inputs->addWidget(m_excludePreload, 3, 2);
    inputs->addWidget(m_defaultFolders, 3, 3);
    inputs->addWidget(new QLabel(caption(m_ctx, 80, "Search for:")), 4, 0);
    inputs->addWidget(findBox(), 4, 1);
    inputs->addWidget(findColumn(), 4, 2);

    struct Button {
        const char* name;
        int entry; // of the language table
        const char* caption;
        void (frmAssets::*slot)();
    };
    // In this order; the list commands all file lists share come from ListScreen.
    const char* const order[] = {"Command1",  "Command5",  "Command3",  "Command11", "Command18", "Command2",
                                 "Command13", "Command22", "Command14", "Command8",  "Command15", "Command16",
                                 "Command10", "Command6",  "Command9",  "Command20"};
    const Button own[] = {
        {"Command13", 69, "Save Stock Index", &frmAssets::Command13_Click},
        {"Command22", 70, "List QD consists", &frmAssets::Command22_Click},
        {"Command9", 78, "Display Child Entries.", &frmAssets::Command9_Click},
        {"Command20", 82, "Add LocoInformation", &frmAssets::Command20_Click},
    };
    auto* commands = new QGridLayout;
    int i = 0;
    for (const char* name : order) {
        const auto mine = std::find_if(std::begin(own), std::end(own),
                                       [&](const Button& b) { return QString(b.name) == name; });
        QPushButton* button = mine == std::end(own)
                                  ? listCommand(name)
                                  : commandButton(mine->name, caption(m_ctx, mine->entry, mine->caption));
        if (mine != std::end(own))
            connect(button, &QPushButton::clicked, this, mine->slot);
        commands->addWidget(button, i / 4, i % 4);
        ++i;
    }
    {
        QPushButton* process = commandButton("Command19", caption(m_ctx, 75, "Process Missing Assets File"));
        QPushButton* package = commandButton("Command21", caption(m_ctx, 76, "Package Missing Assets"));
        connect(process, &QPushButton::clicked, this, &frmAssets::Command19_Click);
        connect(package, &QPushButton::clicked, this, &frmAssets::Command21_Click);
        QPushButton* rename = commandButton("Command17", caption(m_ctx, 77, "Rename Selected Asset"));
        connect(rename, &QPushButton::clicked, this, &frmAssets::Command17_Click);
        for (QPushButton* b : {rename, process, package}) {
            commands->addWidget(b, i / 4, i % 4);
            ++i;
        }
    }

    QGroupBox* hide = hideColumnsBox();

    grid()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(grid(), &QWidget::customContextMenuRequested, this, [this] { copySelectionToClipboard(); });
    connect(grid(), &QTableWidget::cellClicked, this, [this](int row, int) { showRowPicture(row); });
    m_picture = new QLabel;
    m_picture->setObjectName("Picture1");
    m_picture->setMinimumSize(256, 256);
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setWordWrap(true);
    m_picture->setText(tr("Click a row to see the asset's picture here."));
    m_children = new QListWidget;
    m_children->setObjectName("List1");
    m_children->setSelectionMode(QAbstractItemView::MultiSelection);
    m_childCaption = new QLabel(caption(m_ctx, 85, "Child Entries For:-"));
    m_childCaption->setObjectName("Label3");
    m_childName = new QLabel;
    m_childName->setObjectName("Label4");
    m_removeChildren = commandButton("Command12", caption(m_ctx, 79, " Remove Selected Child Entries."));
    m_smokeStack = commandButton("Command7", caption(m_ctx, 81, "Correct Selected Smoke Stack"));
    connect(m_removeChildren, &QPushButton::clicked, this, &frmAssets::Command12_Click);
    connect(m_smokeStack, &QPushButton::clicked, this, &frmAssets::Command7_Click);

    auto* side = new QWidget;
    auto* sideLayout = new QVBoxLayout(side);
    sideLayout->addWidget(m_picture);
    sideLayout->addWidget(m_childCaption);
    sideLayout->addWidget(m_childName);
    sideLayout->addWidget(m_children, 1);
    sideLayout->addWidget(m_removeChildren);
    sideLayout->addWidget(m_smokeStack);

    auto* split = new QSplitter;
    split->addWidget(grid());
    split->addWidget(side);
    split->setStretchFactor(0, 3);

    auto* layout = new QVBoxLayout(central);
    layout->addLayout(inputs);
    layout->addLayout(commands);
    layout->addWidget(hide);
    layout->addWidget(split, 1);
    layout->addLayout(countsRow());

    m_checkMenu = menuBar()->addMenu(caption(m_ctx, 294, "Check Assets"));
    m_checkMenu->setObjectName("mnuCheckStock");
    struct Entry {
        const char* name;
        int entry;
        const char* caption;
    };
    for (const Entry& e : {Entry{"mnuCheckLoco", 295, "Check Loco for missing files"},
                           Entry{"mnuShowFiles", 296, "Show Files Used by Locos"},
                           Entry{"mnuWag", 297, "Show Files Used by Wagons"}, Entry{"mnuSFA", 298, "Show files used by Asset"},
                           Entry{"mnuLoft", 299, "Show files used by Lofts"}, Entry{"mnuWhere", 300, "Where is it used?"},
                           Entry{"mnuInScene", 370, "Use in Scenarios"}}) {
        QAction* a = m_checkMenu->addAction(caption(m_ctx, e.entry, e.caption));
        a->setObjectName(e.name);
    }
    const std::pair<const char*, void (frmAssets::*)()> wired[] = {
        {"mnuCheckLoco", &frmAssets::mnuCheckLoco_Click}, {"mnuShowFiles", &frmAssets::mnuShowFiles_Click},
        {"mnuWag", &frmAssets::mnuWag_Click},             {"mnuSFA", &frmAssets::mnuSFA_Click},
        {"mnuLoft", &frmAssets::mnuLoft_Click},           {"mnuInScene", &frmAssets::mnuInScene_Click},
        {"mnuWhere", &frmAssets::mnuWhere_Click}};
    for (const auto& [name, slot] : wired)
        connect(action(name), &QAction::triggered, this, slot);
    buildBatchMenus();
    updateCounts();
}

QAction* frmAssets::action(const QString& name) const { return findChild<QAction*>(name); }

namespace {
std::vector<assets::AssetRow> assetRows(const assets::CellRows& cells) {
    std::vector<assets::AssetRow> out;
    out.reserve(cells.size());
    for (auto c : cells) {
        c.resize(8);
        out.push_back({c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7]});
    }
    return out;
}
} // namespace

std::vector<assets::AssetRow> frmAssets::rows() const { return assetRows(gridCells()); }

std::vector<assets::AssetRow> frmAssets::selectedRows() const { return assetRows(selectedCells()); }

std::vector<std::filesystem::path> frmAssets::filesOf(const assets::CellRows& cells) const {
    std::vector<std::filesystem::path> files;
    for (const auto& row : assetRows(cells)) {
        std::string relative = row.relativePath();
        while (!relative.empty() && relative.back() == '\\')
            relative.pop_back();
        if (!relative.empty())
            files.push_back(assets::rowFile(m_ctx, row));
    }
    return files;
}

void frmAssets::hideChildControls() {
    for (QWidget* w : {static_cast<QWidget*>(m_children), static_cast<QWidget*>(m_childCaption),
                       static_cast<QWidget*>(m_childName), static_cast<QWidget*>(m_removeChildren),
                       static_cast<QWidget*>(m_smokeStack)})
        w->setVisible(false);
    m_picture->setVisible(true);
}

void frmAssets::appendRows(const std::vector<assets::AssetRow>& rows) {
    appendGridRows(assets::cellsOf(rows));
}

assets::AssetListOptions frmAssets::readOptions() const {
    assets::AssetListOptions o;
    o.mask = fromQt(m_mask->currentText());
    o.category = fromQt(m_category->text());
    o.rollingStockOnly = m_rollingStock->isChecked();
    o.excludePreload = m_excludePreload->isChecked();
    o.defaultFolders = m_defaultFolders->isChecked();
    o.convertBins = m_convertBins;
    o.log = &m_ctx.log();
    if (!m_ctx.settings.language.empty() && m_ctx.settings.language != "English")
        o.languageTag = m_ctx.settings.language;
    return o;
}

void frmAssets::runList(assets::AssetListOptions options, bool announce) {
    m_ctx.resolver.invalidate();
    const auto result = assets::buildAssetList(fromQt(m_start->text()), options, &m_ctx.ui());
    for (const auto& m : result.messages)
        m_ctx.ui().message(m, Icon::Warning, "Velmora");
    appendRows(result.rows);
    m_category->setText(toQt(result.categoryFilter));
    if (announce && !result.stopped)
        announceBuild();
    emit listBuilt();
}

void frmAssets::Command1_Click() {
    m_convertBins = true;
    runList(readOptions(), true);
}

void frmAssets::Command22_Click() {
    m_convertBins = true;
    auto o = readOptions();
    o.quickDriveConsists = true;
    runList(o, true);
}

void frmAssets::Command10_Click() {
    m_zeroLength = true;
    auto o = readOptions();
    o.mask = "*.*";
    o.zeroLength = true;
    runList(o, true);
}

void frmAssets::Command13_Click() {
    if (m_ctx.ui().ask("To make an Index file, you must first have set this screen\n"
                       "to start on 'Assets' and ticked the 'Rolling Stock only' box.\n"
                       "Then clicked 'Add to List' - Are you ready to save?",
                       Buttons::YesNo) != Answer::Yes)
        return;
    std::string error;
    JournalCommand command(&m_ctx.journal(), "Save Index File");
    if (!assets::saveStockIndex(m_ctx.files(), m_ctx.reports(), rows(), &error))
        m_ctx.ui().message(error, Icon::Warning);
}

void frmAssets::copySelectionToClipboard() {
    QString text;
    for (const auto& row : selectedRows()) {
        const auto cells = row.cells();
        QStringList line;
        for (const auto& c : cells)
            line << toQt(c);
        text += line.join('\t') + '\n';
    }
    QApplication::clipboard()->setText(text);
    m_ctx.ui().message(fromQt(caption(m_ctx, 291, "Data has been sent to clipboard.")));
}

void frmAssets::showRowPicture(int row) {
    if (row < 0 || row >= grid()->rowCount())
        return;
    m_ctx.clearTempFiles();
    hideChildControls();
    const assets::AssetRow r = rows()[static_cast<std::size_t>(row)];
    QImage image = pictureOf(assets::rowPicture(m_ctx, r));
    if (image.isNull()) {
        // No picture anywhere, and no NoPicture.jpg beside the program: say so in the frame.
        image = QImage(256, 192, QImage::Format_RGB32);
        image.fill(Qt::lightGray);
        QPainter painter(&image);
        painter.drawText(image.rect(), Qt::AlignCenter, tr("No picture"));
    }
    m_picture->setPixmap(image.isNull() ? QPixmap() : QPixmap::fromImage(image.scaled(256, 256, Qt::KeepAspectRatio)));
    setWindowTitle(QStringLiteral("Assets Listing %1 (%2x%3)")
                       .arg(toQt(r.name))
                       .arg(image.width())
                       .arg(image.height()));
}

std::optional<assets::AssetRow> frmAssets::singleSelection(const char* tooFewMessage) {
    if (grid()->rowCount() < 2) {
        m_ctx.ui().message(tooFewMessage);
        return std::nullopt;
    }
    const auto selected = selectedRows();
    if (selected.empty()) {
        m_ctx.ui().message("No rows are selected.");
        return std::nullopt;
    }
    if (selected.size() > 1)
        m_ctx.ui().message("You can only select one item at a time for this option.\nOnly the first item will be shown");
    return selected.front();
}

void frmAssets::Command9_Click() {
    for (QWidget* w : {static_cast<QWidget*>(m_children), static_cast<QWidget*>(m_childCaption),
                       static_cast<QWidget*>(m_childName), static_cast<QWidget*>(m_removeChildren),
                       static_cast<QWidget*>(m_smokeStack)})
        w->setVisible(true);
    m_picture->setVisible(false);
    m_children->clear();
    const auto row = singleSelection("You do not appear to have added any rolling stock to the list below?\n"
                                     "Click the 'Add to List' button to enable your stock selection.");
    if (!row)
        return;
    m_childFile = assets::rowFile(m_ctx, *row);
    m_ctx.currentFile = m_childFile.string();
    m_childXml.clear();
    if (const ConvertResult r = binToXmlText(m_childFile, m_childXml); !r) {
        m_ctx.ui().message(r.message, Icon::Warning);
        return;
    }
    m_childName->setText(toQt(row->name));
    for (const auto& name : assets::childEntries(m_childXml))
        m_children->addItem(toQt(name));
}

void frmAssets::storeChildChange(const std::string& xml, const std::string& fileName) {
    JournalCommand command(&m_ctx.journal(), "Store " + (m_childFile.parent_path() / fileName).string());
    const auto stored = assets::storeBlueprint(m_ctx, m_childFile, xml, fileName);
    if (!stored.ok)
        m_ctx.ui().message(stored.message, Icon::Warning);
}

void frmAssets::Command12_Click() {
    std::vector<std::string> names;
    for (QListWidgetItem* item : m_children->selectedItems())
        names.push_back(fromQt(item->text()));
    if (names.empty() || m_childXml.empty())
        return;
    std::string xml = assets::removeChildEntries(m_childXml, names);
    // The changed vehicle is stored as a new item beside the old one.
    auto fileName = m_ctx.ui().inputText("Item will be saved as:- ", "Save Rolling-Stock Item",
                                         m_childFile.stem().string());
    if (!fileName || fileName->empty())
        return;
    auto displayName = m_ctx.ui().inputText("File Internal Name as:-", "Save Rolling-Stock Item", fromQt(m_childName->text()));
    if (!displayName)
        return;
    assets::renameBlueprint(xml, *displayName);
    storeChildChange(xml, *fileName);
}

void frmAssets::Command7_Click() {
    std::vector<std::string> names;
    const auto selected = m_children->selectedItems();
    // Up to three entries, taken from the last one upwards.
    for (auto it = selected.rbegin(); it != selected.rend() && names.size() < 3; ++it) {
        names.push_back(fromQt((*it)->text()));
        (*it)->setText("Main Smoke Stack");
    }
    if (names.empty() || m_childXml.empty())
        return;
    m_childXml = assets::correctSmokeStack(m_childXml, names);
    storeChildChange(m_childXml, m_childFile.stem().string());
}

void frmAssets::Command20_Click() {
    if (m_ctx.ui().ask("The thumbnail of each selected loco is converted to .png and saved\n"
                       "as image.png in a LocoInformation folder beside the loco.",
                       Buttons::OkCancel) != Answer::Ok)
        return;
    const auto selected = selectedRows();
    if (selected.empty()) {
        m_ctx.ui().message("No rows are selected.");
        return;
    }
    auto toPng = [](const std::filesystem::path& jpg) -> std::optional<std::string> {
        const QImage image(QString::fromStdString(jpg.string()));
        QByteArray png;
        QBuffer buffer(&png);
        if (image.isNull() || !buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
            return std::nullopt;
        return png.toStdString();
    };
    JournalCommand command(&m_ctx.journal(), "Add LocoInformation pictures");
    for (const auto& row : selected) {
        const std::string failed = assets::addLocoInformation(m_ctx, row, toPng);
        if (!failed.empty()) {
            m_ctx.ui().message(failed, Icon::Warning);
            return;
        }
    }
    m_ctx.ui().message("LocoInformation pictures have been added.");
}

} // namespace velmora::ui

namespace velmora::ui {

bool frmAssets::haveSelection() {
    if (!selectedRows().empty())
        return true;
    m_ctx.ui().message("No rows are selected.");
    return false;
}

void frmAssets::showReport(const assets::Report& report, const QString& title) {
    const std::string text = report.text();
    frmReport* screen = frmReport::show(m_ctx, title, text, this);
    // The lines naming a missing file, counted in the lines the view shows.
    std::vector<int> missing;
    int line = 0;
    for (const auto& l : report.lines) {
        if (l.missing)
            missing.push_back(line);
        line += 1 + static_cast<int>(std::count(l.text.begin(), l.text.end(), '\n'));
    }
    screen->markMissing(missing, true);
    emit reportShown(toQt(text));
}

void frmAssets::mnuCheckLoco_Click() {
    if (!haveSelection())
        return;
    m_checks.currentFile = m_ctx.currentFile;
    showReport(m_checks.checkLoco(selectedRows()), tr("Check Loco for missing files"));
}

void frmAssets::mnuShowFiles_Click() {
    if (haveSelection())
        showReport(m_checks.filesUsedByLocos(selectedRows()), tr("Show Files Used by Locos"));
}

void frmAssets::mnuWag_Click() {
    if (haveSelection())
        showReport(m_checks.filesUsedByWagons(selectedRows()), tr("Show Files Used by Wagons"));
}

void frmAssets::mnuSFA_Click() {
    if (grid()->rowCount() < 2) {
        m_ctx.ui().message("You do not appear to have added any items to the list below?\n"
                           "Click the 'Add to List' button to enable your selection.");
        return;
    }
    if (haveSelection())
        showReport(m_checks.filesUsedByAsset(selectedRows()), tr("Show files used by Asset"));
}

void frmAssets::mnuLoft_Click() {
    if (grid()->rowCount() < 1) {
        m_ctx.ui().message("You do not appear to have added any items to the list below?\n"
                           "Click the 'Add to List' button to enable your selection.");
        return;
    }
    if (haveSelection())
        showReport(m_checks.filesUsedByLofts(selectedRows()), tr("Show files used by Lofts"));
}

void frmAssets::mnuInScene_Click() {
    if (!haveSelection())
        return;
    auto rows = selectedRows();
    JournalCommand command(&m_ctx.journal(), "Use in Scenarios");
    for (const auto& problem : m_checks.useInScenarios(rows))
        m_ctx.ui().message(problem, Icon::Warning);
    // The rows that were stored now say so.
    const auto selected = grid()->selectionModel()->selectedRows();
    for (int i = 0; i < selected.size() && static_cast<std::size_t>(i) < rows.size(); ++i)
        if (auto* cell = grid()->item(selected[i].row(), 4)) {
            const std::string& inScene = rows[static_cast<std::size_t>(i)].inScene;
            cell->setText(toQt(inScene));
            cell->setData(Qt::UserRole, QByteArray::fromStdString(inScene));
        }
}

void frmAssets::Command19_Click() {
    std::vector<assets::AssetRow> rows;
    const std::string problem =
        m_checks.missingAssetRows(rows, fromQt(m_mask->currentText()), fromQt(m_category->text()));
    if (!problem.empty()) {
        m_ctx.ui().message(problem, Icon::Warning);
        return;
    }
    m_convertBins = true;
    appendRows(rows);
    grid()->selectAll();
    updateCounts();
    showReport(m_checks.getAssetBits(selectedRows()), tr("Missing assets"));
}

void frmAssets::Command21_Click() {
    int copied = 0;
    JournalCommand command(&m_ctx.journal(), "Package Missing Assets");
    const std::string problem = m_checks.packageMissingAssets(&copied);
    if (!problem.empty()) {
        m_ctx.ui().message(problem, Icon::Warning);
        return;
    }
    m_ctx.ui().message(std::to_string(copied) + " files have been copied to " + (m_ctx.appPath() / "NewPackage").string());
}

} // namespace velmora::ui

namespace velmora::ui {

void frmAssets::mnuWhere_Click() {
    if (!haveSelection())
        return;
    for (const auto& row : selectedRows()) {
        if (row.name == "Name")
            continue;
        auto* find = new frmFindLoco(m_ctx, row.relativePath(), row.name, this);
        find->setAttribute(Qt::WA_DeleteOnClose);
        find->show();
    }
    m_ctx.ui().message(m_ctx.lang.has(444) ? m_ctx.lang.text(444) : "The search has finished.");
}

} // namespace velmora::ui
