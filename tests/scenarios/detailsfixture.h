#pragma once
// Scenario and track network texts made by hand for the details grid, the work order and the
// track index: a driven consist with a consist operation on numbered wagons and hostile texts,
// an AI consist and a loose one; ribbons in known tiles.

#include <string>
#include <vector>

namespace velmora::test {

struct Car {
    std::string name, number, ribbon;
    int tileX = 0, tileZ = 0;
};

inline std::string localised(const std::string& tag, const std::string& english) {
    return "<" + tag + "><Localisation-cUserLocalisedString><English d:type=\"cDeltaString\">" + english +
           "</English><French d:type=\"cDeltaString\"></French></Localisation-cUserLocalisedString></" + tag + ">\n";
}

inline std::string carXml(const Car& c) {
    auto distance = [](int v) {
        return "<cFarCoordinate><RouteCoordinate><cRouteCoordinate><Distance d:type=\"sInt32\">" + std::to_string(v) +
               "</Distance></cRouteCoordinate></RouteCoordinate><TileCoordinate><cTileCoordinate><Distance "
               "d:type=\"sFloat32\">12.5</Distance></cTileCoordinate></TileCoordinate></cFarCoordinate>";
    };
    return "<cOwnedEntity d:id=\"10\"><Component><cWagon d:id=\"11\"><Flipped d:type=\"bool\">0</Flipped>"
           "<UniqueNumber d:type=\"cDeltaString\">" + c.number + "</UniqueNumber><Followers><Network-cTrackFollower "
           "d:id=\"12\"><RibbonID><cGUID><DevString d:type=\"cDeltaString\">" + c.ribbon +
           "</DevString></cGUID></RibbonID></Network-cTrackFollower></Followers></cWagon>\n"
           "<cPosOri><RFarMatrix><cFarMatrix><RFarPosition><cFarVector2><X>" + distance(c.tileX) + "</X><Z>" +
           distance(c.tileZ) + "</Z></cFarVector2></RFarPosition></cFarMatrix></RFarMatrix></cPosOri>\n"
           "<cCargoComponent d:id=\"13\"><IsPreLoaded d:type=\"cDeltaString\">eFalse</IsPreLoaded><InitialLevel/>"
           "</cCargoComponent></Component>\n<BlueprintID><iBlueprintLibrary-cAbsoluteBlueprintID><BlueprintSetID>"
           "<iBlueprintLibrary-cBlueprintSetID><Provider d:type=\"cDeltaString\">DemoRail</Provider><Product "
           "d:type=\"cDeltaString\">Wagons</Product></iBlueprintLibrary-cBlueprintSetID></BlueprintSetID><BlueprintID "
           "d:type=\"cDeltaString\">RailVehicles\\Wagon.xml</BlueprintID></iBlueprintLibrary-cAbsoluteBlueprintID>"
           "</BlueprintID>\n<Name d:type=\"cDeltaString\">" + c.name + "</Name></cOwnedEntity>\n";
}

inline std::string targetXml(const std::string& place, const std::string& operation, bool pickingUp,
                             const std::string& due, const std::vector<std::string>& numbers) {
    std::string t = "<cDriverInstructionTarget d:id=\"22\"><DisplayName d:type=\"cDeltaString\">" + place +
                    "</DisplayName><Operation d:type=\"cDeltaString\">" + operation +
                    "</Operation><PickingUp d:type=\"bool\">" + (pickingUp ? "1" : "0") +
                    "</PickingUp><ArrivalTime d:type=\"sFloat32\">0</ArrivalTime><DepartureTime "
                    "d:type=\"sFloat32\">0</DepartureTime><TickedTime d:type=\"sFloat32\">0</TickedTime><DueTime "
                    "d:type=\"sFloat32\">" + due + "</DueTime>";
    if (numbers.empty()) {
        t += "<RailVehicleNumber/>";
    } else {
        t += "<RailVehicleNumber>";
        for (const auto& n : numbers)
            t += "<e d:type=\"cDeltaString\">" + n + "</e>";
        t += "</RailVehicleNumber>";
    }
    return t + "</cDriverInstructionTarget>\n";
}

// A consist: the driver's part only when `service` is not empty.
inline std::string consistXml(const std::vector<Car>& cars, const std::string& service, bool driven,
                              const std::string& serviceClass, const std::string& destination,
                              const std::string& instructions) {
    std::string x = "<cConsist d:id=\"1\"><RailVehicles>\n";
    for (const Car& c : cars)
        x += carXml(c);
    x += "</RailVehicles>\n";
    if (service.empty()) {
        x += "<Driver><d:nil/></Driver>\n";
    } else {
        x += "<Driver><cDriver d:id=\"2\"><FinalDestination>" + targetXml(destination, "Default", true, "36000", {}) +
             "</FinalDestination><PlayerDriver d:type=\"bool\">" + (driven ? "1" : "0") + "</PlayerDriver>\n" +
             localised("ServiceName", service) + "<StartTime d:type=\"sFloat32\">30600</StartTime><ServiceClass "
             "d:type=\"sInt32\">" + serviceClass + "</ServiceClass>\n<DriverInstructionContainer>"
             "<cDriverInstructionContainer d:id=\"20\"><DriverInstruction>\n" + instructions +
             "</DriverInstruction></cDriverInstructionContainer></DriverInstructionContainer></cDriver></Driver>\n";
    }
    return x + "<DriverEngineIndex d:type=\"sInt32\">0</DriverEngineIndex></cConsist>\n";
}

// An instruction element of `kind` with its three texts and targets.
inline std::string instructionXml(const std::string& kind, const std::string& triggered, const std::string& display,
                                  const std::string& targets) {
    return "<" + kind + " d:id=\"21\"><ActivationLevel d:type=\"sInt16\">1</ActivationLevel>\n" +
           localised("TriggeredText", triggered) + localised("UntriggeredText", "") + localised("DisplayText", display) +
           "<DeltaTarget>" + targets + "</DeltaTarget></" + kind + ">\n";
}

// The text of the hostile instruction: a comma, quotes, an ampersand, a line break and an accent
// (UTF-8 in the document, Windows-1252 once repaired).
inline const char* kHostileXml = "Couple up, then \"go\" &amp; wait;\r\nat Caf\xC3\xA9 Halt";
inline const char* kHostileText = "Couple up, then \"go\" & wait;\r\nat Caf\xE9 Halt";

inline std::string scenarioXml() {
    const std::string shunt = instructionXml(
        "cConsistOperations", kHostileXml, "Pick up the coal wagons",
        targetXml("Valley Sidings", "AddToFront", false, "34200", {"W101", "W102"}) +
            targetXml("Quarry Loop", "DropOffRailVehicle", false, "35100", {"W103"}));
    const std::string stop =
        instructionXml("cStopAtDestinations", "", "", targetXml("Valley Yard", "Default", true, "36000", {}));
    std::string x = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
                    "d:version=\"1.0\" d:id=\"1\"><Record>\n";
    x += consistXml({{"Class 66", "66001", "ribbon-a", 1, -2}, {"HTA, hopper", "W100", "ribbon-b", 1, -2}},
                    "6Z01 Coal, \"empties\"", true, "4", "Valley Yard", shunt + stop);
    x += consistXml({{"Class 60", "60007", "ribbon-unknown", 5, 6}}, "AI freight", false, "6", "Port", "");
    x += consistXml({{"Loose HTA", "W200", "ribbon-c", 0, 0}}, "", false, "", "", "");
    return x + "</Record></cRecordSet>\n";
}

// A track network whose ribbons lie in the given tiles.
struct Ribbon {
    std::string id;
    int x, z;
};
inline std::string tracksXml(const std::vector<Ribbon>& ribbons) {
    std::string x = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
                    "d:version=\"1.0\" d:id=\"1\">\n<Record>\n<Network-cTrackNetwork d:id=\"2\">\n<RibbonContainer>\n"
                    "<Network-cRibbonContainerUnstreamed d:id=\"3\">\n<Ribbon>\n";
    int id = 10;
    for (const Ribbon& r : ribbons) {
        x += "<Network-cTrackRibbon d:id=\"" + std::to_string(id++) + "\">\n<_length d:type=\"sFloat32\">10</_length>\n"
             "<RibbonID>\n<cGUID>\n<UUID>\n<e d:type=\"sUInt64\">1</e>\n<e d:type=\"sUInt64\">2</e>\n</UUID>\n"
             "<DevString d:type=\"cDeltaString\">" + r.id + "</DevString>\n</cGUID>\n</RibbonID>\n<RouteVector>\n"
             "<cRouteVector2>\n<X>\n<cRouteCoordinate>\n<Distance d:type=\"sInt32\">" + std::to_string(r.x) +
             "</Distance>\n</cRouteCoordinate>\n</X>\n<Z>\n<cRouteCoordinate>\n<Distance d:type=\"sInt32\">" +
             std::to_string(r.z) + "</Distance>\n</cRouteCoordinate>\n</Z>\n</cRouteVector2>\n</RouteVector>\n"
             "</Network-cTrackRibbon>\n";
    }
    return x + "</Ribbon>\n</Network-cRibbonContainerUnstreamed>\n</RibbonContainer>\n</Network-cTrackNetwork>\n"
               "</Record>\n</cRecordSet>\n";
}

} // namespace velmora::test
