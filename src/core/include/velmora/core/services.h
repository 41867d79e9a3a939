#pragma once
// Small file and text services used by every tool. Text here is a string of bytes,
// one character per byte, as the documents are handled throughout the program.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

class UserInterface;

namespace fs = std::filesystem;

// Opens the file for reading; a folder, a missing or unreadable file all count as missing, and
// so does anything that is not a regular file (a FIFO, a device).
bool FileExists(const fs::path& path);

// A folder that exists and can be written to. A read-only folder counts as missing.
// One trailing separator is ignored.
bool FolderExists(const fs::path& path);

// The whole file as bytes; empty when missing or not a regular file. A name ending in "mkr" is read as UTF-16
// (little-endian unless a byte order mark says otherwise) and narrowed to Windows-1252.
std::string ReadTextFile(const fs::path& path);

// The lines of a text, without their CR LF or LF ends.
std::vector<std::string> SplitLines(std::string_view text);

// Creates or overwrites the file with the text through the write service, with no backup and
// no journal record: for scratch files and the program's own files. A read-only file is left
// alone. When the result has length 0, warns "An error occurred while writing <path>" through `ui`.
bool WriteTextFile(const fs::path& path, std::string_view text, UserInterface* ui = nullptr);

// What a folder entry is for a walk, without following a link to a folder: a walk that followed
// them could meet the same folders again and again, or never end. A link to a file is that file.
// Anything else (FIFOs, sockets, devices, broken links) is Other and is left alone, since
// opening it may block for ever.
enum class EntryKind { Folder, File, Other };
EntryKind entryKind(const fs::directory_entry& entry);

// Creates every missing folder of the path; true when the folder exists afterwards.
bool MakePath(const fs::path& path);

// Removes a folder with everything in it, read-only entries too; errors are ignored.
void DeleteTree(const fs::path& folder);

// In-place quicksort between two indexes (inclusive) with the middle element as pivot,
// ignoring ASCII letter case.
void SortStrings(std::vector<std::string>& items, std::ptrdiff_t low, std::ptrdiff_t high);

// Hours and minutes of a simulator time, each "00", joined ("0030"; 5400 gives "02-30").
std::string SecondsToHHMM(double seconds);

// The time converter's form: whole hours, then the rest in minutes rounded to the nearest
// (3599 seconds give "0060", 5400 give "0130").
std::string TimeToHoursMinutes(double seconds);

// A hexadecimal text as a decimal number text, up to 96 bits; empty for any character
// that is not a hex digit or on overflow.
std::string HexToDecimal(std::string_view text);

// The forms of a new identifier as the simulator's documents use them.
struct GuidForms {
    std::string uuid1;
    std::string uuid2;
    std::string cGuid;
    std::string id; // nine digits, at least 100000000
};
GuidForms makeGuidForms();
// The text shown for them: four lines with an empty line between.
std::string formatGuidForms(const GuidForms& forms);

// Opens a web address in the user's browser; says "Unable to open URL. Install browser first!"
// when none can be started.
bool openUrl(const std::string& url, UserInterface* ui);

// A size for people: "812 bytes", "4.2 KB", "1.5 GB".
std::string sizeText(std::uint64_t bytes);

// A moment in local time by a strftime format ("%Y%m%d"); now when `when` is 0.
std::string localTimeText(const char* format, long long when = 0);

// Case-insensitive (ASCII) comparisons used for names and tags.
bool iequals(std::string_view a, std::string_view b);
bool iendsWith(std::string_view text, std::string_view suffix);
std::string toLowerAscii(std::string_view text);
// A cell of a comma-separated file: as it stands, or in quotes with its quotes doubled when it
// holds a comma, a quote or a line break.
std::string csvCell(std::string_view text);
// The cells of a line. With ',' as separator a cell may stand in quotes, with its quotes doubled
// inside (the form csvCell writes); with any other separator quotes are plain characters.
std::vector<std::string> csvCells(std::string_view line, char separator = ',');
// A JSON string of UTF-8 text, in quotes, with quotes, backslashes and control characters escaped.
std::string jsonQuoted(std::string_view utf8);

// True when the bytes are well-formed UTF-8 (file names on Linux mostly are; document text
// in Windows-1252 mostly is not).
bool validUtf8(std::string_view text);

// Windows-1252 bytes to UTF-8 and back (unmappable characters become '?').
std::string latin1ToUtf8(std::string_view text);
std::string utf8ToCp1252(std::string_view text);

} // namespace velmora
