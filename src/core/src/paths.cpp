#include "velmora/core/paths.h"

#include <cctype>

#include "velmora/core/services.h"

#include <cstdlib>

#ifdef _WIN32
#include <QSettings>
#include <windows.h>
#endif

namespace velmora {

fs::path defaultHomeFolder() {
#ifdef _WIN32
    if (const char* local = std::getenv("LOCALAPPDATA"); local && *local)
        return fs::path(local) / "Velmora";
    if (const char* profile = std::getenv("USERPROFILE"); profile && *profile)
        return fs::path(profile) / "AppData" / "Local" / "Velmora";
    return fs::current_path() / "Velmora";
#else
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg)
        return fs::path(xdg) / "velmora";
    if (const char* home = std::getenv("HOME"); home && *home)
        return fs::path(home) / ".local" / "share" / "velmora";
    return fs::current_path() / ".velmora";
#endif
}

fs::path executablePath() {
#ifdef _WIN32
    wchar_t buf[32768];
    DWORD n = GetModuleFileNameW(nullptr, buf, static_cast<DWORD>(std::size(buf)));
    return fs::path(std::wstring(buf, n));
#else
    std::error_code ec;
    fs::path p = fs::read_symlink("/proc/self/exe", ec);
    return ec ? fs::path() : p;
#endif
}

fs::path findDataFolder(const fs::path& executable) {
    std::error_code ec;
    fs::path dir = executable.parent_path();
    for (const fs::path& candidate : {dir / "data", dir.parent_path() / "share" / "velmora" / "data",
                                      dir.parent_path() / "data"}) {
        if (fs::is_directory(candidate / "Language", ec))
            return candidate;
    }
    return dir / "data";
}

std::vector<fs::path> parseLibraryFolders(std::string_view vdf) {
    std::vector<fs::path> out;
    std::vector<std::string> tokens;
    for (std::size_t i = 0; i < vdf.size(); ++i) {
        if (vdf[i] != '"')
            continue;
        std::string token;
        std::size_t j = i + 1;
        for (; j < vdf.size() && vdf[j] != '"'; ++j) {
            if (vdf[j] == '\\' && j + 1 < vdf.size()) {
                ++j; // Steam escapes backslashes and quotes
            }
            token += vdf[j];
        }
        tokens.push_back(std::move(token));
        i = j;
    }
    // A library is a whole path (here or in Windows' form); an empty or relative value would be
    // looked for from wherever the program was started.
    auto whole = [](const std::string& v) {
        const bool drive = v.size() >= 3 && std::isalpha(static_cast<unsigned char>(v[0])) && v[1] == ':' &&
                           (v[2] == '\\' || v[2] == '/');
        return !v.empty() && (v[0] == '/' || v[0] == '\\' || drive || fs::path(v).is_absolute());
    };
    for (std::size_t k = 0; k + 1 < tokens.size(); ++k)
        if (iequals(tokens[k], "path") && whole(tokens[k + 1]))
            out.emplace_back(tokens[k + 1]);
    return out;
}

std::optional<fs::path> findRailWorksInSteam(const fs::path& home) {
    PathResolver resolver;
    std::vector<fs::path> libraries;
    for (const fs::path& steam : {home / ".steam" / "steam", home / ".local" / "share" / "Steam"}) {
        for (const char* rel : {"steamapps/libraryfolders.vdf", "config/libraryfolders.vdf"}) {
            std::string text = ReadTextFile(steam / rel);
            for (auto& lib : parseLibraryFolders(text))
                libraries.push_back(lib);
        }
        libraries.push_back(steam); // the Steam folder is a library of its own
    }
    for (const auto& lib : libraries) {
        if (auto root = resolver.resolve(lib, "steamapps/common/RailWorks"))
            return root;
    }
    return std::nullopt;
}

std::string registryInstallPath() {
#ifdef _WIN32
    QSettings key("HKEY_LOCAL_MACHINE\\Software\\RailSimulator.com\\RailWorks", QSettings::NativeFormat);
    return key.value("Install_Path").toString().toStdString();
#else
    return {};
#endif
}

