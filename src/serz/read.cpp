// Reading a document file whole, with the limits that keep a crafted or damaged file from
// blocking the program or taking all of its memory.

#include "serz/serz.h"

#include <algorithm>
#include <fstream>
#include <new>
#include <system_error>

namespace serz {

Status readDocument(const std::filesystem::path& file, std::string& bytes, std::uint64_t maxBytes) {
    bytes.clear();
    auto failed = [&](const std::string& why) { return Status{false, file.string() + ": " + why, 0, 0}; };
    std::error_code ec;
    const auto status = std::filesystem::status(file, ec);
    if (ec || !std::filesystem::exists(status))
        return failed("cannot be read");
    // Opening a FIFO waits for a writer that may never come.
    if (!std::filesystem::is_regular_file(status))
        return failed("is not a regular file");
    const std::uintmax_t size = std::filesystem::file_size(file, ec);
    if (ec)
        return failed("cannot be read");
    if (size > maxBytes)
        return failed("is " + std::to_string(size) + " bytes, more than the " + std::to_string(maxBytes) +
                      " bytes a document may have");
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return failed("cannot be read");
    try {
        bytes.reserve(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        return failed("there is not enough memory to read it");
    }
    // Read through a small stage and appended, so that the string is not first filled with
    // zeros only to be written over (a pass over all of it). The pieces appended are kept
    // small: the C library copies those with vector moves.
    char stage[64 << 10];
    while (bytes.size() < size) {
        in.read(stage, static_cast<std::streamsize>(std::min<std::uintmax_t>(sizeof stage, size - bytes.size())));
        const auto got = static_cast<std::size_t>(in.gcount());
        if (got == 0)
            break;
        for (std::size_t at = 0; at < got; at += 4096)
            bytes.append(stage + at, std::min<std::size_t>(4096, got - at));
    }
    if (bytes.size() != size) {
        bytes.clear();
        return failed("cannot be read");
    }
    return Status::success();
}

} // namespace serz
