#pragma once
// Hand-made rolling-stock blueprints for the stock tests: written through the codec, so that
// they are read exactly as the simulator's own.

#include "velmora/core/convert.h"
#include "velmora/demo/xmlbuilder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace velmora::test {

struct HandVehicle {
    const char* blueprint = "cTenderBlueprint"; // the class under <Blueprint>
    const char* component = "cTenderComponentBlueprint";
    std::string name;
    std::string engineType;   // engines only
    std::string numbers;      // CsvFile, below Assets
    std::string cargo;        // words written into the cargo list, in order
};

inline std::string vehicleXml(const HandVehicle& v) {
    demo::XmlBuilder x("cBlueprintLoader", 1);
    x.open("Blueprint").open(v.blueprint, 2).str("Name", v.name);
    x.localised("DisplayName", v.name);
    x.open("RailVehicleComponent").open(v.component, 3);
    x.open("NumberingList").open("cCSVContainer").str("CsvFile", v.numbers).close().close();
    x.float32("Mass", 53.5);
    if (!v.engineType.empty())
        x.str("EngineType", v.engineType);
    x.close().close();
    if (!v.cargo.empty())
        x.open("CargoComponent").str("Cargo", v.cargo).close();
    return x.finish();
}

inline void writeBytes(const std::filesystem::path& file, const std::string& bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

// Encodes the XML into `file`; fails the test when the codec refuses it.
inline void writeDocument(const std::filesystem::path& file, const std::string& xml) {
    std::string bin;
    const ConvertResult r = xmlTextToBin(xml, bin);
    ASSERT_TRUE(r.ok) << r.message;
    writeBytes(file, bin);
}

} // namespace velmora::test
