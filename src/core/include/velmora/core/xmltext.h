#pragma once
// The vocabulary of every tool: documents are held as one string of bytes (one character per
// byte, Windows-1252) and read and changed by searching for tag text, never by parsing.
// Positions are one-based as counted in the text; 0 means "not found" and ends a scan.
//
// Non-ASCII names occur in three spellings in the simulator's documents (ordinary UTF-8, the
// simulator's widened EF BF form, and plain Windows-1252 bytes); `DecodeChars` brings them to
// Windows-1252 for showing and comparing, `ReplaceApos` and `ReplaceApos2` go the other way.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

class ErrorLog;

// How tag searches compare: `Binary` keeps exact case, `Text` ignores letter case the way the
// platform's text comparison does for Windows-1252.
enum class Match { Binary, Text };

struct ScanSettings {
    Match match = Match::Binary;
    bool trim = false;   // PutDetail removes blanks around the value
    bool decode = false; // GetDetail and GetProvider apply DecodeChars to what they read
    ErrorLog* log = nullptr;
    const char* module = "XmlText"; // names the screen in error records
};

// The value between "<tag ...>" and "</tag" at or after `pos`. A tag also finds a longer tag
// that begins with it. On success `pos` is the position of the closing tag, so repeated calls
// walk through repeated elements. When the tag is absent `pos` becomes 0 and `value` keeps
// what it had; a missing closing tag is logged and also ends the scan.
void GetDetail(std::string_view text, std::size_t& pos, std::string_view tag, std::string& value,
               const ScanSettings& settings = {});

// Replaces the value of the first "<tag" element at or after `pos`. `pos` becomes the position
// of the closing tag in the old text (a caller that goes on allows for the change in length).
// When the element is not found the text is left as it was, `pos` is 0 and the log records it.
void PutDetail(std::string& text, std::size_t& pos, std::string_view tag, std::string_view value,
               const ScanSettings& settings = {});

// The provider and product of the blueprint reference around `pos`: the last "<Provider" at or
// before `pos` (exact case) and the first "<Product" after it. Nothing found is logged and
// leaves both empty.
void GetProvider(std::size_t pos, std::string& provider, std::string& product, std::string_view text,
                 const ScanSettings& settings = {});

// A blueprint reference: Provider, Product and BlueprintID read one after the other from `pos`,
// each search going on from where the last ended, as a reference's BlueprintID follows its
// Product. The id is empty when the reference is cut short.
struct BlueprintRef {
    std::string provider, product, blueprintId;
};
BlueprintRef GetBlueprintRef(std::string_view text, std::size_t pos, const ScanSettings& settings = {});

// The attribute form: the value of the first `name="...">...</e` at or after `pos`.
void GetDetail2(std::string_view text, std::size_t& pos, std::string_view name, std::string& value,
                const ScanSettings& settings = {});

// Reading direction: entities and both UTF-8 spellings of the table's letters become
// Windows-1252 characters. A text without "&", C3 or EF is returned at once.
void DecodeChars(std::string& text);
std::string DecodedChars(std::string_view text);

// Writing direction for names that the simulator reads (scenario names, providers, display
// names): apostrophes become "&quot;", letters the simulator's forms. A table row that would
// feed on its own output is applied once per letter and logged once, instead of never ending.
void ReplaceApos(std::string& text, ErrorLog* log = nullptr);
// Writing direction for the two places that write ordinary UTF-8.
void ReplaceApos2(std::string& text, ErrorLog* log = nullptr);

// The values of every <tag> element of a text: its own value, or, when it holds a list, the
// values of its <e> elements in order. Used for the texture lists of cross sections.
std::vector<std::string> ElementValues(std::string_view text, std::string_view tag);

// Searches used by the helpers, exposed for callers that scan documents the same way.
// `from` is one-based; the result is one-based, 0 when absent.
std::size_t InStr(std::size_t from, std::string_view text, std::string_view what, Match match);
// The last occurrence starting at or before `from` (one-based), 0 when absent.
std::size_t InStrRev(std::string_view text, std::string_view what, std::size_t from, Match match);

} // namespace velmora
