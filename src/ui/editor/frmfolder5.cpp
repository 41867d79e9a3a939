#include "frmfolder5.h"

#include "dlgsearch.h"
#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/doctext.h"
#include "../common/numberedview.h"
#include "velmora/core/convert.h"

#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace velmora::ui {

namespace fs = std::filesystem;

namespace {

QPushButton* commandButton(const char* name, const QString& caption) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

} // namespace

frmFolder5::frmFolder5(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmFolder5");
    setModal(true);
    setWindowTitle(caption(338, "Find in Multiple Files"));

    m_folder = new QLineEdit;
    m_folder->setObjectName("Dir1");
    auto* browse = commandButton("cmdDir1", tr("&Folder..."));
    m_pattern = new QLineEdit(QStringLiteral("*.bin"));
    m_pattern->setObjectName("Text1");
    m_files = new QListWidget;
    m_files->setObjectName("File1");
    m_files->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_what = new QLineEdit;
    m_what->setObjectName("Text2");
    m_with = new QLineEdit;
    m_with->setObjectName("Text3");
    m_preview = new NumberedView;
    m_preview->setObjectName("RichTextBox1");
    m_status = new QLabel;
    m_status->setObjectName("lblStatus");
    m_status->setWordWrap(true);

    auto* selectAll = commandButton("Command3", caption(375, "Select All"));
    auto* display = commandButton("Command7", caption(341, "Display"));
    auto* find = commandButton("Command4", tr("&Find"));
    auto* next = commandButton("Command2", caption(345, "Find Next"));
    auto* replace = commandButton("Command5", caption(342, "Replace"));
    auto* replaceAll = commandButton("Command6", caption(343, "Replace All"));
    auto* inFiles = commandButton("Command8", caption(344, "Replace in all selected files"));
    auto* asXml = commandButton("Command9", caption(305, "Save Selected as XML"));
    auto* clear = commandButton("Command1", tr("Clear All"));
    auto* close = commandButton("OKButton", tr("Close"));

    auto* left = new QGridLayout;
    left->addWidget(new QLabel(tr("Folder:")), 0, 0);
    left->addWidget(m_folder, 0, 1);
    left->addWidget(browse, 0, 2);
    left->addWidget(new QLabel(tr("Pattern:")), 1, 0);
    left->addWidget(m_pattern, 1, 1, 1, 2);
    left->addWidget(m_files, 2, 0, 1, 3);
    left->addWidget(selectAll, 3, 0);
    left->addWidget(display, 3, 1);
    left->addWidget(asXml, 3, 2);

    auto* right = new QGridLayout;
    right->addWidget(new QLabel(caption(339, "Search For:-")), 0, 0);
    right->addWidget(m_what, 0, 1, 1, 3);
    right->addWidget(new QLabel(caption(340, "Replace With:-")), 1, 0);
    right->addWidget(m_with, 1, 1, 1, 3);
    right->addWidget(find, 2, 0);
    right->addWidget(next, 2, 1);
    right->addWidget(replace, 2, 2);
    right->addWidget(replaceAll, 2, 3);
    right->addWidget(inFiles, 3, 0, 1, 2);
    right->addWidget(clear, 3, 2);
    right->addWidget(close, 3, 3);
    right->addWidget(m_preview, 4, 0, 1, 4);
    right->addWidget(m_status, 5, 0, 1, 4);

    auto* layout = new QHBoxLayout(this);
    layout->addLayout(left, 1);
    layout->addLayout(right, 2);

    connect(browse, &QPushButton::clicked, this, [this] {
        const QString dir = QFileDialog::getExistingDirectory(this, tr("Folder"), m_folder->text());
        if (!dir.isEmpty()) {
            m_folder->setText(dir);
            Dir1_Click();
        }
    });
    connect(m_folder, &QLineEdit::editingFinished, this, &frmFolder5::Dir1_Click);
    connect(m_pattern, &QLineEdit::textChanged, this, &frmFolder5::Text1_Change);
    connect(selectAll, &QPushButton::clicked, this, &frmFolder5::Command3_Click);
    connect(display, &QPushButton::clicked, this, &frmFolder5::Command7_Click);
    connect(find, &QPushButton::clicked, this, &frmFolder5::Command4_Click);
    connect(next, &QPushButton::clicked, this, &frmFolder5::Command2_Click);
    connect(replace, &QPushButton::clicked, this, &frmFolder5::Command5_Click);
    connect(replaceAll, &QPushButton::clicked, this, &frmFolder5::Command6_Click);
    connect(inFiles, &QPushButton::clicked, this, &frmFolder5::Command8_Click);
    connect(asXml, &QPushButton::clicked, this, &frmFolder5::Command9_Click);
    connect(clear, &QPushButton::clicked, this, &frmFolder5::Command1_Click);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);

    // Form_Load: the simulator's folder when it is known; the preview stays empty.
    const fs::path root = m_ctx.railWorks();
    m_folder->setText(toQt((root.empty() ? fs::path(QDir::homePath().toStdString()) : root).string()));
    Dir1_Click();
    resize(900, 600);
}

