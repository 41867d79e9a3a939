#include "velmora/core/document.h"

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

bool copyOver(const fs::path& from, const fs::path& to, std::string& message) {
    std::error_code ec;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec);
    if (ec)
        message = "Cannot copy " + from.string() + " to " + to.string() + ": " + ec.message();
    return !ec;
}

std::string nowText() {
    const std::time_t t = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&t, &local);
    char buf[64];
    std::strftime(buf, sizeof buf, "%d/%m/%Y %H:%M:%S", &local);
    return buf;
}

// Steps 1 to 4 of a save: the text to base + "xml", converted to base + "bin", renamed to
// base + extension when the document has another extension. False with a message when the
// codec refused the text; the document on disk has not been touched.
bool convertBack(const fs::path& base, const std::string& extension, std::string_view xml, SaveResult& r) {
    const fs::path tempXml(base.string() + "xml");
    const fs::path tempBin(base.string() + "bin");
    removeIfPresent(tempXml);
    if (!WriteTextFile(tempXml, xml)) {
        r.message = tempXml.string() + ": the text cannot be written to the scratch folder";
        return false;
    }
    removeIfPresent(tempBin);
    const ConvertResult converted = SerzToBin(tempXml, tempBin);
    if (!conversionSucceeded(tempBin)) {
        r.message = recompressFailedMessage();
        if (!converted.message.empty())
            r.message += "\n" + converted.message;
        return false;
    }
    r.written = tempBin;
    if (extension != "bin") {
        const fs::path target(base.string() + extension);
        removeIfPresent(target);
        std::error_code ec;
        fs::rename(tempBin, target, ec);
        if (ec) {
            r.message = "Cannot rename " + tempBin.string() + " to " + target.string() + ": " + ec.message();
            return false;
        }
        r.written = target;
    }
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

SaveResult saveBinaryDocument(const EditorDocument& doc, std::string_view xml, const SaveProgress& progress) {
    SaveResult r;
    if (doc.isXml) {
        r.message = doc.path.string() + ": an XML document is saved as text, not converted";
        return r;
    }
    if (!convertBack(doc.tempBase, doc.extension, xml, r))
        return r;
    if (progress)
        progress("Making Backup of strBin");
    const BackupResult backup = SerzBackup(doc.path);
    if (backup.outcome == BackupResult::Outcome::Failed) {
        r.message = doc.path.string() + ": no backup could be made, so the file was not replaced: " + backup.error;
        return r;
    }
    if (backup.outcome == BackupResult::Outcome::Renamed)
        r.backup = backup.backup;
    if (progress)
        progress("Copying new .bin file");
    std::error_code ec;
    fs::copy_file(r.written, doc.path, fs::copy_options::overwrite_existing, ec);
    if (ec) {
        if (!r.backup.empty() && !fs::exists(doc.path)) {
            std::error_code back;
            fs::rename(r.backup, doc.path, back);
        }
        r.message = "Cannot copy " + r.written.string() + " to " + doc.path.string() + ": " + ec.message();
        return r;
    }
    r.written = doc.path;
    if (progress)
        progress("Finished at " + nowText());
    r.ok = true;
    return r;
}

SaveResult saveBinaryDocumentAs(const EditorDocument& doc, std::string_view xml, const fs::path& chosenXml) {
    SaveResult r;
    // The chosen name up to and including its first dot becomes the scratch base.
    const std::string name = chosenXml.filename().string();
    const auto dot = name.find('.');
    const fs::path base = chosenXml.parent_path() / (dot == std::string::npos ? name + "." : name.substr(0, dot + 1));
    r.ok = convertBack(base, doc.extension.empty() ? "bin" : doc.extension, xml, r);
    return r;
}

} // namespace velmora
