#pragma once
// A texture document's pixel data as a standard DDS file for a paint program, and an edited DDS
// file put back into the same document. The texture's XML is cut around its blobs; the cut
// pieces (the "header file", Name.dat beside Name.dds) are all that is needed to rebuild the
// document from the DDS file's levels.

#include "velmora/textures/texture.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class WriteService;
}

namespace velmora::textures {

// A texture holds at most this many mip levels; more blobs mean a texture group of several.
inline constexpr std::size_t kMaxMipLevels = 16;

// "DXT5 ARGB", "RGB 8.8.8" and so on, as the conversion advice shows the format.
std::string formatShown(PixelFormat format);

// The pixel data of a texture, largest level first.
struct TextureLevels {
    PixelFormat format = PixelFormat::Unknown;
    int width = 0;
    int height = 0;
    std::vector<std::string> levels;
};

// The document's text around its blobs: pieces[i] comes before blob i, the last piece after the
// last blob; sizes[i] is blob i's d:size.
struct TexturePieces {
    std::vector<std::uint32_t> sizes;
    std::vector<std::string> pieces; // sizes.size() + 1 of them
};

// Reads the format, size and blobs of a texture document's XML. The blob scan keeps positions
// into the one text. False with the reason (no file name) when the document is not a texture
// that converts: another format, more than 16 levels, a blob shorter than its level. With
// `blobs`, the XML's blobs are empty and their bytes are these, in order (read straight from
// the binary document); they are checked but not copied: `out.levels` are left empty, one a blob.
bool readTextureXml(std::string_view xml, TextureLevels& out, TexturePieces* pieces, std::string& error,
                    const std::vector<std::string_view>* blobs = nullptr);
// Only the format and size, from the text before the first blob; no levels.
bool readTextureHead(std::string_view xml, TextureLevels& out, std::string& error);

// The 128-byte DDS header and the levels after it.
std::string ddsBytes(const TextureLevels& texture);
std::string ddsHeader(PixelFormat format, int width, int height, std::size_t firstLevel, std::size_t count);
// The levels of a DDS file as its header describes them. False with the reason when the header
// is not one of the formats a texture uses, or the file is shorter or longer than its levels.
bool readDds(std::string_view bytes, TextureLevels& out, std::string& error);
// The same with the levels as views into `bytes`; `out.levels` are left empty, one a level.
bool readDdsLevels(std::string_view bytes, TextureLevels& out, std::vector<std::string_view>& levels,
                   std::string& error);

// The header file's text: the count of blobs, their sizes, then every piece in double quotes,
// its own double quotes written as "#". The reader turns every "#" back into a double quote.
std::string headerFileText(const TexturePieces& pieces);
bool readHeaderFile(std::string_view text, TexturePieces& out, std::string& error);

// The document's XML again, each level's bytes as hexadecimal pairs in rows of four.
std::string rebuildXml(const TexturePieces& pieces, const std::vector<std::string>& levels);
std::string rebuildXml(const TexturePieces& pieces, const std::vector<std::string_view>& levels);

// One level as a picture; an empty image (and the reason) when there is no such level.
Image levelImage(const TextureLevels& texture, int mip, std::string* error = nullptr);

// --- the conversions between files -------------------------------------------------------

struct DdsExport {
    bool ok = false;
    std::string message; // the failure, naming the file; or the advice on keeping the format
    std::filesystem::path dds;
    std::filesystem::path headerFile;
    PixelFormat format = PixelFormat::Unknown;
    int width = 0, height = 0, mips = 0;
};

// The header file that belongs to a DDS file: Name.dat beside Name.dds.
std::filesystem::path headerFileFor(const std::filesystem::path& dds);

// Writes `texture` (.TgPcDx) as `dds` and its header file beside it, both replaced without a
// backup and recorded in the journal.
DdsExport textureToDds(WriteService& files, const std::filesystem::path& texture, const std::filesystem::path& dds);

struct DdsImport {
    bool ok = false;
    std::string message; // the failure, naming the file
    std::filesystem::path written;
    std::filesystem::path backup;
};

// Puts the levels of `dds` back into the document its header file describes and writes that as
// `texture`, keeping a numbered backup of the old one. Nothing is written when the DDS file has
// another size, format or mip count than the document, is cut short, or has no header file.
DdsImport ddsToTexture(WriteService& files, const std::filesystem::path& dds, const std::filesystem::path& texture);

// Empties the texture tools' scratch folder: its files are moved below `keepIn` (recorded in
// the journal, so an undo brings them back) and the folder is made again. The problems, one a
// line; empty when all went.
std::string emptyTempDds(WriteService& files, const std::filesystem::path& folder, const std::filesystem::path& keepIn);

// The levels of a .TgPcDx or a .dds file, by its extension; false with a reason naming the file.
bool readTextureFile(const std::filesystem::path& file, TextureLevels& out, std::string& error);

} // namespace velmora::textures