std::string foldName(std::string_view name) {
    std::string out(name);
    for (std::size_t i = 0; i < out.size(); ++i) {
        auto c = static_cast<unsigned char>(out[i]);
        if (c >= 'A' && c <= 'Z') {
            out[i] = static_cast<char>(c + 32);
        } else if (c == 0xC3 && i + 1 < out.size()) {
            // UTF-8 of U+00C0..U+00DE (Latin-1 capitals, not the multiplication sign)
            auto n = static_cast<unsigned char>(out[i + 1]);
            if (n >= 0x80 && n <= 0x9E && n != 0x97)
                out[i + 1] = static_cast<char>(n + 0x20);
            ++i;
        }
    }
    return out;
}

std::vector<std::string> splitDocumentPath(std::string_view path) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= path.size(); ++i) {
        if (i == path.size() || path[i] == '\\' || path[i] == '/') {
            if (i > start)
                parts.emplace_back(path.substr(start, i - start));
            start = i + 1;
        }
    }
    return parts;
}

PathResolver::Listing PathResolver::readListing(const fs::path& folder) {
    Listing l;
    std::error_code ec;
    l.written = fs::last_write_time(folder, ec);
    for (auto e = fs::directory_iterator(folder, ec); !ec && e != fs::directory_iterator(); e.increment(ec)) {
        std::string name = e->path().filename().string();
        l.byFolded.emplace(foldName(name), name);
        l.exact.emplace(name, true);
    }
    return l;
}

std::optional<std::string> PathResolver::find(const Listing& l, const std::string& component) {
    if (l.exact.count(component))
        return component;
    const auto it = l.byFolded.find(foldName(component));
    if (it != l.byFolded.end())
        return it->second;
    return std::nullopt;
}

std::optional<std::string> PathResolver::lookup(const fs::path& folder, const std::string& component) const {
    const std::string key = folder.string();
    fs::file_time_type written{};
    bool listed = false;
    {
        std::shared_lock lock(m_mutex);
        const auto it = m_cache.find(key);
        if (it != m_cache.end()) {
            if (auto real = find(it->second, component))
                return real;
            written = it->second.written;
            listed = true;
        }
    }
    if (listed) {
        // A miss may be a file made since the folder was listed: read the folder again only
        // when its time says that it changed, so that lookups of missing files stay cheap.
        std::error_code ec;
        if (fs::last_write_time(folder, ec) == written)
            return std::nullopt;
    }
    Listing fresh = readListing(folder);
    std::optional<std::string> real = find(fresh, component);
    std::unique_lock lock(m_mutex);
    m_cache.insert_or_assign(key, std::move(fresh));
    return real;
}

namespace {
bool isDriveOrRoot(const std::string& first, std::string_view original) {
    return (first.size() == 2 && first[1] == ':') || (!original.empty() && original.front() == '/');
}
} // namespace

std::optional<fs::path> PathResolver::resolve(const fs::path& base, std::string_view relative) const {
#ifdef _WIN32
    // The native file system already ignores case.
    fs::path p = base / fs::path(std::string(relative)).make_preferred();
    std::error_code ec;
    if (fs::exists(p, ec))
        return p.lexically_normal();
    return std::nullopt;
#else
    auto parts = splitDocumentPath(relative);
    fs::path current = base;
    std::size_t i = 0;
    if (!parts.empty() && isDriveOrRoot(parts[0], relative)) {
        if (parts[0].size() == 2 && parts[0][1] == ':')
            return std::nullopt; // a Windows drive means nothing here
        current = "/";
    }
    std::error_code ec;
    if (!fs::exists(current, ec))
        return std::nullopt;
    for (; i < parts.size(); ++i) {
        const std::string& part = parts[i];
        if (part == ".")
            continue;
        if (part == "..") {
            current = current.parent_path();
            continue;
        }
        auto real = lookup(current, part);
        if (!real)
            return std::nullopt;
        current /= *real;
    }
    return current;
#endif
}

fs::path PathResolver::resolveForWrite(const fs::path& base, std::string_view relative) const {
    auto parts = splitDocumentPath(relative);
    fs::path current = base;
    bool resolving = true;
    for (const auto& part : parts) {
        if (part == ".")
            continue;
        if (part == "..") {
            current = current.parent_path();
            continue;
        }
        if (resolving) {
            if (auto real = lookup(current, part)) {
                current /= *real;
                continue;
            }
            resolving = false;
        }
        current /= part;
    }
    return current;
}

void PathResolver::invalidate(const fs::path& folder) const {
    std::unique_lock lock(m_mutex);
    if (folder.empty())
        m_cache.clear();
    else
        m_cache.erase(folder.string());
}

} // namespace velmora
