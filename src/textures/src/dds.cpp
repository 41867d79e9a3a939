// The DDS layout and the cutting of a texture document's XML around its blobs.

#include "velmora/textures/dds.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace velmora::textures {

namespace {

constexpr std::size_t kDdsHeader = 128;

// Hexadecimal digit values; -1 for the blanks between groups, -2 for anything else.
constexpr std::array<signed char, 256> hexTable() {
    std::array<signed char, 256> t{};
    for (auto& v : t)
        v = -2;
    for (int c = 0; c < 10; ++c)
        t[static_cast<std::size_t>('0' + c)] = static_cast<signed char>(c);
    for (int c = 0; c < 6; ++c) {
        t[static_cast<std::size_t>('A' + c)] = static_cast<signed char>(10 + c);
        t[static_cast<std::size_t>('a' + c)] = static_cast<signed char>(10 + c);
    }
    for (char c : {' ', '\r', '\n', '\t'})
        t[static_cast<unsigned char>(c)] = -1;
    return t;
}
constexpr auto kHex = hexTable();

void put32(std::string& out, std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out[at + static_cast<std::size_t>(i)] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

std::uint32_t get32(std::string_view in, std::size_t at) {
    std::uint32_t v = 0;
    for (int i = 3; i >= 0; --i)
        v = (v << 8) | static_cast<unsigned char>(in[at + static_cast<std::size_t>(i)]);
    return v;
}

bool compressed(PixelFormat f) { return f == PixelFormat::Dxt1 || f == PixelFormat::Dxt3 || f == PixelFormat::Dxt5; }

// The text of an element that starts at `open`: after its '>' up to the next '<'.
std::string_view elementText(std::string_view xml, std::string_view open, std::size_t from = 0) {
    const std::size_t a = xml.find(open, from);
    if (a == std::string_view::npos)
        return {};
    const std::size_t b = xml.find('>', a);
    const std::size_t c = b == std::string_view::npos ? b : xml.find('<', b);
    if (c == std::string_view::npos)
        return {};
    return xml.substr(b + 1, c - b - 1);
}

int number(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    int v = 0;
    const auto r = std::from_chars(text.data(), text.data() + text.size(), v);
    return r.ec == std::errc() ? v : 0;
}

int levelSide(int side, std::size_t mip) { return std::max(1, side >> mip); }

std::string sizeText(int w, int h) { return std::to_string(w) + "x" + std::to_string(h); }

// The hexadecimal text of one blob as bytes; false with the reason.
bool hexBytes(std::string_view hex, std::uint32_t size, std::size_t index, std::string& out, std::string& error) {
    out.resize(size);
    char* dst = out.data();
    std::size_t n = 0;
    int high = -1;
    for (const char c : hex) {
        const int v = kHex[static_cast<unsigned char>(c)];
        if (v == -1)
            continue;
        if (v == -2) {
            error = "blob " + std::to_string(index + 1) + " holds '" + std::string(1, c) +
                    "', which is not a hexadecimal digit";
            return false;
        }
        if (high < 0) {
            high = v;
            continue;
        }
        if (n == size) {
            error = "blob " + std::to_string(index + 1) + " holds more bytes than its d:size of " + std::to_string(size);
            return false;
        }
        dst[n++] = static_cast<char>((high << 4) | v);
        high = -1;
    }
    if (n != size || high >= 0) {
        error = "blob " + std::to_string(index + 1) + " is short: its d:size says " + std::to_string(size) +
                " bytes but its text holds " + std::to_string(n);
        return false;
    }
    return true;
}

} // namespace

std::string formatShown(PixelFormat format) {
    switch (format) {
    case PixelFormat::Dxt1: return "DXT1 ARGB";
    case PixelFormat::Dxt3: return "DXT3 ARGB";
    case PixelFormat::Dxt5: return "DXT5 ARGB";
    case PixelFormat::Xrgb8888: return "RGB 8.8.8";
    case PixelFormat::Argb8888: return "ARGB 8.8.8.8";
    case PixelFormat::Unknown: break;
    }
    return "unknown";
}

bool readTextureHead(std::string_view xml, TextureLevels& out, std::string& error) {
    out = {};
    const std::size_t formatAt = xml.find("<Format");
    if (formatAt == std::string_view::npos) {
        error = "the document holds no texture image";
        return false;
    }
    const std::string_view formatText = elementText(xml, "<Format", formatAt);
    std::string upper(formatText);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
    out.format = pixelFormatNamed(upper);
    if (out.format == PixelFormat::Unknown) {
        error = "Sorry, unable to convert files of the following type at this time:- " + std::string(formatText);
        return false;
    }
    out.width = number(elementText(xml, "<Width"));
    out.height = number(elementText(xml, "<Height"));
    if (out.width <= 0 || out.height <= 0 || out.width > 16384 || out.height > 16384) {
        error = "the document's size " + sizeText(out.width, out.height) + " is not a texture's";
        return false;
    }
    return true;
}

bool readTextureXml(std::string_view xml, TextureLevels& out, TexturePieces* pieces, std::string& error,
                    const std::vector<std::string_view>* blobs) {
    if (pieces)
        *pieces = {};
    if (!readTextureHead(xml, out, error))
        return false;

    // The blobs, as positions into the one text.
    struct Span {
        std::size_t start, end;
        std::uint32_t size;
    };
    std::vector<Span> spans;
    std::size_t pos = 0;
    for (;;) {
        const std::size_t open = xml.find("<d:blob", pos);
        if (open == std::string_view::npos)
            break;
        const std::size_t q1 = xml.find('"', open);
        const std::size_t q2 = q1 == std::string_view::npos ? q1 : xml.find('"', q1 + 1);
        const std::size_t gt = q2 == std::string_view::npos ? q2 : xml.find('>', q2);
        const std::size_t close = gt == std::string_view::npos ? gt : xml.find("</d:blob", gt);
        if (close == std::string_view::npos) {
            error = "blob " + std::to_string(spans.size() + 1) + " is not closed";
            return false;
        }
        const std::string_view sizeAttr = xml.substr(q1 + 1, q2 - q1 - 1);
        std::uint32_t size = 0;
        const auto r = std::from_chars(sizeAttr.data(), sizeAttr.data() + sizeAttr.size(), size);
        if (r.ec != std::errc() || r.ptr != sizeAttr.data() + sizeAttr.size()) {
            error = "blob " + std::to_string(spans.size() + 1) + " has no valid size";
            return false;
        }
        spans.push_back({gt + 1, close, size});
        pos = close;
    }
    if (spans.empty()) {
        error = "the document holds no pixel data";
        return false;
    }
    if (spans.size() > kMaxMipLevels) {
        error = "Sorry, unable to convert files of the following type at this time:-Multiple-Texture file.";
        return false;
    }
    if (blobs && blobs->size() != spans.size()) {
        error = "the document holds " + std::to_string(blobs->size()) + " blobs but its text names " +
                std::to_string(spans.size());
        return false;
    }
    out.levels.resize(spans.size());
    for (std::size_t i = 0; i < spans.size(); ++i) {
        const int w = levelSide(out.width, i), h = levelSide(out.height, i);
        const std::size_t need = levelSize(out.format, w, h);
        if (spans[i].size < need) {
            error = "mip level " + std::to_string(i + 1) + " is short: it holds " + std::to_string(spans[i].size) +
                    " bytes, a " + sizeText(w, h) + " " + formatShown(out.format) + " level needs " + std::to_string(need);
            return false;
        }
        if (blobs) {
            if ((*blobs)[i].size() != spans[i].size) {
                error = "blob " + std::to_string(i + 1) + " is short: its d:size says " + std::to_string(spans[i].size) +
                        " bytes but it holds " + std::to_string((*blobs)[i].size());
                return false;
            }
        } else if (!hexBytes(xml.substr(spans[i].start, spans[i].end - spans[i].start), spans[i].size, i,
                             out.levels[i], error)) {
            return false;
        }
    }
    if (pieces) {
        std::size_t from = 0;
        for (const Span& s : spans) {
            pieces->sizes.push_back(s.size);
            pieces->pieces.emplace_back(xml.substr(from, s.start - from));
            from = s.end;
        }
        pieces->pieces.emplace_back(xml.substr(from));
    }
    return true;
}

std::string ddsBytes(const TextureLevels& t) {
    std::size_t total = kDdsHeader;
    for (const auto& l : t.levels)
        total += l.size();
    std::string out = ddsHeader(t.format, t.width, t.height, t.levels.empty() ? 0 : t.levels.front().size(), t.levels.size());
    out.reserve(total);
    for (const auto& l : t.levels)
        out += l;
    return out;
}

std::string ddsHeader(PixelFormat format, int width, int height, std::size_t firstLevel, std::size_t count) {
    const TextureLevels t{format, width, height, {}};
    std::string out(kDdsHeader, '\0');
    const bool dxt = compressed(t.format);
    const bool mipped = count > 1;
    std::memcpy(out.data(), "DDS ", 4);
    put32(out, 4, 124);
    // Caps, height, width, pitch and pixel format; then the linear size and the mip count. The
    // height and width flags are required by the published layout, and readers that check them
    // (ImageMagick) refuse a file without them.
    out[8] = 0x0F;
    out[9] = 0x10;
    out[10] = static_cast<char>(dxt || mipped ? 0x0A : 0x08);
    put32(out, 12, static_cast<std::uint32_t>(t.height));
    put32(out, 16, static_cast<std::uint32_t>(t.width));
    put32(out, 20, static_cast<std::uint32_t>(firstLevel));
    put32(out, 28, static_cast<std::uint32_t>(count));
    put32(out, 76, 0x20);
    if (dxt) {
        out[80] = 0x04;
        const char code = t.format == PixelFormat::Dxt1 ? '1' : t.format == PixelFormat::Dxt3 ? '3' : '5';
        std::memcpy(out.data() + 84, "DXT", 3);
        out[87] = code;
    } else {
        out[80] = static_cast<char>(t.format == PixelFormat::Argb8888 ? 0x41 : 0x40);
        out[88] = 0x20;
        out[94] = out[97] = out[100] = out[107] = static_cast<char>(0xFF);
    }
    out[109] = 0x10; // a texture
    if (mipped) {
        out[108] = 0x08; // complex
        out[110] = 0x40; // with mip maps
    }
    return out;
}

bool readDds(std::string_view bytes, TextureLevels& out, std::string& error) {
    std::vector<std::string_view> views;
    if (!readDdsLevels(bytes, out, views, error))
        return false;
    for (std::size_t i = 0; i < views.size(); ++i)
        out.levels[i].assign(views[i]);
    return true;
}

bool readDdsLevels(std::string_view bytes, TextureLevels& out, std::vector<std::string_view>& views, std::string& error) {
    out = {};
    views.clear();
    if (bytes.size() < kDdsHeader) {
        error = "the file is cut short: it holds " + std::to_string(bytes.size()) + " bytes, less than a DDS header";
        return false;
    }
    if (bytes.substr(0, 4) != "DDS " || get32(bytes, 4) != 124) {
        error = "this is not a DDS file";
        return false;
    }
    const std::uint32_t h = get32(bytes, 12), w = get32(bytes, 16);
    std::uint32_t mips = get32(bytes, 28);
    if (mips == 0)
        mips = 1;
    if (w == 0 || h == 0 || w > 16384 || h > 16384) {
        error = "its header gives the size " + std::to_string(w) + "x" + std::to_string(h) + ", which is not a texture's";
        return false;
    }
    if (mips > kMaxMipLevels) {
        error = "its header gives " + std::to_string(mips) + " mip levels; a texture has at most 16";
        return false;
    }
    const std::uint32_t pf = get32(bytes, 80);
    if (pf & 0x04) {
        const std::string_view code = bytes.substr(84, 4);
        if (code == "DXT1")
            out.format = PixelFormat::Dxt1;
        else if (code == "DXT3")
            out.format = PixelFormat::Dxt3;
        else if (code == "DXT5")
            out.format = PixelFormat::Dxt5;
        else {
            std::string shown;
            for (char c : code)
                shown += c >= 32 && c < 127 ? c : '?';
            error = "its pixel format " + shown + " is none of DXT1, DXT3, DXT5 and 32-bit ARGB";
            return false;
        }
    } else if ((pf & 0x40) && get32(bytes, 88) == 32 && get32(bytes, 92) == 0xFF0000 && get32(bytes, 96) == 0xFF00 &&
               get32(bytes, 100) == 0xFF) {
        out.format = (pf & 0x01) ? PixelFormat::Argb8888 : PixelFormat::Xrgb8888;
    } else {
        error = "its pixel format is none of DXT1, DXT3, DXT5 and 32-bit ARGB";
        return false;
    }
    out.width = static_cast<int>(w);
    out.height = static_cast<int>(h);
    std::size_t need = 0;
    std::vector<std::size_t> sizes;
    for (std::size_t i = 0; i < mips; ++i) {
        sizes.push_back(levelSize(out.format, levelSide(out.width, i), levelSide(out.height, i)));
        need += sizes.back();
    }
    const std::size_t have = bytes.size() - kDdsHeader;
    if (have != need) {
        const std::string levels = std::to_string(mips) + " mip level" + (mips == 1 ? "" : "s") + " of " +
                                   sizeText(out.width, out.height) + " " + formatShown(out.format);
        error = have < need ? "the file is cut short: its header's " + levels + " take " + std::to_string(need) +
                                  " bytes, the file holds " + std::to_string(have) + " after the header"
                            : "its header does not tell its mip levels right: " + levels + " take " +
                                  std::to_string(need) + " bytes, the file holds " + std::to_string(have) +
                                  " after the header";
        return false;
    }
    std::size_t at = kDdsHeader;
    for (std::size_t s : sizes) {
        views.push_back(bytes.substr(at, s));
        at += s;
    }
    out.levels.resize(views.size());
    return true;
}

std::string headerFileText(const TexturePieces& p) {
    std::string out = std::to_string(p.sizes.size()) + "\r\n";
    for (std::uint32_t s : p.sizes)
        out += std::to_string(s) + "\r\n";
    for (const std::string& piece : p.pieces) {
        out += '"';
        std::string safe = piece;
        std::replace(safe.begin(), safe.end(), '"', '#');
        out += safe;
        out += "\"\r\n";
    }
    return out;
}

bool readHeaderFile(std::string_view text, TexturePieces& out, std::string& error) {
    out = {};
    std::size_t pos = 0;
    auto line = [&](std::uint32_t& v) {
        const std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos)
            return false;
        std::string_view l = text.substr(pos, end - pos);
        if (!l.empty() && l.back() == '\r')
            l.remove_suffix(1);
        pos = end + 1;
        const auto r = std::from_chars(l.data(), l.data() + l.size(), v);
        return r.ec == std::errc() && r.ptr == l.data() + l.size();
    };
    std::uint32_t count = 0;
    if (!line(count) || count == 0 || count > kMaxMipLevels) {
        error = "the header file is damaged: it does not start with the count of mip levels";
        return false;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t size = 0;
        if (!line(size)) {
            error = "the header file is damaged: the size of mip level " + std::to_string(i + 1) + " is missing";
            return false;
        }
        out.sizes.push_back(size);
    }
    for (std::uint32_t i = 0; i <= count; ++i) {
        const std::size_t open = text.find('"', pos);
        const std::size_t close = open == std::string_view::npos ? open : text.find('"', open + 1);
        if (close == std::string_view::npos) {
            error = "the header file is damaged: it holds " + std::to_string(i) + " of its " +
                    std::to_string(count + 1) + " pieces of text";
            return false;
        }
        std::string piece(text.substr(open + 1, close - open - 1));
        std::replace(piece.begin(), piece.end(), '#', '"');
        out.pieces.push_back(std::move(piece));
        pos = close + 1;
    }
    return true;
}

