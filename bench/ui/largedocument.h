#pragma once
// Large binary documents for the editor's benchmarks, written once into a scratch folder and
// kept there for the next run.

#include "serz/serz.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace velmora::bench {

// About `megabytes` of XML: entities with names, numbers and matrices, as a scenario holds them.
// Names repeat, since a document holds at most 65,535 distinct strings.
inline std::filesystem::path makeLargeDocument(const std::filesystem::path& dir, int megabytes) {
    const std::filesystem::path file = dir / ("large-" + std::to_string(megabytes) + ".bin");
    if (std::filesystem::exists(file))
        return file;
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                      "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n<Record>\r\n";
    for (int i = 0; xml.size() < static_cast<std::size_t>(megabytes) * 1000000; ++i)
        xml += "\t<cDynamicEntity d:id=\"" + std::to_string(100000 + i) + "\">\r\n\t\t<Name d:type=\"cDeltaString\">Item " +
               std::to_string(i % 500) + "</Name>\r\n\t\t<X d:type=\"sFloat32\" d:alt_encoding=\"0000000000405E40\" "
               "d:precision=\"string\">121</X>\r\n\t\t<M d:numElements=\"4\" d:elementType=\"sFloat32\" "
               "d:precision=\"string\">1.0000000 0.0000000 -0.5000000 0.2500000</M>\r\n\t</cDynamicEntity>\r\n";
    xml += "</Record>\r\n</cRecordSet>\r\n";
    std::string bin;
    serz::encode(xml, bin);
    std::filesystem::create_directories(dir);
    std::ofstream(file, std::ios::binary) << bin;
    return file;
}

// A scratch install for the main screen: RailWorks.exe, Assets and Content/Routes.
inline void makeScratchInstall(const std::filesystem::path& dir) {
    std::filesystem::create_directories(dir / "rw/Content/Routes");
    std::filesystem::create_directories(dir / "rw/Assets");
    std::ofstream(dir / "rw/RailWorks.exe").close();
}

} // namespace velmora::bench
