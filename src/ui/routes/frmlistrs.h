#pragma once
// frmListRS: the one grid report screen. Its mode (the report kind) says what the rows are and
// which commands it offers: Remove dupes, saving in three forms or as a batch file.

#include "velmora/core/appcontext.h"
#include "velmora/routes/routeitems.h"
#include "dlgmissshape.h"

#include <QDialog>

#include <functional>
#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QVBoxLayout;
class QWidget;

namespace velmora::ui {

enum class ReportKind {
    MissingItems = 1, // <path> TAB <label> on tile <tile>
    ItemsWithLocations = 3,
    Used = 4,         // assets, textures or audio used
    MissingTextures = 5,
    ScenarioStock = 6,
    StockWithNumbers = 7,
    GeoFiles = 8,
    ScenarioScenery = 9,
    AllStock = 10,
    ProviderItems = 12,
    ApFiles = 11,         // .ap files: path, date, size, folder size
    ApFilesNoDetail = 14, // .ap files: the path alone
};

class frmListRS : public QDialog {
    Q_OBJECT
public:
    // Rows are TAB-separated; `suffix` ends the proposed file name (e.g. "_Assets.csv").
    frmListRS(AppContext& ctx, ReportKind kind, const QString& title, const std::vector<std::string>& rows,
              const std::string& routeName = {}, const std::string& suffix = {}, QWidget* parent = nullptr);

    QTableWidget* grid() const { return m_grid; }
    QLineEdit* filterBox() const { return m_filter; } // txtFilter: shows the rows that hold its text
    QString counts() const;                             // lblCounts: rows shown, and missing ones
    // The rows as TAB-separated text, without the status column.
    std::vector<std::string> rows() const;
    // Marks the rows (in the order given at construction) that name a missing file: a first
    // column "Status" says "missing" and the row is tinted, so the mark never rests on colour.
    void markMissing(const std::vector<bool>& missing);
    bool rowMissing(int row) const;
    // Puts rows in with a status text each; the `flagged` rows are drawn red with their status in
    // bold, so their mark is the word as well as the colour.
    void setStatusRows(const std::vector<std::string>& rows, const std::vector<std::string>& status,
                       const std::vector<bool>& flagged);
    QString statusText(int row) const;
    // The first cell of each selected row, trimmed, in the grid's order.
    std::vector<std::string> selectedFirstCells() const;
    // A panel of a mode's own (its legend, its buttons), above the screen's buttons.
    void addPanel(QWidget* panel);

public slots:
    void Command1_Click(); // Remove dupes
    // Save in the form the name's last three letters pick; true when written.
    bool saveTo(const std::filesystem::path& file);
    void Command6_Click(); // Save Grid as File
    bool saveBatch(const std::filesystem::path& file); // Command7: the rows as a batch file
    // Writes a saved grid or batch file through the write service; says why when it cannot.
    bool writeReport(const std::filesystem::path& file, const std::string& text);
    void Command7_Click();
    // Display items NOT used: the product's blueprints the route leaves unused, in a new grid
    // (returned, for the tests). Offered once offerUnused() has given the items used.
    frmListRS* Command23_Click();

public:
    void offerUnused(const routes::ProductItemsResult& used);

    // The missing-items grid's commands that change the route's tiles (frmlistrs_substitute.cpp).
    void offerSubstitution(const routes::RouteEntry& route, const std::vector<routes::ScenarioEntry>& scenarios);
    bool substituted() const { return m_substituted; } // ScenerySubstituted: the check's lists are stale
    // dlgMissShape, replaceable by tests; empty after Cancel.
    std::function<std::optional<MissShape>(const MissShape& prefill)> askMissShape;
    const std::vector<std::string>& providerPairs() const { return m_pairs; }

signals:
    void scenerySubstituted();

public slots:
    void Substitute_Click();     // Substitute existing scenery item
    void RemoveScenery_Click();  // Remove Selected Scenery Items
    void RemoveLoft_Click();     // Remove selected loft items
    void ListProviders_Click();  // List Providers && Products Used
    void FixProviders_Click();   // Fix Prov/Prod in RouteProperties.xml

private:
    void setRows(const std::vector<std::string>& rows, const std::vector<bool>& missing = {},
                 const std::vector<std::string>& status = {});
    bool apMode() const { return m_kind == ReportKind::ApFiles || m_kind == ReportKind::ApFilesNoDetail; }
    std::vector<bool> missingFlags() const;
    int dataColumn() const { return m_marked ? 1 : 0; }
    void applyFilter(const QString& text);
    AppContext& m_ctx;
    ReportKind m_kind;
    std::string m_proposed;
    QTableWidget* m_grid;
    QLineEdit* m_filter;
    QLabel* m_counts;
    QPushButton* m_unused;
    QVBoxLayout* m_panels;
    bool m_marked = false; // column 0 is the status column
    routes::ProductItemsResult m_used;

    // The missing-items commands.
    struct SelectedItem {
        int row;
        routes::AssetName name;
        routes::ItemKind kind;
    };
    std::vector<SelectedItem> selectedItems() const;
    bool needsDupesRemoved();
    // One walk over the tiles of `kind` off the GUI thread; true when the tiles were changed.
    bool walkTiles(const std::vector<routes::Substitution>& changes, routes::ItemKind kind, const std::string& command);
    void removeRows(std::vector<int> rows);
    std::optional<routes::RouteEntry> m_route;
    std::vector<routes::ScenarioEntry> m_scenarios;
    bool m_dupesRemoved = false;
    bool m_substituted = false;
    std::vector<std::string> m_pairs;
    QPushButton* m_fixProviders = nullptr;
    QLabel* m_label4 = nullptr;
};

} // namespace velmora::ui
