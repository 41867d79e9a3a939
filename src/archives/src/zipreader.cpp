#include "velmora/archives/zipreader.h"

#include "velmora/core/paths.h"
#include "velmora/core/services.h"

#include <zip.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <memory>
#include <cstdio>
#include <utility>

namespace velmora::archives {

namespace {

constexpr std::size_t kChunk = 1 << 20;

std::string zipErrorText(int code) {
    zip_error_t e;
    zip_error_init_with_code(&e, code);
    std::string text = zip_error_strerror(&e);
    zip_error_fini(&e);
    return text;
}


} // namespace

std::string windowsName(std::string_view entryName) {
    std::string s(entryName);
    std::replace(s.begin(), s.end(), '/', '\\');
    return s;
}

ZipReader::ZipReader() = default;
ZipReader::~ZipReader() { close(); }
ZipReader::ZipReader(ZipReader&& o) noexcept
    : m_zip(std::exchange(o.m_zip, nullptr)), m_path(std::move(o.m_path)), m_error(std::move(o.m_error)) {}
ZipReader& ZipReader::operator=(ZipReader&& o) noexcept {
    if (this != &o) {
        close();
        m_zip = std::exchange(o.m_zip, nullptr);
        m_path = std::move(o.m_path);
        m_error = std::move(o.m_error);
    }
    return *this;
}

bool ZipReader::open(const fs::path& archive) {
    close();
    m_path = archive;
    m_error.clear();
    // A FIFO or a device under an .ap name would block the open, or never end.
    std::error_code ec;
    const fs::file_status status = fs::status(archive, ec);
    if (ec || !fs::exists(status)) {
        m_error = archive.string() + ": cannot be found" + (ec ? " (" + ec.message() + ")" : std::string());
        return false;
    }
    if (!fs::is_regular_file(status)) {
        m_error = archive.string() + (fs::is_directory(status) ? ": is a folder" : ": is not a plain file") +
                  ", not an archive";
        return false;
    }
    int code = 0;
    m_zip = zip_open(archive.string().c_str(), ZIP_RDONLY, &code);
    if (!m_zip) {
        m_error = archive.string() + ": cannot be read as an archive (" + zipErrorText(code) + ")";
        return false;
    }
    return true;
}

void ZipReader::close() {
    if (m_zip)
        zip_discard(m_zip); // read only: nothing to write back
    m_zip = nullptr;
}

std::uint64_t ZipReader::count() const {
    if (!m_zip)
        return 0;
    const zip_int64_t n = zip_get_num_entries(m_zip, 0);
    return n > 0 ? static_cast<std::uint64_t>(n) : 0;
}

ZipEntry ZipReader::entry(std::uint64_t index) const {
    ZipEntry e;
    e.index = index;
    if (!m_zip)
        return e;
    zip_stat_t st;
    zip_stat_init(&st);
    if (zip_stat_index(m_zip, index, ZIP_FL_ENC_GUESS, &st) == 0) {
        if (st.valid & ZIP_STAT_NAME)
            e.name = st.name;
        if (st.valid & ZIP_STAT_SIZE)
            e.size = st.size;
        if (st.valid & ZIP_STAT_COMP_SIZE)
            e.packed = st.comp_size;
        if (st.valid & ZIP_STAT_MTIME)
            e.modified = st.mtime;
        if (st.valid & ZIP_STAT_CRC)
            e.crc = st.crc;
    }
    e.folder = !e.name.empty() && (e.name.back() == '/' || e.name.back() == '\\');
    zip_uint8_t opsys = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(m_zip, index, 0, &opsys, &attributes) == 0 && opsys == ZIP_OPSYS_UNIX)
        e.link = ((attributes >> 16) & S_IFMT) == S_IFLNK;
    return e;
}

std::vector<ZipEntry> ZipReader::entries() const {
    std::vector<ZipEntry> all;
    const std::uint64_t n = count();
    all.reserve(n);
    for (std::uint64_t i = 0; i < n; ++i)
        all.push_back(entry(i));
    return all;
}