std::string rebuildXml(const TexturePieces& p, const std::vector<std::string>& levels) {
    return rebuildXml(p, std::vector<std::string_view>(levels.begin(), levels.end()));
}

std::string rebuildXml(const TexturePieces& p, const std::vector<std::string_view>& levels) {
    static const char* digits = "0123456789ABCDEF";
    std::size_t total = 0;
    for (const auto& piece : p.pieces)
        total += piece.size();
    for (const auto& l : levels)
        total += l.size() * 3;
    std::string out;
    out.resize(total);
    char* dst = out.data();
    for (std::size_t i = 0; i < p.pieces.size(); ++i) {
        std::memcpy(dst, p.pieces[i].data(), p.pieces[i].size());
        dst += p.pieces[i].size();
        if (i >= levels.size())
            continue;
        // Rows of four pairs, a blank between pairs, no line feed before the blob's end.
        const auto* src = reinterpret_cast<const unsigned char*>(levels[i].data());
        const std::size_t n = levels[i].size();
        for (std::size_t k = 0; k < n; ++k) {
            if (k > 0)
                *dst++ = (k & 3) == 0 ? '\n' : ' ';
            *dst++ = digits[src[k] >> 4];
            *dst++ = digits[src[k] & 15];
        }
    }
    out.resize(static_cast<std::size_t>(dst - out.data()));
    return out;
}

Image levelImage(const TextureLevels& t, int mip, std::string* error) {
    if (mip < 0 || static_cast<std::size_t>(mip) >= t.levels.size()) {
        if (error)
            *error = "there is no mip level " + std::to_string(mip) + "; the texture has " +
                     std::to_string(t.levels.size()) + " (0 to " + std::to_string(int(t.levels.size()) - 1) + ")";
        return {};
    }
    const auto m = static_cast<std::size_t>(mip);
    Image img = decodeLevel(t.format, levelSide(t.width, m), levelSide(t.height, m), t.levels[m]);
    if (!img.valid() && error)
        *error = "mip level " + std::to_string(mip) + " cannot be decoded";
    return img;
}

} // namespace velmora::textures
