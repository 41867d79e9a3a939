#pragma once
// frmQD, "Build QD Consists or Fragments": vehicles from the rolling-stock index (and fragments
// of the PreLoad folder) put in order in the top grid, then built into a Quick Drive consist
// (its details from frmQDSelect) or a fragment in the chosen PreLoad folder.

#include "velmora/consists/qdbuild.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

#include <filesystem>
#include <map>
#include <optional>

class QAction;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace velmora::ui {

class frmQD : public QDialog {
    Q_OBJECT
public:
    // Asks for the PreLoad folder first (frmPreload); opened() is false when none was taken.
    explicit frmQD(AppContext& ctx, QWidget* parent = nullptr);
    bool opened() const { return m_target.has_value(); }
    const consists::PreloadTarget& target() const { return *m_target; }

    QTableWidget* vehicles() const { return m_vehicles; }   // VSFG
    QTableWidget* stock() const { return m_stock; }         // VSFG1
    QTableWidget* fragments() const { return m_fragments; } // VSFG2
    QAction* action(const char* name) const { return m_actions.at(name); }
    // The file the last build wrote, empty before one.
    const std::filesystem::path& lastBuilt() const { return m_lastBuilt; }

public slots:
    void mnuSelInd_Click(); // another stock index
    void mnuNew_Click();
    void mnuQDF_Click();
    void mnuDel_Click();
    void mnuFlip_Click();
    void mnuInsert_Click();
    void mnuMulti_Click();
    void mnuBQD_Click();  // Build QD Consist
    void mnuBQDF_Click(); // Build QD Fragment
    void mnuClear_Click();
    void Command2_Click(); // add the selected stock rows
    void Command3_Click(); // find the next name in the stock list
    void VSFG2_DblClick(int row);

private:
    void loadIndex(const std::filesystem::path& file);
    void loadFragments();
    void addVehicle(const consists::QDVehicle& v, int at = -1);
    std::vector<consists::QDVehicle> vehicleRows() const;
    void insertLastAdded(int times);

    AppContext& m_ctx;
    std::optional<consists::PreloadTarget> m_target;
    std::map<std::string, QAction*> m_actions;
    QTableWidget* m_vehicles;
    QTableWidget* m_stock;
    QTableWidget* m_fragments;
    QLineEdit* m_find;
    QLabel* m_hint;
    std::optional<consists::QDVehicle> m_lastAdded;
    int m_lastHit = -1;
    std::filesystem::path m_lastBuilt;
};

} // namespace velmora::ui
