#pragma once
// frmOstrand: the scenario editor. The consists of the scenario (List1), the vehicles of the chosen
// one (VSG2, missing stock marked with a word and a tint), the details of a vehicle (dlgTips), and
// the scenario's fields with "Save Changes to Scenario". The commands that change consists are
// shown and wait for their tool.

#include "velmora/core/appcontext.h"
#include "velmora/scenarios/scenario.h"
#include "velmora/scenarios/scenariosave.h"
#include "velmora/scenarios/stocklist.h"
#include "velmora/scenarios/swap.h"

#include <QDialog>
#include <QPointer>

#include <array>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTableWidget;

namespace velmora::ui {

class frmIndex;

class frmOstrand : public QDialog {
    Q_OBJECT
public:
    frmOstrand(AppContext& ctx, scenarios::ScenarioDocument doc, QWidget* parent = nullptr);

    const scenarios::ScenarioDocument& document() const { return m_doc; }
    QListWidget* consistList() const { return m_consists; } // List1
    QTableWidget* itemGrid() const { return m_items; }     // VSG2
    QLineEdit* field(int index) const { return m_text1[static_cast<std::size_t>(index)]; } // Text1(i)
    QLineEdit* authorField() const { return m_author; }      // Text3(1)
    QLineEdit* locationField() const { return m_location; }  // Text3(2)
    QCheckBox* allConsists() const { return m_allConsists; } // Check1
    QButtonGroup* classGroup() const { return m_class; }     // Option2
    // The details panel's lines for the vehicle shown last (dlgTips).
    QStringList details() const;
    bool changed() const { return m_changed; }
    bool saved() const { return m_saved; }
    // The fields as the screen holds them now.
    scenarios::Fields fields() const;

    static QString waitsFor(const QString& button);

