#pragma once
// frmConsistBuilder, "Saved Consists": the user's saved consists (ConsistTemplates.bin) as a grid
// of vehicles, VSFG, one consist shaded apart from the next and named on every row; the stock
// index or a pool of wagons in VSFG1 above it, from which vehicles are added, inserted and
// generated. The commands are the consist builder's (velmora/consists/consistbuilder.h); Save
// writes the whole file back.

#include "velmora/consists/consistbuilder.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

#include <functional>
#include <vector>

class QAction;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace velmora::ui {

// dlgConGen: the number of wagons (Text1) and the randomness 0 - 10 (Text2) of a generated consist.
class dlgConGen : public QDialog {
    Q_OBJECT
public:
    explicit dlgConGen(QWidget* parent = nullptr);
    QLineEdit* wagons() const { return m_wagons; }       // Text1
    QLineEdit* randomness() const { return m_randomness; } // Text2

private:
    QLineEdit* m_wagons;
    QLineEdit* m_randomness;
};

class frmConsistBuilder : public QDialog {
    Q_OBJECT
public:
    explicit frmConsistBuilder(AppContext& ctx, QWidget* parent = nullptr);

    // False when there was no file and the user did not wish to create one: the screen closes.
    bool opened() const { return m_opened; }
    QTableWidget* grid() const { return m_grid; }   // VSFG
    QTableWidget* index() const { return m_index; } // VSFG1
    QLineEdit* findText() const { return m_find; }  // Text1
    QAction* action(const char* name) const;
    QPushButton* button(const char* name) const;
    const consists::ConsistBuilder& builder() const { return m_builder; }
    // Where Generate Consist takes its random numbers; tests put in their own.
    void setRandom(std::function<double()> fraction) { m_random = std::move(fraction); }
    // Runs once dlgConGen is shown, before it waits for the user (tests fill it in there).
    std::function<void(dlgConGen&)> onConGen;

public slots:
    void Command2_Click(); // add the selected stock to the consist being built
    void Command3_Click(); // find the next name
    void Command8_Click(); // Save
    void Command1_Click(); // Exit
    void mnuSelIndex_Click();
    void mnuNew_Click();
    void mnuDel_Click();
    void mnuFlip_Click();
    void mnuInsert_Click();
    void mnuMulti_Click();
    void mnuRename_Click();
    void mnuPool_Click();
    void mnuGenCon_Click();
    void mnuClear_Click();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void load();
    void loadIndex(const std::filesystem::path& file);
    void showRows();
    std::vector<std::size_t> selectedGridRows() const;
    std::vector<assets::AssetRow> indexRows(bool selectedOnly) const;
    // The name typed in "Consist Name"; false when cancelled or empty.
    bool askName();
    // Whether leaving may go on: asks when there are unsaved rows.
    bool mayLeave();

    AppContext& m_ctx;
    consists::ConsistBuilder m_builder;
    std::function<double()> m_random;
    QTableWidget* m_grid;
    QTableWidget* m_index;
    QLineEdit* m_find;
    QLabel* m_status;
    int m_lastHit = -1;
    bool m_opened = true;
    bool m_leaving = false;
};

} // namespace velmora::ui
