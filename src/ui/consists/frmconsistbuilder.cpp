#include "frmconsistbuilder.h"

#include "../assets/assetgridview.h"
#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <map>
#include <set>

namespace velmora::ui {

namespace cs = velmora::consists;

namespace {

struct Entry {
    const char* menu;
    const char* name;
    const char* caption;
    void (frmConsistBuilder::*slot)();
};

const Entry kEntries[] = {
    {"Files", "mnuSelIndex", "Select Index File", &frmConsistBuilder::mnuSelIndex_Click},
    {"Files", "mnuPool", "Load Pool of Wagons", &frmConsistBuilder::mnuPool_Click},
    {"Consists", "mnuNew", "Add New Consist", &frmConsistBuilder::mnuNew_Click},
    {"Consists", "mnuGenCon", "Generate Consist", &frmConsistBuilder::mnuGenCon_Click},
    {"Consists", "mnuInsert", "Insert after Selected", &frmConsistBuilder::mnuInsert_Click},
    {"Consists", "mnuMulti", "Insert Multiple Times", &frmConsistBuilder::mnuMulti_Click},
    {"Consists", "mnuFlip", "Flip", &frmConsistBuilder::mnuFlip_Click},
    {"Consists", "mnuDel", "Delete", &frmConsistBuilder::mnuDel_Click},
    {"Consists", "mnuRename", "Rename Consist", &frmConsistBuilder::mnuRename_Click},
    {"Consists", "mnuClear", "Clear Grid", &frmConsistBuilder::mnuClear_Click},
};

const char* const kColumns[] = {"Consist", "Key", "Id", "Provider", "Product", "BlueprintID", "Flipped", "Entry",
                                "Stock"};
constexpr int kStateColumn = 8;

// The two shades consists alternate in, and the tint of a row whose stock is missing, all taken
// from the palette so that the text stays readable in any theme.
QColor shade(const QPalette& p, std::size_t consist, bool missing) {
    QColor c = consist % 2 ? p.color(QPalette::AlternateBase) : p.color(QPalette::Base);
    if (!missing)
        return c;
    const QColor red(220, 60, 60);
    return QColor((c.red() * 3 + red.red()) / 4, (c.green() * 3 + red.green()) / 4, (c.blue() * 3 + red.blue()) / 4);
}

} // namespace

dlgConGen::dlgConGen(QWidget* parent) : QDialog(parent) {
    setObjectName("dlgConGen");
    setWindowTitle(tr("Generate Consist"));
    m_wagons = new QLineEdit;
    m_wagons->setObjectName("Text1");
    m_wagons->setValidator(new QIntValidator(1, 1000, m_wagons));
    m_randomness = new QLineEdit("10");
    m_randomness->setObjectName("Text2");
    m_randomness->setValidator(new QIntValidator(0, 10, m_randomness));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* form = new QFormLayout(this);
    form->addRow(tr("Number of Wagons in Consist"), m_wagons);
    form->addRow(tr("Randomness 0 - 10"), m_randomness);
    form->addRow(buttons);
}

frmConsistBuilder::frmConsistBuilder(AppContext& ctx, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_random(cs::systemIds().fraction) {
    setObjectName("frmConsistBuilder");
    setWindowTitle(tr("Saved Consists"));
    rememberPlace(ctx, this, objectName(), {1000, 700});

    auto* bar = new QMenuBar(this);
    std::map<std::string, QMenu*> menus;
    for (const Entry& e : kEntries) {
        QMenu*& menu = menus[e.menu];
        if (!menu) {
            menu = bar->addMenu(tr(e.menu));
            menu->setObjectName(QString("mnu") + e.menu);
        }
        QAction* a = menu->addAction(tr(e.caption));
        a->setObjectName(e.name);
        connect(a, &QAction::triggered, this, e.slot);
    }

    m_index = makeAssetGrid();
    m_find = new QLineEdit;
    m_find->setObjectName("Text1");
    m_find->setPlaceholderText(tr("Name to find"));
    auto* find = new QPushButton(tr("&Find Next"));
    find->setObjectName("Command3");
    connect(find, &QPushButton::clicked, this, &frmConsistBuilder::Command3_Click);
    connect(m_find, &QLineEdit::returnPressed, this, &frmConsistBuilder::Command3_Click);
    auto* add = new QPushButton(tr("&Add Selected Stock"));
    add->setObjectName("Command2");
    connect(add, &QPushButton::clicked, this, &frmConsistBuilder::Command2_Click);

    m_grid = new QTableWidget(0, kStateColumn + 1);
    m_grid->setObjectName("VSFG");
    QStringList headers;
    for (const char* c : kColumns)
        headers << tr(c);
    m_grid->setHorizontalHeaderLabels(headers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setWordWrap(false);
    m_grid->horizontalHeader()->setStretchLastSection(true);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 6);

    auto* save = new QPushButton(tr("&Save"));
    save->setObjectName("Command8");
    connect(save, &QPushButton::clicked, this, &frmConsistBuilder::Command8_Click);
    auto* exit = new QPushButton(tr("&Exit"));
    exit->setObjectName("Command1");
    connect(exit, &QPushButton::clicked, this, &frmConsistBuilder::Command1_Click);
    m_status = new QLabel;
    m_status->setObjectName("lblStatus");

    auto* findRow = new QHBoxLayout;
    findRow->addWidget(m_find, 1);
    findRow->addWidget(find);
    findRow->addWidget(add);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_status, 1);
    buttons->addWidget(save);
    buttons->addWidget(exit);
    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(bar);
    layout->addWidget(m_index, 2);
    layout->addLayout(findRow);
    layout->addWidget(m_grid, 3);
    layout->addLayout(buttons);
    load();
}

QAction* frmConsistBuilder::action(const char* name) const { return findChild<QAction*>(name); }
QPushButton* frmConsistBuilder::button(const char* name) const { return findChild<QPushButton*>(name); }

void frmConsistBuilder::load() {
    const cs::OpenResult o = m_builder.open(m_ctx);
    if (!o.exists && o.ok()) {
        if (m_ctx.ui().ask(cs::kNoSavedConsists, Buttons::YesNo, Icon::Question, "Saved Consists") != Answer::Yes) {
            m_opened = false;
            return;
        }
    } else if (!o.ok()) {
        // Refused: the screen stays with an empty grid.
        m_ctx.ui().message(cs::consistTemplatesFile(m_ctx).string() + "\n" + o.error, Icon::Warning);
    }
    if (!o.missing.empty()) {
        std::string list = std::string(cs::kMissingStock) + ":\n";
        for (const std::string& m : o.missing)
            list += "\n" + m;
        m_ctx.ui().message(list, Icon::Warning, cs::kMissingTitle);
    }
    showRows();
    const auto index = m_ctx.reports() / "Index.csv";
    if (!FileExists(index))
        m_ctx.ui().message(cs::kNoIndexAtStart, Icon::Information);
    else
        loadIndex(index);
}

void frmConsistBuilder::loadIndex(const std::filesystem::path& file) {
    std::vector<assets::AssetRow> rows;
    std::string error;
    if (!cs::loadPool(file, rows, error)) {
        m_ctx.ui().message(error, Icon::Warning);
        return;
    }
    m_index->setRowCount(0);
    appendAssetRows(m_index, rows);
    m_lastHit = -1;
}

void frmConsistBuilder::showRows() {
    const auto& rows = m_builder.rows();
    const auto numbers = m_builder.consistNumbers();
    m_grid->setRowCount(static_cast<int>(rows.size()));
    const QPalette p = m_grid->palette();
    for (std::size_t r = 0; r < rows.size(); ++r) {
        const bool missing = m_builder.rowMissing(m_ctx, r);
        auto cells = rows[r].cells();
        cells[0] = utf8FromDocument(cs::shownName(cells[0]));
        for (std::size_t c = 3; c <= 5; ++c)
            cells[c] = utf8FromDocument(cs::shownName(cells[c]));
        cells.push_back(missing ? "missing" : "");
        for (std::size_t c = 0; c < cells.size(); ++c) {
            auto* item = new QTableWidgetItem(toQt(cells[c]));
            item->setBackground(shade(p, numbers[r], missing));
            item->setForeground(p.color(QPalette::Text));
            m_grid->setItem(static_cast<int>(r), static_cast<int>(c), item);
        }
    }
    m_grid->resizeColumnsToContents();
    m_status->setText(m_builder.unsaved() ? tr("Not saved") : QString());
}

std::vector<std::size_t> frmConsistBuilder::selectedGridRows() const {
    std::set<std::size_t> rows;
    for (const QModelIndex& i : m_grid->selectionModel()->selectedRows())
        rows.insert(static_cast<std::size_t>(i.row()));
    return {rows.begin(), rows.end()};
}

std::vector<assets::AssetRow> frmConsistBuilder::indexRows(bool selectedOnly) const {
    std::set<int> wanted;
    if (selectedOnly)
        for (const QModelIndex& i : m_index->selectionModel()->selectedRows())
            wanted.insert(i.row());
    std::vector<assets::AssetRow> out;
    for (int r = 0; r < m_index->rowCount(); ++r) {
        if (selectedOnly && !wanted.count(r))
            continue;
        std::string c[8];
        for (int k = 0; k < 8; ++k)
            c[k] = m_index->item(r, k) ? fromQt(m_index->item(r, k)->text()) : std::string();
        out.push_back({c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7]});
    }
    return out;
}

