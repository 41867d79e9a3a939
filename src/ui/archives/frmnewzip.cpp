#include "frmnewzip.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/mnemonics.h"
#include "../common/windowplace.h"
#include "menuentry.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

#include <algorithm>

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSlider>
#include <QStatusBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

frmNewZip::frmNewZip(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmNewZip");
    setWindowTitle(tr("New Zip Archive"));
    m_menus = new QMenuBar(this);
    QMenu* file = m_menus->addMenu(tr("&File"));
    file->setObjectName("mnuFile");
    addMenuEntry(file, "mnuNew", tr("New Archive"), this, &frmNewZip::mnuNew_Click);
    addMenuEntry(file, "mnuMulti", tr("New Multi-Part Archive"), this, &frmNewZip::mnuMulti_Click);
    addMenuEntry(file, "mnuClose", tr("Close"), this, &frmNewZip::mnuClose_Click);
    QMenu* add = m_menus->addMenu(tr("&Add"));
    add->setObjectName("mnuAddMenu");
    addMenuEntry(add, "mnuAdd", tr("Add"), this, &frmNewZip::mnuAdd_Click);
    addMenuEntry(add, "mnuAddFiles", tr("Add Files"), this, &frmNewZip::mnuAdd_Click);
    addMenuEntry(add, "mnuAddFold", tr("Add Folder"), this, &frmNewZip::mnuAddFold_Click);
    addMenuEntry(add, "mnuProcess", tr("Process"), this, [this] { Command2_Click(); });

    m_grid = new QTableWidget(0, 2);
    m_grid->setObjectName("VSFG1");
    m_grid->setHorizontalHeaderLabels({tr("File or Folder"), tr("Kind")});
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->verticalHeader()->setVisible(false);
    m_grid->horizontalHeader()->setStretchLastSection(true);

    m_wildcards = new QLineEdit("*.*");
    m_wildcards->setObjectName("Text1");
    m_level = new QSlider(Qt::Horizontal);
    m_level->setObjectName("Slider1");
    m_level->setRange(0, 9);
    m_level->setValue(6);
    m_level->setToolTip(tr("0 None to 9 Highest (but slow)"));
    m_levelLabel = new QLabel;
    m_levelLabel->setObjectName("Label2");
    connect(m_level, &QSlider::valueChanged, this, &frmNewZip::showLevel);
    showLevel(m_level->value());
    m_multiple = new QCheckBox(tr("Produce multiple Zip files?"));
    m_multiple->setObjectName("Check2");
    m_partSize = new QLineEdit;
    m_partSize->setObjectName("Text2");
    m_partSize->setPlaceholderText(tr("Approx. size of each .zip in Mbytes."));
    m_subFolders = new QCheckBox(tr("Include Sub-Directories"));
    m_subFolders->setObjectName("Check1_1");
    m_subFolders->setChecked(true);
    m_fullPath = new QCheckBox(tr("Fullpath"));
    m_fullPath->setObjectName("Check1_2");
    m_fullPath->setToolTip(tr("Entries named by their whole path rather than below the folder added"));

    auto* process = new QPushButton(tr("Process"));
    process->setObjectName("Command2");
    connect(process, &QPushButton::clicked, this, [this] { Command2_Click(); });
    auto* exit = new QPushButton(caption(m_ctx, 9, "Exit"));
    exit->setObjectName("Command3");
    connect(exit, &QPushButton::clicked, this, &QDialog::accept);

    auto* bar = new QStatusBar;
    bar->setObjectName("StatusBar1");
    bar->setSizeGripEnabled(false);
    m_status = new QLabel;
    bar->addWidget(m_status, 1);

    auto* form = new QFormLayout;
    form->addRow(tr("Wildcards"), m_wildcards);
    form->addRow(m_levelLabel, m_level);
    auto* parts = new QHBoxLayout;
    parts->addWidget(m_multiple);
    parts->addWidget(m_partSize, 1);
    form->addRow(parts);
    auto* checks = new QHBoxLayout;
    checks->addWidget(m_subFolders);
    checks->addWidget(m_fullPath);
    checks->addStretch(1);
    form->addRow(checks);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(process);
    buttons->addWidget(exit);
    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(m_menus);
    layout->addWidget(m_grid, 1);
    layout->addLayout(form);
    layout->addLayout(buttons);
    layout->addWidget(bar);
    assignMnemonics(m_menus);
    rememberPlace(m_ctx, this, objectName(), {700, 500});
}

QString frmNewZip::statusText() const { return m_status->text(); }

void frmNewZip::showLevel(int level) { m_levelLabel->setText(tr("Compression Level = ") + QString::number(level)); }