ReadResult ZipReader::read(std::uint64_t index, const Sink& sink, std::uint64_t limit,
                           const std::function<bool()>& cancelled) const {
    ReadResult r;
    const ZipEntry e = entry(index);
    auto stop = [&](ReadStop why, std::string text) {
        r.stop = why;
        r.message = m_path.string() + ": " + windowsName(e.name) + ": " + std::move(text);
        return r;
    };
    if (!m_zip)
        return stop(ReadStop::Damaged, "the archive is not open");
    if (e.size > limit)
        return stop(ReadStop::TooLarge, "claims " + sizeText(e.size) + ", more than the " + sizeText(limit) +
                                            " any one file may have; it was not unpacked");
    zip_file_t* file = zip_fopen_index(m_zip, index, 0);
    if (!file)
        return stop(ReadStop::Damaged, std::string("cannot be read (") + zip_strerror(m_zip) + ")");
    // One buffer a thread, never cleared: most entries are small, and a fresh megabyte for each
    // would cost more than reading it.
    static thread_local std::unique_ptr<char[]> buffer(new char[kChunk]);
    const std::size_t chunk = static_cast<std::size_t>(std::min<std::uint64_t>(kChunk, e.size + 1));
    for (;;) {
        if (cancelled && cancelled()) {
            zip_fclose(file);
            return stop(ReadStop::Cancelled, "stopped");
        }
        const zip_int64_t got = zip_fread(file, buffer.get(), chunk);
        if (got < 0) {
            std::string why = zip_file_strerror(file);
            zip_fclose(file);
            return stop(ReadStop::Damaged, "is damaged (" + why + ")");
        }
        if (got == 0)
            break;
        r.bytes += static_cast<std::uint64_t>(got);
        if (r.bytes > limit) {
            zip_fclose(file);
            return stop(ReadStop::TooLarge, "holds more than the " + sizeText(limit) + " any one file may have");
        }
        if (const std::error_code ec = sink(buffer.get(), static_cast<std::size_t>(got))) {
            zip_fclose(file);
            r.sinkError = ec;
            return stop(ReadStop::Sink, ec.message());
        }
    }
    // The data ends where the archive said it would, or the archive lies about it.
    const int closed = zip_fclose(file);
    if (closed != 0)
        return stop(ReadStop::Damaged, "is damaged (" + zipErrorText(closed) + ")");
    if (r.bytes != e.size)
        return stop(ReadStop::Damaged, "holds " + sizeText(r.bytes) + " where the archive claims " + sizeText(e.size));
    return r;
}

ReadResult ZipReader::readAll(std::uint64_t index, std::string& bytes, std::uint64_t limit) const {
    bytes.clear();
    const ZipEntry e = entry(index);
    if (e.size <= limit)
        bytes.reserve(static_cast<std::size_t>(e.size));
    return read(
        index,
        [&](const char* data, std::size_t size) {
            bytes.append(data, size);
            return std::error_code{};
        },
        limit);
}

std::int64_t ZipReader::find(std::string_view name) const {
    if (!m_zip)
        return -1;
    std::string wanted(name);
    std::replace(wanted.begin(), wanted.end(), '\\', '/');
    const zip_int64_t exact = zip_name_locate(m_zip, wanted.c_str(), ZIP_FL_ENC_GUESS);
    if (exact >= 0)
        return exact;
    const std::string folded = foldName(wanted);
    const std::uint64_t n = count();
    for (std::uint64_t i = 0; i < n; ++i) {
        const char* stored = zip_get_name(m_zip, i, ZIP_FL_ENC_GUESS);
        if (!stored)
            continue;
        std::string s(stored);
        std::replace(s.begin(), s.end(), '\\', '/');
        if (foldName(s) == folded)
            return static_cast<std::int64_t>(i);
    }
    return -1;
}

} // namespace velmora::archives