    // Available Stock (List3): the folder walked and the category asked for.
    QLineEdit* startTimeField() const { return m_tipTime; } // dlgTips.Text1
    QLineEdit* drivenField() const { return m_driven; }     // Text2: the driven consist
    QLineEdit* triggerField() const { return m_trigger; }   // Text4
    QLineEdit* stockFolder() const { return m_stockFolder; }
    QComboBox* stockCategory() const { return m_stockCategory; } // Option1
    QListWidget* stockList() const { return m_stock; }           // List3
    QString stockPreviewText() const;                            // the chosen stock's path and category
    // Use Index File: set while the stock comes from the rolling-stock index; the index screen.
    bool usesIndexFile() const { return m_useIndexFile; }
    frmIndex* indexScreen() const;

public slots:
    void List1_Click();              // the vehicles of the selected consist
    void showItem(int row);          // VSG2_MouseDown: dlgTips for a vehicle
    bool Command1_Click();           // Save Changes to Scenario; true when saved
    void Command2_Click();           // Exit
    void Command3_Click();           // Set Weather
    void mnuMFR_Click();             // Show Missing File report
    // Find Available Rolling-Stock: walks the folder off the GUI thread, with progress and Abort.
    void Command6_Click();
    void List3_Click(int row);       // the preview of a stock row
    void Command24_Click();          // Pin Selected: the chosen stock rows stay for the next listing
    void Command25_Click();          // Unpin all items
    void Command8_Click();           // Use Index File: the stock is chosen in frmIndex
    // A row of the index chosen while Use Index File is set: the editor's stock, shown in Label5.
    void chooseFromIndex(const std::vector<std::string>& cells);
    const scenarios::StockTables& stockTables() const { return m_stockTables; }
    void Command17_Click();          // Change Start Time of the selected consist (dlgTips' time)
    void Command13_Click();          // start speed of the driven consist
    void Command16_Click();          // start speed of the selected AI consist
    void Command27_Click();          // trigger distance of the selected AI consist (Text4)
    void Command14_Click();          // Change Number (dlgTips' number) of the selected vehicles
    void Command11_Click();          // Duplicate Item
    void Command9_Click();           // Delete Item
    void Command21_Click();          // Flip Selected
    void Command15_Click(int index); // 0: Load, 1: Unload the selected wagons
    void Command23_Click();          // Rename Consist
    void Command18_Click();          // Delete Consist (one between saves)
    void Command19_Click();          // Change Service Class (dlgTips' class)
    void Command4_Click();           // Drive It
    void Command10_Click();          // Swap Selected Item for the chosen Available Stock row
    void Command7_Click();           // Swap All Identical Stock in the consist
    void Command22_Click();          // Swap in EVERY consist
    // Swap in ALL Scenarios for this route: the selected vehicle's name in every scenario of the
    // route, written at once as one undo; the editor closes afterwards.
    void Command20_Click();
    void Command28_Click();          // Save Selected Loose Consist (a .txt of SavedFiles)
    void Command29_Click();          // Add Previously Saved Loose Consist
    void cmdConsist_Click();         // Save as Named Consist: the consist into ConsistTemplates.bin
    // Option2: a class change asks first; false when the user kept the class.
    bool setClass(scenarios::ScenarioClass cls);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildFields(QWidget* side);
    QWidget* buildStock();
    void fillFields();
    void fillConsists();
    void showClassFields();
    // After a consist field changed: marked changed, the consist's vehicles shown again.
    void consistChanged();
    // The vehicles (indexes into the consist) of the grid's selected rows, in order.
    std::vector<int> selectedVehicles() const;
    // After an edit of the vehicles or consists: the message, or the note unless chkMsg is on.
    void edited(const std::string& refused, const char* note);
    // The three swaps: the chosen stock, the selected vehicle, then `swap`.
    enum class Swap { One, Identical, Every };
    void swapStock(Swap kind);
    // What every swap starts from: the chosen Available Stock row and the first selected vehicle;
    // nothing after saying what is missing.
    struct SwapChoice {
        scenarios::ChosenStock stock;
        int consist = 0, vehicle = 0;
        std::string name; // the vehicle's
    };
    std::optional<SwapChoice> swapChoice();
    AppContext& m_ctx;
    scenarios::ScenarioDocument m_doc;
    scenarios::ScenarioClass m_cls;
    std::string m_missingReport; // shown by mnuMFR, then cleared
    bool m_changed = false;
    bool m_saved = false;
    bool m_filling = false;
    QListWidget* m_consists;
    QLineEdit* m_driven;   // Text2
    QTableWidget* m_items; // VSG2
    QLabel* m_itemCount;   // Label9
    QLabel* m_engineIndex; // Label7
    QLabel* m_tips;        // dlgTips
    QLineEdit* m_tipTime;  // dlgTips.Text1
    QLineEdit* m_tipNumber;  // dlgTips.Text2
    QComboBox* m_tipClass;   // dlgTips.Combo1
    QLineEdit* m_trigger;    // Text4: a new trigger distance in metres
    QCheckBox* m_quiet;      // chkMsg
    QCheckBox* m_keepNumbers; // Check2
    std::vector<int> m_rowVehicle; // VSG2 row -> vehicle of the consist
    bool m_consistDeleted = false;
    std::array<QLineEdit*, 12> m_text1{};
    QComboBox* m_season; // Combo1
    QLineEdit* m_author;
    QLineEdit* m_location;
    QLabel* m_authorLabel;
    QLabel* m_locationLabel;
    QCheckBox* m_allConsists;
    QButtonGroup* m_class;
    scenarios::StockTables m_stockTables;
    QLineEdit* m_stockFolder;
    QComboBox* m_stockCategory;
    QListWidget* m_stock;
    QLabel* m_stockPicture;
    QLabel* m_stockLabel; // Label5
    bool m_useIndexFile = false;
    std::optional<scenarios::ChosenStock> m_indexStock;
    QPointer<frmIndex> m_index;
    QPushButton* m_save;
    QPushButton* m_exit;
};

} // namespace velmora::ui
