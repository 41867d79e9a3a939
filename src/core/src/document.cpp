#include "velmora/core/document.h"

#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"

#include <chrono>
#include <ctime>
#include <system_error>

namespace velmora {

namespace {

void removeIfPresent(const fs::path& p) {
    std::error_code ec;
    fs::remove(p, ec);
}

bool prepare(const fs::path& file, const fs::path& tempFolder, EditorDocument& doc, std::string& message) {
    if (!FileExists(file)) {
        message = file.string() + ": the file does not exist or cannot be read";
        return false;
    }
    if (!MakePath(tempFolder)) {
        message = tempFolder.string() + ": the scratch folder cannot be made";
        return false;
    }
    doc.path = file;
    splitDocumentName(file, doc.nameWithDot, doc.extension);
    doc.tempBase = tempFolder / doc.nameWithDot;
    return true;
}

// Scratch files: replaced whole, never journalled, and not synced, since nothing is lost with
// them and a sync of a large document's text would slow every open and save.
WriteOptions scratchWrite() {
    WriteOptions scratch;
    scratch.backup = Backup::None;
    scratch.journal = false;
    scratch.refuseReadOnly = false;
    scratch.sync = false;
    return scratch;
}

// The scratch copy of a document; a document opened from the scratch folder is its own copy.
bool copyOver(const fs::path& from, const fs::path& to, std::string& message) {
    std::error_code ec;
    if (fs::equivalent(from, to, ec))
        return true;
    const WriteResult copied = WriteService().copy(from, to, scratchWrite());
    if (!copied)
        message = copied.message;
    return copied.ok;
}

std::string nowText() { return localTimeText("%d/%m/%Y %H:%M:%S"); }

// Steps 1 to 4 of a save: the text to base + "xml", converted to base + "bin", renamed to
// base + extension when the document has another extension. False with a message when the
// codec refused the text; the document on disk has not been touched.
bool convertBack(const fs::path& base, const std::string& extension, std::string_view xml, SaveResult& r,
                 std::string& bin) {
    const fs::path tempXml(base.string() + "xml");
    const fs::path tempBin(base.string() + "bin");
    removeIfPresent(tempXml);
    if (const WriteResult written = WriteService().write(tempXml, xml, scratchWrite()); !written) {
        r.message = written.message;
        return false;
    }
    removeIfPresent(tempBin);
    const ConvertResult converted = xmlTextToBin(xml, bin, tempXml.string());
    if (!converted || bin.empty()) {
        r.message = recompressFailedMessage();
        if (!converted.message.empty())
            r.message += "\n" + converted.message;
        return false;
    }
    r.written = extension != "bin" ? fs::path(base.string() + extension) : tempBin;
    if (extension != "bin")
        removeIfPresent(r.written);
    return true;
}

} // namespace

std::string recompressFailedMessage() {
    return "Serz.exe was unable to recompress this file. The operation could\n"
           "not be completed. The original file has not been altered.";
}

void splitDocumentName(const fs::path& path, std::string& nameWithDot, std::string& extension) {
    const std::string name = path.filename().string();
    const auto dot = name.rfind('.');
    if (dot == std::string::npos) {
        nameWithDot = name + ".";
        extension.clear();
        return;
    }
    nameWithDot = name.substr(0, dot + 1);
    extension = name.substr(dot + 1);
}

ConvertResult openBinaryDocument(const fs::path& file, const fs::path& tempFolder, EditorDocument& doc,
                                 std::string& xml) {
    xml.clear();
    std::string message;
    if (!prepare(file, tempFolder, doc, message))
        return {false, message};
    doc.isXml = false;
    if (!copyOver(file, doc.tempBin(), message))
        return {false, message};
    ConvertResult r = SerzToXml(doc.tempBin(), doc.tempXml());
    if (!r.ok) {
        // Name the document the user chose, not the scratch copy.
        const std::string scratch = doc.tempBin().string();
        if (r.message.rfind(scratch, 0) == 0)
            r.message = file.string() + r.message.substr(scratch.size());
        return r;
    }
    xml = ReadTextFile(doc.tempXml());
    return {true, {}};
}

ConvertResult openXmlDocument(const fs::path& file, const fs::path& tempFolder, EditorDocument& doc,
                              std::string& xml) {
    xml.clear();
    std::string message;
    if (!prepare(file, tempFolder, doc, message))
        return {false, message};
    doc.isXml = true;
    if (!copyOver(file, doc.tempXml(), message))
        return {false, message};
    xml = ReadTextFile(doc.tempXml());
    return {true, {}};
}

SaveResult saveBinaryDocument(WriteService& files, const EditorDocument& doc, std::string_view xml,
                              const SaveProgress& progress) {
    SaveResult r;
    if (doc.isXml) {
        r.message = doc.path.string() + ": an XML document is saved as text, not converted";
        return r;
    }
    std::string bin;
    if (!convertBack(doc.tempBase, doc.extension, xml, r, bin))
        return r;
    // The scratch copy stays for the user to see, as it always has; a failure there is no
    // reason not to save.
    WriteService().write(r.written, bin, scratchWrite());
    if (progress)
        progress("Making Backup of strBin");
    if (progress)
        progress("Copying new .bin file");
    const WriteResult stored = files.write(doc.path, bin);
    if (!stored) {
        r.message = stored.message;
        return r;
    }
    r.backup = stored.backup;
    r.written = stored.target;
    if (progress)
        progress("Finished at " + nowText());
    r.ok = true;
    return r;
}

SaveResult saveBinaryDocumentAs(WriteService& files, const EditorDocument& doc, std::string_view xml,
                                const fs::path& chosenXml) {
    SaveResult r;
    // The chosen name up to and including its first dot becomes the scratch base.
    const std::string name = chosenXml.filename().string();
    const auto dot = name.find('.');
    const fs::path base = chosenXml.parent_path() / (dot == std::string::npos ? name + "." : name.substr(0, dot + 1));
    std::string bin;
    if (!convertBack(base, doc.extension.empty() ? "bin" : doc.extension, xml, r, bin))
        return r;
    const WriteResult stored = files.write(r.written, bin);
    if (!stored) {
        r.message = stored.message;
        return r;
    }
    r.backup = stored.backup;
    r.ok = true;
    return r;
}

} // namespace velmora
