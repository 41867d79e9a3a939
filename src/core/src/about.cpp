#include "velmora/core/about.h"

#include "velmora/core/version.h"

#include <QtGlobal>
#include <zip.h>

#if __has_include(<zlib.h>)
#include <zlib.h>
#endif

namespace velmora {

namespace {
// "6.4.2", or "6.4.2 (built with 6.4.0)" when the loaded library is not the one built against.
std::string builtAndLoaded(const std::string& built, const std::string& loaded) {
    if (loaded.empty() || loaded == built)
        return built;
    return loaded + " (built with " + built + ")";
}
} // namespace

AboutInfo aboutInfo() {
    AboutInfo info;
    info.name = "Velmora";
    info.version = Version::text;
    info.licence = Version::licence;
    info.libraries.emplace_back("Qt", builtAndLoaded(QT_VERSION_STR, qVersion()));
    info.libraries.emplace_back("libzip", builtAndLoaded(LIBZIP_VERSION, zip_libzip_version()));
#ifdef ZLIB_VERSION
    // Used through libzip for the .ap archives; the version is the one built against.
    info.libraries.emplace_back("zlib", ZLIB_VERSION);
#endif
    return info;
}

std::string aboutText(const AboutInfo& info) {
    std::string text = info.name + " " + info.version + "\n";
    text += "Tools for Train Simulator 2019 add-on makers: documents, assets, routes and scenarios.\n\n";
    text += "Licence: " + info.licence + "\n\n";
    text += "Libraries:\n";
    for (const auto& [library, version] : info.libraries)
        text += "  " + library + " " + version + "\n";
    return text;
}

} // namespace velmora
