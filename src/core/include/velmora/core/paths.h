#pragma once
// Where things are: the program's own writable folder, the shipped data, the simulator's
// root, and the one resolver that finds a document's backslash path on any file system.

#include <filesystem>
#include <mutex>
#include <shared_mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velmora {

namespace fs = std::filesystem;

// The per-user folder for settings, TempFiles, Reports and Errors.txt:
// $XDG_DATA_HOME/velmora or ~/.local/share/velmora on Linux, %LOCALAPPDATA%\Velmora on Windows.
fs::path defaultHomeFolder();

// The running program's own file.
fs::path executablePath();

// The shipped data folder (Language, Templates, BluePrints) for a program at `executable`:
// data/ beside it, else ../share/velmora/data for an installed layout.
fs::path findDataFolder(const fs::path& executable);

// Steam's library folders as listed in libraryfolders.vdf ("path" values).
std::vector<fs::path> parseLibraryFolders(std::string_view vdfText);

// The simulator root from the Steam libraries below `home` (~/.steam/steam, then
// ~/.local/share/Steam), i.e. the first <library>/steamapps/common/RailWorks that exists.
std::optional<fs::path> findRailWorksInSteam(const fs::path& home);

// Windows: the registry value Install_Path of Software\RailSimulator.com\RailWorks
// (HKEY_LOCAL_MACHINE); empty elsewhere or when missing.
std::string registryInstallPath();

// Resolves document paths (backslashes, any letter case) against the real file system.
// Directory listings are cached; call invalidate() after creating or renaming entries.
// Thread-safe.
class PathResolver {
public:
    // The existing file or folder that `relative` names below `base`, matching each component
    // without regard to letter case (an exact match wins). `relative` may use '\' or '/',
    // and may hold "." and ".." components. nullopt when some component does not exist.
    std::optional<fs::path> resolve(const fs::path& base, std::string_view relative) const;

    // Like resolve(), but for a path that may not exist yet: the existing leading components
    // get their real spelling, the rest stays as written.
    fs::path resolveForWrite(const fs::path& base, std::string_view relative) const;

    bool exists(const fs::path& base, std::string_view relative) const {
        return resolve(base, relative).has_value();
    }

    void invalidate(const fs::path& folder = {}) const;

private:
    struct Listing {
        std::unordered_map<std::string, std::string> byFolded; // folded name -> first real name
        std::unordered_map<std::string, bool> exact;            // real names
        fs::file_time_type written{};                           // the folder's time when listed
    };
    // The real name of `component` in `folder`, or nullopt.
    std::optional<std::string> lookup(const fs::path& folder, const std::string& component) const;
    static Listing readListing(const fs::path& folder);
    static std::optional<std::string> find(const Listing& l, const std::string& component);

    // Many threads look up at once; a folder is read outside the lock and put in under it
    // alone, so that one thread's disk work does not hold up the others.
    mutable std::shared_mutex m_mutex;
    mutable std::unordered_map<std::string, Listing> m_cache;
};

// Folds letter case for name comparison: ASCII and the Latin-1 letters of UTF-8.
std::string foldName(std::string_view name);

// Splits a document path at '\' and '/', dropping empty components.
std::vector<std::string> splitDocumentPath(std::string_view path);

} // namespace velmora
