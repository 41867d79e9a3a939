#include "velmora/core/settings.h"

#include "velmora/core/errorlog.h"
#include "velmora/core/services.h"
#include "velmora/core/writelist.h"

#include <variant>

namespace velmora {

namespace {

using FieldRef = std::variant<std::int16_t*, std::string*, bool*>;

// Field order of the file; every reader and writer goes through this one list.
std::vector<FieldRef> fieldsOf(Settings& s) {
    return {&s.editor.width,      &s.editor.height,       &s.editor.top,          &s.editor.left,
            &s.textureEditor,     &s.graphicsViewer,      &s.railWorks,           &s.reserved8,
            &s.reserved9,         &s.pdfReader,           &s.rsBinTool,           &s.language,
            &s.railWorksBackup,   &s.aboutDontShow,       &s.dontAskOnClose,      &s.fontSize,
            &s.reserved17,        &s.editorState,         &s.scenarioEditor.width, &s.scenarioEditor.height,
            &s.scenarioEditor.top, &s.scenarioEditor.left, &s.warnIfNotSaved,      &s.reserved24,
            &s.preloadFolder,     &s.noNewVersionNotice,  &s.reserved27,          &s.reportGrid.width,
            &s.reportGrid.height, &s.reportGrid.top,      &s.reportGrid.left};
}

void defaultGeometry(WindowGeometry& g) {
    if (g.width == 0)
        g.width = 10000;
    if (g.height == 0)
        g.height = 8000;
    if (g.top == 0)
        g.top = 1000;
    if (g.left == 0)
        g.left = 1000;
}

} // namespace

void Settings::applyDefaults() {
    defaultGeometry(editor);
    defaultGeometry(scenarioEditor);
    defaultGeometry(reportGrid);
    if (language.empty())
        language = "English";
}

int readSettingsText(std::string_view text, Settings& settings, ErrorLog* log, const std::string& fileName) {
    WriteListReader reader(text);
    auto fields = fieldsOf(settings);
    int read = 0;
    bool logged = false;
    auto fail = [&](int field, long number, const std::string& what) {
        // One record is enough: a short or damaged file would otherwise log every later field.
        if (log && !logged)
            log->log("modSettings", "Form_Load", number,
                     fileName + ": field " + std::to_string(field) + " " + what);
        logged = true;
    };
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const int field = static_cast<int>(i) + 1;
        auto item = reader.next();
        if (!item) {
            fail(field, err::InputPastEnd, "is missing (Input past end of file)");
            break;
        }
        bool ok = std::visit(
            [&](auto* target) {
                using T = std::remove_pointer_t<decltype(target)>;
                if constexpr (std::is_same_v<T, std::string>) {
                    *target = item->text;
                    return true;
                } else if constexpr (std::is_same_v<T, bool>) {
                    auto v = toBool(*item);
                    if (v)
                        *target = *v;
                    return v.has_value();
                } else {
                    auto v = toInt16(*item);
                    if (v)
                        *target = *v;
                    return v.has_value();
                }
            },
            fields[i]);
        if (ok)
            ++read;
        else
            fail(field, err::TypeMismatch, "does not fit its type: '" + item->text + "'");
    }
    return read;
}

std::string writeSettingsText(const Settings& settings, bool aboutTick) {
    Settings copy = settings;
    copy.aboutDontShow = aboutTick;
    std::string out;
    for (const FieldRef& f : fieldsOf(copy)) {
        std::visit(
            [&](auto* v) {
                using T = std::remove_pointer_t<decltype(v)>;
                if constexpr (std::is_same_v<T, std::string>)
                    out += writeString(*v);
                else if constexpr (std::is_same_v<T, bool>)
                    out += writeBool(*v);
                else
                    out += writeInt(*v);
            },
            f);
        out += "\r\n";
    }
    return out;
}

bool loadSettings(const std::filesystem::path& file, Settings& settings, ErrorLog* log) {
    if (!FileExists(file))
        return false;
    readSettingsText(ReadTextFile(file), settings, log, file.string());
    return true;
}

bool saveSettings(const std::filesystem::path& file, const Settings& settings, bool aboutTick, ErrorLog* log) {
    if (!WriteTextFile(file, writeSettingsText(settings, aboutTick))) {
        if (log)
            log->log("modSettings", "SaveSettings", err::PermissionDenied, "Cannot write " + file.string());
        return false;
    }
    return true;
}

} // namespace velmora
