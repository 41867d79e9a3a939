#include "velmora/packaging/crc.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <vector>

namespace velmora::packaging {

namespace {

const std::array<std::uint32_t, 256>& crc32Table() {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t c = i;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    return table;
}

const std::array<std::uint16_t, 256>& crc16Table() {
    static const std::array<std::uint16_t, 256> table = [] {
        std::array<std::uint16_t, 256> t{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t c = i << 8;
            for (int k = 0; k < 8; ++k)
                c = (c & 0x8000u) ? (c << 1) ^ 0x1021u : c << 1;
            t[i] = static_cast<std::uint16_t>(c);
        }
        return t;
    }();
    return table;
}

// Running forms, so that a file can be fed in pieces.
std::uint32_t feed32(std::uint32_t crc, const unsigned char* p, std::size_t n) {
    const auto& t = crc32Table();
    for (std::size_t i = 0; i < n; ++i)
        crc = t[(crc ^ p[i]) & 0xFFu] ^ (crc >> 8);
    return crc;
}

std::uint16_t feed16(std::uint16_t crc, const unsigned char* p, std::size_t n) {
    const auto& t = crc16Table();
    for (std::size_t i = 0; i < n; ++i)
        crc = static_cast<std::uint16_t>((crc << 8) ^ t[((crc >> 8) ^ p[i]) & 0xFFu]);
    return crc;
}

} // namespace

std::uint32_t clsCRC::CalculateBytes(std::string_view bytes) const {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    if (Algorithm == 1)
        return feed32(0xFFFFFFFFu, p, bytes.size()) ^ 0xFFFFFFFFu;
    return feed16(0xFFFFu, p, bytes.size());
}

std::uint32_t clsCRC::CalculateFile(const std::filesystem::path& file) const {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec))
        return 0;
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return 0;
    std::vector<char> buffer(1 << 16);
    std::uint32_t crc32 = 0xFFFFFFFFu;
    std::uint16_t crc16 = 0xFFFFu;
    std::uint64_t total = 0;
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto n = static_cast<std::size_t>(in.gcount());
        const auto* p = reinterpret_cast<const unsigned char*>(buffer.data());
        if (Algorithm == 1)
            crc32 = feed32(crc32, p, n);
        else
            crc16 = feed16(crc16, p, n);
        total += n;
    }
    if (in.bad() || total == 0)
        return 0;
    return Algorithm == 1 ? crc32 ^ 0xFFFFFFFFu : crc16;
}

std::string GetCRC(const std::filesystem::path& file) {
    char text[16];
    std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(clsCRC().CalculateFile(file)));
    return text;
}

} // namespace velmora::packaging
