#pragma once
// Find in Multiple Files: a folder's documents listed by pattern, one shown as XML in the
// preview, and a text replaced in every selected document through the conversion round trip.
// The replace runs off the GUI thread with progress and Abort; the run is one journal entry.

#include "velmora/core/appcontext.h"
#include "velmora/core/multireplace.h"

#include <QDialog>

#include <filesystem>
#include <memory>
#include <vector>

class QLabel;
class QLineEdit;
class QListWidget;

namespace velmora::ui {

class NumberedView;
class dlgSearch;

class frmFolder5 : public QDialog {
    Q_OBJECT
public:
    explicit frmFolder5(AppContext& ctx, QWidget* parent = nullptr);
    ~frmFolder5() override;

    QLineEdit* folderBox() const { return m_folder; }   // Dir1
    QLineEdit* patternBox() const { return m_pattern; } // Text1
    QListWidget* fileList() const { return m_files; }   // File1
    QLineEdit* searchBox() const { return m_what; }     // Text2
    QLineEdit* replacementBox() const { return m_with; } // Text3
    NumberedView* preview() const { return m_preview; } // RichTextBox1
    // The files selected in File1, in list order.
    std::vector<std::filesystem::path> selectedFiles() const;
    // What the last replace in files did (empty before the first).
    const MultiReplaceResult& lastRun() const { return m_lastRun; }

public slots:
    void Dir1_Click();   // lists the folder's files by the pattern
    void Text1_Change(); // the pattern; empty means "*.*"
    void Command3_Click(); // Select All
    void Command7_Click(); // Display: the first selected file as XML in the preview
    bool Command4_Click(); // Find
    bool Command2_Click(); // Find Next
    void Command5_Click(); // Replace
    void Command6_Click(); // Replace All (in the preview)
    void Command8_Click(); // Replace in all selected files
    void Command9_Click(); // Save Selected as XML
    void Command1_Click(); // Clear All

private:
    // The preview's buttons are dlgSearch's own, given this screen's two boxes.
    dlgSearch& search();
    QString caption(int entry, const char* english) const;

    AppContext& m_ctx;
    QLineEdit* m_folder;
    QLineEdit* m_pattern;
    QListWidget* m_files;
    QLineEdit* m_what;
    QLineEdit* m_with;
    NumberedView* m_preview;
    QLabel* m_status;
    std::unique_ptr<dlgSearch> m_search;
    MultiReplaceResult m_lastRun;
};

} // namespace velmora::ui
