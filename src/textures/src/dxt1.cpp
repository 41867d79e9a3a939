#include "velmora/textures/dxt1.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace velmora::textures {

namespace {

struct Rgb {
    int r = 0, g = 0, b = 0;
};

std::uint16_t to565(const Rgb& c) {
    const auto q = [](int v, int bits) { return static_cast<unsigned>((v * ((1 << bits) - 1) + 127) / 255); };
    return static_cast<std::uint16_t>((q(c.r, 5) << 11) | (q(c.g, 6) << 5) | q(c.b, 5));
}

Rgb from565(std::uint16_t v) {
    const int r = (v >> 11) & 31, g = (v >> 5) & 63, b = v & 31;
    return {(r << 3) | (r >> 2), (g << 2) | (g >> 4), (b << 3) | (b >> 2)};
}

int distance(const Rgb& a, const Rgb& b) {
    const int dr = a.r - b.r, dg = a.g - b.g, db = a.b - b.b;
    return dr * dr + dg * dg + db * db;
}

// One 4x4 block: the ends are the block's extremes along its main axis of colour (found from
// the two pixels farthest apart in brightness), then each pixel takes the nearest of the four.
void encodeBlock(const std::array<Rgb, 16>& px, std::string& out) {
    auto brightness = [](const Rgb& c) { return 299 * c.r + 587 * c.g + 114 * c.b; };
    const auto [lo, hi] = std::minmax_element(px.begin(), px.end(), [&](const Rgb& a, const Rgb& b) {
        return brightness(a) < brightness(b);
    });
    std::uint16_t c0 = to565(*hi), c1 = to565(*lo);
    if (c0 < c1)
        std::swap(c0, c1);
    std::uint32_t indices = 0;
    if (c0 != c1) { // four colours: c0 > c1
        const Rgb a = from565(c0), b = from565(c1);
        const std::array<Rgb, 4> palette{a, b, Rgb{(2 * a.r + b.r) / 3, (2 * a.g + b.g) / 3, (2 * a.b + b.b) / 3},
                                         Rgb{(a.r + 2 * b.r) / 3, (a.g + 2 * b.g) / 3, (a.b + 2 * b.b) / 3}};
        for (int i = 0; i < 16; ++i) {
            int best = 0, bestDistance = std::numeric_limits<int>::max();
            for (int k = 0; k < 4; ++k) {
                const int d = distance(px[static_cast<std::size_t>(i)], palette[static_cast<std::size_t>(k)]);
                if (d < bestDistance) {
                    best = k;
                    bestDistance = d;
                }
            }
            indices |= static_cast<std::uint32_t>(best) << (2 * i);
        }
    }
    const unsigned char bytes[8] = {static_cast<unsigned char>(c0 & 0xFF), static_cast<unsigned char>(c0 >> 8),
                                    static_cast<unsigned char>(c1 & 0xFF), static_cast<unsigned char>(c1 >> 8),
                                    static_cast<unsigned char>(indices & 0xFF), static_cast<unsigned char>((indices >> 8) & 0xFF),
                                    static_cast<unsigned char>((indices >> 16) & 0xFF), static_cast<unsigned char>(indices >> 24)};
    out.append(reinterpret_cast<const char*>(bytes), 8);
}

} // namespace

Image scaled(const Image& picture, int width, int height) {
    Image out{width, height, std::vector<std::uint8_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4)};
    if (!picture.valid() || width <= 0 || height <= 0)
        return out;
    // Each target pixel covers [x * sw / w, (x + 1) * sw / w) of the source, at least one pixel.
    for (int y = 0; y < height; ++y) {
        const int y0 = static_cast<int>(static_cast<long long>(y) * picture.height / height);
        const int y1 = std::max(y0 + 1, static_cast<int>(static_cast<long long>(y + 1) * picture.height / height));
        for (int x = 0; x < width; ++x) {
            const int x0 = static_cast<int>(static_cast<long long>(x) * picture.width / width);
            const int x1 = std::max(x0 + 1, static_cast<int>(static_cast<long long>(x + 1) * picture.width / width));
            std::array<std::uint64_t, 4> sum{};
            for (int sy = y0; sy < y1; ++sy)
                for (int sx = x0; sx < x1; ++sx)
                    for (std::size_t c = 0; c < 4; ++c)
                        sum[c] += picture.rgba[(static_cast<std::size_t>(sy) * static_cast<std::size_t>(picture.width) +
                                                static_cast<std::size_t>(sx)) * 4 + c];
            const auto n = static_cast<std::uint64_t>(y1 - y0) * static_cast<std::uint64_t>(x1 - x0);
            for (std::size_t c = 0; c < 4; ++c)
                out.rgba[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4 + c] =
                    static_cast<std::uint8_t>((sum[c] + n / 2) / n);
        }
    }
    return out;
}

Image halved(const Image& picture) { return scaled(picture, std::max(1, picture.width / 2), std::max(1, picture.height / 2)); }

std::string encodeDxt1(const Image& picture) {
    std::string out;
    if (!picture.valid())
        return out;
    const int bw = (picture.width + 3) / 4, bh = (picture.height + 3) / 4;
    out.reserve(static_cast<std::size_t>(bw) * static_cast<std::size_t>(bh) * 8);
    std::array<Rgb, 16> block;
    for (int by = 0; by < bh; ++by)
        for (int bx = 0; bx < bw; ++bx) {
            for (int i = 0; i < 16; ++i) {
                // Past the picture's edge the last row or column stands in.
                const int x = std::min(bx * 4 + i % 4, picture.width - 1), y = std::min(by * 4 + i / 4, picture.height - 1);
                const std::uint8_t* p = &picture.rgba[(static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                                                       static_cast<std::size_t>(x)) * 4];
                block[static_cast<std::size_t>(i)] = {p[0], p[1], p[2]};
            }
            encodeBlock(block, out);
        }
    return out;
}

TextureLevels dxt1Levels(const Image& picture, int width, int height, int count) {
    TextureLevels t{PixelFormat::Dxt1, width, height, {}};
    Image level = scaled(picture, width, height);
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            level = halved(level);
        t.levels.push_back(encodeDxt1(level));
    }
    return t;
}

} // namespace velmora::textures
