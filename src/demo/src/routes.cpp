// Content: routes with their tiles, networks and scenarios, routes packed in MainContent.ap (whole
// or partly unpacked), a scenario pack, ConsistTemplates.bin, and the route-side faults that the
// manifest lists.

#include "context.h"
#include "dxt.h"

#include <QCryptographicHash>

#include <cstdio>
#include <functional>
#include <tuple>

namespace velmora::demo {

namespace {

std::string tileName(int x, int z) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%+07d%+07d.bin", x, z);
    return buf;
}

// A placed object: a reference spelled as the tile holds it.
struct Entity {
    Ref ref;
};

struct RouteState {
    std::string folder;      // root-relative
    std::string guid, name;
    std::string french, german; // further names of RouteProperties.xml
    int index = 0;
    bool packed = false;
    // Of a packed route: the files that are also unpacked beside MainContent.ap.
    std::function<bool(const std::string& rel)> alsoOnDisk;
    int scale = 0; // multiplies the tiles; 0: the install's scale
    std::string packedScenario = "Branch line pick-up";
    ManifestRoute* manifest = nullptr;
};

Fault routeFault(const RouteState& r, const std::string& kind, const std::string& check, const std::string& path,
                 const std::string& by, const std::string& reference, const std::string& expect) {
    return makeFault(kind, check, path, by, reference, expect, {r.guid});
}

void position(XmlBuilder& x, SplitMix& rng, int tileX, int tileZ) {
    x.open("cPosOri").floats("Scale", {1, 1, 1, 1}).open("RFarMatrix").open("cFarMatrix");
    x.float32("Height", rng.range(0, 40));
    x.floats("RXAxis", {1, 0, 0, 0}).floats("RYAxis", {0, 1, 0, 0}).floats("RZAxis", {0, 0, 1, 0});
    farPosition(x, tileX, tileZ, rng.range(0, 1024), rng.range(0, 1024));
    x.close().close().close();
}

std::string sceneryTileXml(Context& ctx, const std::vector<Entity>& entities, int tileX, int tileZ) {
    XmlBuilder x("cRecordSet", ctx.rng.id());
    x.open("Record");
    for (const Entity& e : entities) {
        x.open("cDynamicEntity", ctx.rng.id()).open("Component");
        x.open("cSceneryRender", ctx.rng.id()).integer("DetailLevel", "sInt32", 4).boolean("Global", false);
        x.boolean("Saved", true).integer("Palette0Index", "sUInt8", 0).integer("Palette1Index", "sUInt8", 0);
        x.integer("Palette2Index", "sUInt8", 0).close();
        position(x, ctx.rng, tileX, tileZ);
        x.open("cEntityContainer", ctx.rng.id()).empty("StaticChildrenMatrix").close();
        x.empty("cCollisionComponent", ctx.rng.id()).close();
        // Tiles carry no empty references: the route check reads an empty Provider as a fault.
        blueprintRef(x, "BlueprintID", e.ref);
        x.str("Name", "");
        guidElement(x, "EntityID", makeGuid(ctx.rng));
        x.close();
    }
    return x.finish();
}

std::string ribbonsXml(Context& ctx, const char* ribbonClass, const std::vector<Ref>& blueprints, int tileX, int tileZ,
                       bool network) {
    XmlBuilder x("cRecordSet", ctx.rng.id());
    x.open("Record");
    if (network) {
        x.open("Network::cTrackNetwork", ctx.rng.id());
        guidElement(x, "NetworkID", makeGuid(ctx.rng));
        x.open("RibbonContainer").open("Network::cRibbonContainerUnstreamed", ctx.rng.id()).open("Ribbon");
    }
    for (std::size_t i = 0; i < blueprints.size(); ++i) {
        double length = ctx.rng.range(20, 400);
        x.open(ribbonClass, ctx.rng.id()).float32("_length", length);
        guidElement(x, "RibbonID", makeGuid(ctx.rng));
        x.open("Height").open("Network::iRibbon::cHeight").float32("_position", 0).float32("_height", ctx.rng.range(0, 30));
        x.boolean("_manual", false).close().close();
        x.open("RouteVector").open("cRouteVector2");
        x.open("X").open("cRouteCoordinate").integer("Distance", "sInt32", tileX).close().close();
        x.open("Z").open("cRouteCoordinate").integer("Distance", "sInt32", tileZ).close().close();
        x.close().close();
        x.floats("RBottomLeft", {ctx.rng.range(0, 500), ctx.rng.range(0, 500)});
        x.floats("RExtents", {length, 2.5});
        x.open("FixedPatternRef").open("Network::cNetworkRibbon::sFixedPatternRef").open("FixedPattern").nil().close();
        x.integer("FixedPatternRibbonIndex", "sInt32", -1).close().close();
        x.integer("LockCounterWhenModified", "sUInt32", 1);
        x.open("Curve").open("Network::cCurveStraight", ctx.rng.id()).float32("Length", length).open("StartPos");
        x.open("cFarVector2");
        for (int axis = 0; axis < 2; ++axis) {
            x.open(axis ? "Z" : "X").open("cFarCoordinate");
            x.open("RouteCoordinate").open("cRouteCoordinate").integer("Distance", "sInt32", axis ? tileZ : tileX);
            x.close().close().open("TileCoordinate").open("cTileCoordinate");
            x.float32("Distance", ctx.rng.range(0, 1024)).close().close().close().close();
        }
        x.close().close().floats("StartTangent", {1, 0}).close().close();
        x.open("Properties").open("Network::cPropertyContainer", ctx.rng.id()).open("Property");
        x.open("Network::cSectionGenericProperties", ctx.rng.id()).float32("_start", 0).float32("_end", length);
        x.boolean("ScenarioOwned", false);
        blueprintRef(x, "BlueprintID", blueprints[i]);
        x.float32("LoftScaleFactor", 1).close();
        x.close().close().close();
        x.close();
    }
    return x.finish();
}

// ---------------------------------------------------------------------------------------------
// Scenarios

struct Car {
    const Vehicle* vehicle;
    std::string number;
    double cargo = -1; // fill level, or -1 for none
    bool flipped = false;
};

struct Consist {
    enum Kind { Player, Ai, Loose } kind;
    std::vector<Car> cars;
    std::string service;
    double startTime = 0;
    std::string destination;
};

void follower(XmlBuilder& x, SplitMix& rng, std::string_view name, const char* type, double at) {
    x.open(name).open("Network::cTrackFollower", rng.id()).float32("Height", 0).str("_type", type);
    x.float32("Position", at).open("Direction").open("Network::cDirection").str("_dir", "forwards").close().close();
    guidElement(x, "RibbonID", makeGuid(rng));
    x.close().close();
}

void instructionTarget(XmlBuilder& x, const std::string& destination, double due) {
    x.open("cDriverInstructionTarget").str("DisplayName", destination).boolean("Timetabled", false);
    x.integer("Performance", "sInt32", 75).str("EntityName", destination).str("Operation", "Default");
    x.boolean("PickingUp", true).integer("Duration", "sUInt32", 10).boolean("ReversingAllowed", true);
    x.str("ProgressCode", "INSTRUCTION_STATE_INACTIVE").float32("DueTime", due).close();
}

std::string scenarioXml(Context& ctx, const std::vector<Consist>& consists) {
    XmlBuilder x("cRecordSet", ctx.rng.id());
    x.open("Record");
    for (const Consist& c : consists) {
        x.open("cConsist", ctx.rng.id()).open("RailVehicles");
        double at = 200;
        for (const Car& car : c.cars) {
            const Vehicle& v = *car.vehicle;
            x.open("cOwnedEntity", ctx.rng.id()).open("Component");
            x.open(v.engine ? "cEngine" : "cWagon", ctx.rng.id()).str("PantographInfo", "PANTO_UNKNOWN");
            x.boolean("PantographIsDirectional", false).float32("LastPantographControlValue", 1);
            x.boolean("Flipped", car.flipped).str("UniqueNumber", car.number).str("GUID", "");
            x.open("Followers");
            follower(x, ctx.rng, "e", "FrontTrigger", at);
            follower(x, ctx.rng, "e", "RearTrigger", at - 20);
            x.close();
            at -= 21;
            x.float32("TotalMass", v.mass).float32("Speed", 0).boolean("InTunnel", false);
            if (v.engine) {
                x.boolean("DisabledEngine", false).float32("AWSTimer", 0).boolean("AWSExpired", false);
                x.float32("TPWSDistance", 0);
            }
            x.close();
            x.open("cAnimObjectRender", ctx.rng.id()).integer("DetailLevel", "sInt32", 10).close();
            position(x, ctx.rng, 0, 0);
            x.open("cControlContainer", ctx.rng.id()).float32("Time", 0).str("CabEndWithKey", "eNoEnd").close();
            x.open("cCargoComponent", ctx.rng.id()).str("IsPreLoaded", car.cargo >= 0 ? "eTrue" : "eFalse");
            if (car.cargo >= 0)
                x.open("InitialLevel").float32("e", car.cargo).close();
            else
                x.empty("InitialLevel");
            x.close();
            x.open("cEntityContainer", ctx.rng.id()).floats("StaticChildrenMatrix", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
            x.close();
            x.open("cScriptComponent", ctx.rng.id()).boolean("DebugDisplay", false).str("StateName", "").close();
            if (v.engine)
                x.empty("cEngineSimContainer", ctx.rng.id());
            x.close();
            if (v.reskinOf.empty()) {
                blueprintRef(x, "BlueprintID", v.ref);
                blueprintRef(x, "ReskinBlueprintID", Ref{});
            } else {
                blueprintRef(x, "BlueprintID", v.reskinOf);
                blueprintRef(x, "ReskinBlueprintID", v.ref);
            }
            x.str("Name", v.name);
            guidElement(x, "EntityID", makeGuid(ctx.rng));
            x.close();
        }
        x.close();
        follower(x, ctx.rng, "FrontFollower", "FrontTrigger", 200);
        follower(x, ctx.rng, "RearFollower", "RearTrigger", at);
        if (c.kind == Consist::Loose) {
            x.open("Driver").nil().close();
        } else {
            x.open("Driver").open("cDriver", ctx.rng.id());
            x.open("FinalDestination");
            instructionTarget(x, c.destination, c.startTime + 1800);
            x.close();
            x.boolean("PlayerDriver", c.kind == Consist::Player);
            localisedName(x, "ServiceName", c.service, makeGuid(ctx.rng).text);
            x.open("InitialRV");
            for (const Car& car : c.cars)
                x.str("e", car.number);
            x.close();
            x.float32("StartTime", c.startTime).float32("StartSpeed", 0).float32("EndSpeed", 0);
            x.integer("ServiceClass", "sInt32", c.kind == Consist::Player ? 1 : 6);
            x.boolean("PlayerControlled", c.kind == Consist::Player);
            x.open("DriverInstructionContainer").open("cDriverInstructionContainer", ctx.rng.id());
            x.open("DriverInstruction").open("cStopAtDestinations", ctx.rng.id()).open("DeltaTarget");
            instructionTarget(x, c.destination, c.startTime + 1800);
            x.close().close().close().close().close();
            x.close().close();
        }
        x.integer("DriverEngineIndex", "sInt32", 0);
        x.open("CurrentDirection").open("Network::cDirection").str("_dir", "either").close().close();
        x.close();
    }
    return x.finish();
}

struct ScenarioPlan {
    std::string name, scenarioClass;
    std::string workshopId = "0";
    bool properties = true, scenery = false, save = false, missingStock = false;
    bool saveHash = true; // the save gets its .MD5 companion
    Ref weather{};        // empty: the install's own weather
};

// The weather of a scenario whose product has no Weather folder at all.
const Ref kWeatherWithoutFolder{"DemoRail", "Class66Pack", "Weather\\Demo_Overcast.xml"};

std::string scenarioPropertiesXml(Context& ctx, const Guid& id, const ScenarioPlan& s, const std::vector<Consist>& consists,
                                  double& startTime) {
    XmlBuilder x("cScenarioProperties", ctx.rng.id());
    guidElement(x, "ID", id);
    x.empty("String");
    localisedName(x, "DisplayName", s.name, makeGuid(ctx.rng).text);
    localisedName(x, "Description", "A demo scenario: " + s.name, makeGuid(ctx.rng).text);
    localisedName(x, "Briefing", "Drive the service to its destination.", makeGuid(ctx.rng).text);
    localisedName(x, "StartLocation", s.scenarioClass == "eFreeRoamScenarioClass" ? "Demo yard" : "", makeGuid(ctx.rng).text);
    startTime = 28800 + static_cast<double>(ctx.rng.below(40)) * 900;
    x.str("ScenarioClass", s.scenarioClass).float32("StartTime", startTime);
    x.integer("DurationMins", "sInt32", 45).integer("StartDD", "sInt32", 4).integer("StartMM", "sInt32", 5);
    x.integer("StartYYYY", "sInt32", 2019).str("Season", "SEASON_SPRING");
    blueprintRef(x, "WeatherBlueprint", s.weather.empty() ? ctx.cat.weather : s.weather);
    blueprintRef(x, "WeatherExtensionBlueprint", Ref{});
    x.integer("Rating", "sInt32", 1).str("LocoClass", "LOCO_CLASS_DIESEL");
    x.boolean("HasRollingStart", false).boolean("LoadedFromRollingStart", false);
    x.open("FrontEndDriverList");
    for (const Consist& c : consists) {
        if (c.kind == Consist::Loose)
            continue;
        const Vehicle& loco = *c.cars.front().vehicle;
        x.open("sDriverFrontEndDetails");
        localisedName(x, "ServiceName", c.service, makeGuid(ctx.rng).text);
        localisedName(x, "LocoName", loco.name, makeGuid(ctx.rng).text);
        blueprintRef(x, "LocoBP", loco.ref);
        x.str("LocoClass", "LOCO_CLASS_DIESEL").str("LocoAuthor", loco.ref.provider);
        x.str("FilePath", loco.ref.provider + "\\" + loco.ref.product + "\\" + loco.ref.id);
        x.float64("Longitude", 8.59).float64("Latitude", 46.66).float32("Height", 0.5);
        x.boolean("PlayerDriver", c.kind == Consist::Player).close();
    }
    x.close();
    x.open("RBlueprintSetPreLoad");
    for (const auto& p : ctx.manifest.products)
        x.open("iBlueprintLibrary::cBlueprintSetID", ctx.rng.id()).str("Provider", p.provider).str("Product", p.product).close();
    x.close();
    x.str("Author", "Velmora demo").str("AuthoredLanguage", "English").uint64("WorkshopID", std::stoull(s.workshopId));
    x.open("SimulationTime").open("sTimeOfDay").integer("_iHour", "sInt32", 8).integer("_iMinute", "sInt32", 0);
    x.integer("_iSeconds", "sInt32", 0).close().close();
    return x.finish();
}

std::string networkPropertiesXml(Context& ctx) {
    XmlBuilder x("cRecordSet", ctx.rng.id());
    x.open("Record").open("Network::cScenarioNetworkProperties", ctx.rng.id()).open("SignalStates");
    for (int i = 0; i < 3; ++i) {
        x.open("Network::cSignalState", ctx.rng.id());
        guidElement(x, "SignalID", makeGuid(ctx.rng));
        x.integer("State", "sInt32", i % 2).close();
    }
    return x.finish();
}

std::string number(const Vehicle& v, SplitMix& rng) { return v.numberPrefix + std::to_string(100 + rng.below(900)); }

// Services for one scenario from the route's stock: a driven train, an AI train with a reskin and
// loaded wagons, a loose rake.
std::vector<Consist> servicesFor(Context& ctx, const RouteState& r, int n) {
    const auto& E = ctx.cat.engines;
    const auto& W = ctx.cat.wagons;
    // Route 0 runs the DemoRail and Heritage stock, route 1 the Alpenbahn stock.
    auto engine = [&](int k) -> const Vehicle& { return r.index == 1 ? E[2 + k % 2] : (k % 2 ? E[1] : E[0]); };
    auto wagon = [&](int k) -> const Vehicle& { return r.index == 1 ? W[3 + k % 3] : W[k % 3]; };
    std::vector<Consist> out;
    Consist player{Consist::Player, {}, "Demo service " + std::to_string(n + 1), 0, "Valley Yard"};
    player.cars.push_back({&engine(0), number(engine(0), ctx.rng)});
    for (int i = 0; i < 3; ++i)
        player.cars.push_back({&wagon(i), number(wagon(i), ctx.rng), wagon(i).cargo ? 0.5 + i * 0.25 : -1});
    Consist ai{Consist::Ai, {}, "AI freight " + std::to_string(n + 1), 600.0 + n * 60, "Summit Loop"};
    ai.cars.push_back({&engine(1), number(engine(1), ctx.rng)});
    for (int i = 0; i < 4; ++i)
        ai.cars.push_back({&wagon(i + 1), number(wagon(i + 1), ctx.rng), wagon(i + 1).cargo ? 1.0 : -1});
    ai.cars.back().flipped = true; // the last wagon runs the other way round
    Consist loose{Consist::Loose, {}, "", 0, ""};
    for (int i = 0; i < 3; ++i)
        loose.cars.push_back({&wagon(i + 2), number(wagon(i + 2), ctx.rng)});
    out = {player, ai, loose};
    return out;
}

// What the manifest says of a scenario: its fields and every vehicle as the documents hold them.
ManifestScenario manifestScenario(Context& ctx, const Guid& id, const ScenarioPlan& s, const std::vector<Consist>& consists,
                                  double startTime, const Vehicle* missing) {
    ManifestScenario m;
    m.folder = id.text;
    m.name = s.name;
    m.scenarioClass = s.scenarioClass;
    m.hasProperties = s.properties;
    if (!s.properties)
        return m;
    const Ref& weather = s.weather.empty() ? ctx.cat.weather : s.weather;
    m.startTime = startTime;
    m.season = "SEASON_SPRING";
    m.weatherProvider = weather.provider;
    m.weatherProduct = weather.product;
    m.weatherBlueprint = weather.id;
    m.weatherFolder = s.weather.empty();
    m.startLocation = s.scenarioClass == "eFreeRoamScenarioClass" ? "Demo yard" : "";
    m.save = s.save ? "CurrentSave.bin" : "";
    m.saveHash = s.save && s.saveHash;
    for (const Consist& c : consists) {
        ManifestConsist mc;
        mc.service = c.service;
        mc.playerDriven = c.kind == Consist::Player;
        mc.startTime = c.startTime;
        mc.destination = c.destination;
        for (const Car& car : c.cars) {
            const Vehicle& v = *car.vehicle;
            const Ref& base = v.reskinOf.empty() ? v.ref : v.reskinOf;
            ManifestVehicle mv;
            mv.name = v.name;
            mv.provider = base.provider;
            mv.product = base.product;
            mv.blueprint = base.id;
            mv.flipped = car.flipped;
            mv.number = car.number;
            mv.preloaded = car.cargo >= 0;
            mv.missing = car.vehicle == missing;
            if (!v.reskinOf.empty()) {
                mv.reskinProvider = v.ref.provider;
                mv.reskinProduct = v.ref.product;
                mv.reskinBlueprint = v.ref.id;
            }
            mc.vehicles.push_back(std::move(mv));
        }
        m.consists.push_back(std::move(mc));
    }
    return m;
}

bool writeScenario(Context& ctx, RouteState& r, const ScenarioPlan& s, DemoResult& result) {
    Guid id = makeGuid(ctx.rng);
    std::string folder = r.folder + "/Scenarios/" + id.text;
    std::vector<Consist> consists = servicesFor(ctx, r, static_cast<int>(r.manifest->scenarios.size()));
    static Vehicle missingWagon;
    if (s.missingStock) {
        missingWagon = ctx.cat.wagons[0];
        missingWagon.reskinOf = {};
        missingWagon.ref.id = "RailVehicles\\Freight\\HTA\\HTA_Sludge.xml";
        missingWagon.name = "DemoRail HTA Sludge";
        consists[2].cars.push_back({&missingWagon, "310999"});
        ctx.manifest.add(routeFault(r, "missing-stock", "scenario-stock", assetFile(missingWagon.ref),
                                    folder + "/Scenario.bin", missingWagon.ref.id,
                                    "the loose consist's wagon is listed but its blueprint does not exist"));
    }
    double startTime = 0;
    if (s.properties && !ctx.out.raw(folder + "/ScenarioProperties.xml", scenarioPropertiesXml(ctx, id, s, consists, startTime)))
        return false;
    if (!ctx.out.document(folder + "/Scenario.bin", scenarioXml(ctx, consists)) ||
        !ctx.out.document(folder + "/ScenarioNetworkProperties.bin", networkPropertiesXml(ctx)))
        return false;
    if (s.scenery) {
        std::vector<Entity> items;
        for (int i = 0; i < 6; ++i)
            items.push_back({ctx.cat.scenery[ctx.rng.below(ctx.cat.scenery.size())]});
        std::string tile = folder + "/Scenery/" + tileName(0, 0);
        if (!ctx.out.document(tile, sceneryTileXml(ctx, items, 0, 0)))
            return false;
        r.manifest->tiles.push_back(tile);
        ++result.tiles;
    }
    if (s.save) {
        // The simulator's own hash file beside the save: the MD5 of the saved document.
        std::string bin;
        if (!ctx.out.document(folder + "/CurrentSave.bin", scenarioXml(ctx, consists), &bin))
            return false;
        QByteArray hash = QCryptographicHash::hash(QByteArray(bin.data(), static_cast<qsizetype>(bin.size())),
                                                   QCryptographicHash::Md5).toHex().toUpper();
        if (s.saveHash && !ctx.out.raw(folder + "/CurrentSave.bin.MD5", hash.toStdString()))
            return false;
    }
    r.manifest->scenarios.push_back(manifestScenario(ctx, id, s, consists, startTime, s.missingStock ? &missingWagon : nullptr));
    if (!s.weather.empty())
        ctx.manifest.add(routeFault(r, "missing-weather-folder", "scenario-editor",
                                    "Assets/" + s.weather.provider + "/" + s.weather.product + "/Weather",
                                    folder + "/ScenarioProperties.xml", s.weather.id,
                                    "\"The Weather folder for this scenario is missing\"; the weather picker is not set up"));
    ++result.scenarios;
    if (!s.properties)
        ctx.manifest.add(routeFault(r, "scenario-without-properties", "scenario-list", folder, "", "",
                                    "the folder is not listed as a scenario; it is shown among the invalid scenarios"));
    ctx.progress("Scenarios");
    return true;
}

std::string routePropertiesXml(Context& ctx, const RouteState& r) {
    XmlBuilder x("cRouteProperties", ctx.rng.id());
    Guid id = makeGuid(ctx.rng);
    id.text = r.guid;
    guidElement(x, "ID", id);
    localisedName(x, "DisplayName", r.name, makeGuid(ctx.rng).text, r.german, r.french);
    x.boolean("InfrastructureModified", true);
    blueprintRef(x, "BlueprintID", ctx.cat.routeTemplate);
    x.open("Skies").open("cRouteBlueprint::sSkies");
    const char* names[4] = {"SpringSkyBlueprint", "SummerSkyBlueprint", "AutumnSkyBlueprint", "WinterSkyBlueprint"};
    for (int i = 0; i < 4; ++i)
        blueprintRef(x, names[i], ctx.cat.skies[i]);
    x.close().close();
    blueprintRef(x, "WeatherBlueprint", ctx.cat.weather);
    blueprintRef(x, "TerrainBlueprint", ctx.cat.terrain);
    x.integer("LockCounter", "sUInt32", 1).boolean("Locked", false);
    x.open("MapProjection").open("cMapProjectionOwner", ctx.rng.id()).open("MapProjection");
    x.open("cUTMMapProjection", ctx.rng.id()).open("Origin").open("sGeoPosition");
    x.float64("Lat", r.index == 1 ? 46.6 : 52.0459).float64("Long", r.index == 1 ? 8.58 : -0.5329).close().close();
    x.open("MapOffset").open("sMapCoords").float64("Easting", 169182).float64("Northing", 5769010).close().close();
    x.integer("ZoneNumber", "sInt32", r.index == 1 ? 32 : 30).str("ZoneLetter", "U").close().close().close().close();
    x.open("RBlueprintSetPreLoad");
    for (const auto& p : ctx.manifest.products)
        x.open("iBlueprintLibrary::cBlueprintSetID", ctx.rng.id()).str("Provider", p.provider).str("Product", p.product).close();
    return x.finish();
}

bool writeRoute(Context& ctx, RouteState& r, DemoResult& result) {
    const int scale = r.scale ? r.scale : ctx.scale;
    // A reference to a blueprint that no product has, and the line the route check must report.
    auto missingBlueprint = [&](const Ref& missing, const std::string& file, const std::string& tile,
                                const std::string& label) {
        Fault f = routeFault(r, "missing-blueprint", "route", assetFile(missing), file, missing.id,
                             "reported missing: " + label + " on tile " + tile);
        f.details = {{"label", label}};
        ctx.manifest.add(f);
    };
    if (r.packed)
        ctx.out.beginArchive(r.folder, "MainContent.ap", r.alsoOnDisk);
    if (!ctx.out.raw(r.folder + "/RouteProperties.xml", routePropertiesXml(ctx, r)))
        return false;

    // Scenery tiles: a block of 3 x (3 * scale) tiles, fewer in the packed route.
    const int sceneryTiles = (r.packed ? 3 : 9) * scale;
    for (int t = 0; t < sceneryTiles; ++t) {
        if (ctx.cancelled())
            return false;
        int tx = t % 3 - 1, tz = t / 3 - 1;
        std::string tile = r.folder + "/Scenery/" + tileName(tx, tz);
        std::vector<Entity> items;
        for (int i = 0; i < 16; ++i)
            items.push_back({ctx.cat.scenery[ctx.rng.below(ctx.cat.scenery.size())]});
        if (t == 0 && r.index == 0) {
            for (const FaultyItem& f : ctx.cat.faulty) {
                items.push_back({f.ref});
                for (std::size_t k : f.faults) {
                    ctx.manifest.faults[k].routes.push_back(r.guid);
                    if (ctx.manifest.faults[k].kind == "blueprint-in-archive")
                        ctx.manifest.faults[k].referencedBy = tile;
                }
            }
            for (const Ref& a : ctx.cat.ambient)
                items.push_back({a});
            items.push_back({ctx.cat.transferPoint});
            Ref odd{"demorail", "CLASS66PACK", "scenery\\buildings\\SIGNALBOX.xml"};
            items.push_back({odd});
            Fault cased = routeFault(r, "case-mismatch", "route", assetFile(ctx.cat.signalBox), tile, odd.id,
                                     "found: the blueprint exists under other letter case; not reported missing");
            cased.details = {{"provider", odd.provider}, {"product", odd.product}};
            ctx.manifest.add(cased);
            items.push_back({ctx.cat.obrien});
            Fault apos = routeFault(r, "encoded-name", "route", assetFile(ctx.cat.obrien), tile,
                                    xmlEscape(ctx.cat.obrien.id), "found after the character repair; not reported missing");
            apos.details = {{"form", "&apos;"}};
            ctx.manifest.add(apos);
            Ref missing{"DemoRail", "Class66Pack", "Scenery\\Industry\\Coal_Drops.xml"};
            items.push_back({missing});
            missingBlueprint(missing, tile, tileName(tx, tz), "(Scenery Item)");
        }
        if (t == 0 && r.index == 1) {
            Ref grun = ctx.cat.grun, grunFfxx = ctx.cat.grun, cafe = ctx.cat.cafe;
            grunFfxx.id = "Scenery\\Buildings\\Bahnhof Gr\xEF\xBF\xBCn.xml";
            cafe.id = "Scenery\\Buildings\\Caf\xEF\xBF\xA9 Alpina.xml";
            for (auto [ref, file, form] : {std::tuple{grun, assetFile(ctx.cat.grun), "utf-8 ü"},
                                           std::tuple{grunFfxx, assetFile(ctx.cat.grun), "U+FFFC (ü)"},
                                           std::tuple{cafe, assetFile(ctx.cat.cafe), "U+FFE9 (é)"}}) {
                items.push_back({ref});
                Fault f = routeFault(r, "encoded-name", "route", file, tile, ref.id,
                                     "found (after the character repair where needed); not reported missing");
                f.details = {{"form", form}};
                ctx.manifest.add(f);
            }
            Ref missing{"Alpenbahn", "Gotthard", "Scenery\\Buildings\\Chalet.xml"};
            items.push_back({missing});
            missingBlueprint(missing, tile, tileName(tx, tz), "(Scenery Item)");
        }
        if (t == sceneryTiles - 1 && r.index == 1) {
            // A broken reference between sound ones: the check warns and reads no further.
            items.insert(items.begin() + 8, Entity{Ref{"", "Gotthard", "Scenery\\Trees\\Larch.xml"}});
            Fault f = routeFault(r, "empty-provider", "route", tile, "", "",
                                 "warning \"There is an error in a Provider description in tile\" naming (Scenery Item) "
                                 "and the tile; the rest of the tile is not read");
            f.details = {{"label", "(Scenery Item)"}, {"entity", "9"}};
            ctx.manifest.add(f);
        }
        if (!ctx.out.document(tile, sceneryTileXml(ctx, items, tx, tz)))
            return false;
        r.manifest->tiles.push_back(tile);
        ++result.tiles;
        ctx.progress("Scenery tiles");
    }

    // Networks: the track network, its tiles, road and loft tiles.
    std::vector<Ref> track;
    for (int i = 0; i < 12 * scale; ++i)
        track.push_back(ctx.cat.track[static_cast<std::size_t>(i) % ctx.cat.track.size()]);
    if (r.index == 0) {
        Ref missing{"Alpenbahn", "Gotthard", "RailNetwork\\Track\\Bullhead.xml"};
        track.insert(track.begin() + 3, missing);
        missingBlueprint(missing, r.folder + "/Networks/Tracks.bin", "Tracks.bin", "(Track Item)");
    }
    if (!ctx.out.document(r.folder + "/Networks/Tracks.bin", ribbonsXml(ctx, "Network::cTrackRibbon", track, 0, 0, true)))
        return false;
    r.manifest->tiles.push_back(r.folder + "/Networks/Tracks.bin");
    ++result.tiles;
    struct Kind {
        const char* folder;
        const char* ribbon;
        const std::vector<Ref>* pool;
        int count;
        const char* label;
    };
    for (const Kind& k : {Kind{"Track Tiles", "Network::cTrackRibbon", &ctx.cat.track, 4, "(Track Item)"},
                          Kind{"Road Tiles", "Network::cRoadRibbon", &ctx.cat.road, 2, "(Road Item)"},
                          Kind{"Loft Tiles", "Network::cLoftRibbon", &ctx.cat.loft, 2, "(Loft Item)"}}) {
        for (int t = 0; t < k.count * scale; ++t) {
            if (ctx.cancelled())
                return false;
            int tx = t % 2, tz = t / 2;
            std::string tile = r.folder + "/Networks/" + k.folder + "/" + tileName(tx, tz);
            std::vector<Ref> refs;
            for (int i = 0; i < 6; ++i)
                refs.push_back((*k.pool)[ctx.rng.below(k.pool->size())]);
            Ref missing;
            if (t == 0 && r.index == 0 && std::string(k.folder) == "Road Tiles")
                missing = {"Alpenbahn", "Gotthard", "RoadNetwork\\Roads\\Cobbles.xml"};
            if (t == 0 && r.index == 1 && std::string(k.folder) == "Loft Tiles")
                missing = {"Alpenbahn", "Gotthard", "Loft\\Drystone_Wall.xml"};
            if (!missing.empty()) {
                refs.push_back(missing);
                missingBlueprint(missing, tile, tileName(tx, tz), k.label);
            }
            if (!ctx.out.document(tile, ribbonsXml(ctx, k.ribbon, refs, tx, tz, false)))
                return false;
            r.manifest->tiles.push_back(tile);
            ++result.tiles;
            ctx.progress("Network tiles");
        }
    }

    // Terrain mix maps and the description pages.
    for (int t = 0; t < 2; ++t) {
        std::string name = r.folder + "/MixMap/" + tileName(t, 0);
        name.replace(name.size() - 4, 4, ".TgPcDx");
        XmlBuilder x("cHcTextureGroup", ctx.rng.id());
        x.open("Texture").open("cHcTexture", ctx.rng.id()).integer("Width", "sUInt32", 16).integer("Height", "sUInt32", 16);
        x.str("Name", "MixMap").open("Data").open("cHcTextureData", ctx.rng.id()).open("Mip");
        for (int level = 16; level >= 4; level /= 2) {
            x.open("cHcImageDx", ctx.rng.id()).str("Format", dxtFormatName(DxtFormat::Dxt1)).boolean("IsSwizzled", false);
            x.integer("Width", "sUInt16", level).integer("Height", "sUInt16", level);
            x.blob(encodeDxtLevel(DxtFormat::Dxt1, level, level, {90, 140, 60, 255}, {120, 110, 80, 255})).close();
        }
        x.close().empty("TextureBlob").open("Palette").nil().close();
        if (!ctx.out.document(name, x.finish()))
            return false;
    }
    if (!ctx.out.raw(r.folder + "/RouteInformation/En/Description.html",
                     "<html><body><h1>" + r.name + "</h1><p>A demo route.</p></body></html>\r\n"))
        return false;

    // Scenarios of every class, then the ones the scale adds.
    std::vector<ScenarioPlan> plans;
    if (r.packed) {
        plans.push_back({r.packedScenario, "eStandardScenarioClass"});
    } else {
        plans = {{r.index == 0 ? "O'Connor's coal run" : "Z\xEF\xBF\xBCrich freight", "eStandardScenarioClass", "0",
                  true, true, true, r.index == 0},
                 {"Free roam", "eFreeRoamScenarioClass"},
                 {"Career: first turn", "eCareerScenarioClass"},
                 {"Timetable: morning", "eTimetableScenarioClass"},
                 {"[QD] Quick Drive", "eTemplateScenarioClass"},
                 {"Workshop: Déjà vu", "eStandardScenarioClass", "1733904021"}};
        // A save without its hash, and a weather whose product has no Weather folder.
        plans[2].save = true;
        plans[2].saveHash = false;
        plans[3].weather = kWeatherWithoutFolder;
        if (r.index == 0)
            plans.push_back({"Unfinished", "eStandardScenarioClass", "0", false});
        for (int i = 0; i < 7 * (scale - 1); ++i)
            plans.push_back({"Extra service " + std::to_string(i + 1), "eStandardScenarioClass"});
    }
    for (const auto& s : plans) {
        if (ctx.cancelled() || !writeScenario(ctx, r, s, result))
            return false;
        const auto& written = r.manifest->scenarios.back();
        if (s.name.find('\'') != std::string::npos || s.name.find('\xEF') != std::string::npos) {
            Fault f = routeFault(r, "encoded-name", "scenario-list",
                                 r.folder + "/Scenarios/" + written.folder + "/ScenarioProperties.xml", "",
                                 xmlEscape(s.name), "the name is shown repaired");
            f.details = {{"form", s.name.find('\'') != std::string::npos ? "&apos;" : "U+FFFC (ü)"}};
            ctx.manifest.add(f);
        }
    }
    if (!r.packed)
        return true;
    if (!ctx.out.endArchive())
        return false;
    // Unpacked by the table's measure when the MixMap folder lies beside the archive.
    const Output::Archive& a = ctx.out.lastArchive();
    r.manifest->archive = a.path;
    r.manifest->archiveOnly = a.onlyInArchive;
    ctx.manifest.archives.push_back({a.path, "route", r.alsoOnDisk ? "Unpacked" : "Not unpacked", a.entries.size(), true,
                                     r.guid, r.manifest->scenarios});
    return true;
}

std::string consistTemplatesXml(Context& ctx) {
    XmlBuilder x("cRecordSet", ctx.rng.id());
    x.open("Record");
    const auto& E = ctx.cat.engines;
    const auto& W = ctx.cat.wagons;
    // A wagon never released: the saved consist that names it shows it missing.
    Vehicle sludge = W[0];
    sludge.reskinOf = {};
    sludge.ref.id = "RailVehicles\\Freight\\HTA\\HTA_Sludge.xml";
    struct Entry {
        const Vehicle* vehicle;
        bool flipped = false;
    };
    struct T {
        std::string name;
        std::vector<Entry> cars;
    };
    for (const T& t : {T{"Class 66 coal", {{&E[0]}, {&W[0]}, {&W[0]}, {&W[1]}}},
                       T{"Re 460 InterRegio", {{&E[2]}, {&W[3]}, {&W[4]}}},
                       T{"Black 5 excursion", {{&E[4]}, {&W[6]}, {&W[7]}, {&W[7]}}},
                       T{"Sludge trip", {{&E[0], true}, {&sludge}}}}) {
        x.open("cConsistTemplate", ctx.rng.id());
        localisedName(x, "Name", t.name, makeGuid(ctx.rng).text);
        x.open("ConsistEntry");
        ManifestSavedConsist saved{t.name, {}};
        for (const Entry& car : t.cars) {
            x.open("cConsistTemplateEntry", ctx.rng.id());
            blueprintRef(x, "BlueprintID", car.vehicle->ref);
            x.boolean("Flipped", car.flipped).close();
            ManifestVehicle v;
            v.name = car.vehicle->name;
            v.provider = car.vehicle->ref.provider;
            v.product = car.vehicle->ref.product;
            v.blueprint = car.vehicle->ref.id;
            v.flipped = car.flipped;
            v.missing = car.vehicle == &sludge;
            saved.vehicles.push_back(std::move(v));
        }
        x.close().close();
        ctx.manifest.savedConsists.push_back(std::move(saved));
    }
    ctx.manifest.add(makeFault("missing-consist-stock", "consists", assetFile(sludge.ref), "Content/ConsistTemplates.bin",
                               sludge.ref.id, "the saved consist 'Sludge trip' lists the wagon; its blueprint does not exist"));
    return x.finish();
}

} // namespace

bool writeRoutes(Context& ctx, DemoResult& result) {
    static const char* kNames[3] = {"Demo Valley Line", "Gotthard S\xC3\xBC" "drampe", "Heritage Branch"};
    for (int i = 0; i < 3; ++i) {
        RouteState r;
        r.index = i;
        r.guid = ctx.cat.routeFolders[static_cast<std::size_t>(i)];
        r.name = kNames[i];
        r.packed = i == 2;
        r.folder = "Content/Routes/" + r.guid;
        ctx.manifest.routes.push_back({r.guid, r.name, r.packed, {}, {}, {}, {}});
        r.manifest = &ctx.manifest.routes.back();
        if (!writeRoute(ctx, r, result))
            return false;
        (r.packed ? result.packedRoutes : result.routes).push_back({r.guid, r.name});
    }

    // A folder one character short of a GUID: a valid route that the route list must skip.
    std::string shortFolder = "Content/Routes/" + ctx.cat.routeFolders[3].substr(0, 35);
    RouteState shortRoute;
    shortRoute.guid = ctx.cat.routeFolders[3].substr(0, 35);
    shortRoute.name = "Short Folder Route";
    if (!ctx.out.raw(shortFolder + "/RouteProperties.xml", routePropertiesXml(ctx, shortRoute)))
        return false;
    ctx.manifest.add(makeFault("route-folder-35-chars", "route-list", shortFolder, "", "",
                               "not listed as a route although it holds a valid RouteProperties.xml"));

    return ctx.out.document("Content/ConsistTemplates.bin", consistTemplatesXml(ctx));
}

bool writeArchivedRoute(Context& ctx, const ArchivedRoute& packed, DemoResult& result) {
    RouteState r;
    r.index = static_cast<int>(ctx.manifest.routes.size()); // past the loose routes: their stock
    r.guid = packed.guid;
    r.name = packed.english;
    r.french = packed.french;
    r.german = packed.german;
    r.packed = true;
    r.scale = 1;
    r.packedScenario = packed.scenario;
    r.folder = "Content/Routes/" + r.guid;
    if (packed.partlyUnpacked) {
        // Unpacked but for the scenery tiles after the first and the loft tiles.
        const std::string scenery = r.folder + "/Scenery/", loft = r.folder + "/Networks/Loft Tiles/";
        const std::string first = scenery + tileName(-1, -1);
        r.alsoOnDisk = [=](const std::string& rel) {
            return rel.rfind(loft, 0) != 0 && (rel.rfind(scenery, 0) != 0 || rel == first);
        };
    }
    // The name the simulator shows: English, failing that French, failing that German.
    const std::string shown = !packed.english.empty() ? packed.english : !packed.french.empty() ? packed.french : packed.german;
    ctx.manifest.routes.push_back({r.guid, shown, !packed.partlyUnpacked, {}, {}, {}, {}});
    r.manifest = &ctx.manifest.routes.back();
    if (!writeRoute(ctx, r, result))
        return false;
    (packed.partlyUnpacked ? result.routes : result.packedRoutes).push_back({r.guid, shown});
    return true;
}

bool writeScenarioPack(Context& ctx, int routeIndex, const std::string& archive, const std::string& scenario,
                       DemoResult& result) {
    RouteState r;
    r.index = routeIndex;
    r.guid = ctx.manifest.routes.at(static_cast<std::size_t>(routeIndex)).folder;
    r.folder = "Content/Routes/" + r.guid;
    ManifestRoute packed{r.guid, "", false, {}, {}, {}, {}}; // the scenario is the archive's, not the route's
    r.manifest = &packed;
    ctx.out.beginArchive(r.folder, archive);
    if (!writeScenario(ctx, r, {scenario, "eStandardScenarioClass"}, result) || !ctx.out.endArchive())
        return false;
    const Output::Archive& a = ctx.out.lastArchive();
    ctx.manifest.archives.push_back({a.path, "scenarios", "Unpacked", a.entries.size(), true, r.guid, packed.scenarios});
    return true;
}

} // namespace velmora::demo
