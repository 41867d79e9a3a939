#include "frmgfx2.h"

#include "pictureview.h"
#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "../editor/texturemenus.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QSplitter>
#include <QToolBar>
#include <QTreeView>
#include <QVBoxLayout>

namespace velmora::ui {

namespace fs = std::filesystem;

namespace {

const char* const kPictures = "*.TgPcDx;*.dds;*.png;*.jpg;*.jpeg;*.bmp;*.gif";

// Pictures larger than this are decoded and turned off the GUI thread: a 2048 texture and up.
constexpr std::size_t kLargePicture = std::size_t(2048) * 2048;

QPushButton* button(const char* name, const QString& caption) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

QString qtPath(const fs::path& p) { return toQt(p.string()); }

} // namespace

frmGFX2::frmGFX2(AppContext& ctx, const fs::path& file, QWidget* parent) : QMainWindow(parent), m_ctx(ctx) {
    setObjectName("frmGFX2");
    setWindowTitle(toQt(m_doc.caption()));
    buildMenus();

    m_dirs = new QFileSystemModel(this);
    m_dirs->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    m_dirs->setRootPath(QDir::rootPath());
    m_dirTree = new QTreeView;
    m_dirTree->setObjectName("Dir1");
    m_dirTree->setModel(m_dirs);
    for (int c = 1; c < m_dirs->columnCount(); ++c)
        m_dirTree->hideColumn(c);
    m_dirTree->header()->hide();
    m_pattern = new QLineEdit(kPictures);
    m_pattern->setObjectName("Text1");
    m_pattern->setToolTip(tr("The files listed: patterns separated by semicolons"));
    m_files = new QListWidget;
    m_files->setObjectName("File1");

    m_area = new QScrollArea;
    m_area->setObjectName("pictureArea");
    m_area->setAlignment(Qt::AlignCenter);
    m_view = new PictureView(m_area);
    m_area->setWidget(m_view);

    auto* zoomIn = button("cmdIn", tr("Zoom &In"));
    auto* zoomOut = button("cmdOut", tr("Zoom &Out"));
    m_zoom = new QLineEdit;
    m_zoom->setObjectName("txtZoomLevel");
    m_zoom->setReadOnly(true);
    m_zoom->setMaximumWidth(70);
    m_mip = new QSpinBox;
    m_mip->setObjectName("cboMip");
    m_mip->setRange(0, 0);
    m_mip->setToolTip(tr("The mip level shown: 0 is the largest, each next one half as wide and high"));
    m_panMode = new QCheckBox(tr("Panning Mode"));
    m_panMode->setObjectName("chkPanMode");
    m_quickBar = new QCheckBox(tr("Enable Quick Bar"));
    m_quickBar->setObjectName("chkUseQuickBar");
    m_events = new QListWidget;
    m_events->setObjectName("lstEvents");
    auto* clear = button("Command1", tr("Clear Screen"));
    auto* exit = button("Command2", tr("&Exit"));
    auto* convert =
        button("Command3", tr("If TgPcDx file appears covered by a grid click here to convert to a viewable picture"));

    auto* left = new QWidget;
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addWidget(m_dirTree, 2);
    leftLayout->addWidget(new QLabel(tr("Pattern:")));
    leftLayout->addWidget(m_pattern);
    leftLayout->addWidget(m_files, 3);

    auto* controls = new QHBoxLayout;
    controls->addWidget(zoomIn);
    controls->addWidget(zoomOut);
    controls->addWidget(m_zoom);
    controls->addSpacing(12);
    controls->addWidget(new QLabel(tr("Mip level:")));
    controls->addWidget(m_mip);
    controls->addSpacing(12);
    controls->addWidget(m_panMode);
    controls->addWidget(m_quickBar);
    controls->addStretch(1);

    auto* bottom = new QGridLayout;
    bottom->addWidget(m_events, 0, 0, 3, 1);
    bottom->addWidget(convert, 0, 1);
    bottom->addWidget(clear, 1, 1);
    bottom->addWidget(exit, 2, 1);
    bottom->setColumnStretch(0, 2);
    bottom->setColumnStretch(1, 1);
    m_events->setMaximumHeight(110);

    auto* right = new QWidget;
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addLayout(controls);
    rightLayout->addWidget(m_area, 1);
    rightLayout->addLayout(bottom);

    auto* split = new QSplitter;
    split->addWidget(left);
    split->addWidget(right);
    split->setStretchFactor(1, 3);
    setCentralWidget(split);

    connect(m_dirTree, &QTreeView::clicked, this, [this](const QModelIndex& i) { setFolder(fromQt(m_dirs->filePath(i))); });
    connect(m_pattern, &QLineEdit::textChanged, this, &frmGFX2::fillFiles);
    connect(m_files, &QListWidget::itemClicked, this, &frmGFX2::File1_Click);
    connect(m_files, &QListWidget::itemActivated, this, &frmGFX2::File1_Click);
    connect(zoomIn, &QPushButton::clicked, this, &frmGFX2::cmdIn_Click);
    connect(zoomOut, &QPushButton::clicked, this, &frmGFX2::cmdOut_Click);
    connect(m_mip, &QSpinBox::valueChanged, this, &frmGFX2::showMip);
    connect(m_panMode, &QCheckBox::toggled, m_view, &PictureView::setPanning);
    connect(m_quickBar, &QCheckBox::toggled, m_toolBar, &QToolBar::setVisible);
    connect(clear, &QPushButton::clicked, this, &frmGFX2::Command1_Click);
    connect(exit, &QPushButton::clicked, this, &frmGFX2::Command2_Click);
    connect(convert, &QPushButton::clicked, this, &frmGFX2::Command3_Click);

    rememberPlace(m_ctx, this, "frmGFX2", QSize(1000, 700));
    m_zoom->setText(toQt(m_doc.zoomText()));
    // Form_Load: the file handed over, or the simulator's folder.
    if (!file.empty()) {
        setFolder(file.parent_path());
        openPicture(file);
    } else {
        const fs::path root = m_ctx.railWorks();
        setFolder(root.empty() ? fs::path(fromQt(QDir::homePath())) : root);
    }
}

frmGFX2::~frmGFX2() = default;

void frmGFX2::buildMenus() {
    struct Entry {
        const char* name;
        const char* caption;
        void (frmGFX2::*slot)();
    };
    const Entry file[] = {{"mnuFileOpen", "&Open...", &frmGFX2::mnuFileOpen_Click},
                          {"mnuSA", "Save &As...", &frmGFX2::mnuSA_Click},
                          {"mnuFilePrint", "&Print...", &frmGFX2::mnuFilePrint_Click},
                          {nullptr, nullptr, nullptr},
                          {"mnuFileExit", "E&xit", &frmGFX2::mnuFileExit_Click}};
    const Entry image[] = {{"flip", "&Flip", &frmGFX2::flip_Click},
                           {"rot", "&Rotate", &frmGFX2::rot_Click},
                           {"grey", "&Grey Scale", &frmGFX2::grey_Click}};
    m_toolBar = addToolBar(tr("Quick Bar"));
    m_toolBar->setObjectName("QuickBar");
    m_toolBar->setVisible(false);
    auto fill = [this](QMenu* menu, const auto& entries, bool quick) {
        for (const Entry& e : entries) {
            if (!e.name) {
                menu->addSeparator();
                continue;
            }
            QAction* a = menu->addAction(tr(e.caption));
            a->setObjectName(e.name);
            connect(a, &QAction::triggered, this, e.slot);
            if (quick)
                m_toolBar->addAction(a);
        }
    };
    QMenu* fileMenu = menuBar()->addMenu(tr("&File"));
    fileMenu->setObjectName("mnuFile");
    fill(fileMenu, file, false);
    QMenu* imageMenu = menuBar()->addMenu(tr("&Image"));
    imageMenu->setObjectName("mnuImage");
    fill(imageMenu, image, true);
    action("mnuFileOpen")->setShortcut(QKeySequence::Open);
    action("mnuSA")->setShortcut(QKeySequence::SaveAs);
    action("mnuFilePrint")->setShortcut(QKeySequence::Print);
}

QAction* frmGFX2::action(const QString& name) const { return findChild<QAction*>(name); }

void frmGFX2::log(const std::string& what) {
    m_events->addItem(toQt(what));
    m_events->scrollToBottom();
}

void frmGFX2::setFolder(const fs::path& folder) {
    m_folder = folder;
    const QModelIndex index = m_dirs->index(qtPath(folder));
    if (index.isValid()) {
        m_dirTree->setCurrentIndex(index);
        m_dirTree->scrollTo(index);
    }
    fillFiles();
}

void frmGFX2::fillFiles() {
    m_files->clear();
    QStringList patterns = m_pattern->text().split(';', Qt::SkipEmptyParts);
    for (QString& p : patterns)
        p = p.trimmed();
    if (patterns.isEmpty())
        patterns << "*";
    m_files->addItems(QDir(qtPath(m_folder)).entryList(patterns, QDir::Files, QDir::Name | QDir::IgnoreCase));
}

void frmGFX2::File1_Click() {
    if (QListWidgetItem* item = m_files->currentItem())
        openPicture(m_folder / fromQt(item->text()));
}

bool frmGFX2::openPicture(const fs::path& file) {
    m_current = file;
    PictureDocument next;
    next.setZoom(m_doc.zoom());
    std::string error;
    bool ok = false;
    const bool finished = inBackground("Reading " + file.filename().string(), [&] { ok = next.load(file, error); });
    if (!finished)
        return false;
    if (!ok) {
        log("Not shown: " + error);
        m_ctx.ui().message(error, Icon::Warning, "PicView");
        return false;
    }
    m_doc = std::move(next);
    {
        const QSignalBlocker quiet(m_mip);
        m_mip->setRange(0, m_doc.mipCount() - 1);
        m_mip->setValue(0);
    }
    log("Opened " + file.string() + " (" + std::to_string(m_doc.picture().width) + "x" +
        std::to_string(m_doc.picture().height) +
        (m_doc.mipCount() > 1 ? ", " + std::to_string(m_doc.mipCount()) + " mip levels)" : ")"));
    showPicture();
    return true;
}

void frmGFX2::showPicture() {
    m_view->setPicture(m_doc.image(), m_doc.zoom());
    m_zoom->setText(toQt(m_doc.zoomText()));
    setWindowTitle(toQt(m_doc.caption()));
}

bool frmGFX2::inBackground(const std::string& label, const std::function<void()>& job) {
    // The job works on the document: until it ends the screen takes no clicks and no keys.
    const QList<QAction*> actions = findChildren<QAction*>();
    auto enable = [&](bool on) {
        centralWidget()->setEnabled(on);
        menuBar()->setEnabled(on);
        for (QAction* a : actions)
            a->setEnabled(on);
    };
    enable(false);
    const bool finished = runInBackground(m_ctx, label, [&](UserInterface&) { job(); });
    enable(true);
    return finished;
}

void frmGFX2::work(const std::string& label, std::size_t pixels, const std::function<void()>& job) {
    if (pixels < kLargePicture)
        job();
    else
        inBackground(label, job);
}

void frmGFX2::showMip(int mip) {
    if (m_doc.empty() || mip == m_doc.mip())
        return;
    std::string error;
    bool ok = false;
    work("Decoding mip level " + std::to_string(mip), m_doc.pixelsOf(mip), [&] { ok = m_doc.showMip(mip, error); });
    if (!ok) {
        log("Not shown: " + error);
        m_ctx.ui().message(error, Icon::Warning, "PicView");
        const QSignalBlocker quiet(m_mip);
        m_mip->setValue(m_doc.mip());
        return;
    }
    log("Mip level " + std::to_string(mip) + " (" + std::to_string(m_doc.picture().width) + "x" +
        std::to_string(m_doc.picture().height) + ")");
    showPicture();
}

void frmGFX2::mnuFileOpen_Click() {
    const auto file = m_ctx.ui().chooseFile(
        {"Open picture", m_folder,
         "Pictures and textures (*.TgPcDx *.dds *.png *.jpg *.jpeg *.bmp *.gif)|*.TgPcDx;*.dds;*.png;*.jpg;*.jpeg;*.bmp;*.gif|"
         "All files (*.*)|*.*",
         false});
    if (!file)
        return;
    setFolder(file->parent_path());
    const QList<QListWidgetItem*> found = m_files->findItems(toQt(file->filename().string()), Qt::MatchExactly);
    if (!found.isEmpty())
        m_files->setCurrentItem(found.front());
    openPicture(*file);
}

void frmGFX2::mnuSA_Click() {
    if (m_doc.empty()) {
        m_ctx.ui().message("There is no picture to save.", Icon::Information, "PicView");
        return;
    }
    const fs::path suggested = m_folder / (m_doc.file().stem().string() + ".png");
    const auto target = m_ctx.ui().chooseFile(
        {"Save As", suggested, "PNG picture (*.png)|*.png|JPEG picture (*.jpg)|*.jpg;*.jpeg|Bitmap (*.bmp)|*.bmp", true});
    if (!target)
        return;
    JournalCommand journalled(&m_ctx.journal(), "Save picture as " + target->string());
    const WriteResult r = m_doc.saveAs(m_ctx.files(), *target);
    if (!r) {
        log("Not saved: " + r.message);
        m_ctx.ui().message(r.message, Icon::Warning, "PicView");
        return;
    }
    log("Saved " + r.target.string() + (r.backup.empty() ? "" : " (backup " + r.backup.filename().string() + ")"));
}

void frmGFX2::mnuFilePrint_Click() {
    if (m_doc.empty()) {
        m_ctx.ui().message("There is no picture to print.", Icon::Information, "PicView");
        return;
    }
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    print(printer);
}

void frmGFX2::print(QPrinter& printer) {
    const QImage picture = m_doc.image();
    if (picture.isNull())
        return;
    QPainter painter;
    if (!painter.begin(&printer)) {
        m_ctx.ui().message("The printer cannot be started.", Icon::Warning, "PicView");
        return;
    }
    const QRect page = painter.viewport();
    QSize size = picture.size();
    size.scale(page.size(), Qt::KeepAspectRatio);
    painter.setViewport(page.x(), page.y(), size.width(), size.height());
    painter.setWindow(picture.rect());
    painter.drawImage(0, 0, picture);
    painter.end();
    log("Printed " + m_doc.file().filename().string());
}

void frmGFX2::mnuFileExit_Click() { close(); }

void frmGFX2::transform(void (PictureDocument::*step)(), const char* done) {
    if (m_doc.empty())
        return;
    work(done, m_doc.pixelsOf(m_doc.mip()), [&] { (m_doc.*step)(); });
    log(done);
    showPicture();
}

void frmGFX2::flip_Click() { transform(&PictureDocument::flip, "Flipped"); }
void frmGFX2::rot_Click() { transform(&PictureDocument::rotate, "Rotated a quarter turn clockwise"); }
void frmGFX2::grey_Click() { transform(&PictureDocument::grey, "Grey scale"); }

void frmGFX2::cmdIn_Click() {
    if (m_doc.zoomIn())
        showPicture();
}

void frmGFX2::cmdOut_Click() {
    if (m_doc.zoomOut())
        showPicture();
}

void frmGFX2::Command1_Click() {
    m_doc.clear();
    {
        const QSignalBlocker quiet(m_mip);
        m_mip->setRange(0, 0);
    }
    showPicture();
}

void frmGFX2::Command2_Click() { close(); }

void frmGFX2::Command3_Click() {
    const fs::path texture = m_current;
    if (!iendsWith(texture.string(), "TgPcDx")) {
        m_ctx.ui().message("This does not appear to be a .TgPcDx texture file?", Icon::Information, "PicView");
        return;
    }
    const textures::DdsExport r = textureToTempDds(m_ctx, texture);
    if (!r.ok) {
        log("Not converted: " + r.message);
        m_ctx.ui().message(r.message, Icon::Warning, "PicView");
        return;
    }
    log("Converted " + texture.filename().string() + " to " + r.dds.string());
    openPicture(r.dds);
}

} // namespace velmora::ui
