#pragma once
// What the desktop program remembers between runs beyond the settings file: where each screen
// was (and whether it was maximised) and the documents opened lately. One small text file in the
// program's folder, one record per line:
//   place <TAB> <screen> <TAB> <left> <TAB> <top> <TAB> <width> <TAB> <height> <TAB> 0|1
//   recent <TAB> <path>
// A line that does not read is skipped: the file only ever costs a window its old place.

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

class WriteService;

struct WindowPlace {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool maximised = false;
    bool operator==(const WindowPlace&) const = default;
};

class DesktopState {
public:
    static constexpr const char* kFileName = "Desktop.txt";
    static constexpr std::size_t kRecentCount = 10;

    DesktopState() = default;
    explicit DesktopState(std::filesystem::path file) : m_file(std::move(file)) {}

    const std::filesystem::path& file() const { return m_file; }
    // Reads the file; a missing file is an empty state.
    void load();
    // Writes the whole state, replacing the file (no backup: it is the program's own).
    // Empty on success, else the reason naming the file.
    std::string save(WriteService& files) const;
    // The text of the file, and the state from such a text.
    std::string text() const;
    void read(std::string_view text);

    std::optional<WindowPlace> place(const std::string& screen) const;
    void setPlace(const std::string& screen, const WindowPlace& place);

    // Newest first, each path once; a path holding a line break or a TAB is not kept.
    const std::vector<std::string>& recentFiles() const { return m_recent; }
    void addRecentFile(const std::string& path);
    void removeRecentFile(const std::string& path);

private:
    std::filesystem::path m_file;
    std::map<std::string, WindowPlace> m_places;
    std::vector<std::string> m_recent;
};

} // namespace velmora
