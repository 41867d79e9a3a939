#pragma once
// Reading zip archives (the simulator's .ap files) in the process. One reader is one open
// archive; it is not shared between threads (open one reader per thread instead).

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

struct zip;

namespace velmora::archives {

namespace fs = std::filesystem;

struct ZipEntry {
    std::uint64_t index = 0;  // the entry's number in the archive, from 0
    std::string name;         // as stored: '/' between folders, perhaps '\' from some packers
    std::uint64_t size = 0;   // as the archive claims it
    std::uint64_t packed = 0; // compressed size
    std::time_t modified = 0;
    std::uint32_t crc = 0;
    bool folder = false; // a name ending in '/' (or '\')
    bool link = false;   // stored with the mode of a symbolic link
};

// Why reading an entry stopped early.
enum class ReadStop { None, Damaged, TooLarge, Cancelled, Sink };

struct ReadResult {
    ReadStop stop = ReadStop::None;
    std::uint64_t bytes = 0; // handed to the sink
    std::string message;     // names the archive and the entry
    std::error_code sinkError;
    explicit operator bool() const { return stop == ReadStop::None; }
};

class ZipReader {
public:
    ZipReader();
    ~ZipReader();
    ZipReader(ZipReader&&) noexcept;
    ZipReader& operator=(ZipReader&&) noexcept;

    // Opens `archive` read-only. False, with error() naming the file and the reason, when it is
    // missing, unreadable, not a plain file or not a zip archive.
    bool open(const fs::path& archive);
    void close();
    bool isOpen() const { return m_zip != nullptr; }
    const fs::path& path() const { return m_path; }
    const std::string& error() const { return m_error; }

    std::uint64_t count() const;
    ZipEntry entry(std::uint64_t index) const;
    // Every entry in archive order.
    std::vector<ZipEntry> entries() const;

    // Streams the entry's content to `sink` in pieces, checking it against its CRC. Stops, with
    // the reason, at damaged data, at more than `limit` bytes, when `cancelled` says so, or when
    // the sink fails.
    using Sink = std::function<std::error_code(const char* data, std::size_t size)>;
    ReadResult read(std::uint64_t index, const Sink& sink, std::uint64_t limit,
                    const std::function<bool()>& cancelled = {}) const;
    // The whole entry in memory (for documents: a ScenarioProperties.xml, a blueprint), at most
    // `limit` bytes.
    ReadResult readAll(std::uint64_t index, std::string& bytes, std::uint64_t limit) const;
    // The entry whose name is `name`, letter case and '\' or '/' aside; -1 when none.
    std::int64_t find(std::string_view name) const;

private:
    zip* m_zip = nullptr;
    fs::path m_path;
    std::string m_error;
};

// An entry's name as a path for people: '\' shown as the simulator's users know it.
std::string windowsName(std::string_view entryName);

} // namespace velmora::archives
