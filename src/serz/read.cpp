// Reading a document file whole, with the limits that keep a crafted or damaged file from
// blocking the program or taking all of its memory.

#include "serz/serz.h"

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

// Checks the file, then reads it whole into the room `reserve(size)` gives (nullptr when there
// is not enough memory).
template <typename Reserve>
Status readWhole(const std::filesystem::path& file, std::uint64_t maxBytes, Reserve reserve) {
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
    char* room = nullptr;
    try {
        room = reserve(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
    }
    if (!room && size > 0)
        return failed("there is not enough memory to read it");
    in.read(room, static_cast<std::streamsize>(size));
    if (static_cast<std::uintmax_t>(in.gcount()) != size)
        return failed("cannot be read");
    return Status::success();
}

} // namespace

Status readDocument(const std::filesystem::path& file, std::string& bytes, std::uint64_t maxBytes) {
    bytes.clear();
    const Status s = readWhole(file, maxBytes, [&](std::size_t size) {
        bytes.resize(size);
        return bytes.data();
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
    const Status s = readWhole(file, maxBytes, [&](std::size_t room) {
        // Left uninitialised: the read fills every byte.
        bytes.m_read = std::make_unique_for_overwrite<char[]>(room);
        bytes.m_data = bytes.m_read.get();
        bytes.m_size = room;
        return bytes.m_read.get();
    });
    if (!s)
        bytes = {};
    return s;
}

} // namespace serz
