#include "velmora/core/services.h"

#include "serz/serz.h"

#include "velmora/core/filewrite.h"
#include "velmora/core/process.h"
#include "velmora/core/userinterface.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <random>
#include <system_error>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace velmora {

namespace {

char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

bool isWritable(const fs::path& p) {
#ifdef _WIN32
    std::error_code ec;
    auto perms = fs::status(p, ec).permissions();
    return !ec && (perms & fs::perms::owner_write) != fs::perms::none;
#else
    return ::access(p.c_str(), W_OK) == 0;
#endif
}

} // namespace

bool iequals(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lowerAscii(a[i]) != lowerAscii(b[i]))
            return false;
    return true;
}

bool iendsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && iequals(text.substr(text.size() - suffix.size()), suffix);
}

std::string csvCell(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos)
        return std::string(text);
    std::string out = "\"";
    for (char ch : text)
        out += ch == '"' ? std::string("\"\"") : std::string(1, ch);
    return out + "\"";
}

std::vector<std::string> csvCells(std::string_view line, char separator) {
    std::vector<std::string> cells;
    std::string cell;
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char ch = line[i];
        if (quoted) {
            if (ch == '"' && i + 1 < line.size() && line[i + 1] == '"') {
                cell += '"';
                ++i;
            } else if (ch == '"') {
                quoted = false;
            } else {
                cell += ch;
            }
        } else if (ch == separator) {
            cells.push_back(std::move(cell));
            cell.clear();
        } else if (ch == '"' && separator == ',' && cell.empty()) {
            quoted = true;
        } else {
            cell += ch;
        }
    }
    cells.push_back(std::move(cell));
    return cells;
}

std::string jsonQuoted(std::string_view utf8) {
    std::string out = "\"";
    for (char c : utf8) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                static const char kHex[] = "0123456789abcdef";
                out += "\\u00";
                out += kHex[(c >> 4) & 0xF];
                out += kHex[c & 0xF];
            } else {
                out += c;
            }
        }
    }
    return out + "\"";
}

std::string toLowerAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = lowerAscii(c);
    return out;
}

bool FileExists(const fs::path& path) {
    std::error_code ec;
    // Only regular files: opening a FIFO would wait for a writer that may never come.
    if (path.empty() || !fs::is_regular_file(path, ec))
        return false;
    std::ifstream in(path, std::ios::binary);
    return in.is_open();
}

std::vector<std::string> SplitLines(std::string_view text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.emplace_back(line);
        start = end + 1;
    }
    return lines;
}

bool FolderExists(const fs::path& path) {
    std::string s = path.string();
    if (!s.empty() && (s.back() == '\\' || s.back() == '/') && s.size() > 1)
        s.pop_back();
    std::error_code ec;
    if (s.empty() || !fs::is_directory(s, ec))
        return false;
    // Asks the system instead of writing a probe file: same answer, the folder stays untouched.
    return isWritable(s);
}

namespace {
// Windows-1252 0x80-0x9F as code points.
constexpr std::array<char16_t, 32> kCp1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char codePointToCp1252(char32_t cp) {
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF))
        return static_cast<char>(cp);
    for (std::size_t i = 0; i < kCp1252High.size(); ++i)
        if (kCp1252High[i] == cp)
            return static_cast<char>(0x80 + i);
    return '?';
}

using serz::appendUtf8;

std::string utf16ToCp1252(const std::string& bytes) {
    bool bigEndian = false;
    std::size_t start = 0;
    if (bytes.size() >= 2) {
        auto b0 = static_cast<unsigned char>(bytes[0]), b1 = static_cast<unsigned char>(bytes[1]);
        if (b0 == 0xFF && b1 == 0xFE)
            start = 2;
        else if (b0 == 0xFE && b1 == 0xFF) {
            start = 2;
            bigEndian = true;
        }
    }
    std::string out;
    out.reserve(bytes.size() / 2);
    for (std::size_t i = start; i + 1 < bytes.size(); i += 2) {
        auto lo = static_cast<unsigned char>(bytes[i]), hi = static_cast<unsigned char>(bytes[i + 1]);
        char32_t unit = bigEndian ? (lo << 8 | hi) : (hi << 8 | lo);
        if (unit >= 0xD800 && unit <= 0xDFFF) {
            out += '?'; // outside the single-byte page either way
            if (unit < 0xDC00)
                i += 2;
            continue;
        }
        out += codePointToCp1252(unit);
    }
    return out;
}
} // namespace

bool validUtf8(std::string_view s) {
    for (std::size_t i = 0; i < s.size();) {
        const auto c = static_cast<unsigned char>(s[i]);
        const std::size_t n = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        if (n == 0 || i + n > s.size())
            return false;
        for (std::size_t k = 1; k < n; ++k)
            if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80)
                return false;
        i += n;
    }
    return true;
}

