#include "frmcontent.h"

#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/windowplace.h"
#include "assetgridview.h"
#include "frmedcont.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

std::vector<assets::ContentRow> contentRows(const assets::CellRows& cells) {
    std::vector<assets::ContentRow> out;
    out.reserve(cells.size());
    for (const auto& c : cells)
        out.push_back(assets::contentRowFromCells(c));
    return out;
}

// At most this many unreadable places are named in a box; more go to a report.
constexpr std::size_t kNamedInBox = 20;

} // namespace

frmContent::frmContent(AppContext& ctx, QWidget* parent)
    : ListScreen(ctx, assets::contentColumns(), "Content", parent) {
    setObjectName("frmContent");
    setWindowTitle(caption(m_ctx, 68, "Build List of Content"));
    m_root = m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Content\\Routes");

    auto* central = new QWidget;
    setCentralWidget(central);
    m_start = startFolder();
    m_start->setText(toQt(m_root.string()));
    m_mask = maskBox();
    m_mask->addItems({"*.*", "*.bin", "*.xml", "*.TgPcDx", "*.lua", "*.bak*"});

    auto* inputs = new QGridLayout;
    inputs->addWidget(new QLabel(tr("Start folder")), 0, 0);
    inputs->addWidget(m_start, 0, 1, 1, 3);
    inputs->addWidget(browseButton(), 0, 4);
    inputs->addWidget(new QLabel(caption(m_ctx, 93, "Mask:")), 1, 0);
    inputs->addWidget(m_mask, 1, 1);
    inputs->addWidget(new QLabel(caption(m_ctx, 80, "Search for:")), 2, 0);
    inputs->addWidget(findBox(), 2, 1);
    inputs->addWidget(findColumn(), 2, 2);

    auto* commands = new QGridLayout;
    int i = 0;
    for (const char* name : {"Command1", "Command5", "Command3", "Command11", "Command18", "Command2",
                             "Command14", "Command8", "Command15", "Command16", "Command10", "Command6"}) {
        commands->addWidget(listCommand(name), i / 4, i % 4);
        ++i;
    }

    auto* hint = new QLabel(tr("Double-Click in first column to view/edit file."));
    hint->setObjectName("Label1");
    connect(grid(), &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
        if (column == 0)
            openRow(row);
    });
    // A press on a row starts afresh in the scratch folder; in the first column it also opens.
    connect(grid(), &QTableWidget::cellClicked, this, [this](int row, int column) {
        m_ctx.clearTempFiles();
        if (column == 0)
            openRow(row);
    });

    auto* layout = new QVBoxLayout(central);
    layout->addLayout(inputs);
    layout->addLayout(commands);
    layout->addWidget(hideColumnsBox());
    layout->addWidget(hint);
    layout->addWidget(grid(), 1);
    layout->addLayout(countsRow());
    rememberPlace(m_ctx, this, objectName(), {1200, 800});
}

std::vector<assets::ContentRow> frmContent::rows() const {
    return contentRows(gridCells());
}

std::vector<assets::ContentRow> frmContent::selectedRows() const {
    return contentRows(selectedCells());
}

std::filesystem::path frmContent::rowFile(const assets::ContentRow& row) const {
    return m_ctx.resolver.resolveForWrite(m_root, row.relativePath());
}

std::vector<std::filesystem::path> frmContent::filesOf(const assets::CellRows& cells) const {
    std::vector<std::filesystem::path> files;
    for (const auto& row : contentRows(cells))
        if (!row.route.empty() && !row.fileName.empty())
            files.push_back(rowFile(row));
    return files;
}

void frmContent::runList(assets::ContentListOptions options) {
    m_ctx.resolver.invalidate();
    const auto result = assets::buildContentList(m_root, fromQt(m_start->text()), options, &m_ctx.ui());
    for (const auto& m : result.messages)
        m_ctx.ui().message(m, Icon::Warning, "Velmora");
    appendGridRows(assets::cellsOf(result.rows));
    if (!result.unreadable.empty()) {
        // Named in a box when they are few, in a report to scroll through when they are many.
        std::string text = "These folders or files could not be read, so the list is not complete:\n";
        for (const auto& what : result.unreadable)
            text += what + "\n";
        if (result.unreadable.size() <= kNamedInBox)
            m_ctx.ui().message(text, Icon::Warning, "Velmora");
        else
            frmReport::show(m_ctx, tr("Could not be read"), text, this);
    }
    if (!result.stopped)
        announceBuild();
    emit listBuilt();
}

void frmContent::Command1_Click() {
    assets::ContentListOptions o;
    o.mask = fromQt(m_mask->currentText());
    runList(o);
}

void frmContent::Command10_Click() {
    m_zeroLength = true;
    assets::ContentListOptions o;
    o.mask = "*.*";
    o.zeroLength = true;
    runList(o);
}

void frmContent::openRow(int row) {
    if (row < 0 || row >= grid()->rowCount())
        return;
    const auto cells = listRowCells(grid(), row);
    const std::filesystem::path file = rowFile(assets::contentRowFromCells(cells));
    m_ctx.currentFile = file.string();
    if (!m_editor) {
        m_editor = new frmEdCont(m_ctx, this);
        m_editor->setWindowFlag(Qt::Window);
        m_editor->setAttribute(Qt::WA_DeleteOnClose);
    }
    // The file already shown stays as it is, edits and all.
    if (m_editor->file() != file && !m_editor->openFile(file))
        return;
    m_editor->show();
    m_editor->raise();
}

} // namespace velmora::ui