void frmConsistBuilder::Command2_Click() {
    const auto selected = indexRows(true);
    if (selected.empty()) {
        m_ctx.ui().message(cs::kNoStockSelected);
        return;
    }
    std::string problems;
    for (const auto& row : selected) {
        std::string error;
        if (const auto stock = cs::stockFromIndexRow(row, error))
            m_builder.addStock(*stock);
        else
            problems += error + "\n";
    }
    if (!problems.empty())
        m_ctx.ui().message(problems, Icon::Warning);
    showRows();
    // Without a consist being built the stock is only kept, for Insert after Selected.
    if (!m_builder.building())
        m_status->setText(tr("Kept for Insert after Selected; Add New Consist starts a consist."));
    if (m_grid->rowCount())
        m_grid->scrollToBottom();
}

void frmConsistBuilder::Command3_Click() {
    const QString wanted = m_find->text();
    if (wanted.isEmpty())
        return;
    const int rows = m_index->rowCount();
    for (int n = 1; n <= rows; ++n) {
        const int r = (m_lastHit + n) % rows;
        const QTableWidgetItem* name = m_index->item(r, 3);
        if (name && name->text().contains(wanted, Qt::CaseInsensitive)) {
            m_lastHit = r;
            m_index->selectRow(r);
            m_index->scrollToItem(m_index->item(r, 0));
            return;
        }
    }
}