std::string latin1ToUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char ch : text) {
        auto c = static_cast<unsigned char>(ch);
        if (c < 0x80)
            out += ch;
        else if (c < 0xA0)
            appendUtf8(out, kCp1252High[c - 0x80]);
        else
            appendUtf8(out, c);
    }
    return out;
}

std::string utf8ToCp1252(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        auto c = static_cast<unsigned char>(text[i]);
        int len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        if (len == 0 || i + len > text.size()) {
            out += '?';
            ++i;
            continue;
        }
        char32_t cp = len == 1 ? c : len == 2 ? (c & 0x1F) : len == 3 ? (c & 0x0F) : (c & 0x07);
        for (int k = 1; k < len; ++k)
            cp = (cp << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        out += codePointToCp1252(cp);
        i += len;
    }
    return out;
}

std::string ReadTextFile(const fs::path& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec))
        return {};
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return {};
    std::string bytes;
    in.seekg(0, std::ios::end);
    auto size = in.tellg();
    if (size > 0) {
        bytes.resize(static_cast<std::size_t>(size));
        in.seekg(0);
        in.read(bytes.data(), size);
        bytes.resize(static_cast<std::size_t>(in.gcount()));
    }
    if (iendsWith(path.filename().string(), "mkr"))
        return utf16ToCp1252(bytes);
    return bytes;
}

bool WriteTextFile(const fs::path& path, std::string_view text, UserInterface* ui) {
    const WriteResult written = writeFileSafely(path, text, Backup::None);
    if (!written || text.empty()) {
        if (ui)
            ui->message("An error occurred while writing " + path.string(), Icon::Warning);
        return false;
    }
    return true;
}

EntryKind entryKind(const fs::directory_entry& entry) {
    // The entry's own type as the folder listing gave it: no call to the file system unless
    // the listing did not say or the entry is a link.
    std::error_code ec;
    const bool link = entry.is_symlink(ec);
    if (ec)
        return EntryKind::Other;
    if (link)
        return fs::is_regular_file(entry.status(ec)) && !ec ? EntryKind::File : EntryKind::Other;
    if (entry.is_directory(ec))
        return EntryKind::Folder;
    return !ec && entry.is_regular_file(ec) && !ec ? EntryKind::File : EntryKind::Other;
}

bool MakePath(const fs::path& path) {
    std::error_code ec;
    fs::create_directories(path, ec);
    return fs::is_directory(path, ec);
}

void DeleteTree(const fs::path& folder) {
    std::error_code ec;
    if (!fs::exists(folder, ec))
        return;
    // Read-only entries go too: make everything writable first.
    for (auto it = fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
        std::error_code pe;
        if (!it->is_symlink(pe))
            fs::permissions(it->path(), fs::perms::owner_write, fs::perm_options::add, pe);
    }
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(folder, ec);
}

void SortStrings(std::vector<std::string>& items, std::ptrdiff_t low, std::ptrdiff_t high) {
    auto less = [](const std::string& a, const std::string& b) {
        std::size_t n = std::min(a.size(), b.size());
        for (std::size_t i = 0; i < n; ++i) {
            char x = lowerAscii(a[i]), y = lowerAscii(b[i]);
            if (x != y)
                return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
        }
        return a.size() < b.size();
    };
    low = std::max<std::ptrdiff_t>(low, 0);
    high = std::min<std::ptrdiff_t>(high, static_cast<std::ptrdiff_t>(items.size()) - 1);
    // Recurse into the smaller part and loop over the larger, so depth stays logarithmic.
    while (low < high) {
        const std::string pivot = items[static_cast<std::size_t>((low + high) / 2)];
        std::ptrdiff_t i = low, j = high;
        while (i <= j) {
            while (less(items[static_cast<std::size_t>(i)], pivot))
                ++i;
            while (less(pivot, items[static_cast<std::size_t>(j)]))
                --j;
            if (i <= j) {
                std::swap(items[static_cast<std::size_t>(i)], items[static_cast<std::size_t>(j)]);
                ++i;
                --j;
            }
        }
        if (j - low < high - i) {
            if (low < j)
                SortStrings(items, low, j);
            low = i;
        } else {
            if (i < high)
                SortStrings(items, i, high);
            high = j;
        }
    }
}

std::string SecondsToHHMM(double seconds) {
    // Both parts round half to even; rounding the hours up leaves negative minutes.
    double hours = std::nearbyint(seconds / 3600.0);
    double minutes = std::nearbyint((seconds - hours * 3600.0) / 60.0);
    auto two = [](double v) {
        char buf[32];
        long long n = static_cast<long long>(v);
        if (n < 0)
            std::snprintf(buf, sizeof buf, "-%02lld", -n);
        else
            std::snprintf(buf, sizeof buf, "%02lld", n);
        return std::string(buf);
    };
    return two(hours) + two(minutes);
}

