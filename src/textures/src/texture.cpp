#include "velmora/textures/texture.h"

#include "velmora/core/convert.h"

#include <array>

namespace velmora::textures {

namespace {

struct Colour {
    std::uint8_t r, g, b, a;
};

Colour from565(std::uint16_t c) {
    const int r = (c >> 11) & 31, g = (c >> 5) & 63, b = c & 31;
    return {static_cast<std::uint8_t>((r << 3) | (r >> 2)), static_cast<std::uint8_t>((g << 2) | (g >> 4)),
            static_cast<std::uint8_t>((b << 3) | (b >> 2)), 255};
}

std::uint8_t mix(int a, int b, int wa, int wb, int div) { return static_cast<std::uint8_t>((a * wa + b * wb) / div); }

std::uint16_t u16(const std::uint8_t* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }
std::uint32_t u32(const std::uint8_t* p) {
    return std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) | (std::uint32_t(p[3]) << 24);
}

// The four colours of a colour block; DXT1 with c0 <= c1 has three and transparent black.
std::array<Colour, 4> palette(const std::uint8_t* block, bool dxt1) {
    const std::uint16_t c0 = u16(block), c1 = u16(block + 2);
    const Colour a = from565(c0), b = from565(c1);
    std::array<Colour, 4> p{a, b, {}, {}};
    if (!dxt1 || c0 > c1) {
        p[2] = {mix(a.r, b.r, 2, 1, 3), mix(a.g, b.g, 2, 1, 3), mix(a.b, b.b, 2, 1, 3), 255};
        p[3] = {mix(a.r, b.r, 1, 2, 3), mix(a.g, b.g, 1, 2, 3), mix(a.b, b.b, 1, 2, 3), 255};
    } else {
        p[2] = {mix(a.r, b.r, 1, 1, 2), mix(a.g, b.g, 1, 1, 2), mix(a.b, b.b, 1, 1, 2), 255};
        p[3] = {0, 0, 0, 0};
    }
    return p;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

std::string_view between(std::string_view text, std::string_view open, std::size_t from, std::size_t* end = nullptr) {
    const std::size_t a = text.find(open, from);
    if (a == std::string_view::npos)
        return {};
    const std::size_t b = text.find('>', a);
    if (b == std::string_view::npos)
        return {};
    const std::size_t c = text.find('<', b + 1);
    if (c == std::string_view::npos)
        return {};
    if (end)
        *end = c;
    return text.substr(b + 1, c - b - 1);
}

} // namespace

PixelFormat pixelFormatNamed(std::string_view name) {
    if (name == "HC_IMAGE_FORMAT_COMPRESSED")
        return PixelFormat::Dxt1;
    if (name == "HC_IMAGE_FORMAT_COMPRESSED_EXPL_ALPHA")
        return PixelFormat::Dxt3;
    if (name == "HC_IMAGE_FORMAT_COMPRESSED_INTERP_ALPHA")
        return PixelFormat::Dxt5;
    if (name == "HC_IMAGE_FORMAT_COLA8888")
        return PixelFormat::Argb8888;
    if (name == "HC_IMAGE_FORMAT_COL888")
        return PixelFormat::Xrgb8888;
    return PixelFormat::Unknown;
}

std::size_t levelSize(PixelFormat format, int width, int height) {
    const std::size_t bw = static_cast<std::size_t>((width + 3) / 4), bh = static_cast<std::size_t>((height + 3) / 4);
    switch (format) {
    case PixelFormat::Dxt1: return bw * bh * 8;
    case PixelFormat::Dxt3:
    case PixelFormat::Dxt5: return bw * bh * 16;
    case PixelFormat::Argb8888:
    case PixelFormat::Xrgb8888: return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    case PixelFormat::Unknown: break;
    }
    return 0;
}

Image decodeLevel(PixelFormat format, int width, int height, std::string_view data) {
    Image img;
    if (width <= 0 || height <= 0 || width > 16384 || height > 16384 || format == PixelFormat::Unknown ||
        data.size() < levelSize(format, width, height))
        return img;
    img.width = width;
    img.height = height;
    img.rgba.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0);
    const auto* src = reinterpret_cast<const std::uint8_t*>(data.data());
    auto put = [&](int x, int y, Colour c) {
        if (x >= width || y >= height)
            return;
        std::uint8_t* p = &img.rgba[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4];
        p[0] = c.r;
        p[1] = c.g;
        p[2] = c.b;
        p[3] = c.a;
    };
    if (format == PixelFormat::Argb8888 || format == PixelFormat::Xrgb8888) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const std::uint8_t* p = src + (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4;
                // Stored as B, G, R, A in memory.
                put(x, y, {p[2], p[1], p[0], format == PixelFormat::Argb8888 ? p[3] : std::uint8_t(255)});
            }
        return img;
    }
    const std::size_t blockBytes = format == PixelFormat::Dxt1 ? 8 : 16;
    const int bw = (width + 3) / 4, bh = (height + 3) / 4;
    for (int by = 0; by < bh; ++by)
        for (int bx = 0; bx < bw; ++bx) {
            const std::uint8_t* block = src + (static_cast<std::size_t>(by) * static_cast<std::size_t>(bw) + static_cast<std::size_t>(bx)) * blockBytes;
            const std::uint8_t* colour = format == PixelFormat::Dxt1 ? block : block + 8;
            const auto pal = palette(colour, format == PixelFormat::Dxt1);
            const std::uint32_t indices = u32(colour + 4);
            std::array<std::uint8_t, 16> alpha{};
            alpha.fill(255);
            if (format == PixelFormat::Dxt3) {
                for (int i = 0; i < 16; ++i) {
                    const int nibble = (block[i / 2] >> ((i % 2) * 4)) & 15;
                    alpha[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(nibble * 17);
                }
            } else if (format == PixelFormat::Dxt5) {
                const int a0 = block[0], a1 = block[1];
                std::array<int, 8> a{a0, a1};
                if (a0 > a1)
                    for (int i = 1; i < 7; ++i)
                        a[static_cast<std::size_t>(i + 1)] = ((7 - i) * a0 + i * a1) / 7;
                else {
                    for (int i = 1; i < 5; ++i)
                        a[static_cast<std::size_t>(i + 1)] = ((5 - i) * a0 + i * a1) / 5;
                    a[6] = 0;
                    a[7] = 255;
                }
                std::uint64_t bits = 0;
                for (int i = 0; i < 6; ++i)
                    bits |= std::uint64_t(block[2 + i]) << (8 * i);
                for (int i = 0; i < 16; ++i)
                    alpha[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(a[(bits >> (3 * i)) & 7]);
            }
            for (int i = 0; i < 16; ++i) {
                Colour c = pal[(indices >> (2 * i)) & 3];
                if (format != PixelFormat::Dxt1)
                    c.a = alpha[static_cast<std::size_t>(i)];
                put(bx * 4 + i % 4, by * 4 + i / 4, c);
            }
        }
    return img;
}

Image textureFromXml(std::string_view xml, std::string* error) {
    auto fail = [&](const char* what) {
        if (error)
            *error = what;
        return Image{};
    };
    const std::size_t image = xml.find("<cHcImageDx");
    if (image == std::string_view::npos)
        return fail("the document holds no image");
    const std::string format(between(xml, "<Format", image));
    const int width = std::atoi(std::string(between(xml, "<Width", image)).c_str());
    const int height = std::atoi(std::string(between(xml, "<Height", image)).c_str());
    const std::string_view hex = between(xml, "<d:blob", image);
    const PixelFormat pf = pixelFormatNamed(format);
    if (pf == PixelFormat::Unknown)
        return fail("the texture's pixel format is not one that can be shown");
    std::string bytes;
    bytes.reserve(hex.size() / 2);
    int high = -1;
    for (char c : hex) {
        const int v = hexValue(c);
        if (v < 0)
            continue; // the blanks between groups
        if (high < 0) {
            high = v;
        } else {
            bytes.push_back(static_cast<char>((high << 4) | v));
            high = -1;
        }
    }
    Image img = decodeLevel(pf, width, height, bytes);
    if (!img.valid())
        return fail("the texture's pixel data is shorter than its size says");
    return img;
}

Image readTexture(const std::filesystem::path& file, std::string* error) {
    std::string xml;
    const ConvertResult r = binToXmlText(file, xml);
    if (!r) {
        if (error)
            *error = r.message;
        return {};
    }
    std::string why;
    Image img = textureFromXml(xml, &why);
    if (!img.valid() && error)
        *error = file.string() + ": " + why;
    return img;
}

} // namespace velmora::textures
