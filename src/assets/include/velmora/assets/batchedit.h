#pragma once
// The row loop of the batch edits: every selected blueprint is converted, changed by an edit
// that works on its text, converted back and stored, on all cores, the results kept in row
// order. Nothing is written until every row has been edited; then all the files of the batch
// are stored through the write service as one journal entry, so that one undo takes the whole
// batch back. A row that cannot be read or edited is passed over, named with the reason, and
// the batch goes on with the next.

#include "velmora/assets/assetgrid.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
} // namespace velmora

namespace velmora::assets {

// How a changed blueprint is kept: under its own name, the old file kept as its numbered
// backup (.bak, .bak1 .. .bak50); or as a variant beside it under a name the user chose
// (dlgCoachName), the source left as it was.
enum class Store { InPlace, NewName };

// What an edit is given for one row.
struct RowInput {
    const AssetRow* row = nullptr;
    std::size_t index = 0;        // the row's place in the batch, from 0
    std::filesystem::path file;   // the blueprint on disk
    std::filesystem::path assets; // the simulator's Assets folder
    std::string xml;              // the blueprint's text
    // The variant's names (Store::NewName): file name without extension, and display name.
    std::string newFileName, newDisplayName;
};

// What one row's edit produced. An edit only changes text and says what to store; the row loop
// converts and writes.
struct RowEdit {
    std::string xml;        // the blueprint's new text
    bool changed = true;    // false: the blueprint itself is not written
    std::string passedOver; // not empty: nothing of this row is written, and this says why
    std::vector<std::string> notes; // lines for the closing report about a row that was written
    // Further documents the edit changes or makes (an engine simulation, an empty variant),
    // each converted and stored with a numbered backup of what was there.
    struct Document {
        std::filesystem::path target;
        std::string xml;
    };
    std::vector<Document> documents;
    // Further plain files (scripts), stored the same way.
    struct File {
        std::filesystem::path target;
        std::string bytes;
    };
    std::vector<File> files;
};

// Called for each row on several threads at once: it must not touch shared state.
using RowEditor = std::function<RowEdit(const RowInput&)>;

// A variant's two names, as dlgCoachName gives them back.
struct VariantName {
    std::string fileName, displayName;
};

struct BatchOptions {
    std::string command; // the journal entry's name, e.g. "Correct Mass/Capacity of Selected"
    Store store = Store::InPlace;
    std::vector<VariantName> names; // Store::NewName: one a row, in row order
    int threads = 0;                // 0: one per core
    // false: the rows are not documents to convert (textures overwritten whole); the edit gets
    // an empty text and says what to write through RowEdit::files.
    bool readRows = true;
    // false: the batch changes no blueprint (only shapes or textures), so the simulator's
    // cache of its products' blueprints (BluePrints.pak) is kept.
    bool removesCache = true;
};

struct PassedOver {
    std::string row;    // Provider\Product\Path
    std::string reason; // a sentence
};

struct BatchResult {
    std::vector<std::filesystem::path> written; // in row order
    std::vector<PassedOver> passedOver;
    std::vector<std::string> notes;
    std::size_t rowsWritten = 0;
    bool stopped = false; // Abort was pressed before anything was written: nothing was
    std::string error;    // a failure that stopped the batch; what it had written was put back
};

BatchResult runBatch(AppContext& ctx, const std::vector<AssetRow>& rows, const BatchOptions& options,
                     const RowEditor& edit, UserInterface* ui);

// The closing report: what was written, then the rows passed over with their reasons.
std::string describe(const BatchResult& result);

} // namespace velmora::assets