frmFolder5::~frmFolder5() = default;

QString frmFolder5::caption(int entry, const char* english) const {
    const std::string text = m_ctx.lang.has(entry) ? m_ctx.lang.text(entry) : std::string();
    return text.empty() ? tr(english) : toQt(text);
}

std::vector<fs::path> frmFolder5::selectedFiles() const {
    std::vector<fs::path> files;
    const fs::path folder = fromQt(m_folder->text());
    for (int i = 0; i < m_files->count(); ++i)
        if (m_files->item(i)->isSelected())
            files.push_back(folder / fromQt(m_files->item(i)->text()));
    return files;
}

void frmFolder5::Dir1_Click() {
    m_files->clear();
    const QString pattern = m_pattern->text().trimmed().isEmpty() ? QStringLiteral("*.*") : m_pattern->text().trimmed();
    QDir dir(m_folder->text());
    dir.setNameFilters(pattern.split(QLatin1Char(';'), Qt::SkipEmptyParts));
    dir.setFilter(QDir::Files | QDir::Hidden);
    dir.setSorting(QDir::Name | QDir::IgnoreCase);
    m_files->addItems(dir.entryList());
}

void frmFolder5::Text1_Change() { Dir1_Click(); }

void frmFolder5::Command3_Click() { m_files->selectAll(); }

void frmFolder5::Command7_Click() {
    const auto files = selectedFiles();
    if (files.empty())
        return;
    std::string xml;
    if (const ConvertResult r = binToXmlText(files.front(), xml); !r) {
        m_ctx.ui().message(r.message.empty() ? files.front().string() + ": cannot be read" : r.message, Icon::Warning);
        return;
    }
    TextForm form;
    m_preview->setPlainText(decodeDocument(xml, form));
}

dlgSearch& frmFolder5::search() {
    if (!m_search)
        m_search = std::make_unique<dlgSearch>(m_preview, m_ctx.ui());
    m_search->searchBox()->setText(m_what->text());
    m_search->replacementBox()->setText(m_with->text());
    return *m_search;
}

bool frmFolder5::Command4_Click() { return search().Command4_Click(); }
bool frmFolder5::Command2_Click() { return search().Command2_Click(); }
void frmFolder5::Command5_Click() { search().Command5_Click(); }
void frmFolder5::Command6_Click() { search().Command6_Click(); }

void frmFolder5::Command8_Click() {
    const auto files = selectedFiles();
    if (files.empty())
        return;
    MultiReplaceOptions options;
    options.find = fromQt(m_what->text());
    options.replacement = fromQt(m_with->text());
    MultiReplaceResult result;
    const bool finished = runInBackground(m_ctx, options.command, [&](UserInterface& ui) {
        result = replaceInFiles(m_ctx, files, options, &ui);
    });
    m_lastRun = result;
    // The preview shows the last document of the run, as the conversion left it.
    if (!result.files.empty()) {
        std::string xml;
        if (binToXmlText(result.files.back().file, xml)) {
            TextForm form;
            m_preview->setPlainText(decodeDocument(xml, form));
        }
    }
    m_status->setText(toQt(describe(result)));
    if (!finished || result.stopped)
        return;
    // One box for the documents that did not encode again, not one a document.
    std::string notEncoded;
    for (const FileReplace& f : result.files)
        if (f.state == FileReplace::State::NotEncoded)
            notEncoded += f.file.string() + "\n";
    if (!notEncoded.empty())
        m_ctx.ui().message(std::string(kNotRecompressed) + "\n\n" + notEncoded, Icon::Warning);
    const bool otherFailures = std::any_of(result.files.begin(), result.files.end(), [](const FileReplace& f) {
        return f.state == FileReplace::State::Unreadable || f.state == FileReplace::State::NotWritten;
    });
    if (!result.error.empty())
        m_ctx.ui().message(result.error, Icon::Warning);
    else if (otherFailures)
        m_ctx.ui().message(describe(result), Icon::Warning);
}

void frmFolder5::Command9_Click() {
    const auto files = selectedFiles();
    if (files.empty())
        return;
    if (m_ctx.ui().ask("This option will save all selected files in .xml format\nin Velmora\\TempXML existing files in "
                       "TempXML will be deleted.",
                       Buttons::YesNo, Icon::Question) != Answer::Yes)
        return;
    const fs::path folder = m_ctx.appPath() / "TempXML";
    std::vector<std::string> problems;
    runInBackground(m_ctx, "Save Selected as XML", [&](UserInterface& ui) { problems = saveAsXml(files, folder, &ui); });
    std::string text;
    for (const auto& p : problems)
        text += p + "\n";
    m_status->setText(toQt(text.empty() ? "Saved in " + folder.string() : text));
    if (!problems.empty())
        m_ctx.ui().message(text, Icon::Warning);
}

void frmFolder5::Command1_Click() {
    m_what->clear();
    m_with->clear();
    m_preview->clear();
    m_status->clear();
}

} // namespace velmora::ui
