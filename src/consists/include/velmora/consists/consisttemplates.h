#pragma once
// The user's saved consists: <RailWorks>/Content/ConsistTemplates.bin, decoded in memory by the
// codec and read by tag search as text. A header (everything before the first consist), one
// cConsistTemplate a consist, and a footer the program always writes itself.
//
// New consists are made from three templates in data/Templates (ConsistHeader.txt,
// ConsistName.txt, ConsistTemplateEntry.txt), filled by plain replacement of their tokens.

#include "velmora/core/templates.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::consists {

// Templates, names and ids are the program's own, shared with the other tools.
using velmora::documentText;
using velmora::fillTemplate;
using velmora::IdSource;
using velmora::randomId;
using velmora::readTemplate;
using velmora::shownName;
using velmora::systemIds;

namespace fs = std::filesystem;

// The program's words in boxes.
extern const char* const kInvalidFile; // "This Consist Template file appears to be invalid."
extern const char* const kReady;       // "Your new ConsistTemplate.bin file is now ready for use."
extern const char* const kNotWritten;  // "Your new ConsistTemplate.bin file was not written." / ...
// The journal's name for an added consist.
extern const char* const kSaveCommand; // "Save as Named Consist"

// What stands behind the last consist of every document the program writes.
extern const char* const kFooter;

// One vehicle of a saved consist. The texts are as the document holds them (XML escapes and
// the simulator's letter forms kept), so that they go back unchanged.
struct TemplateEntry {
    std::string id;
    std::string provider, product, blueprintId;
    std::string flipped; // "0" or "1"
};

struct ConsistTemplate {
    std::string id;
    std::string name; // English, else French, Italian, German, Spanish; as the document holds it
    std::string key;
    std::vector<TemplateEntry> entries;
};

struct TemplatesDocument {
    std::string header; // all before the line of the first consist
    std::vector<ConsistTemplate> consists;
};

// <RailWorks>/Content/ConsistTemplates.bin, with the spelling on disk when there is one.
fs::path consistTemplatesFile(AppContext& ctx);

// Splits decoded document text. False when it holds no "<cConsistTemplate" (an invalid file).
// Consists in a row with the same id are read as one.
bool parseConsistTemplates(const std::string& xml, TemplatesDocument& doc);

struct ReadResult {
    TemplatesDocument doc;
    bool exists = false;
    std::string error; // names the file when it could not be read, or kInvalidFile
    bool ok() const { return error.empty(); }
};
// The user's saved consists; a missing file is no error (exists is false, no consists).
ReadResult readConsistTemplates(AppContext& ctx);


// Whether the vehicle's blueprint .bin is absent below Assets, tested as written and once more
// after the text repair. A path that leads out of Assets counts as missing.
bool blueprintMissing(AppContext& ctx, const TemplateEntry& entry);



// A vehicle to save: provider, product and blueprint id as the scenario's text holds them.
struct NewVehicle {
    std::string provider, product, blueprintId;
    std::string flipped; // "0" or "1"; empty counts as "0"
};

// The text of one consist as the document holds it: the name template filled with its id, name
// and key, one entry template a vehicle in order, and the closing lines. All texts as the
// document holds them.
std::string consistText(const std::string& nameTemplate, const std::string& entryTemplate, const ConsistTemplate& consist);

// The text of one new consist: the name template with a new id, the name and a new key, one
// entry a vehicle in order, and the closing lines. `name` is UTF-8 as typed.
std::string newConsistText(const std::string& nameTemplate, const std::string& entryTemplate,
                           const std::string& name, const std::vector<NewVehicle>& vehicles, const IdSource& ids);

// The whole new document: `existing` (decoded text of the file, empty when there is none)
// up to its "</Record" line, or else the header template with a new id; then the consist and
// the footer. False with kInvalidFile when `existing` has no "</Record".
bool mergedDocument(const std::string& existing, bool exists, const std::string& headerTemplate,
                    const std::string& consistText, const IdSource& ids, std::string& out);

struct SaveResult {
    bool ok = false;
    std::string message; // kReady, kNotWritten or kInvalidFile
    std::string detail;  // why, naming the file, when it failed
    fs::path file;
    fs::path backup; // empty when the file was new
    bool created = false;
    explicit operator bool() const { return ok; }
};

// The whole document text encoded in full, then, only when that gave a document, written over
// ConsistTemplates.bin with its numbered backup as one journal entry named `command`.
SaveResult writeConsistTemplates(AppContext& ctx, const std::string& xml, const std::string& command);

// "Save as Named Consist": the consist added to ConsistTemplates.bin (a new file when there is
// none), encoded in full before anything is written, then written with a numbered backup as
// one journal entry. `ids` null takes the system's.
SaveResult saveNamedConsist(AppContext& ctx, const std::string& name, const std::vector<NewVehicle>& vehicles,
                            const IdSource* ids = nullptr);

} // namespace velmora::consists
