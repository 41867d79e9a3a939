#include "frmnewap.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/mnemonics.h"
#include "../common/windowplace.h"
#include "../routes/frmlistrs.h"
#include "apgrid.h"
#include "frmnewzip.h"
#include "menuentry.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>

namespace velmora::ui {

namespace {
const char* const kNoArchive = "You must Open an Archive before you can\n            ";
}

frmNewAP::frmNewAP(AppContext& ctx, EditorOpener openInEditor, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_openInEditor(std::move(openInEditor)) {
    setObjectName("frmNewAP");
    setWindowTitle(tr("Archive"));
    m_menus = new QMenuBar(this);
    QMenu* file = m_menus->addMenu(tr("&File"));
    file->setObjectName("mnuFile");
    addMenuEntry(file, "mnuOpen", tr("Open Archive"), this, &frmNewAP::mnuOpen_Click);
    addMenuEntry(file, "mnuClose", tr("Close Archive"), this, &frmNewAP::mnuClose_Click);
    file->addSeparator();
    addMenuEntry(file, "mnuFindAP", tr("Find .ap files"), this, [this] { mnuFindAP_Click(); });
    // Its sister screen, for making zip files.
    addMenuEntry(file, "mnuNewZip", tr("Make a Zip File"), this, [this] {
        auto* maker = new frmNewZip(m_ctx, this);
        maker->setAttribute(Qt::WA_DeleteOnClose);
        maker->show();
    });
    QMenu* extract = m_menus->addMenu(tr("&Extract"));
    extract->setObjectName("mnuExtract");
    addMenuEntry(extract, "mnuExt", tr("Extract All"), this, &frmNewAP::mnuExt_Click);
    addMenuEntry(extract, "mnuExtCur", tr("Extract ALL  to Same Folder as .AP"), this, &frmNewAP::mnuExtCur_Click);
    addMenuEntry(extract, "mnuExtSel", tr("Extract Selected"), this, &frmNewAP::mnuExtSel_Click);
    addMenuEntry(extract, "mnuSelAP", tr("Extract Selected to same folder as .AP"), this, &frmNewAP::mnuSelAP_Click);
    QMenu* find = m_menus->addMenu(tr("F&ind"));
    find->setObjectName("mnuFindMenu");
    addMenuEntry(find, "mnuFind", tr("Find File"), this, &frmNewAP::mnuFind_Click);
    addMenuEntry(find, "mnuFindFiles", tr("Find Files"), this, &frmNewAP::mnuFind_Click);
    addMenuEntry(find, "mnuAPOpen", tr("Open .bin"), this, &frmNewAP::mnuAPOpen_Click);

    m_grid = new QTableWidget(0, 5);
    m_grid->setObjectName("VSFG1");
    // The grid's format: index and name to the left, the sizes to the right.
    m_grid->setProperty("FormatString", "<Index |<File Name |>Size |>Packed Size |<Date");
    m_grid->setHorizontalHeaderLabels({tr("Index"), tr("File Name"), tr("Size"), tr("Packed Size"), tr("Date")});
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_grid->verticalHeader()->setVisible(false);
    m_grid->horizontalHeader()->setStretchLastSection(true);
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QTableWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        const int row = m_grid->rowAt(at.y());
        if (row >= 0)
            openEntry(row);
    });

    m_fullPath = new QCheckBox(tr("Fullpath"));
    m_fullPath->setObjectName("Check1");
    m_fullPath->setChecked(true);
    m_fullPath->setToolTip(tr("Extracted files keep the folders they have in the archive"));
    auto* refresh = new QPushButton(tr("Refresh"));
    refresh->setObjectName("Command1");
    auto* exit = new QPushButton(caption(m_ctx, 9, "Exit"));
    exit->setObjectName("Command3");
    connect(refresh, &QPushButton::clicked, this, &frmNewAP::Command1_Click);
    connect(exit, &QPushButton::clicked, this, &QDialog::accept);

    auto* bar = new QStatusBar;
    bar->setObjectName("StatusBar1");
    bar->setSizeGripEnabled(false);
    m_files = new QLabel(tr("Files: "));
    m_dirs = new QLabel(tr("Dirs: "));
    m_status = new QLabel;
    bar->addWidget(m_status, 1);
    bar->addPermanentWidget(m_files);
    bar->addPermanentWidget(m_dirs);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_fullPath);
    buttons->addStretch(1);
    buttons->addWidget(refresh);
    buttons->addWidget(exit);
    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(m_menus);
    layout->addWidget(m_grid, 1);
    layout->addLayout(buttons);
    layout->addWidget(bar);
    assignMnemonics(m_menus);
    rememberPlace(m_ctx, this, objectName(), {800, 550});
}

QString frmNewAP::statusText() const { return m_status->text() + " | " + m_files->text() + " | " + m_dirs->text(); }

