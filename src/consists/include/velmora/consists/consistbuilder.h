#pragma once
// The consist builder: the user's saved consists as a grid of vehicles (VSFG), one row a vehicle,
// consecutive rows with the same consist id forming one consist, and the commands that change
// it. The grid is written back whole to ConsistTemplates.bin through the templates.
//
// All texts in a row are as the document holds them (XML escapes kept), so that a row read and
// written again comes back unchanged; names typed by the user pass through documentText().

#include "velmora/assets/assetgrid.h"
#include "velmora/consists/consisttemplates.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora::consists {

// The program's words in boxes.
extern const char* const kNoSavedConsists;   // "You currently don't have any saved consists." / ...
extern const char* const kNoIndexAtStart;    // "You do not appear to have an index file named Index.csv." ...
extern const char* const kMissingTitle;      // "Missing rolling-stock"
extern const char* const kMissingStock;      // "The following rolling-stock listed in the consist is missing"
extern const char* const kNoStockSelected;   // "You do not appear to have selected any rolling stock"
extern const char* const kNoPlaceSelected;   // "You do not appear to have selected somewhere to place rolling stock"
extern const char* const kConsistNameTitle;  // "Consist Name"
extern const char* const kConsistNamePrompt; // "Name of new consist"
extern const char* const kNewConsistHint;    // what mnuNew tells the user to do next
extern const char* const kMultiTitle;        // "Install multiple times"
extern const char* const kMultiPrompt;       // "How many instances do you wish to install?"
extern const char* const kPoolTitle;         // "Load Wagon Pool from File"
extern const char* const kPoolFilter;        // "Comma Separated (*.csv)|*.csv|..."
extern const char* const kUnsavedExit;       // "You have not saved the changes to your consists." / ...
extern const char* const kNothingToSave;     // an empty grid is not written
// The journal's name for a save of the whole grid.
extern const char* const kSaveConsistsCommand; // "Save Consists"

// One row of VSFG: the eight columns of the grid.
struct GridRow {
    std::string name, key, id;                  // columns 0-2: the consist's
    std::string provider, product, blueprintId; // columns 3-5
    std::string flipped = "0";                  // column 6
    std::string entryId;                        // column 7

    std::vector<std::string> cells() const;
    bool operator==(const GridRow&) const = default;
};

// A vehicle taken from the index or the pool: provider, product and blueprint id as the
// document holds them (the index's ".bin" path ending in ".xml").
struct Stock {
    std::string provider, product, blueprintId;
};
// The stock of an index row (columns 0, 1, 3, 5 and 2, trimmed); empty with `error` set when
// the row is refused.
std::optional<Stock> stockFromIndexRow(const assets::AssetRow& row, std::string& error);

// A pool of wagons (or the index) read into VSFG1 by the file's ending: comma-separated,
// tabbed for "txt" and "tab", the spreadsheet form for "xls". A row with fewer cells than the
// index has is refused, with its file and line named in `error`, and nothing is loaded.
bool loadPool(const fs::path& file, std::vector<assets::AssetRow>& rows, std::string& error);

struct OpenResult {
    bool exists = false;              // false: ask kNoSavedConsists
    std::string error;                // kInvalidFile or the file's read error; the grid stays empty
    std::vector<std::string> missing; // the blueprint files (UTF-8) of the rows whose stock is absent
    bool ok() const { return error.empty(); }
};

class ConsistBuilder {
public:
    explicit ConsistBuilder(IdSource ids = systemIds());

    // Opening: ConsistTemplates.bin read into the grid. A missing file gives an empty grid that
    // saves as a new document; an invalid one leaves the grid empty.
    OpenResult open(AppContext& ctx);

    const std::vector<GridRow>& rows() const { return m_rows; }
    bool unsaved() const { return m_unsaved; }
    // Whether a consist is being built (mnuNew or mnuGenCon has run).
    bool building() const { return m_building; }
    // The consist each row belongs to, 0 for the first: the grid shades by it.
    std::vector<std::size_t> consistNumbers() const;
    // Whether a row's blueprint file is absent below Assets.
    bool rowMissing(AppContext& ctx, std::size_t row) const;

    // mnuNew / mnuGenCon: a consist with a new id and key takes the name (UTF-8 as typed).
    // An empty name cancels and gives false.
    bool startConsist(const std::string& typedName);
    // Command2: the stock goes behind the consist being built. It is kept as the last added
    // stock either way; false when no consist is being built (nothing added).
    bool addStock(const Stock& stock);
    // The stock Command2 last took; mnuInsert puts it in.
    const std::optional<Stock>& lastStock() const { return m_lastStock; }
    void setLastStock(const Stock& stock) { m_lastStock = stock; }
    // mnuInsert (count 1) and mnuMulti: behind each selected row, walked from the last to the
    // first, the last stock goes in `count` times with that row's consist columns and a new
    // entry id. An empty message means done, else kNoPlaceSelected or kNoStockSelected.
    std::string insertAfter(std::vector<std::size_t> selected, int count = 1);
    // mnuFlip: column 6 of each selected row toggled.
    void flip(const std::vector<std::size_t>& selected);
    // mnuDel: the selected rows removed.
    void remove(std::vector<std::size_t> selected);
    // mnuRename: every row of the consist `row` belongs to takes the new name. Empty cancels.
    bool rename(std::size_t row, const std::string& typedName);
    // mnuClear.
    void clear();

    // mnuGenCon after startConsist: `wagons` rows of the pool picked by the randomness rule
    // and added as Command2 adds them. Returns how many were added; a pool row that is refused
    // is skipped and named in `problems`. `fraction` gives random numbers in [0, 1).
    int generate(const std::vector<assets::AssetRow>& pool, int wagons, int randomness,
                 const std::function<double()>& fraction, std::vector<std::string>* problems = nullptr);

    // The whole document the grid makes: the header read (or the header template with a new id
    // for a new file), one consist a group of rows, the footer. `error` names a missing template.
    std::string document(AppContext& ctx, std::string& error) const;
    // Command8: the document encoded in full, then written with its numbered backup as one
    // journal entry named `command`. Marks the grid saved.
    SaveResult save(AppContext& ctx, const std::string& command = kSaveConsistsCommand);

    // Indexes of the rows of every consist whose shown name is `typedName`.
    std::vector<std::size_t> rowsNamed(const std::string& typedName) const;

private:
    std::string newId() const { return randomId(m_ids); }

    IdSource m_ids;
    std::vector<GridRow> m_rows;
    std::string m_header;
    bool m_exists = false;
    bool m_unsaved = false;
    bool m_building = false;
    GridRow m_current; // the consist columns of the one being built
    std::optional<Stock> m_lastStock;
};

// Which pool rows `generate` picks (0-based), by the randomness rule: 0 one row for all, 1 to
// 9 the first half of the wagons from the first half of the pool and the rest from the second,
// 10 any row each time, above 10 (or below 0) none. An empty pool gives none.
std::vector<std::size_t> pickPoolRows(std::size_t poolRows, int wagons, int randomness,
                                      const std::function<double()>& fraction);

} // namespace velmora::consists
