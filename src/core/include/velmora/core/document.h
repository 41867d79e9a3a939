#pragma once
// The file editor's round trip: a simulator document opened as XML text in the scratch folder
// and written back through the codec, with a numbered backup of the original. The main screen
// and `velmora-cli open`/`save` both go through here.

#include "velmora/core/convert.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace velmora {

namespace fs = std::filesystem;

class WriteService;

// "Serz.exe was unable to recompress this file. The operation could" + line break +
// "not be completed. The original file has not been altered."
std::string recompressFailedMessage();

struct EditorDocument {
    fs::path path;           // the document on disk
    std::string nameWithDot; // file name up to and including the last dot, e.g. "Bogie01."
    std::string extension;   // without the dot, e.g. "bin", "XSec"
    fs::path tempBase;       // TempFiles/<name with dot>: the scratch files add "xml" and "bin"
    bool isXml = false;      // opened as an XML file (.xml, .cost, .tgt, .proxyxml)

    fs::path tempXml() const { return fs::path(tempBase.string() + "xml"); }
    fs::path tempBin() const { return fs::path(tempBase.string() + "bin"); }
    fs::path tempWithExtension() const { return fs::path(tempBase.string() + extension); }
};

// Splits a path into the name with its last dot and the extension; a name without a dot gets
// a dot added and an empty extension.
void splitDocumentName(const fs::path& path, std::string& nameWithDot, std::string& extension);

// Opens a binary document: copies it to the scratch base + "bin", converts that to base + "xml"
// and returns the XML text. On failure `xml` is empty and the message names the file.
ConvertResult openBinaryDocument(const fs::path& file, const fs::path& tempFolder, EditorDocument& doc,
                                 std::string& xml);

// Opens an XML document as text: copied to the scratch base + "xml" and read.
ConvertResult openXmlDocument(const fs::path& file, const fs::path& tempFolder, EditorDocument& doc,
                              std::string& xml);

struct SaveResult {
    bool ok = false;
    std::string message; // on failure: what went wrong; the original is then unchanged
    fs::path backup;     // the numbered backup the original was renamed to, if any
    fs::path written;    // the file that now holds the new binary
};

// Steps reported while saving, for the status bar: "Making Backup of strBin",
// "Copying new .bin file", then "Finished at ...".
using SaveProgress = std::function<void(const std::string&)>;

// Converts the text back to binary and replaces the document with it, the original kept as
// its first free numbered backup. Nothing on disk changes except the scratch files when the
// conversion fails or any step of the write does.
// The document is stored through the write service, which keeps the numbered backup and
// records the change in the journal.
SaveResult saveBinaryDocument(WriteService& files, const EditorDocument& doc, std::string_view xml,
                              const SaveProgress& progress = {});

// Converts the text to binary under another base (the chosen name up to its first dot) and
// stores the result there, an existing file of that name kept as its numbered backup; the
// original document is not touched.
SaveResult saveBinaryDocumentAs(WriteService& files, const EditorDocument& doc, std::string_view xml,
                                const fs::path& chosenXml);

} // namespace velmora
