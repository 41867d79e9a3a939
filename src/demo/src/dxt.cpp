#include "dxt.h"

namespace velmora::demo {

namespace {

std::uint16_t to565(Rgba c) {
    return static_cast<std::uint16_t>(((c.r >> 3) << 11) | ((c.g >> 2) << 5) | (c.b >> 3));
}

Rgba mix(Rgba a, Rgba b, int num, int den) {
    auto lerp = [&](int x, int y) { return static_cast<std::uint8_t>(x + (y - x) * num / den); };
    return {lerp(a.r, b.r), lerp(a.g, b.g), lerp(a.b, b.b), lerp(a.a, b.a)};
}

void put16(std::string& out, std::uint16_t v) {
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>(v >> 8);
}

// The colour half of a block: the block's rows run from `top` to `bottom`. With two distinct
// end points every row picks the nearest of the four palette entries; c0 > c1 keeps the block in
// four-colour mode, which DXT3 and DXT5 assume anyway.
void colourBlock(std::string& out, Rgba top, Rgba bottom) {
    std::uint16_t c0 = to565(top), c1 = to565(bottom);
    bool swapped = false;
    if (c0 < c1) {
        std::swap(c0, c1);
        swapped = true;
    }
    put16(out, c0);
    put16(out, c1);
    if (c0 == c1) {
        out.append(4, '\0'); // every pixel index 0
        return;
    }
    // Palette order in four-colour mode: c0, c1, 2/3 c0 + 1/3 c1, 1/3 c0 + 2/3 c1.
    static const std::uint8_t kRowIndex[4] = {0, 2, 3, 1};
    for (int row = 0; row < 4; ++row) {
        std::uint8_t index = kRowIndex[swapped ? 3 - row : row];
        std::uint8_t bits = 0;
        for (int px = 0; px < 4; ++px)
            bits = static_cast<std::uint8_t>(bits | index << (2 * px));
        out += static_cast<char>(bits);
    }
}

void explicitAlpha(std::string& out, Rgba top, Rgba bottom) {
    for (int row = 0; row < 4; ++row) {
        std::uint8_t a = mix(top, bottom, row, 3).a >> 4;
        std::uint8_t pair = static_cast<std::uint8_t>(a | a << 4);
        out += static_cast<char>(pair);
        out += static_cast<char>(pair);
    }
}

void interpolatedAlpha(std::string& out, Rgba top, Rgba bottom) {
    std::uint8_t a0 = top.a, a1 = bottom.a;
    if (a0 == a1) {
        out += static_cast<char>(a0);
        out += static_cast<char>(a1);
        out.append(6, '\0');
        return;
    }
    if (a0 < a1)
        std::swap(a0, a1);
    out += static_cast<char>(a0);
    out += static_cast<char>(a1);
    // Eight-value mode (a0 > a1): index 0 is a0, 1 is a1, 2..7 step from a0 to a1.
    static const std::uint8_t kRowIndex[4] = {0, 3, 5, 1};
    bool topIsA0 = top.a >= bottom.a;
    std::uint64_t bits = 0;
    for (int row = 0; row < 4; ++row)
        for (int px = 0; px < 4; ++px)
            bits |= static_cast<std::uint64_t>(kRowIndex[topIsA0 ? row : 3 - row]) << (3 * (row * 4 + px));
    for (int i = 0; i < 6; ++i)
        out += static_cast<char>((bits >> (8 * i)) & 0xFF);
}

} // namespace

std::size_t dxtLevelSize(DxtFormat format, int width, int height) {
    auto blocks = static_cast<std::size_t>((width + 3) / 4) * static_cast<std::size_t>((height + 3) / 4);
    return blocks * (format == DxtFormat::Dxt1 ? 8 : 16);
}

const char* dxtFormatName(DxtFormat format) {
    switch (format) {
    case DxtFormat::Dxt1: return "HC_IMAGE_FORMAT_COMPRESSED";
    case DxtFormat::Dxt3: return "HC_IMAGE_FORMAT_COMPRESSED_EXPL_ALPHA";
    case DxtFormat::Dxt5: return "HC_IMAGE_FORMAT_COMPRESSED_INTERP_ALPHA";
    }
    return "";
}

std::string encodeDxtLevel(DxtFormat format, int width, int height, Rgba top, Rgba bottom) {
    std::string out;
    out.reserve(dxtLevelSize(format, width, height));
    const int rows = (height + 3) / 4, cols = (width + 3) / 4;
    for (int by = 0; by < rows; ++by) {
        // Each block row covers a band of the gradient.
        Rgba bandTop = mix(top, bottom, by, rows);
        Rgba bandBottom = mix(top, bottom, by + 1, rows);
        std::string block;
        if (format == DxtFormat::Dxt3)
            explicitAlpha(block, bandTop, bandBottom);
        else if (format == DxtFormat::Dxt5)
            interpolatedAlpha(block, bandTop, bandBottom);
        colourBlock(block, bandTop, bandBottom);
        for (int bx = 0; bx < cols; ++bx)
            out += block;
    }
    return out;
}

} // namespace velmora::demo
