#pragma once
// frmAPConsists, "AP Content Editor": scenarios listed from the .ap files of the routes or from
// their loose ScenarioProperties.xml, with each scenario's details read into the grid.

#include "velmora/core/appcontext.h"

#include <QMainWindow>

#include <filesystem>

class QLineEdit;
class QTableWidget;

namespace velmora::ui {

class frmAPConsists : public QMainWindow {
    Q_OBJECT
public:
    explicit frmAPConsists(AppContext& ctx, QWidget* parent = nullptr);

    QTableWidget* grid() const { return m_grid; }      // VSFG1
    QLineEdit* startFolder() const { return m_start; } // Text2
    QAction* action(const QString& name) const;

public slots:
    void Command5_Click();  // Find .ap files
    void Command1_Click();  // Find Scenario Properties
    void Command11_Click(); // details of the selected .ap files
    void Command8_Click();  // details of the selected .xml files
    void Command10_Click(); // Clear Grid
    void Command3_Click();  // Save Grid
    void Command9_Click();  // Load Grid
    void mnuRInd_Click();   // Build Route Index

private:
    enum class Listing { None, Archives, Documents };
    void buildWidgets();
    void findFiles(const char* pattern, const char* procedure);
    void readDetails(Listing wanted, const char* refusal);
    void addCells(const std::vector<std::string>& cells, int at = -1);
    std::vector<std::string> rowCells(int row) const;

    AppContext& m_ctx;
    QLineEdit* m_start = nullptr; // Text2
    QTableWidget* m_grid = nullptr;
    Listing m_listing = Listing::None;
};

} // namespace velmora::ui
