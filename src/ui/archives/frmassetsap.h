#pragma once
// frmAssetsAP, "Build List of Assets in .AP files": the asset grid for assets packed in .ap
// archives. The .ap files below a folder are listed, one is opened, its entries shown by the
// filter, and the chosen ones sent to the eight-column grid, without unpacking the archive.

#include "velmora/archives/zipreader.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/core/appcontext.h"

#include <QMainWindow>

#include <filesystem>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTableWidget;

namespace velmora::ui {

class AssetBatchCommands;

class frmAssetsAP : public QMainWindow {
    Q_OBJECT
public:
    explicit frmAssetsAP(AppContext& ctx, QWidget* parent = nullptr);

    QTableWidget* apGrid() const { return m_apFiles; }     // VSFG3
    QTableWidget* entryGrid() const { return m_entries; }  // VSFG2
    QTableWidget* grid() const { return m_grid; }          // VSFG1
    QLineEdit* startFolder() const { return m_start; }     // Text2
    QComboBox* mask() const { return m_mask; }             // Text1
    QCheckBox* rollingStock() const { return m_rollingStock; } // Check1
    // The archive open now; empty when none is.
    const std::filesystem::path& openArchivePath() const { return m_archive; }
    // The main grid's selected rows, in selection order.
    std::vector<assets::AssetRow> selectedAssetRows() const;
    // The clones and Correct Provider on those rows.
    AssetBatchCommands* batch() const { return m_batch; }

public slots:
    void Command5_Click();  // Find .ap files
    void Command6_Click();  // Clear .ap list
    void Command2_Click();  // Clear Grid
    void Command7_Click();  // Clear All
    void Command8_Click();  // Clear Results
    void Command13_Click(); // Select All Results
    void Command3_Click();  // Save Grid
    void Command1_Click();  // Open in Editor
    void Command9_Click();  // Save .ap index
    void VSFG3_Click(int row);   // opens the archive of the row
    void sendSelectedEntries();  // VSFG2's right click: the selected entries to the main grid

signals:
    // A file unpacked to TempFiles for the main screen's editor.
    void openInEditor(const QString& file);
    // An XML entry shown in frmReport (for tests).
    void reportShown(const QString& text);

private:
    void buildWidgets();
    void listEntries();
    void updateCounts();

    AppContext& m_ctx;
    QLineEdit* m_start = nullptr;          // Text2
    QComboBox* m_mask = nullptr;           // Text1
    QLineEdit* m_category = nullptr;       // Text5
    QCheckBox* m_rollingStock = nullptr;   // Check1
    QPlainTextEdit* m_instructions = nullptr;
    QTableWidget* m_apFiles = nullptr;     // VSFG3
    QTableWidget* m_entries = nullptr;     // VSFG2
    QTableWidget* m_grid = nullptr;        // VSFG1
    QLabel* m_total = nullptr;             // Label5

    archives::ZipReader m_zip;
    std::filesystem::path m_archive;
    AssetBatchCommands* m_batch = nullptr;
};

} // namespace velmora::ui
