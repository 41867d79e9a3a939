// File to file: read whole, convert in memory, write beside and move into place, so that a
// failed conversion never leaves half an output and never keeps an old one.

#include "serz/serz.h"

#include <cstdio>
#include <fstream>
#include <system_error>

namespace serz {

namespace {

bool readAll(const std::filesystem::path& p, std::string& bytes) {
    std::ifstream in(p, std::ios::binary);
    if (!in)
        return false;
    in.seekg(0, std::ios::end);
    const auto size = in.tellg();
    if (size < 0)
        return false;
    bytes.resize(static_cast<std::size_t>(size));
    in.seekg(0);
    in.read(bytes.data(), size);
    return static_cast<bool>(in) || size == 0;
}

Status writeAll(const std::filesystem::path& p, const std::string& bytes) {
    std::filesystem::path temp = p;
    temp += ".serz-part";
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out) {
            std::error_code ec;
            std::filesystem::remove(temp, ec);
            return Status{false, p.string() + ": cannot be written", 0, 0};
        }
    }
    std::error_code ec;
    std::filesystem::rename(temp, p, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        return Status{false, p.string() + ": cannot be written", 0, 0};
    }
    return Status::success();
}

template <typename Convert>
Status convertFile(const std::filesystem::path& in, const std::filesystem::path& out, Convert convert) {
    std::error_code ec;
    std::filesystem::remove(out, ec);
    std::string input;
    if (!readAll(in, input))
        return Status{false, in.string() + ": cannot be read", 0, 0};
    std::string output;
    Status s = convert(input, output);
    if (!s.ok)
        return s;
    return writeAll(out, output);
}

} // namespace

Status decodeFile(const std::filesystem::path& in, const std::filesystem::path& out, const WriteOptions& options) {
    return convertFile(in, out, [&](const std::string& i, std::string& o) { return decode(i, o, options); });
}

Status encodeFile(const std::filesystem::path& in, const std::filesystem::path& out, const ReadOptions& options) {
    return convertFile(in, out, [&](const std::string& i, std::string& o) { return encode(i, o, options); });
}

} // namespace serz