std::vector<fs::path> frmNewAP::splitParts(const fs::path& file) {
    // The name less its last three characters, then "z01" to "z99".
    const std::string name = file.filename().string();
    const std::string base = name.size() > 3 ? name.substr(0, name.size() - 3) : name;
    std::vector<fs::path> parts;
    for (int n = 1; n <= 99; ++n) {
        char suffix[8];
        std::snprintf(suffix, sizeof suffix, "z%02d", n);
        const fs::path part = file.parent_path() / (base + suffix);
        if (FileExists(part))
            parts.push_back(part);
    }
    return parts;
}

bool frmNewAP::openArchive(const fs::path& file) {
    if (const auto parts = splitParts(file); !parts.empty()) {
        m_ctx.ui().message(file.string() + " is split into parts (" + parts.front().filename().string() +
                               " and on).\nSplit archives are read through 7-Zip and are not opened here.",
                           Icon::Information, "Open Archive");
        return false;
    }
    archives::ZipReader zip;
    if (!zip.open(file)) {
        m_ctx.ui().message(zip.error(), Icon::Warning, "Open Archive");
        return false;
    }
    m_zip = std::move(zip);
    m_archive = file;
    m_folder = file.parent_path();
    setWindowTitle(toQt("Archive - " + file.string()));
    fill();
    return true;
}

void frmNewAP::fill() {
    m_grid->setSortingEnabled(false);
    m_grid->setRowCount(0);
    std::uint64_t files = 0, dirs = 0;
    if (m_zip.isOpen()) {
        const auto entries = m_zip.entries();
        m_grid->setRowCount(static_cast<int>(entries.size()));
        int r = 0;
        for (const archives::ZipEntry& e : entries) {
            auto number = [](std::uint64_t v) {
                auto* item = new QTableWidgetItem;
                item->setData(Qt::DisplayRole, static_cast<qulonglong>(v));
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                return item;
            };
            QTableWidgetItem* index = number(e.index);
            index->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
            m_grid->setItem(r, 0, index);
            m_grid->setItem(r, 1, new QTableWidgetItem(toQt(archives::windowsName(e.name))));
            m_grid->setItem(r, 2, number(e.size));
            m_grid->setItem(r, 3, number(e.packed));
            m_grid->setItem(r, 4, new QTableWidgetItem(toQt(localTimeText("%Y-%m-%d %H:%M:%S", e.modified))));
            ++(e.folder ? dirs : files);
            ++r;
        }
    }
    m_files->setText(tr("Files: ") + QString::number(files));
    m_dirs->setText(tr("Dirs: ") + QString::number(dirs));
    m_grid->resizeColumnsToContents();
    m_grid->setSortingEnabled(true);
}

void frmNewAP::mnuOpen_Click() {
    FileRequest request{"Open Archive", m_ctx.railWorks(), "Archives (*.ap;*.zip)|*.ap;*.zip|All files (*.*)|*.*", false};
    const auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return;
    openArchive(*chosen);
}

void frmNewAP::mnuClose_Click() {
    m_zip.close();
    m_archive.clear();
    m_folder.clear();
    setWindowTitle(tr("Archive"));
    m_status->clear();
    fill();
}

void frmNewAP::Command1_Click() {
    if (!m_archive.empty())
        openArchive(fs::path(m_archive));
}

bool frmNewAP::needArchive(const char* doing) {
    if (m_zip.isOpen())
        return true;
    m_ctx.ui().message(std::string(kNoArchive) + doing, Icon::Critical, "Error");
    return false;
}

std::vector<std::uint64_t> frmNewAP::selectedEntries() const {
    std::vector<std::uint64_t> entries;
    for (const QModelIndex& index : m_grid->selectionModel()->selectedRows())
        if (const QTableWidgetItem* item = m_grid->item(index.row(), 0))
            entries.push_back(item->data(Qt::DisplayRole).toULongLong());
    std::sort(entries.begin(), entries.end());
    return entries;
}

void frmNewAP::extract(const fs::path& folder, const std::vector<std::uint64_t>& only) {
    archives::UnpackOptions options;
    options.mode = archives::UnpackMode::Overwrite;
    options.destination = folder;
    options.keepPaths = m_fullPath->isChecked();
    options.only = only;
    archives::UnpackResult result;
    const fs::path archive = m_archive;
    runInBackground(m_ctx, "Extracting " + archive.filename().string(), [&](UserInterface& ui) {
        JournalCommand command(m_ctx.files().journal(), "Extract from " + archive.string());
        result = archives::unpackArchive(m_ctx.files(), archive, options, &ui);
    });
    if (result.cancelled) {
        m_status->setText(tr("Extract stopped: nothing was extracted"));
        return;
    }
    m_status->setText(result.ok ? tr("Extract Completed") : tr("Extract failed"));
    // What failed, was refused or met another entry's name is shown, so that nothing goes
    // missing unseen.
    if (result.ok && result.refused.empty() && result.collisions.empty())
        return;
    std::string text = archives::describe(result);
    if (!result.ok)
        for (const std::string& r : result.refused)
            text += "  not unpacked: " + r + "\n";
    m_report = frmReport::show(m_ctx, tr("Extracted from %1").arg(toQt(archive.filename().string())), text, this);
}

