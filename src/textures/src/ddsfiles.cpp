// A texture document to a DDS file and its header file, and an edited DDS file back into the
// document, through the write service.

#include "velmora/textures/dds.h"

#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"

#include <algorithm>

namespace velmora::textures {

namespace fs = std::filesystem;

namespace {

bool endsWithNoCase(const std::string& text, std::string_view tail) {
    if (text.size() < tail.size())
        return false;
    return std::equal(tail.begin(), tail.end(), text.end() - static_cast<std::ptrdiff_t>(tail.size()),
                      [](char a, char b) { return (a | 0x20) == (b | 0x20); });
}

std::string named(const fs::path& file, const std::string& what) { return file.string() + ": " + what; }

bool readBytes(const fs::path& file, std::string& bytes, std::string& error) {
    const serz::Status read = serz::readDocument(file, bytes);
    if (!read) {
        error = read.message.find(file.string()) == std::string::npos ? named(file, read.message) : read.message;
        return false;
    }
    return true;
}

std::string levelsShown(const TextureLevels& t) {
    return std::to_string(t.width) + "x" + std::to_string(t.height) + " " + formatShown(t.format) + ", " +
           std::to_string(t.levels.size()) + " mip level" + (t.levels.size() == 1 ? "" : "s");
}

bool sameKind(PixelFormat a, PixelFormat b) {
    auto wide = [](PixelFormat f) { return f == PixelFormat::Argb8888 || f == PixelFormat::Xrgb8888; };
    return a == b || (wide(a) && wide(b));
}

} // namespace

fs::path headerFileFor(const fs::path& dds) {
    fs::path dat = dds;
    dat.replace_extension(".dat");
    return dat;
}

DdsExport textureToDds(WriteService& files, const fs::path& texture, const fs::path& dds) {
    DdsExport r;
    if (!endsWithNoCase(texture.filename().string(), "TgPcDx")) {
        r.message = named(texture, "You do not appear to have opened a .TgPcDx file?");
        return r;
    }
    std::string xml;
    if (const ConvertResult c = binToXmlText(texture, xml); !c) {
        r.message = c.message;
        return r;
    }
    TextureLevels levels;
    TexturePieces pieces;
    std::string why;
    if (!readTextureXml(xml, levels, &pieces, why)) {
        r.message = named(texture, why);
        return r;
    }
    xml.clear();
    xml.shrink_to_fit();

    const WriteOptions exportOptions{.backup = Backup::None};
    const WriteResult image = files.write(dds, ddsBytes(levels), exportOptions);
    if (!image) {
        r.message = image.message;
        return r;
    }
    r.headerFile = headerFileFor(dds);
    const WriteResult header = files.write(r.headerFile, headerFileText(pieces), exportOptions);
    if (!header) {
        const std::string notBack = files.putBack({image});
        r.message = header.message + (notBack.empty() ? "" : "\n" + notBack);
        return r;
    }
    r.ok = true;
    r.dds = dds;
    r.format = levels.format;
    r.width = levels.width;
    r.height = levels.height;
    r.mips = static_cast<int>(levels.levels.size());
    r.message = "Editing .dds files\n"
                "When you save the edited picture keep:\n"
                "1. Size - " + std::to_string(r.width) + "x" + std::to_string(r.height) + "\n"
                "2. Format - " + formatShown(r.format) + "\n"
                "3. Number of Mip-Maps - " + std::to_string(r.mips);
    return r;
}

DdsImport ddsToTexture(WriteService& files, const fs::path& dds, const fs::path& texture) {
    DdsImport r;
    const fs::path headerPath = headerFileFor(dds);
    std::error_code ec;
    if (!fs::is_regular_file(headerPath, ec)) {
        r.message = named(dds, "No header file found in TempFiles for this .dds file, cannot process further.");
        return r;
    }
    std::string headerText, ddsData;
    if (!readBytes(headerPath, headerText, r.message) || !readBytes(dds, ddsData, r.message))
        return r;
    TexturePieces pieces;
    std::string why;
    if (!readHeaderFile(headerText, pieces, why)) {
        r.message = named(headerPath, why);
        return r;
    }
    // What the document was: its format and size from the text before the first blob.
    TextureLevels document;
    if (!readTextureHead(pieces.pieces.front(), document, why)) {
        r.message = named(headerPath, why);
        return r;
    }
    document.levels.resize(pieces.sizes.size());
    TextureLevels edited;
    if (!readDds(ddsData, edited, why)) {
        r.message = named(dds, why);
        return r;
    }
    ddsData.clear();
    ddsData.shrink_to_fit();
    if (edited.width != document.width || edited.height != document.height ||
        !sameKind(edited.format, document.format) || edited.levels.size() != document.levels.size()) {
        r.message = named(dds, "the picture is " + levelsShown(edited) + " but its texture was " + levelsShown(document) +
                                   "; save it again with the size, format and number of mip-maps of the texture");
        return r;
    }
    for (std::size_t i = 0; i < edited.levels.size(); ++i)
        if (edited.levels[i].size() != pieces.sizes[i]) {
            r.message = named(dds, "mip level " + std::to_string(i + 1) + " holds " +
                                       std::to_string(edited.levels[i].size()) + " bytes but the texture's holds " +
                                       std::to_string(pieces.sizes[i]));
            return r;
        }
    std::string bin;
    if (const ConvertResult c = xmlTextToBin(rebuildXml(pieces, edited.levels), bin, headerPath.string()); !c) {
        r.message = "Serz.exe was unable to convert your new texture to\na .TgPcDx file - Sorry but this is out of my "
                    "control.\n" + c.message;
        return r;
    }
    const WriteResult written = files.write(texture, bin);
    if (!written) {
        r.message = written.message;
        return r;
    }
    r.ok = true;
    r.written = written.target;
    r.backup = written.backup;
    return r;
}

bool readTextureFile(const fs::path& file, TextureLevels& out, std::string& error) {
    if (endsWithNoCase(file.filename().string(), ".dds")) {
        std::string bytes;
        if (!readBytes(file, bytes, error))
            return false;
        if (!readDds(bytes, out, error)) {
            error = named(file, error);
            return false;
        }
        return true;
    }
    std::string xml;
    if (const ConvertResult c = binToXmlText(file, xml); !c) {
        error = c.message;
        return false;
    }
    if (!readTextureXml(xml, out, nullptr, error)) {
        error = named(file, error);
        return false;
    }
    return true;
}

} // namespace velmora::textures
