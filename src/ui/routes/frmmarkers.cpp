#include "frmmarkers.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/windowplace.h"
#include "frmmkre.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

namespace velmora::ui {

frmMarkers::frmMarkers(AppContext& ctx, int markerMode, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_mode(markerMode) {
    setObjectName("frmMarkers");
    setWindowTitle(m_mode == 2 ? tr("Select the .dcsv files to improve")
                               : tr("Select Folder for saving your Markers"));
    rememberPlace(ctx, this, objectName(), {760, 560});
    m_text1 = new QLineEdit;
    m_text1->setObjectName("Text1");
    m_dir1 = new QLineEdit;
    m_dir1->setObjectName("Dir1");
    m_file1 = new QListWidget;
    m_file1->setObjectName("File1");
    m_file1->setSelectionMode(QAbstractItemView::ExtendedSelection);
    connect(m_dir1, &QLineEdit::editingFinished, this, &frmMarkers::listFiles);

    auto button = [this](const char* name, const QString& caption, void (frmMarkers::*slot)()) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    auto* folders = new QGridLayout;
    folders->addWidget(new QLabel(tr("Save folder")), 0, 0);
    folders->addWidget(m_text1, 0, 1);
    folders->addWidget(button("Command2", tr("Browse..."), &frmMarkers::Command2_Click), 0, 2);
    folders->addWidget(new QLabel(tr("Marker files in")), 1, 0);
    folders->addWidget(m_dir1, 1, 1);
    folders->addWidget(button("Command7", tr("Browse..."), &frmMarkers::Command7_Click), 1, 2);

    auto* sliders = new QGridLayout;
    const char* colours[] = {"Red", "Green", "Blue"};
    for (int i = 0; i < 3; ++i) {
        m_scroll[i] = new QScrollBar(Qt::Horizontal);
        m_scroll[i]->setObjectName(QString("HScroll1_%1").arg(i));
        m_scroll[i]->setRange(0, 255);
        m_label3[i] = new QLabel(toQt(routes::colourText(0)));
        m_label3[i]->setObjectName(QString("Label3_%1").arg(i));
        connect(m_scroll[i], &QScrollBar::valueChanged, this, &frmMarkers::HScroll1_Change);
        sliders->addWidget(new QLabel(tr(colours[i])), i, 0);
        sliders->addWidget(m_scroll[i], i, 1);
        sliders->addWidget(m_label3[i], i, 2);
    }

    auto* commands = new QHBoxLayout;
    commands->addWidget(button("Command4", tr("Proceed"), &frmMarkers::Command4_Click));
    commands->addWidget(button("Command1", tr("Select All"), &frmMarkers::Command1_Click));
    commands->addWidget(m_process = button("Command3", tr("Process"), &frmMarkers::Command3_Click));
    commands->addWidget(m_full = button("Command6", tr("Convert Fully"), &frmMarkers::Command6_Click));
    commands->addWidget(m_dcsv = button("Command5", tr("Process DCSV"), &frmMarkers::Command5_Click));
    commands->addWidget(button("Command8", tr("Make Blueprint"), &frmMarkers::Command8_Click));

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(folders);
    layout->addWidget(m_file1, 1);
    layout->addLayout(sliders);
    layout->addLayout(commands);

    // The mode: which files the list shows and which commands work on them.
    if (m_mode == 2) {
        m_pattern = "*.dcsv";
        m_process->hide();
        m_full->hide();
        m_dir1->setText(
            toQt(ctx.railWorks().string().empty() ? std::string() : (ctx.railWorks() / "Assets").string()));
    } else {
        // Process DCSV works on the .dcsv list of its own mode; Process only where GPS files are listed.
        m_dcsv->hide();
        m_process->setVisible(m_mode == 1);
        m_pattern = m_mode == 4 ? "*.csv" : "*.kml;*.gpx;*.wpt;*.mkr;*.csv";
    }
    if (m_mode == 4)
        m_kinds = {"csv"};
    else if (m_mode == 2)
        m_kinds = {};
    else
        m_kinds = {"kml", "gpx", "wpt", "mkr", "csv"};
}

routes::MarkerColour frmMarkers::colour() const {
    return {m_scroll[0]->value(), m_scroll[1]->value(), m_scroll[2]->value()};
}

void frmMarkers::HScroll1_Change() {
    for (int i = 0; i < 3; ++i)
        m_label3[i]->setText(toQt(routes::colourText(m_scroll[i]->value())));
}

void frmMarkers::Command2_Click() {
    if (const auto folder =
            m_ctx.ui().chooseFolder("Select Folder for saving your Markers", fromQt(m_text1->text())))
        m_text1->setText(toQt(folder->string()));
}

void frmMarkers::Command7_Click() {
    if (const auto folder =
            m_ctx.ui().chooseFolder("Select the folder of your Marker Files", fromQt(m_dir1->text()))) {
        m_dir1->setText(toQt(folder->string()));
        listFiles();
    }
}

void frmMarkers::Command4_Click() {
    MakePath(m_ctx.tempFiles());
    if (m_mode != 2)
        m_ctx.ui().message("Now select your Marker Files\n(Must NOT be in the folder you are saving to).");
    listFiles();
}

void frmMarkers::listFiles() {
    m_file1->clear();
    const std::filesystem::path folder = fromQt(m_dir1->text());
    if (folder.empty())
        return;
    std::vector<std::filesystem::path> files;
    if (m_mode == 2) {
        std::error_code ec;
        for (std::filesystem::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec))
            if (entryKind(*it) == EntryKind::File && iendsWith(it->path().filename().string(), ".dcsv"))
                files.push_back(it->path());
        std::sort(files.begin(), files.end());
    } else {
        files = routes::markerFilesIn(folder, m_kinds);
    }
    for (const auto& f : files)
        m_file1->addItem(toQt(f.filename().string()));
}

void frmMarkers::Command1_Click() {
    m_file1->selectAll();
}

std::vector<std::filesystem::path> frmMarkers::selectedFiles() const {
    std::vector<std::filesystem::path> out;
    const std::filesystem::path folder = fromQt(m_dir1->text());
    for (int r = 0; r < m_file1->count(); ++r)
        if (m_file1->item(r)->isSelected())
            out.push_back(folder / fromQt(m_file1->item(r)->text()));
    return out;
}

void frmMarkers::showReport(const routes::MarkerReport& report, const QString& title) {
    m_last = report;
    if (!report.problems.empty()) {
        std::string text;
        for (const auto& p : report.problems)
            text += p + "\r\n";
        frmReport::show(m_ctx, title, text, this);
    }
    if (!report.message.empty())
        m_ctx.ui().message(report.message, report.ok ? Icon::Information : Icon::Warning);
}

void frmMarkers::convert(bool csvOnly) {
    const auto files = selectedFiles();
    if (files.empty()) {
        m_ctx.ui().message("Now select your Marker Files\n(Must NOT be in the folder you are saving to).");
        return;
    }
    routes::ConvertOptions options;
    options.saveFolder = fromQt(m_text1->text().trimmed());
    options.csvOnly = csvOnly;
    options.colour = colour();
    routes::MarkerReport report;
    setEnabled(false);
    const bool finished = runInBackground(m_ctx, csvOnly ? "Process" : "Convert Fully", [&](UserInterface&) {
        report = routes::convertMarkers(m_ctx, files, options);
    });
    setEnabled(true);
    report.aborted = report.aborted || !finished;
    showReport(report, csvOnly ? tr("Process") : tr("Convert Fully"));
}

void frmMarkers::Command3_Click() {
    convert(true);
}

void frmMarkers::Command6_Click() {
    convert(false);
}

void frmMarkers::Command5_Click() {
    std::vector<std::filesystem::path> files;
    for (const auto& f : selectedFiles())
        if (iendsWith(f.filename().string(), ".dcsv"))
            files.push_back(f);
    if (files.empty()) {
        m_ctx.ui().message("Select the .dcsv files whose precision is to be improved.");
        return;
    }
    routes::MarkerReport report;
    setEnabled(false);
    runInBackground(m_ctx, "Process DCSV",
                    [&](UserInterface&) { report = routes::improveDcsv(m_ctx, files); });
    setEnabled(true);
    showReport(report, tr("Process DCSV"));
}

void frmMarkers::Command8_Click() {
    auto* screen = new frmBlue(m_ctx, this);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    screen->show();
}

} // namespace velmora::ui