std::optional<fs::path> frmNewAP::confirmedFolder(const std::string& question) {
    const auto folder = m_ctx.ui().chooseFolder("Select destination directory", m_folder);
    if (!folder || folder->empty())
        return std::nullopt;
    if (m_ctx.ui().ask(question + folder->string(), Buttons::OkCancel, Icon::Question, "Confirm Save Path") !=
        Answer::Ok)
        return std::nullopt;
    return folder;
}

std::optional<std::vector<std::uint64_t>> frmNewAP::entriesToExtract() {
    if (!needArchive("Extract anything from it!"))
        return std::nullopt;
    auto only = selectedEntries();
    if (only.empty()) {
        m_ctx.ui().message("You have not selected any items to unpack", Icon::Information);
        return std::nullopt;
    }
    return only;
}

void frmNewAP::mnuExt_Click() {
    if (!needArchive("Extract anything from it!"))
        return;
    if (const auto folder = confirmedFolder("Save to: "))
        extract(*folder, {});
}

void frmNewAP::mnuExtCur_Click() {
    if (needArchive("Extract anything from it!"))
        extract(m_folder, {});
}

void frmNewAP::mnuExtSel_Click() {
    const auto only = entriesToExtract();
    if (!only)
        return;
    if (const auto folder = confirmedFolder("Save Selected Files to: "))
        extract(*folder, *only);
}

void frmNewAP::mnuSelAP_Click() {
    if (const auto only = entriesToExtract())
        extract(m_folder, *only);
}

frmListRS* frmNewAP::mnuFindAP_Click() {
    archives::ApFindOptions options;
    options.search = archives::ApSearch::All;
    return findApScreen(m_ctx, options, tr("All .ap files in %1").arg(toQt(m_ctx.railWorks().string())), this);
}

void frmNewAP::mnuFind_Click() {
    if (!needArchive("Find anything in it!"))
        return;
    const auto text = m_ctx.ui().inputText("Search For", "Find File", "");
    if (!text || text->empty())
        return;
    const QString wanted = toQt(*text);
    std::vector<int> hits;
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (const QTableWidgetItem* name = m_grid->item(r, 1); name && name->text().contains(wanted, Qt::CaseInsensitive))
            hits.push_back(r);
    // A miss leaves the selection as it was.
    if (hits.empty()) {
        m_ctx.ui().message("The file  " + *text + "was not found.", Icon::Information);
        return;
    }
    m_grid->clearSelection();
    for (int r : hits)
        m_grid->selectionModel()->select(m_grid->model()->index(r, 0),
                                         QItemSelectionModel::Select | QItemSelectionModel::Rows);
    m_grid->scrollToItem(m_grid->item(hits.front(), 1));
}

void frmNewAP::mnuAPOpen_Click() {
    if (!needArchive("Open anything in it!"))
        return;
    const auto rows = m_grid->selectionModel()->selectedRows();
    if (rows.isEmpty()) {
        m_ctx.ui().message("Select the file to open in the grid first.", Icon::Information);
        return;
    }
    openEntry(rows.front().row());
}

bool frmNewAP::openEntry(int row) {
    const QTableWidgetItem* item = m_grid->item(row, 0);
    if (!m_zip.isOpen() || !item)
        return false;
    const std::uint64_t index = item->data(Qt::DisplayRole).toULongLong();
    const archives::ZipEntry entry = m_zip.entry(index);
    if (entry.folder)
        return false;
    // A scratch copy: no backups and no journal, overwriting the copy of an earlier opening.
    archives::UnpackOptions options;
    options.mode = archives::UnpackMode::Overwrite;
    // A folder of its own, apart from the editor's scratch copies of the documents it opens.
    options.destination = m_ctx.tempFiles() / "FromArchive";
    options.keepPaths = false;
    options.keepBackups = false;
    options.only = {index};
    MakePath(options.destination);
    const archives::UnpackResult result = archives::unpackArchive(m_ctx.files(), m_archive, options, &m_ctx.ui());
    if (!result.ok || result.written.empty()) {
        std::string why = result.error;
        for (const std::string& r : result.refused)
            why += (why.empty() ? "" : "\n") + r;
        m_ctx.ui().message(why.empty() ? archives::windowsName(entry.name) + ": could not be extracted" : why,
                           Icon::Warning, "Open");
        return false;
    }
    if (m_openInEditor)
        m_openInEditor(result.written.front(), m_archive.string() + ": " + archives::windowsName(entry.name));
    return true;
}

} // namespace velmora::ui
