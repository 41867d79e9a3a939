#pragma once
// The checksums a reskin package compares files by: CRC-32 (the common reflected one,
// polynomial 0xEDB88320) and CRC-16 (CCITT, polynomial 0x1021). A missing or empty file gives 0,
// so two such files compare equal.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace velmora::packaging {

class clsCRC {
public:
    // 1: CRC-32; 0: CRC-16.
    int Algorithm = 1;

    std::uint32_t CalculateBytes(std::string_view bytes) const;
    // The file read whole; 0 when it is missing, empty or cannot be read.
    std::uint32_t CalculateFile(const std::filesystem::path& file) const;
};

// The CRC-32 of a file as hexadecimal text, upper case ("0" for a missing or empty file).
std::string GetCRC(const std::filesystem::path& file);

} // namespace velmora::packaging
