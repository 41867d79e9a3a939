#pragma once
// frmNewAP: the archive manager. Shows what an .ap (a zip archive) holds, extracts all of it or
// a selection, finds a file in it, and opens an entry in the document editor.

#include "velmora/archives/unpack.h"
#include "velmora/archives/zipreader.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

#include <functional>
#include <optional>

class QCheckBox;
class QLabel;
class QTableWidget;
class QMenuBar;

namespace velmora::ui {

class frmListRS;
class frmReport;

class frmNewAP : public QDialog {
    Q_OBJECT
public:
    // Opens a document in the editor: the file in TempFiles, and what to call it ("<archive>: <entry>").
    using EditorOpener = std::function<void(const fs::path& file, const std::string& from)>;

    frmNewAP(AppContext& ctx, EditorOpener openInEditor, QWidget* parent = nullptr);

    QTableWidget* grid() const { return m_grid; } // VSFG1
    QMenuBar* menus() const { return m_menus; }
    QCheckBox* fullPath() const { return m_fullPath; } // Check1: "Fullpath"
    QString statusText() const;                        // the status bar's panels, joined
    const fs::path& archive() const { return m_archive; }
    frmReport* lastReport() const { return m_report; }

    // Opens `file` and fills the grid; false (having said why) when it cannot be read or is one
    // part of a split archive.
    bool openArchive(const fs::path& file);
    // The parts "<name>z01" to "<name>z99" that lie beside `file`.
    static std::vector<fs::path> splitParts(const fs::path& file);

public slots:
    void mnuOpen_Click();
    void mnuClose_Click();
    void mnuExt_Click();    // Extract All
    void mnuExtCur_Click(); // Extract ALL to Same Folder as .AP
    void mnuExtSel_Click(); // Extract Selected
    void mnuSelAP_Click();  // Extract Selected to same folder as .AP
    frmListRS* mnuFindAP_Click();
    void mnuFind_Click();
    void mnuAPOpen_Click(); // the selected entry in the editor
    void Command1_Click();  // Refresh

public:
    // Extracts the entry in `row` to TempFiles and hands it to the editor; false when it could not.
    bool openEntry(int row);

private:
    void fill();
    bool needArchive(const char* doing);
    std::vector<std::uint64_t> selectedEntries() const;
    // The selected entries; nothing (having said why) without an archive or a selection.
    std::optional<std::vector<std::uint64_t>> entriesToExtract();
    // A folder chosen by the user and confirmed by `question` + its path.
    std::optional<fs::path> confirmedFolder(const std::string& question);
    // Extracts the entries (all when empty) into `folder`; the status bar says when it is done.
    void extract(const fs::path& folder, const std::vector<std::uint64_t>& only);

    AppContext& m_ctx;
    EditorOpener m_openInEditor;
    archives::ZipReader m_zip;
    fs::path m_archive;
    fs::path m_folder;
    QTableWidget* m_grid;
    QMenuBar* m_menus;
    QCheckBox* m_fullPath;
    QLabel* m_files;
    QLabel* m_dirs;
    QLabel* m_status;
    frmReport* m_report = nullptr;
};

} // namespace velmora::ui