std::string TimeToHoursMinutes(double seconds) {
    double hours = std::trunc(seconds / 3600.0);
    double minutes = std::nearbyint((seconds - hours * 3600.0) / 60.0);
    char buf[48];
    std::snprintf(buf, sizeof buf, "%02lld%02lld", static_cast<long long>(hours), static_cast<long long>(minutes));
    return buf;
}

std::string HexToDecimal(std::string_view text) {
    // Three 32-bit limbs hold the 96-bit value, least significant first.
    std::array<std::uint64_t, 3> limb{0, 0, 0};
    for (char c : text) {
        int d;
        if (c >= '0' && c <= '9')
            d = c - '0';
        else if (c >= 'a' && c <= 'f')
            d = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            d = c - 'A' + 10;
        else
            return {};
        std::uint64_t carry = static_cast<std::uint64_t>(d);
        for (auto& l : limb) {
            std::uint64_t v = l * 16 + carry;
            l = v & 0xFFFFFFFFu;
            carry = v >> 32;
        }
        if (carry)
            return {}; // beyond 96 bits
    }
    std::string digits;
    while (limb[0] || limb[1] || limb[2]) {
        std::uint64_t rem = 0;
        for (int k = 2; k >= 0; --k) {
            std::uint64_t cur = (rem << 32) | limb[static_cast<std::size_t>(k)];
            limb[static_cast<std::size_t>(k)] = cur / 10;
            rem = cur % 10;
        }
        digits += static_cast<char>('0' + rem);
    }
    if (digits.empty())
        digits = "0";
    std::reverse(digits.begin(), digits.end());
    return digits;
}

GuidForms makeGuidForms() {
    static thread_local std::mt19937_64 rng{std::random_device{}() ^
                                            (static_cast<std::uint64_t>(std::random_device{}()) << 32)};
    auto guid = [] {
        std::array<unsigned char, 16> b{};
        std::uint64_t a = rng(), c = rng();
        for (int i = 0; i < 8; ++i) {
            b[static_cast<std::size_t>(i)] = static_cast<unsigned char>(a >> (8 * i));
            b[static_cast<std::size_t>(i + 8)] = static_cast<unsigned char>(c >> (8 * i));
        }
        b[6] = static_cast<unsigned char>((b[6] & 0x0F) | 0x40); // version 4
        b[8] = static_cast<unsigned char>((b[8] & 0x3F) | 0x80); // RFC 4122 variant
        char buf[40];
        std::snprintf(buf, sizeof buf, "%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x", b[0],
                      b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
        return std::string(buf);
    };
    GuidForms f;
    f.uuid1 = guid();
    f.uuid2 = guid();
    f.cGuid = guid();
    std::uniform_int_distribution<long> id(100000000, 999999999);
    char buf[16];
    std::snprintf(buf, sizeof buf, "%09ld", id(rng));
    f.id = buf;
    return f;
}

std::string formatGuidForms(const GuidForms& f) {
    return "UUID1 = " + f.uuid1 + "\n\nUUID2 = " + f.uuid2 + "\n\ncGUID = " + f.cGuid + "\n\n   ID = " + f.id;
}

bool openUrl(const std::string& url, UserInterface* ui) {
#ifdef _WIN32
    bool ok = startDetached("rundll32", {"url.dll,FileProtocolHandler", url});
#elif defined(__APPLE__)
    bool ok = startDetached("open", {url});
#else
    bool ok = startDetached("xdg-open", {url});
#endif
    if (!ok && ui)
        ui->message("Unable to open URL. Install browser first!", Icon::Warning);
    return ok;
}

} // namespace velmora

namespace velmora {

std::string sizeText(std::uint64_t bytes) {
    const char* units[] = {"bytes", "KB", "MB", "GB", "TB"};
    double v = static_cast<double>(bytes);
    int u = 0;
    while (v >= 1024 && u < 4) {
        v /= 1024;
        ++u;
    }
    char buf[48];
    std::snprintf(buf, sizeof buf, u == 0 ? "%.0f %s" : "%.1f %s", v, units[u]);
    return buf;
}

std::string localTimeText(const char* format, long long when) {
    const std::time_t t = when ? static_cast<std::time_t>(when) : std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &t);
#else
    localtime_r(&t, &local);
#endif
    char buf[64];
    if (std::strftime(buf, sizeof buf, format, &local) == 0)
        return {};
    return buf;
}

} // namespace velmora
