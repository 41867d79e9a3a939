#pragma once
// What the fuzz targets share: the input as text, and a scratch file for readers that take one.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <unistd.h>

namespace fuzz {

inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// The bytes in a file of this process's own, named with `extension`, for readers of files.
inline std::filesystem::path scratchFile(std::string_view bytes, const std::string& extension) {
    const auto file = std::filesystem::temp_directory_path() /
                      ("velmora-fuzz-" + std::to_string(::getpid()) + extension);
    std::ofstream(file, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
}

} // namespace fuzz
