// A texture document to a DDS file and its header file, and an edited DDS file back into the
// document, through the write service.

#include "velmora/textures/dds.h"

#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "serz/serz.h"

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

template <typename Bytes>
bool readBytes(const fs::path& file, Bytes& bytes, std::string& error) {
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

// A texture document read for its pixels: the XML with its blobs left empty, and the blobs'
// bytes as views into the binary, so that megabytes of pixels never become text.
struct BinaryTexture {
    serz::DocumentBytes binary;
    std::string skeleton;
    std::vector<serz::BlobPlace> places;
    std::vector<std::string_view> blobs;
};

bool readBinaryTexture(const fs::path& file, BinaryTexture& t, std::string& error) {
    if (!readBytes(file, t.binary, error))
        return false;
    serz::WriteOptions options;
    options.blobPlaces = &t.places;
    if (const serz::Status s = serz::decode(t.binary.view(), t.skeleton, options); !s) {
        error = named(file, s.message + " (byte " + std::to_string(s.offset) + ")");
        return false;
    }
    for (const serz::BlobPlace& p : t.places)
        t.blobs.push_back(t.binary.view().substr(p.offset, p.size));
    return true;
}

// Format, size and pieces of a texture file; the levels stay in `t`.
bool readTexture(const fs::path& file, BinaryTexture& t, TextureLevels& levels, TexturePieces* pieces,
                 std::string& error) {
    if (!readBinaryTexture(file, t, error))
        return false;
    if (!readTextureXml(t.skeleton, levels, pieces, error, &t.blobs)) {
        error = named(file, error);
        return false;
    }
    return true;
}

// The pieces as the header file gives them back, for comparing: its quotes and hashes are one.
std::string asInHeaderFile(std::string piece) {
    std::replace(piece.begin(), piece.end(), '"', '#');
    return piece;
}

// True when `texture` is the very document the header file was cut from, read into `t`: then
// only its blobs change and every other byte stays as it was.
bool sameDocument(const fs::path& texture, const TexturePieces& pieces, std::size_t levelCount, BinaryTexture& t) {
    std::error_code ec;
    if (!fs::is_regular_file(texture, ec))
        return false;
    std::string error;
    if (!readBinaryTexture(texture, t, error) || t.places.size() != levelCount)
        return false;
    TextureLevels unused;
    TexturePieces current;
    // The pieces of the document as it stands, cut the same way.
    if (!readTextureXml(t.skeleton, unused, &current, error, &t.blobs) || current.sizes != pieces.sizes)
        return false;
    for (std::size_t i = 0; i < current.pieces.size(); ++i)
        if (asInHeaderFile(current.pieces[i]) != asInHeaderFile(pieces.pieces[i]))
            return false;
    return true;
}

// The document's bytes with each blob's bytes taken from `levels` instead, straight to the sink.
std::error_code writeWithLevels(const ByteSink& sink, const BinaryTexture& t, const std::vector<std::string_view>& levels) {
    const std::string_view bin = t.binary.view();
    std::size_t at = 0;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (std::error_code ec = sink(bin.data() + at, t.places[i].offset - at))
            return ec;
        if (std::error_code ec = sink(levels[i].data(), levels[i].size()))
            return ec;
        at = t.places[i].offset + t.places[i].size;
    }
    return sink(bin.data() + at, bin.size() - at);
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
    BinaryTexture t;
    TextureLevels levels;
    TexturePieces pieces;
    if (!readTexture(texture, t, levels, &pieces, r.message))
        return r;

    const WriteOptions exportOptions{.backup = Backup::None};
    const WriteResult image = files.write(
        dds,
        [&](const ByteSink& sink) {
            const std::string header = ddsHeader(levels.format, levels.width, levels.height, t.blobs.front().size(),
                                                 t.blobs.size());
            std::error_code ec = sink(header.data(), header.size());
            for (std::size_t i = 0; !ec && i < t.blobs.size(); ++i)
                ec = sink(t.blobs[i].data(), t.blobs[i].size());
            return ec;
        },
        exportOptions);
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
    std::string headerText;
    serz::DocumentBytes ddsData;
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
    std::vector<std::string_view> levels;
    if (!readDdsLevels(ddsData.view(), edited, levels, why)) {
        r.message = named(dds, why);
        return r;
    }
    if (edited.width != document.width || edited.height != document.height ||
        !sameKind(edited.format, document.format) || edited.levels.size() != document.levels.size()) {
        r.message = named(dds, "the picture is " + levelsShown(edited) + " but its texture was " + levelsShown(document) +
                                   "; save it again with the size, format and number of mip-maps of the texture");
        return r;
    }
    for (std::size_t i = 0; i < levels.size(); ++i)
        if (levels[i].size() != pieces.sizes[i]) {
            r.message = named(dds, "mip level " + std::to_string(i + 1) + " holds " +
                                       std::to_string(levels[i].size()) + " bytes but the texture's holds " +
                                       std::to_string(pieces.sizes[i]));
            return r;
        }
    BinaryTexture current;
    WriteResult written;
    if (sameDocument(texture, pieces, levels.size(), current)) {
        // The document the header file belongs to: only its pixels change.
        written = files.write(
            texture, [&](const ByteSink& sink) { return writeWithLevels(sink, current, levels); }, WriteOptions{});
    } else {
        std::string bin;
        if (const ConvertResult c = xmlTextToBin(rebuildXml(pieces, levels), bin, headerPath.string()); !c) {
            r.message = "Serz.exe was unable to convert your new texture to\na .TgPcDx file - Sorry but this is out of my "
                        "control.\n" + c.message;
            return r;
        }
        written = files.write(texture, bin);
    }
    if (!written) {
        r.message = written.message;
        return r;
    }
    r.ok = true;
    r.written = written.target;
    r.backup = written.backup;
    return r;
}

std::string emptyTempDds(WriteService& files, const fs::path& folder, const fs::path& keepIn) {
    std::string problems;
    std::error_code ec;
    if (fs::is_directory(folder, ec))
        for (const std::string& p : files.removeFolder(folder, keepIn))
            problems += p + "\n";
    fs::create_directories(folder, ec);
    if (ec)
        problems += folder.string() + ": the folder cannot be made (" + ec.message() + ")\n";
    return problems;
}

bool readTextureFile(const fs::path& file, TextureLevels& out, std::string& error) {
    if (endsWithNoCase(file.filename().string(), ".dds")) {
        serz::DocumentBytes bytes;
        if (!readBytes(file, bytes, error))
            return false;
        if (!readDds(bytes.view(), out, error)) {
            error = named(file, error);
            return false;
        }
        return true;
    }
    BinaryTexture t;
    if (!readTexture(file, t, out, nullptr, error))
        return false;
    for (std::size_t i = 0; i < t.blobs.size(); ++i)
        out.levels[i].assign(t.blobs[i]);
    return true;
}

} // namespace velmora::textures