void frmNewZip::addInput(const fs::path& path) {
    if (std::find(m_inputs.begin(), m_inputs.end(), path) != m_inputs.end())
        return;
    m_inputs.push_back(path);
    const int row = m_grid->rowCount();
    m_grid->insertRow(row);
    m_grid->setItem(row, 0, new QTableWidgetItem(toQt(path.string())));
    std::error_code ec;
    m_grid->setItem(row, 1, new QTableWidgetItem(fs::is_directory(path, ec) ? tr("Folder") : tr("File")));
    m_grid->resizeColumnToContents(0);
}

archives::ZipCreateOptions frmNewZip::options() const {
    archives::ZipCreateOptions o;
    o.level = m_level->value();
    o.wildcards = fromQt(m_wildcards->text().trimmed());
    if (o.wildcards.empty())
        o.wildcards = "*.*";
    o.subFolders = m_subFolders->isChecked();
    o.fullPath = m_fullPath->isChecked();
    if (m_multiple->isChecked())
        o.volumeBytes = static_cast<std::uint64_t>(m_partSize->text().trimmed().toDouble() * 1024 * 1024);
    return o;
}

void frmNewZip::mnuNew_Click() {
    const auto name = m_ctx.ui().inputText("Enter a name for the new archive", "New Archive", "");
    if (!name || name->empty())
        return;
    fs::path out(*name);
    if (!iendsWith(out.filename().string(), ".zip"))
        out += ".zip";
    if (out.is_relative())
        out = m_ctx.railWorks() / out;
    m_out = out;
    mnuClose_Click();
    setWindowTitle(toQt("Zip - " + m_out.string()));
}

void frmNewZip::mnuMulti_Click() {
    const auto size = m_ctx.ui().inputText("Enter approx. section length in Mb", "Multi-Part Zip", "10");
    if (!size)
        return;
    m_multiple->setChecked(true);
    m_partSize->setText(toQt(*size));
}

void frmNewZip::mnuClose_Click() {
    m_inputs.clear();
    m_grid->setRowCount(0);
    m_status->clear();
}

void frmNewZip::mnuAdd_Click() {
    FileRequest request{"Choose File(s) to Add", m_ctx.railWorks(), "All files (*.*)|*.*", false};
    const auto chosen = m_ctx.ui().chooseFile(request);
    if (chosen && !chosen->empty())
        addInput(*chosen);
}

void frmNewZip::mnuAddFold_Click() {
    const auto folder = m_ctx.ui().chooseFolder("Select folder to add", m_ctx.railWorks());
    if (folder && !folder->empty())
        addInput(*folder);
}

bool frmNewZip::Command2_Click() {
    if (m_multiple->isChecked() && m_partSize->text().trimmed().toDouble() <= 0) {
        m_ctx.ui().message("You have selected 'Produce multiple Zips', but have not entered a\n"
                           "                     file size. Please do so, then try again.",
                           Icon::Information);
        return false;
    }
    if (m_inputs.empty()) {
        m_ctx.ui().message("Add the files or folders that are to go in the zip file first.", Icon::Information);
        return false;
    }
    FileRequest request{"Zip File name:  ", m_out.empty() ? m_ctx.railWorks() : m_out, "Zip|*.zip", true};
    const auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return false;
    fs::path out = *chosen;
    if (!iendsWith(out.filename().string(), ".zip"))
        out += ".zip";
    if (m_ctx.ui().ask("Click OK to start processing zip file (may take a little time)", Buttons::OkCancel) !=
        Answer::Ok)
        return false;
    const archives::ZipCreateOptions o = options();
    m_result = {};
    runInBackground(m_ctx, "Making " + out.filename().string(), [&](UserInterface& ui) {
        JournalCommand command(m_ctx.files().journal(), "Zip " + out.string());
        m_result = archives::createZip(m_ctx.files(), out, m_inputs, o, &ui);
    });
    if (m_result.cancelled) {
        m_status->setText(tr("Stopped: no zip file was made"));
        return false;
    }
    if (!m_result.ok) {
        m_status->setText(tr("An Error Occurred"));
        m_ctx.ui().message("An Error Occurred\n" + m_result.message, Icon::Warning);
        return false;
    }
    m_status->setText(tr("%n file(s) in ", nullptr, static_cast<int>(m_result.files)) +
                      toQt(m_result.parts.empty() ? out.string() : m_result.parts.front().string()) +
                      (m_result.parts.size() > 1 ? tr(" and %n more part(s)", nullptr, static_cast<int>(m_result.parts.size() - 1))
                                                 : QString()));
    if (!m_result.skipped.empty()) {
        std::string text = "Made " + out.string() + ", without:\n";
        for (const std::string& s : m_result.skipped)
            text += "  " + s + "\n";
        m_ctx.ui().message(text, Icon::Warning);
    }
    return true;
}

} // namespace velmora::ui
