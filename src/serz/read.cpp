// Reading a document file whole, with the limits that keep a crafted or damaged file from
// blocking the program or taking all of its memory.

#include "serz/serz.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>
#include <system_error>
#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace serz {

namespace {

// Checks the file, then reads it whole: `reserve(size)` once (false when there is not enough
// memory), then `append(data, n)` piece by piece. Read through a small stage, so that no room is
// first filled with zeros only to be written over.
template <typename Reserve, typename Append>
Status readWhole(const std::filesystem::path& file, std::uint64_t maxBytes, Reserve reserve, Append append) {
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
    bool room = false;
    try {
        room = reserve(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
    }
    if (!room)
        return failed("there is not enough memory to read it");
    static thread_local char stage[64 << 10];
    std::uintmax_t done = 0;
    while (done < size) {
        in.read(stage, static_cast<std::streamsize>(std::min<std::uintmax_t>(sizeof stage, size - done)));
        const auto got = static_cast<std::size_t>(in.gcount());
        if (got == 0)
            break;
        append(stage, got);
        done += got;
    }
    if (done != size)
        return failed("cannot be read");
    return Status::success();
}

} // namespace

Status readDocument(const std::filesystem::path& file, std::string& bytes, std::uint64_t maxBytes) {
    bytes.clear();
    const Status s = readWhole(
        file, maxBytes,
        [&](std::size_t size) {
            bytes.reserve(size);
            return true;
        },
        [&](const char* data, std::size_t n) {
            // Small appends: the C library copies those with vector moves.
            for (std::size_t at = 0; at < n; at += 4096)
                bytes.append(data + at, std::min<std::size_t>(4096, n - at));
        });
    if (!s)
        bytes.clear();
    return s;
}

DocumentBytes::DocumentBytes(DocumentBytes&& other) noexcept { *this = std::move(other); }

DocumentBytes& DocumentBytes::operator=(DocumentBytes&& other) noexcept {
    if (this != &other) {
        release();
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_mapped = std::exchange(other.m_mapped, false);
        m_read = std::move(other.m_read);
    }
    return *this;
}

DocumentBytes::~DocumentBytes() { release(); }

void DocumentBytes::release() {
#ifndef _WIN32
    if (m_mapped)
        ::munmap(const_cast<char*>(m_data), m_size);
#endif
    m_data = nullptr;
    m_size = 0;
    m_mapped = false;
    m_read.reset();
}

Status readDocument(const std::filesystem::path& file, DocumentBytes& bytes, std::uint64_t maxBytes) {
    bytes = {};
#ifndef _WIN32
    // Mapped: no copy, and no fresh memory to fault in page by page. The same checks as a read
    // come first, so a FIFO is never opened and a huge file never mapped.
    std::error_code ec;
    const auto status = std::filesystem::status(file, ec);
    const std::uintmax_t size = ec ? 0 : std::filesystem::file_size(file, ec);
    if (!ec && std::filesystem::is_regular_file(status) && size > 0 && size <= maxBytes) {
        const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd >= 0) {
            void* at = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
            ::close(fd);
            if (at != MAP_FAILED) {
                bytes.m_data = static_cast<const char*>(at);
                bytes.m_size = static_cast<std::size_t>(size);
                bytes.m_mapped = true;
                return Status::success();
            }
        }
    }
#endif
    std::size_t filled = 0;
    const Status s = readWhole(
        file, maxBytes,
        [&](std::size_t room) {
            bytes.m_read = std::make_unique_for_overwrite<char[]>(room);
            bytes.m_data = bytes.m_read.get();
            bytes.m_size = room;
            return true;
        },
        [&](const char* data, std::size_t n) {
            std::memcpy(bytes.m_read.get() + filled, data, n);
            filled += n;
        });
    if (!s)
        bytes = {};
    return s;
}

} // namespace serz