void frmConsistBuilder::Command8_Click() {
    const cs::SaveResult r = m_builder.save(m_ctx);
    m_ctx.ui().message(r.message + (r.detail.empty() ? "" : "\n\n" + r.detail), r ? Icon::Information : Icon::Warning);
    showRows();
}

bool frmConsistBuilder::mayLeave() {
    return !m_builder.unsaved() || m_ctx.ui().ask(cs::kUnsavedExit, Buttons::YesNo) == Answer::Yes;
}

void frmConsistBuilder::Command1_Click() {
    if (!mayLeave())
        return;
    m_leaving = true;
    close();
    m_leaving = false;
}

void frmConsistBuilder::closeEvent(QCloseEvent* event) {
    if (m_leaving || mayLeave())
        event->accept();
    else
        event->ignore();
}

void frmConsistBuilder::mnuSelIndex_Click() {
    if (const auto file = m_ctx.ui().chooseFile({"Select Index File", m_ctx.reports(), cs::kPoolFilter, false}))
        loadIndex(*file);
}

void frmConsistBuilder::mnuPool_Click() {
    if (const auto file = m_ctx.ui().chooseFile({cs::kPoolTitle, m_ctx.reports(), cs::kPoolFilter, false}))
        loadIndex(*file);
}

bool frmConsistBuilder::askName() {
    const auto name = m_ctx.ui().inputText(cs::kConsistNamePrompt, cs::kConsistNameTitle);
    return name && m_builder.startConsist(*name);
}

void frmConsistBuilder::mnuNew_Click() {
    if (askName())
        m_ctx.ui().message(cs::kNewConsistHint);
}

void frmConsistBuilder::mnuInsert_Click() {
    // Stock selected in the top box is what goes in; else the stock added last.
    const auto selected = indexRows(true);
    std::string error;
    if (!selected.empty())
        if (const auto stock = cs::stockFromIndexRow(selected.back(), error))
            m_builder.setLastStock(*stock);
    if (const std::string refused = m_builder.insertAfter(selectedGridRows()); !refused.empty())
        m_ctx.ui().message(refused);
    showRows();
}

void frmConsistBuilder::mnuMulti_Click() {
    const auto typed = m_ctx.ui().inputText(cs::kMultiPrompt, cs::kMultiTitle);
    bool number = false;
    const int count = typed ? toQt(*typed).trimmed().toInt(&number) : 0;
    // Zero, nothing or no number cancels.
    if (!number || count <= 0)
        return;
    const auto selected = indexRows(true);
    std::string error;
    if (!selected.empty())
        if (const auto stock = cs::stockFromIndexRow(selected.back(), error))
            m_builder.setLastStock(*stock);
    if (const std::string refused = m_builder.insertAfter(selectedGridRows(), std::min(count, 1000));
        !refused.empty())
        m_ctx.ui().message(refused);
    showRows();
}

void frmConsistBuilder::mnuFlip_Click() {
    m_builder.flip(selectedGridRows());
    showRows();
}

void frmConsistBuilder::mnuDel_Click() {
    m_builder.remove(selectedGridRows());
    showRows();
}

void frmConsistBuilder::mnuRename_Click() {
    const auto rows = selectedGridRows();
    if (rows.empty()) {
        m_ctx.ui().message(cs::kNoPlaceSelected);
        return;
    }
    const auto name = m_ctx.ui().inputText(cs::kConsistNamePrompt, tr("Rename Consist").toStdString(),
                                           utf8FromDocument(cs::shownName(m_builder.rows()[rows.front()].name)));
    if (name && m_builder.rename(rows.front(), *name))
        showRows();
}

void frmConsistBuilder::mnuClear_Click() {
    m_builder.clear();
    showRows();
}

void frmConsistBuilder::mnuGenCon_Click() {
    if (!askName())
        return;
    dlgConGen dialog(this);
    if (onConGen)
        QTimer::singleShot(0, &dialog, [this, &dialog] { onConGen(dialog); });
    if (dialog.exec() != QDialog::Accepted)
        return;
    const int wagons = dialog.wagons()->text().toInt();
    const int randomness = dialog.randomness()->text().toInt();
    std::vector<std::string> problems;
    m_builder.generate(indexRows(false), wagons, randomness, m_random, &problems);
    if (!problems.empty()) {
        std::string text;
        for (const auto& p : problems)
            text += p + "\n";
        m_ctx.ui().message(text, Icon::Warning);
    }
    showRows();
}

} // namespace velmora::ui
