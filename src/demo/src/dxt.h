#pragma once
// Block-compressed pixel data for the demo's textures: solid colours and two-colour gradients,
// which is all a fixture needs, encoded as real DXT1, DXT3 and DXT5 blocks.

#include <cstdint>
#include <string>

namespace velmora::demo {

enum class DxtFormat { Dxt1, Dxt3, Dxt5 };

struct Rgba {
    std::uint8_t r = 0, g = 0, b = 0, a = 255;
};

// One mip level of `width` x `height` pixels: a vertical gradient from `top` to `bottom`.
// Sizes below 4 still take whole 4x4 blocks, as the format wants.
std::string encodeDxtLevel(DxtFormat format, int width, int height, Rgba top, Rgba bottom);

// Bytes a level takes: ceil(w/4) * ceil(h/4) * (8 for DXT1, else 16).
std::size_t dxtLevelSize(DxtFormat format, int width, int height);

// The simulator's name of the format in a texture document.
const char* dxtFormatName(DxtFormat format);

} // namespace velmora::demo
