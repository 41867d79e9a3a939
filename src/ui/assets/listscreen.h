#pragma once
// What the file-list screens share (the asset list and the content list): the grid, its counts,
// and the commands that work on the grid as it stands: Print, Save, Load, Restore and Clear List,
// Find, Show All, Select All, Unselect All, Hide Columns, and Delete Selected. A screen adds how
// its list is built (Add to List, Find Zero Length Files) and which file a row names.

#include "velmora/assets/listcommands.h"
#include "velmora/core/appcontext.h"

#include <QMainWindow>
#include <filesystem>
#include <string>
#include <vector>

class QComboBox;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPrinter;
class QPushButton;
class QTableWidget;

namespace velmora::ui {

class ListScreen : public QMainWindow {
    Q_OBJECT
public:
    QTableWidget* grid() const { return m_grid; }
    // The cells of every row in the order shown, as the rows were built (document text kept
    // byte for byte); and of the selected rows in selection order.
    assets::CellRows gridCells() const;
    assets::CellRows selectedCells() const;

    virtual void Command1_Click() = 0;  // Add to List
    virtual void Command10_Click() = 0; // Find Zero Length Files
    void Command2_Click();              // Print List
    void Command3_Click();              // Save List
    void Command5_Click();              // Clear List
    void Command6_Click();              // Delete Selected
    void Command8_Click();              // Show All
    void Command11_Click();             // Load List
    void Command14_Click();             // Find
    void Command15_Click();             // Select All
    void Command16_Click();             // Unselect All
    void Command18_Click();             // Restore

protected:
    // `columns` head the grid, the find box's column list and the Hide Columns boxes; `sheet`
    // names the sheet of a list saved as .xls. The scratch folder is emptied and made anew.
    ListScreen(AppContext& ctx, std::vector<std::string> columns, std::string sheet, QWidget* parent);

    // One of the shared command buttons by its control name ("Command1" ... "Command18"), made
    // with its caption and connected.
    QPushButton* listCommand(const char* name);
    // Text2 with its browse button (the start folder) and Text1 (the mask, editable).
    QLineEdit* startFolder() const { return m_start; }
    QPushButton* browseButton() const { return m_browse; }
    QComboBox* maskBox() const { return m_mask; }
    // Text6 and Combo1 (the find box and its column), Label5 and Label11.
    QLineEdit* findBox() const { return m_find; }
    QComboBox* findColumn() const { return m_findColumn; }
    // Label5 and Label11 side by side, under the grid.
    QHBoxLayout* countsRow();
    // The "Hide Columns" boxes, Check2_0 ... one a column.
    QGroupBox* hideColumnsBox();

    void appendGridRows(const assets::CellRows& rows);
    void setGridRows(const assets::CellRows& rows);
    void updateCounts();
    // The closing message of a build: rows added, or, after Delete Selected, removed.
    void announceBuild();

    // The files the rows name, for Delete Selected.
    virtual std::vector<std::filesystem::path> filesOf(const assets::CellRows& rows) const = 0;
    // After Load List (the screen may keep rows of its own type in step).
    virtual void listLoaded() {}

    AppContext& m_ctx;
    bool m_deleting = false;   // Delete Selected is rebuilding the list
    bool m_zeroLength = false; // the list shows Find Zero Length Files' files

private:
    bool loadList(const std::filesystem::path& file);
    void printGrid(QPrinter& printer);

    std::vector<std::string> m_columns;
    std::string m_sheet;
    QTableWidget* m_grid = nullptr; // VSFG1
    QLineEdit* m_start = nullptr;   // Text2
    QPushButton* m_browse = nullptr;
    QComboBox* m_mask = nullptr;       // Text1
    QLineEdit* m_find = nullptr;       // Text6
    QComboBox* m_findColumn = nullptr; // Combo1
    QLabel* m_total = nullptr;         // Label5
    QLabel* m_selected = nullptr;      // Label11
    int m_findStart = 0;
    std::filesystem::path m_lastList;
};

} // namespace velmora::ui
