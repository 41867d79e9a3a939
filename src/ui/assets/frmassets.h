#pragma once
// frmAssets, "Build List of Assets": the asset grid and every command that works on its rows.

#include "listscreen.h"
#include "velmora/assets/assetlist.h"
#include "assetbatch.h"
#include "velmora/assets/assetedits.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/soundedits.h"
#include "velmora/core/appcontext.h"

#include <functional>
#include <optional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPushButton;

namespace velmora::ui {

class frmAssets : public ListScreen {
    Q_OBJECT
public:
    explicit frmAssets(AppContext& ctx, QWidget* parent = nullptr);

    // The grid as rows, in the order shown; and the selected rows in selection order.
    std::vector<assets::AssetRow> rows() const;
    std::vector<assets::AssetRow> selectedRows() const;
    QAction* action(const QString& name) const;

    void Command1_Click() override;  // Add to List
    void Command10_Click() override; // Find Zero Length Files

public slots:
    void Command13_Click(); // Save Stock Index
    void Command22_Click(); // List QD consists
    void Command9_Click();  // Display Child Entries
    void Command12_Click(); // Remove Selected Child Entries
    void Command7_Click();  // Correct Selected Smoke Stack
    void Command20_Click(); // Add LocoInformation
    void showRowPicture(int row);
    void mnuCheckLoco_Click();
    void mnuShowFiles_Click();
    void mnuWag_Click();
    void mnuSFA_Click();
    void mnuLoft_Click();
    void mnuInScene_Click();
    void mnuWhere_Click();
    void Command19_Click(); // Process Missing Assets File
    void Command21_Click(); // Package Missing Assets
    void copySelectionToClipboard();
    void Command17_Click();      // Rename Selected Asset: Change Name
    void mnuChangeName_Click();
    void mnuMakeSource_Click();  // Make Equivalent Source Folder
    void editAssets(assets::EditCommand command);       // the entries of mnuEdAss
    void updateSounds(assets::SoundCommand command);    // the entries of mnuArmstrong and mnuOcc

public:
    // The dialogs the batch commands ask through; tests put in their own answers.
    AssetBatchCommands::Dialogs& dialogs();

signals:
    void listBuilt();
    // A report was shown in frmReport (the checks' results, for tests).
    void reportShown(const QString& text);

private:
    void buildWidgets();
    assets::AssetListOptions readOptions() const;
    void runList(assets::AssetListOptions options, bool announce);
    void appendRows(const std::vector<assets::AssetRow>& rows);
    void hideChildControls();
    std::optional<assets::AssetRow> singleSelection(const char* tooFewMessage);
    void storeChildChange(const std::string& xml, const std::string& fileName);
    std::vector<std::filesystem::path> filesOf(const assets::CellRows& rows) const override;

    QLineEdit* m_start = nullptr;   // Text2
    QComboBox* m_mask = nullptr;    // Text1
    QLineEdit* m_category = nullptr; // Text5
    QCheckBox* m_rollingStock = nullptr;   // Check1
    QCheckBox* m_excludePreload = nullptr; // Check3
    QCheckBox* m_defaultFolders = nullptr; // Check4
    QLineEdit* m_minLod = nullptr; // Text3
    QLineEdit* m_maxLod = nullptr; // Text4
    QLabel* m_picture = nullptr;  // Picture1
    QListWidget* m_children = nullptr; // List1
    QLabel* m_childCaption = nullptr;  // Label3
    QLabel* m_childName = nullptr;     // Label4
    QPushButton* m_removeChildren = nullptr; // Command12
    QPushButton* m_smokeStack = nullptr;     // Command7
    QMenu* m_checkMenu = nullptr; // mnuCheckStock

    bool m_convertBins = false;
    std::filesystem::path m_childFile; // the blueprint whose child entries are shown
    std::string m_childXml;
    assets::AssetChecks m_checks;
    void showReport(const assets::Report& report, const QString& title);

    // The batch edits (frmassets_batch.cpp, frmassets_edits.cpp, frmassets_sounds.cpp).
    void buildBatchMenus();
    void buildEditAssetsMenu();
    void buildSoundMenus();
    std::string lang(int entry, const char* design) const;
    // The cells of `column` of the selected grid rows that the batch wrote take `values`
    // (in row order); the rows passed over keep theirs.
    void setWrittenCells(const std::vector<assets::AssetRow>& rows, const assets::BatchResult& result, int column,
                         const std::vector<std::string>& values);
    AssetBatchCommands* m_batch = nullptr;
    QMenu* m_editAssetsMenu = nullptr; // mnuEdAss
    bool haveSelection();
};

} // namespace velmora::ui
