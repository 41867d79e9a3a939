#pragma once
// PicView: a picture or a .TgPcDx texture shown at a zoom, any of its mip levels, flipped,
// turned, made grey, printed or saved as a PNG, JPEG or BMP. A folder list and a file list by
// pattern choose the file; lstEvents logs what was done. The picture's work is PictureDocument's.

#include "picturedocument.h"

#include "velmora/core/appcontext.h"

#include <QMainWindow>

#include <filesystem>
#include <functional>

class QAction;
class QCheckBox;
class QFileSystemModel;
class QLineEdit;
class QListWidget;
class QPrinter;
class QPushButton;
class QScrollArea;
class QSpinBox;
class QToolBar;
class QTreeView;

namespace velmora::ui {

class PictureView;

class frmGFX2 : public QMainWindow {
    Q_OBJECT
public:
    // Form_Load: `file`, when given (Show Image hands over the open texture), is shown and its
    // folder listed; otherwise the simulator's folder is listed.
    explicit frmGFX2(AppContext& ctx, const std::filesystem::path& file = {}, QWidget* parent = nullptr);
    ~frmGFX2() override;

    const PictureDocument& document() const { return m_doc; }
    PictureView* pictureControl() const { return m_view; } // SuperPicCtl1
    QLineEdit* zoomBox() const { return m_zoom; }          // txtZoomLevel
    QSpinBox* mipBox() const { return m_mip; }             // the mip level shown
    QLineEdit* patternBox() const { return m_pattern; }    // Text1
    QListWidget* fileList() const { return m_files; }      // File1
    QListWidget* events() const { return m_events; }       // lstEvents
    QCheckBox* panMode() const { return m_panMode; }       // chkPanMode
    QAction* action(const QString& name) const;
    const std::filesystem::path& folder() const { return m_folder; }

    // Shows `file`; false after saying why (the reason names the file).
    bool openPicture(const std::filesystem::path& file);
    // Lists `folder`'s files that match the pattern in File1 and selects it in Dir1.
    void setFolder(const std::filesystem::path& folder);
    // The picture on one page of `printer`, as large as fits.
    void print(QPrinter& printer);

public slots:
    void File1_Click();
    void mnuFileOpen_Click();
    void mnuSA_Click();
    void mnuFilePrint_Click();
    void mnuFileExit_Click();
    void flip_Click();
    void rot_Click();
    void grey_Click();
    void cmdIn_Click();
    void cmdOut_Click();
    void Command1_Click(); // Clear Screen
    void Command2_Click(); // Exit
    void Command3_Click(); // the texture converted to a .dds in TempDDS, and that shown

private:
    void buildMenus();
    void showPicture();
    void showMip(int mip);
    void transform(void (PictureDocument::*step)(), const char* done);
    // Runs `job` off the GUI thread with a progress box; false when it was aborted.
    bool inBackground(const std::string& label, const std::function<void()>& job);
    // Runs `job` at once, or with a progress box off the GUI thread for a large picture.
    void work(const std::string& label, std::size_t pixels, const std::function<void()>& job);
    void log(const std::string& what);
    void fillFiles();

    AppContext& m_ctx;
    PictureDocument m_doc;
    std::filesystem::path m_folder;
    std::filesystem::path m_current; // the file last asked for, shown or not
    QFileSystemModel* m_dirs = nullptr;
    QTreeView* m_dirTree = nullptr;
    QLineEdit* m_pattern = nullptr;
    QListWidget* m_files = nullptr;
    QScrollArea* m_area = nullptr;
    PictureView* m_view = nullptr;
    QLineEdit* m_zoom = nullptr;
    QSpinBox* m_mip = nullptr;
    QCheckBox* m_panMode = nullptr;
    QCheckBox* m_quickBar = nullptr;
    QToolBar* m_toolBar = nullptr;
    QListWidget* m_events = nullptr;
};

} // namespace velmora::ui
