#pragma once
// The simulator's textures (.TgPcDx) as pictures: the top mip level of a texture document,
// decoded from DXT1, DXT3, DXT5 or plain 32-bit pixels into RGBA.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::textures {

enum class PixelFormat { Dxt1, Dxt3, Dxt5, Argb8888, Xrgb8888, Unknown };

// "HC_IMAGE_FORMAT_COMPRESSED" and its siblings.
PixelFormat pixelFormatNamed(std::string_view name);
// Bytes one level of the format takes.
std::size_t levelSize(PixelFormat format, int width, int height);

struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba; // width * height * 4, rows top to bottom
    bool valid() const { return width > 0 && height > 0 && rgba.size() == std::size_t(width) * std::size_t(height) * 4; }
};

// Decodes one level; an empty image when the data is too short or the format unknown.
Image decodeLevel(PixelFormat format, int width, int height, std::string_view data);

// The first (largest) level of a texture document's XML. `error` says what was missing.
Image textureFromXml(std::string_view xml, std::string* error = nullptr);
// The same from a .TgPcDx file through the codec; `error` names the file.
Image readTexture(const std::filesystem::path& file, std::string* error = nullptr);

} // namespace velmora::textures
