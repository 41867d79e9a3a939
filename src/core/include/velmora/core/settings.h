#pragma once
// The settings record: the 31 fields of VLpreferences.txt, loaded once and written whole.

#include <cstdint>
#include <filesystem>
#include <string>

namespace velmora {

class ErrorLog;

struct WindowGeometry {
    std::int16_t width = 0;
    std::int16_t height = 0;
    std::int16_t top = 0;
    std::int16_t left = 0;

    bool operator==(const WindowGeometry&) const = default;
};

struct Settings {
    WindowGeometry editor;           // fields 1-4: width, height, top, left (twips)
    std::string textureEditor;       // 5  (mnuIRF)
    std::string graphicsViewer;      // 6  (mnuViewer)
    std::string railWorks;           // 7  simulator root, no trailing separator
    bool reserved8 = false;          // 8
    std::string reserved9;           // 9
    std::string pdfReader;           // 10 (mnuAcro)
    std::string rsBinTool;           // 11
    std::string language;            // 12
    std::string railWorksBackup;     // 13 (mnuRWB)
    bool aboutDontShow = false;      // 14 as read at start
    bool dontAskOnClose = false;     // 15 (mnuDont)
    std::string fontSize;            // 16
    std::string reserved17;          // 17
    std::int16_t editorState = 0;    // 18: 2 = maximised (mnuEdMax)
    WindowGeometry scenarioEditor;   // 19-22 (frmOstrand)
    bool warnIfNotSaved = false;     // 23 (mnuWarn)
    bool reserved24 = false;         // 24
    std::string preloadFolder;       // 25 (mnuQDPreload)
    bool noNewVersionNotice = false; // 26 (mnuNewVer)
    bool reserved27 = false;         // 27
    WindowGeometry reportGrid;       // 28-31 (frmListRS)

    static constexpr int kFieldCount = 31;
    static constexpr const char* kFileName = "VLpreferences.txt";

    // The defaults applied after reading: a geometry value of 0 becomes its default
    // (width 10000, height 8000, top and left 1000), an empty language becomes "English".
    void applyDefaults();

    bool operator==(const Settings&) const = default;
};

// Reads the fields in order. Fields missing from a short file, or that do not parse as their
// type, keep their value in `settings`; the first such failure is logged (when `log` is set).
// Returns the number of fields read successfully.
int readSettingsText(std::string_view text, Settings& settings, ErrorLog* log,
                     const std::string& fileName = Settings::kFileName);

// All 31 fields in order, one per line, CR LF. `aboutTick` is what goes into field 14:
// the closing write passes the About screen's own value, every other writer the copy read
// at start (settings.aboutDontShow).
std::string writeSettingsText(const Settings& settings, bool aboutTick);

bool loadSettings(const std::filesystem::path& file, Settings& settings, ErrorLog* log);
bool saveSettings(const std::filesystem::path& file, const Settings& settings, bool aboutTick,
                  ErrorLog* log);

} // namespace velmora
