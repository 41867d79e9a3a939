// The Assets tree: rolling stock, scenery, sections, audio, geometry and textures of four
// providers, with the asset-side faults that the manifest lists.

#include "context.h"
#include "dxt.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <tuple>

namespace velmora::demo {

namespace {

const std::string kDemoRail = "DemoRail", kClass66 = "Class66Pack";
const std::string kAlpen = "Alpenbahn", kGotthard = "Gotthard";
const std::string kHeritage = "Heritage", kSteam = "SteamDays";
const std::string kKuju = "Kuju", kCore = "RailSimulatorCore";

// ---------------------------------------------------------------------------------------------
// Textures and geometry

// One TextureByName entry: the code, the value as the geometry holds it, and the root-relative
// file it resolves to (without the ending).
struct TexUse {
    std::string code, value, file;
};

std::string parentFolder(const std::string& rel) { return rel.substr(0, rel.rfind('/')); }

TexUse texUse(const std::string& geometryFile, const std::string& code, const std::string& value) {
    std::string folder = parentFolder(geometryFile);
    std::string rest = value;
    TexUse use{code, "[" + code + "]" + value, {}};
    if (rest.rfind("..\\", 0) == 0) {
        while (rest.rfind("..\\", 0) == 0) {
            rest.erase(0, 3);
            folder = parentFolder(folder);
        }
        use.file = folder + "/" + slashes(rest);
    } else if (rest.size() >= 4 && std::equal(rest.begin(), rest.begin() + 4, "text",
                                              [](char a, char b) { return std::tolower(a) == b; })) {
        use.file = folder + "/" + slashes(rest);
    } else {
        use.file = "Assets/" + slashes(rest);
    }
    return use;
}

// The seasonal variants a code demands beside the base texture.
std::vector<std::string> variantsOf(const std::string& code) {
    if (code == "08")
        return {"", "_WI"};
    if (code == "09")
        return {"", "_SP", "_WI"};
    if (code == "0c")
        return {"", "_AU", "_WI"};
    if (code == "0d")
        return {"", "_SP", "_AU", "_WI"};
    return {""};
}

std::string textureXml(Context& ctx, const std::string& name, int size, DxtFormat format) {
    XmlBuilder x("cHcTextureGroup", ctx.rng.id());
    x.open("Texture").open("cHcTexture", ctx.rng.id());
    x.integer("Width", "sUInt32", size).integer("Height", "sUInt32", size).str("Name", name);
    x.open("Data").open("cHcTextureData", ctx.rng.id()).open("Mip");
    Rgba top{static_cast<std::uint8_t>(ctx.rng.below(256)), static_cast<std::uint8_t>(ctx.rng.below(256)),
             static_cast<std::uint8_t>(ctx.rng.below(256)), 255};
    Rgba bottom{static_cast<std::uint8_t>(ctx.rng.below(256)), static_cast<std::uint8_t>(ctx.rng.below(256)),
                static_cast<std::uint8_t>(ctx.rng.below(256)), static_cast<std::uint8_t>(ctx.rng.below(256))};
    for (int level = size; level >= 4; level /= 2) {
        x.open("cHcImageDx", ctx.rng.id()).str("Format", dxtFormatName(format)).boolean("IsSwizzled", false);
        x.integer("Width", "sUInt16", level).integer("Height", "sUInt16", level);
        x.blob(encodeDxtLevel(format, level, level, top, bottom));
        x.close();
    }
    x.close().empty("TextureBlob").open("Palette").nil().close();
    return x.finish();
}

// Writes `file` + `suffix` + ".TgPcDx" once, however many geometries share it.
bool writeTexture(Context& ctx, const std::string& file, const std::string& suffix, int size = 64) {
    std::string rel = file + suffix + ".TgPcDx";
    if (!ctx.written.insert(rel).second)
        return true;
    // The name below the product, as the simulator's tools store it.
    std::string name = rel;
    for (int i = 0; i < 3 && name.find('/') != std::string::npos; ++i)
        name.erase(0, name.find('/') + 1);
    name = backslashes(name.substr(0, name.rfind('.')));
    static const DxtFormat kFormats[3] = {DxtFormat::Dxt1, DxtFormat::Dxt3, DxtFormat::Dxt5};
    DxtFormat format = kFormats[std::hash<std::string>{}(rel) % 3];
    if (rel.find("_nm") != std::string::npos)
        format = DxtFormat::Dxt5;
    return ctx.out.document(rel, textureXml(ctx, name, size, format));
}

// Every file the entry's code demands, except those in `leaveOut` (suffixes, "" for the base).
bool writeTextures(Context& ctx, const TexUse& use, const std::vector<std::string>& leaveOut = {}) {
    for (const auto& suffix : variantsOf(use.code))
        if (std::find(leaveOut.begin(), leaveOut.end(), suffix) == leaveOut.end())
            if (!writeTexture(ctx, use.file, suffix))
                return false;
    if (use.file.size() > 3 && use.file.compare(use.file.size() - 3, 3, "_nm") == 0 &&
        std::find(leaveOut.begin(), leaveOut.end(), "c") == leaveOut.end())
        return writeTexture(ctx, use.file, "c"); // a normal map's companion
    return true;
}

// A shape: one material a group of textures, a little scene graph and vertex data.
std::string geometryXml(Context& ctx, const std::string& nodeName, const std::vector<std::vector<TexUse>>& materials) {
    XmlBuilder x("cHcGeometry", ctx.rng.id());
    x.open("LODController").open("cHcGeometryLODController", ctx.rng.id()).open("LOD");
    for (double d : {50.0, 250.0, 1000.0})
        x.float32("e", d);
    x.close().close().close();
    const std::int32_t vertexType = ctx.rng.id();
    x.open("Material");
    for (std::size_t m = 0; m < materials.size(); ++m) {
        x.open("cHcEffectMaterialDx", ctx.rng.id());
        x.str("ShaderName", m == 0 ? "TrainBasicObjectDiffuse.fx" : "TrainBumpSpecNightShader.fx");
        x.open("TextureByName");
        for (const auto& t : materials[m])
            x.str("e", t.value);
        x.close();
        x.str("Name", nodeName + "_mat" + std::to_string(m)).str("CollisionSurface", "Default");
        x.ref("VertexType", vertexType);
        x.open("FloatParam").float32("e", 0.5).close();
        x.empty("VectorParam");
        // The material's lighting; the emissive part glows a little, as on many add-ons.
        x.floats("AmbientAsVec", {1, 1, 1, 1}).floats("DiffuseAsVec", {1, 1, 1, 1});
        x.floats("SpecularAsVec", {0.25, 0.25, 0.25, 1}).floats("EmissiveAsVec", {0.125, 0.125, 0.0625, 1});
        x.close();
    }
    x.close();
    x.open("Root").open("cHcHierarchyNode", ctx.rng.id()).str("Name", nodeName);
    matrix(x, "Transform", 0, 0, 0);
    x.close().close();
    x.empty("CollisionRoot");
    x.open("VertexTypes").open("cHcVertexType", vertexType).integer("Stride", "sUInt32", 32).close().close();
    x.open("VertexData").open("cHcVertexBuffer", ctx.rng.id()).ref("Owner", vertexType);
    std::string vertices(96, '\0');
    for (char& c : vertices)
        c = static_cast<char>(ctx.rng.below(256));
    x.blob(vertices);
    return x.finish();
}

// Writes the shape at `geometryFile` and the textures it names (all of them: faults are made by
// the callers that leave some out).
bool writeGeometry(Context& ctx, const std::string& geometryFile, const std::vector<std::vector<TexUse>>& materials,
                   bool withTextures = true) {
    if (withTextures)
        for (const auto& group : materials)
            for (const auto& use : group)
                if (!writeTextures(ctx, use))
                    return false;
    std::string node = geometryFile.substr(geometryFile.rfind('/') + 1);
    node = node.substr(0, node.find('.'));
    return ctx.out.document(geometryFile, geometryXml(ctx, node, materials));
}

// ---------------------------------------------------------------------------------------------
// Small documents

std::string csvXml(Context& ctx, const std::vector<std::tuple<double, double, std::string>>& items) {
    XmlBuilder x("cCSVContainer", ctx.rng.id());
    x.open("CsvItem");
    for (const auto& [a, b, name] : items) {
        x.open("cCSVItem", ctx.rng.id()).float32("X", a).float32("Y", b).str("Name", name).close();
    }
    return x.finish();
}

std::string soundFile(Context& ctx, int samples) {
    // A RIFF WAVE header and 8-bit mono samples: enough for anything that looks at the file.
    std::string data(static_cast<std::size_t>(samples), '\0');
    for (int i = 0; i < samples; ++i)
        data[static_cast<std::size_t>(i)] = static_cast<char>(128 + ((i * 7) % 64) - 32 + static_cast<int>(ctx.rng.below(3)));
    auto le32 = [](std::uint32_t v) {
        std::string s(4, '\0');
        for (int i = 0; i < 4; ++i)
            s[static_cast<std::size_t>(i)] = static_cast<char>((v >> (8 * i)) & 0xFF);
        return s;
    };
    auto le16 = [](std::uint16_t v) { return std::string{static_cast<char>(v & 0xFF), static_cast<char>(v >> 8)}; };
    std::string wav = "RIFF" + le32(36 + static_cast<std::uint32_t>(samples)) + "WAVEfmt " + le32(16) + le16(1) +
                      le16(1) + le32(22050) + le32(22050) + le16(1) + le16(8) + "data" +
                      le32(static_cast<std::uint32_t>(samples));
    return wav + data;
}

// An audio proxy naming its sound files (Assets-relative, with their endings).
std::string proxyXml(Context& ctx, const std::string& control, const std::vector<std::string>& sounds) {
    XmlBuilder x("kLoud::cProxyControlLoader", ctx.rng.id());
    x.open("ProxyControl").open(control, ctx.rng.id()).open("Sound");
    for (const auto& s : sounds) {
        std::string folder = s.substr(0, s.rfind('\\'));
        x.open("kLoud::cRandomSampleSound", ctx.rng.id()).str("Name", s.substr(s.rfind('\\') + 1));
        x.float32("Volume", 0.8).boolean("Looped", true);
        x.open("Sample").open("kLoud::cSampleWithLikelihood", ctx.rng.id()).float32("Likelihood", 1);
        x.open("Sample").open("kLoud::cSampleID", ctx.rng.id()).str("Pathname", folder).str("Filename", s);
        x.close().close().close().close().close();
    }
    return x.finish();
}

// The proxy beside its sound files; `missingSounds` are named but not written.
bool writeProxy(Context& ctx, const std::string& provider, const std::string& product, const std::string& proxyPath,
                const std::vector<std::string>& soundNames, bool withBinary,
                const std::vector<std::string>& missingSounds = {}) {
    std::string folder = proxyPath.substr(0, proxyPath.rfind('\\'));
    std::vector<std::string> sounds;
    for (const auto& s : soundNames) {
        std::string full = provider + "\\" + product + "\\" + folder + "\\" + s;
        sounds.push_back(full);
        if (std::find(missingSounds.begin(), missingSounds.end(), s) == missingSounds.end() &&
            ctx.written.insert("Assets/" + slashes(full)).second &&
            !ctx.out.raw("Assets/" + slashes(full), soundFile(ctx, 400)))
            return false;
    }
    std::string xml = proxyXml(ctx, "cAmbientAudioControl", sounds);
    if (!ctx.out.raw(assetFile(provider, product, proxyPath, ".proxyxml"), xml))
        return false;
    return !withBinary || ctx.out.document(assetFile(provider, product, proxyPath, ".proxybin"), xml);
}

// A blueprint that carries a sound: `proxy` is Assets-relative without its ending.
std::string soundBlueprintXml(Context& ctx, const std::string& name, const std::string& proxy) {
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open("cSoundBlueprint").str("Name", name);
    x.open("SoundComponent").open("cAudioComponentBlueprint").str("ProxyName", proxy);
    x.float32("AttenuationDistance", 150).close().close();
    return x.finish();
}

std::string trackSoundXml(Context& ctx, const std::string& name, const std::string proxies[4]) {
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open("cTrackSoundBlueprint").str("Name", name);
    x.str("RumbleAudioControlName", proxies[0]).str("TingleAudioControlName", proxies[1]);
    x.str("JunctionAudioControlName", proxies[2]).str("DerailmentAudioControlName", proxies[3]);
    return x.finish();
}

void browse(XmlBuilder& x, const std::string& name, const std::string& category) {
    x.open("BrowseInformation").open("iBrowseableBlueprint::cBrowseInformation");
    localisedName(x, "DisplayName", name);
    localisedName(x, "Description", "");
    x.str("Category", category).str("ValidInScenarios", "eTrue").close().close();
}

void emptyRef(XmlBuilder& x, std::string_view name) { blueprintRef(x, name, Ref{}); }

std::string sceneryXml(Context& ctx, const std::string& name, const std::string& geometryId,
                       const std::string& category = "eBuildings") {
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open("cSceneryBlueprint").str("Name", "");
    browse(x, name, category);
    x.open("RenderComponent").open("cSceneryRenderBlueprint");
    emptyRef(x, "PrimaryNamedTextureSet");
    emptyRef(x, "SecondaryNamedTextureSet");
    x.str("GeometryID", geometryId).str("CollisionGeometryID", "");
    x.str("Pickable", "eTrue").str("CastsShadows", "eTrue").str("ShadowType", "eShadowType_Blobby");
    x.str("ViewType", "ExternalView").str("Palettised", "eFalse");
    x.integer("Palette0Index", "sInt32", -1).integer("Palette1Index", "sInt32", -1).integer("Palette2Index", "sInt32", -1);
    x.empty("HeatHaze").empty("TexText");
    return x.finish();
}

} // namespace

Ref scenery(Context& ctx, const std::string& provider, const std::string& product, const std::string& path,
            const std::string& name, const std::vector<std::pair<std::string, std::string>>& textures,
            bool codeInId) {
    Ref ref{provider, product, path + ".xml"};
    std::string geometry = assetFile(provider, product, path, ".GeoPcDx");
    std::vector<std::vector<TexUse>> materials;
    for (const auto& [code, value] : textures)
        materials.push_back({texUse(geometry, code, value)});
    if (!writeGeometry(ctx, geometry, materials))
        return {};
    std::string id = assetsRelative(ref);
    if (codeInId) // "...\[00]Name": the check takes the four characters of the code off
        id.insert(id.rfind('\\') + 1, "[00]");
    if (!ctx.out.blueprint(assetFile(ref), sceneryXml(ctx, name, id)))
        return {};
    return ref;
}

namespace {

// ---------------------------------------------------------------------------------------------
// Rolling stock

struct StockParts {
    Ref coupling, bogie, cab, headOut, engineSim, sound;
    std::string numbers;   // Assets-relative .csv name of the numbering list
    std::string script;    // Assets-relative .lua
    std::string animation; // Assets-relative .ban
};

std::string railVehicleXml(Context& ctx, const Vehicle& v, const std::string& geometryId, const StockParts& p) {
    const char* kind = v.engine ? "cEngineBlueprint" : v.tender ? "cTenderBlueprint" : "cWagonBlueprint";
    const char* component = v.engine   ? "cEngineComponentBlueprint"
                            : v.tender ? "cTenderComponentBlueprint"
                                       : "cWagonComponentBlueprint";
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open(kind).str("Name", v.name);
    x.open("BrowseInformation").open("iRailVehicleBlueprint::cBrowseRVInformation");
    localisedName(x, "DisplayName", v.name, "", v.name);
    x.close().close();
    x.open("RailVehicleComponent").open(component);
    x.open("NumberingList").open("cCSVContainer").str("CsvFile", p.numbers).close().close();
    x.str("NumberingFormat", "").integer("Numberings", "sUInt32", 0);
    blueprintRef(x, "FrontCouplingBlueprintID", p.coupling);
    blueprintRef(x, "RearCouplingBlueprintID", p.coupling);
    matrix(x, "FrontCouplingPivot", 0, 1.05, 10.5);
    matrix(x, "RearCouplingPivot", 0, 1.05, -10.5);
    x.float32("Mass", v.mass).float32("EaseOfDerailment", 0.4375);
    x.float32("FrontPivotX", 7.25).float32("BackPivotX", -7.25);
    x.float32("CollisionWidth", 2.8).float32("CollisionHeight", 3.9).float32("CollisionLength", 21.4);
    x.float32("DragCoefficient", 7.2).float32("DryFriction", 0.5).float32("WetFriction", 0.25);
    x.open("Bogey");
    for (double pivot : {6.43, -6.43}) {
        x.open("cRailVehicleComponentBlueprint::tag_sBogey").float32("BogeyPivotX", pivot).float32("BogeyPivotY", 0);
        blueprintRef(x, "BogeyBlueprint", p.bogie);
        x.close();
    }
    x.close();
    x.str("BogieAudioControlName", "").str("CouplingAudioControlName", "");
    x.str("ShowOnTrackProfile", "eTrue").str("ValidStandaloneLoco", v.engine ? "eTrue" : "eFalse");
    if (v.engine) {
        x.str("EngineType", v.engineType).str("EngineName", v.name);
        localisedName(x, "LocalisedEngineName", v.name);
        matrix(x, "DriverPosition", -0.7, 2.6, 9.8);
        x.str("DriverPresent", "eFalse");
        blueprintRef(x, "HeadOutCameraBlueprint", p.headOut);
    }
    x.float32("MaxPermissibleSpeed", 0).close().close();

    x.open("RenderComponent").open("cAnimObjectRenderBlueprint");
    emptyRef(x, "PrimaryNamedTextureSet");
    emptyRef(x, "SecondaryNamedTextureSet");
    x.str("GeometryID", geometryId).str("CollisionGeometryID", "");
    x.str("Pickable", "eTrue").str("CastsShadows", "eTrue").str("ViewType", "ExternalView");
    x.open("DetailLevelGenerationRange").open("cSceneryRenderBlueprint::sDetailLevelGenerationRange");
    x.integer("HighestLevel_1isHighest", "sInt32", 1).integer("LowestLevel_10isLowest", "sInt32", 10).close().close();
    x.open("AnimSet");
    if (!p.animation.empty()) {
        x.open("iAnimObjectRenderBlueprint::cAnimation").str("AnimationID", "Main");
        x.str("AnimationName", p.animation).str("AnimateInEditor", "eFalse").close();
    }
    x.close().close().close();
    x.open("PosOriComponent").empty("cPosOriBlueprint").close();
    if (v.engine) {
        x.open("EngineSimulationContainer").open("cEngineSimContainerBlueprint");
        blueprintRef(x, "EngineSimFile", p.engineSim);
        x.close().close();
        x.open("ControlContainerComponent").open("cControlContainerBlueprint");
        x.open("InteriorInterface").open("cControlContainerBlueprint::cInteriorInterface");
        x.str("InteriorGeometryID", assetsRelative(p.cab)).str("NumberOfCabs", "eSingleCab");
        blueprintRef(x, "InteriorCamera", p.cab);
        emptyRef(x, "CabOcclusion");
        x.close().close();
        x.open("ControlValues");
        for (const char* control : {"Regulator", "TrainBrakeControl", "Reverser", "Horn"}) {
            x.open("cControlContainerBlueprint::cControlValue").str("ControlName", control);
            x.float32("DefaultValue", 0).float32("MinimumValue", 0).float32("MaximumValue", 1).close();
        }
        x.close().close().close();
    }
    x.open("ContainerComponent").open("cEntityContainerBlueprint").boolean("TrackTerrainInEditor", false);
    x.open("Children");
    if (!p.sound.empty()) {
        x.open("cEntityContainerBlueprint::sChild").str("ChildName", "EngineSound");
        blueprintRef(x, "BlueprintID", p.sound);
        matrix(x, "Matrix", 0, 2, 0);
        x.str("ParentNodeName", "").close();
    }
    x.close().close().close();
    if (!p.script.empty())
        x.open("ScriptComponent").open("cScriptComponentBlueprint").str("Name", p.script).close().close();
    if (v.cargo) {
        x.open("CargoComponent").open("cCargoComponentBlueprint").open("CargoDef").open("cBulkCargoDef");
        x.str("Name", "Coal").float32("Capacity", 45).str("BulkFreightType", "Coal").close().close();
        emptyRef(x, "CargoBlueprintID");
        x.close().close();
    }
    return x.finish();
}

// A reskin as the simulator's blueprint tools write it: the base asset, and one replaced texture
// named by the base shape's texture name, the new one given relative to the reskin.
std::string reskinXml(Context& ctx, const Vehicle& v, const std::string& baseTexture, const std::string& texture) {
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open("cReskinBlueprint").str("Name", v.name);
    browse(x, v.name, "eRailVehicles");
    blueprintRef(x, "ReskinAssetBpId", v.reskinOf);
    x.open("TextureEntry").open("cReskinBlueprint::sTextureEntry");
    x.str("TextureName", baseTexture).str("TextureID", texture).close().close();
    return x.finish();
}

std::string simpleBlueprint(Context& ctx, const char* kind, const std::string& name,
                            const std::function<void(XmlBuilder&)>& body = {}) {
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open(kind).str("Name", name);
    if (body)
        body(x);
    return x.finish();
}


} // namespace

bool writeStock(Context& ctx, const StockSpec& s, Vehicle& out, bool scriptOnlyCompiled) {
    const std::string& P = s.provider;
    const std::string& Q = s.product;
    out = Vehicle{{P, Q, s.folder + "\\" + s.file + ".xml"}, {}, s.name, !s.engineType.empty(), s.tender,
                  s.engineType, s.prefix, s.cargo, s.mass};
    StockParts parts;
    parts.coupling = {P, Q, "RailVehicles\\Couplings\\Buckeye\\Buckeye.xml"};
    if (ctx.written.insert(assetFile(parts.coupling)).second &&
        !ctx.out.blueprint(assetFile(parts.coupling), simpleBlueprint(ctx, "cCouplingTypeBlueprint", "Buckeye", [](XmlBuilder& x) {
            x.str("CouplingType", "Buckeye").float32("MaxTension", 500);
        })))
        return false;

    parts.bogie = {P, Q, s.folder + "\\Bogies\\" + s.file + "_Bogie.xml"};
    std::string bogieShape = assetFile(parts.bogie, ".GeoPcDx");
    if (!writeGeometry(ctx, bogieShape, {{texUse(bogieShape, "00", "Textures\\" + s.file + "_Bogie")}}) ||
        !ctx.out.blueprint(assetFile(parts.bogie), simpleBlueprint(ctx, "cBogieBlueprint", s.file + " bogie", [&](XmlBuilder& x) {
            x.open("RenderComponent").open("cAnimObjectRenderBlueprint").str("GeometryID", assetsRelative(parts.bogie));
            x.close().close();
            if (s.engineType == "Steam") { // driving wheels: one set marked powered, one not marked
                x.open("BogieComponent").open("cBogieComponentBlueprint").open("Wheelsets");
                for (int set = 1; set <= 2; ++set) {
                    x.open("cBogieComponentBlueprint::sWheelset").str("Animation", "Driving" + std::to_string(set));
                    if (set == 1)
                        x.str("Powered", "eTrue");
                    x.open("Axle").open("cAxleBlueprint").float32("Radius", 0.94).close().close().close();
                }
            }
        })))
        return false;

    std::string numbers = s.folder + "\\" + s.file + "_Numbers.dcsv";
    parts.numbers = P + "\\" + Q + "\\" + s.folder + "\\" + s.file + "_Numbers.csv";
    std::vector<std::tuple<double, double, std::string>> numberItems;
    for (int i = 0; i < 8; ++i)
        numberItems.emplace_back(0, 0, s.prefix + std::to_string(101 + i * 7));
    if (!ctx.out.document(assetFile(P, Q, numbers, ".dcsv"), csvXml(ctx, numberItems)))
        return false;

    std::string scriptBase = s.folder + "\\Scripts\\" + s.file;
    parts.script = P + "\\" + Q + "\\" + scriptBase + ".lua";
    if (scriptOnlyCompiled) {
        // Only the compiled form ships, as with many payware models.
        if (!ctx.out.raw(assetFile(P, Q, scriptBase, ".out"), std::string("\x1bLuaQ\0\x01\x04\x04\x04\x08\0", 12) + s.name))
            return false;
    } else if (!ctx.out.raw(assetFile(P, Q, scriptBase, ".lua"),
                            "-- " + s.name + "\nfunction Initialise()\n\tCall(\"*:Activate\", 1)\nend\n\n"
                            "function Update(time)\nend\n")) {
        return false;
    }

    if (out.engine) {
        parts.cab = {P, Q, s.folder + "\\CabView\\" + s.file + "_Cab.xml"};
        parts.headOut = {P, Q, s.folder + "\\CabView\\" + s.file + "_HeadOut.xml"};
        std::string cabShape = assetFile(parts.cab, ".GeoPcDx");
        if (!writeGeometry(ctx, cabShape, {{texUse(cabShape, "00", "Textures\\" + s.file + "_CabInterior")}}) ||
            !ctx.out.blueprint(assetFile(parts.cab), simpleBlueprint(ctx, "cCabCameraBlueprint", s.file + " cab", [](XmlBuilder& x) {
                x.float32("NearPlane", 0.05).float32("FarPlane", 20000).float32("FieldOfView", 65);
            })) ||
            !ctx.out.blueprint(assetFile(parts.headOut), simpleBlueprint(ctx, "cHeadOutCameraBlueprint", s.file + " head out", [](XmlBuilder& x) {
                x.float32("NearPlane", 0.1).float32("FieldOfView", 60);
            })))
            return false;

        if (!writeEngineSimulation(ctx, P, Q, s.folder, s.file, s.engineType, parts.engineSim))
            return false;

        std::string animation = s.folder + "\\Animations\\" + s.file + "_Wipers.ban";
        parts.animation = P + "\\" + Q + "\\" + animation;
        std::string ban = "BAN\x01";
        for (int i = 0; i < 64; ++i)
            ban += static_cast<char>(ctx.rng.below(256));
        if (!ctx.out.raw(assetFile(P, Q, animation, ".ban"), ban))
            return false;

        parts.sound = {P, Q, "Audio\\RailVehicles\\" + s.file + "\\" + s.file + "_Sound.xml"};
        std::string proxy = "Audio\\RailVehicles\\" + s.file + "\\" + s.file + "_Engine";
        if (!writeProxy(ctx, P, Q, proxy, {"Idle.wav", "Notch1.wav", "Notch2.wav"}, true) ||
            !ctx.out.blueprint(assetFile(parts.sound), soundBlueprintXml(ctx, s.file + " sound", P + "\\" + Q + "\\" + proxy)))
            return false;
    }

    std::string shape = assetFile(P, Q, s.folder + "\\" + s.file, ".GeoPcDx");
    std::vector<std::vector<TexUse>> materials;
    for (const auto& [code, value] : s.textures)
        materials.push_back({texUse(shape, code, value)});
    if (!writeGeometry(ctx, shape, materials))
        return false;
    return ctx.out.blueprint(assetFile(out.ref), railVehicleXml(ctx, out, P + "\\" + Q + "\\" + s.folder + "\\" + s.file, parts));
}

namespace {

bool writeReskin(Context& ctx, const Vehicle& base, const std::string& baseTexture, const std::string& path,
                 const std::string& name, Vehicle& out) {
    out = base;
    out.ref = {base.ref.provider, base.ref.product, path + ".xml"};
    out.reskinOf = base.ref;
    out.name = name;
    std::string texture = assetFile(base.ref.provider, base.ref.product, path + "_Body", "");
    if (!writeTexture(ctx, texture, ""))
        return false;
    const std::string own = path.substr(path.rfind('\\') + 1) + "_Body";
    return ctx.out.blueprint(assetFile(out.ref), reskinXml(ctx, out, baseTexture, own));
}

// ---------------------------------------------------------------------------------------------
// Quick Drive consists

void consistEntry(XmlBuilder& x, const Ref& target, bool flipped) {
    x.open("cConsistEntry");
    blueprintRef(x, "BlueprintName", target);
    x.str("Flipped", flipped ? "eTrue" : "eFalse").close();
}

bool writeQuickDrive(Context& ctx, const Vehicle& engine, const Vehicle& wagon) {
    const std::string& P = engine.ref.provider;
    const std::string& Q = engine.ref.product;
    Ref locoFragment{P, Q, "PreLoad\\Fragments\\Class66_Loco_Fragment.xml"};
    Ref rakeFragment{P, Q, "PreLoad\\Fragments\\HTA_Rake_Fragment.xml"};
    // What the manifest records of each document: the Quick Drive check is tested against it.
    auto record = [&](const Ref& document, const char* kind, const std::string& name, const std::vector<Ref>& names) {
        ManifestQuickDrive q{assetFile(document), kind, name, {}};
        for (const Ref& r : names)
            q.entries.push_back({r.provider, r.product, r.id, false, false});
        ctx.manifest.quickDrive.push_back(std::move(q));
    };
    for (const auto& [fragment, vehicle, count] :
         {std::tuple{locoFragment, engine.ref, 1}, std::tuple{rakeFragment, wagon.ref, 6}}) {
        XmlBuilder x("cBlueprintLoader", ctx.rng.id());
        x.open("Blueprint").open("cConsistFragmentBlueprint");
        const std::string name = fragment.id.substr(fragment.id.rfind('\\') + 1);
        x.str("Name", name).open("ConsistEntry");
        for (int i = 0; i < count; ++i)
            consistEntry(x, vehicle, false);
        x.close();
        if (!ctx.out.blueprint(assetFile(fragment), x.finish()))
            return false;
        record(fragment, "fragment", name, std::vector<Ref>(static_cast<std::size_t>(count), vehicle));
    }
    // A fragment left behind when its wagon was withdrawn: the wagon's blueprint is gone.
    const Ref withdrawnFragment{P, Q, "PreLoad\\Fragments\\HTA_Withdrawn_Fragment.xml"};
    const Ref withdrawn{P, Q, "RailVehicles\\Freight\\HTA\\HTA_Withdrawn.xml"};
    {
        XmlBuilder x("cBlueprintLoader", ctx.rng.id());
        x.open("Blueprint").open("cConsistFragmentBlueprint");
        x.str("Name", "HTA_Withdrawn_Fragment.xml").open("ConsistEntry");
        consistEntry(x, wagon.ref, false);
        consistEntry(x, withdrawn, true);
        x.close();
        if (!ctx.out.blueprint(assetFile(withdrawnFragment), x.finish()))
            return false;
        record(withdrawnFragment, "fragment", "HTA_Withdrawn_Fragment.xml", {wagon.ref, withdrawn});
        ctx.manifest.quickDrive.back().entries[1].flipped = true;
        ctx.manifest.quickDrive.back().entries[1].missing = true;
        ctx.manifest.add(makeFault("missing-qd-entry", "qd", assetFile(withdrawn), assetFile(withdrawnFragment), withdrawn.id,
                                   "the Quick Drive check lists the fragment's second entry as missing"));
    }
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open("cConsistBlueprint").open("ConsistEntry");
    consistEntry(x, locoFragment, false);
    consistEntry(x, rakeFragment, false);
    x.close();
    localisedName(x, "LocoName", "[DR] Class 66");
    localisedName(x, "DisplayName", "Class 66 with HTA coal hoppers");
    x.str("EngineType", "Diesel").integer("EraStartYear", "sUInt32", 1998).integer("EraEndYear", "sUInt32", 2050);
    x.integer("DrivingEngineIndex", "sUInt32", 0);
    x.open("ValidBuildAndDriveRoutes");
    // Ids of their own, so that the generator's random sequence stays as it was.
    std::int64_t routeId = 700000000;
    for (const auto& route : ctx.cat.routeFolders)
        x.open("cConsistBlueprint-cValidRoute", ++routeId).str("RouteID", route).close();
    x.close();
    x.str("DrivableConsist", "eTrue").str("ConsistType", "eConsistTypeFreightCoal");
    x.str("HasPantograph", "eFalse").str("Has3rdRailShoe", "eFalse").str("Requires4thRail", "eFalse");
    const Ref consist{P, Q, "PreLoad\\Class66_Coal_QD.xml"};
    record(consist, "consist", "Class 66 with HTA coal hoppers", {locoFragment, rakeFragment});
    return ctx.out.blueprint(assetFile(consist), x.finish());
}

// ---------------------------------------------------------------------------------------------
// Track, road and loft sections

std::string sectionXml(Context& ctx, const char* kind, const std::string& name, const std::string& crossSection,
                       const Ref geometry[3]) {
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open(kind).str("Name", name);
    browse(x, name, "eTrack");
    x.open("RenderComponent").open("cSectionRenderBlueprint").str("CrossSectionID", crossSection);
    blueprintRef(x, "StartGeometry", geometry[0]);
    blueprintRef(x, "MiddleGeometry", geometry[1]);
    blueprintRef(x, "EndGeometry", geometry[2]);
    x.float32("Spacing", 2.5).close().close();
    return x.finish();
}

std::string crossSectionXml(Context& ctx, const std::vector<std::string>& textures) {
    XmlBuilder x("cHcCrossSection", ctx.rng.id());
    x.open("Texture");
    for (const auto& t : textures)
        x.str("e", "[00]" + t);
    x.close();
    x.floats("Profile", {-1.5, 0.0, 1.5, 0.0});
    return x.finish();
}

Ref section(Context& ctx, const char* kind, const std::string& provider, const std::string& product,
            const std::string& path, const std::string& name) {
    Ref ref{provider, product, path + ".xml"};
    std::string folder = path.substr(0, path.rfind('\\'));
    std::string base = path.substr(path.rfind('\\') + 1);
    std::string texture = provider + "\\" + product + "\\" + folder + "\\Textures\\" + base;
    if (!writeTexture(ctx, "Assets/" + slashes(texture), "") ||
        !ctx.out.document(assetFile(provider, product, path, ".XSec"), crossSectionXml(ctx, {texture})))
        return {};
    Ref geometry[3];
    const char* parts[3] = {"_Start", "_Mid", "_End"};
    for (int i = 0; i < 3; ++i) {
        geometry[i] = {provider, product, folder + "\\Geometry\\" + base + parts[i]};
        std::string shape = assetFile(geometry[i], ".GeoPcDx");
        if (!writeGeometry(ctx, shape, {{texUse(shape, "00", "..\\Textures\\" + base)}}))
            return {};
    }
    if (!ctx.out.blueprint(assetFile(ref), sectionXml(ctx, kind, name, assetsRelative(ref), geometry)))
        return {};
    return ref;
}

// ---------------------------------------------------------------------------------------------
// Products

bool pak(Context& ctx, const std::string& provider, const std::string& product) {
    std::string bytes = "PAK\x01";
    for (int i = 0; i < 60; ++i)
        bytes += static_cast<char>(ctx.rng.below(256));
    return ctx.out.raw("Assets/" + provider + "/" + product + "/Blueprints.pak", bytes);
}

// Many plain scenery objects: what the scale multiplies.
bool generatedScenery(Context& ctx, const std::string& provider, const std::string& product) {
    const int count = 80 * ctx.scale;
    static const char* kCodes[5] = {"00", "08", "09", "0c", "0d"};
    for (int i = 0; i < count; ++i) {
        if (i % 20 == 0) {
            if (ctx.cancelled())
                return false;
            ctx.progress(provider + "\\" + product);
        }
        std::string set = "Set" + std::to_string(i / 50);
        std::string path = "Scenery\\Generated\\" + set + "\\Obj" + std::to_string(i);
        int t = i % 10;
        std::string tex = "..\\..\\Textures\\Gen" + std::to_string(t);
        Ref ref = scenery(ctx, provider, product, path, product + " object " + std::to_string(i),
                          {{kCodes[t % 5], tex}});
        if (ref.empty())
            return false;
        ctx.cat.scenery.push_back(ref);
    }
    return true;
}

bool demoRail(Context& ctx) {
    const std::string P = kDemoRail, Q = kClass66;
    Vehicle class66, hta;
    if (!writeStock(ctx,
                    {P, Q, "RailVehicles\\Diesel\\Class66\\Engine", "Diesel", false, false, "Class66_EWS",
                     "DemoRail Class 66 EWS", "66 ", 126,
                     {{"0d", "Textures\\Class66_Body"},
                      {"00", "Textures\\Class66_Body_nm"},
                      {"00", "..\\Bogies\\Textures\\Class66_Bogie"},
                      {"08", "..\\..\\..\\CommonTex\\Buffers"}}},
                    class66))
        return false;
    ctx.cat.engines.push_back(class66);
    Vehicle freightliner;
    if (!writeReskin(ctx, class66, "Class66_Body", "RailVehicles\\Diesel\\Class66\\Reskins\\Class66_Freightliner",
                     "DemoRail Class 66 Freightliner", freightliner))
        return false;
    ctx.cat.engines.push_back(freightliner);
    if (!writeStock(ctx,
                    {P, Q, "RailVehicles\\Freight\\HTA", "", false, true, "HTA_Coal", "DemoRail HTA Coal Hopper",
                     "310", 25,
                     {{"0c", "Textures\\HTA_Body"}, {"00", "DemoRail\\Class66Pack\\RailVehicles\\CommonTex\\Buffers"}}},
                    hta, true))
        return false;
    ctx.cat.wagons.push_back(hta);
    for (int i = 1; i <= 5 * ctx.scale; ++i) {
        Vehicle reskin;
        if (!writeReskin(ctx, hta, "HTA_Body", "RailVehicles\\Freight\\HTA\\Reskins\\HTA_Livery" + std::to_string(i),
                         "DemoRail HTA livery " + std::to_string(i), reskin))
            return false;
        if (i <= 2)
            ctx.cat.wagons.push_back(reskin);
    }
    if (!writeQuickDrive(ctx, class66, hta))
        return false;

    // Scenery that the routes name in other spellings.
    ctx.cat.signalBox = scenery(ctx, P, Q, "Scenery\\Buildings\\SignalBox", "Signal box", {{"09", "Textures\\SignalBox"}});
    ctx.cat.obrien = scenery(ctx, P, Q, "Scenery\\Buildings\\O'Brien's Shed", "O'Brien's shed", {{"00", "Textures\\Shed"}});
    if (ctx.cat.signalBox.empty() || ctx.cat.obrien.empty())
        return false;
    ctx.cat.scenery.push_back(ctx.cat.signalBox);

    // A goods shed whose texture name differs in case from the file, and the shared brick
    // texture reached by the right number of "..\".
    std::string goodsShape = assetFile(P, Q, "Scenery\\Industry\\GoodsShed\\Goods_Shed", ".GeoPcDx");
    TexUse goodsWall = texUse(goodsShape, "00", "Textures\\Goods_Shed");
    TexUse goodsWallAsNamed = goodsWall;
    goodsWallAsNamed.value = "[00]textures\\GOODS_shed";
    TexUse brick = texUse(goodsShape, "00", "..\\..\\SharedTextures\\Brick");
    if (!writeTextures(ctx, goodsWall) || !writeGeometry(ctx, goodsShape, {{goodsWallAsNamed}, {brick}}))
        return false;
    Ref goodsShed{P, Q, "Scenery\\Industry\\GoodsShed\\Goods_Shed.xml"};
    if (!ctx.out.blueprint(assetFile(goodsShed), sceneryXml(ctx, "Goods shed", assetsRelative(goodsShed))))
        return false;
    ctx.cat.scenery.push_back(goodsShed);
    ctx.manifest.add(makeFault("case-mismatch", "textures", goodsWall.file + ".TgPcDx", goodsShape, goodsWallAsNamed.value,
                           "found: the texture exists under other letter case; not reported missing"));

    // Faulty scenery, placed on the first route.
    Ref waterTower{P, Q, "Scenery\\Faulty\\Water_Tower.xml"};
    if (!ctx.out.blueprint(assetFile(waterTower), sceneryXml(ctx, "Water tower", assetsRelative(waterTower))))
        return false;
    ctx.manifest.add(makeFault("missing-shape", "geometry", assetFile(waterTower, ".GeoPcDx"), assetFile(waterTower),
                           assetsRelative(waterTower), "the shape named by GeometryID is missing"));
    ctx.cat.faulty.push_back({waterTower, {ctx.manifest.faults.size() - 1}});

    Ref coalStage{P, Q, "Scenery\\Faulty\\Coal_Stage.xml"};
    std::string coalShape = assetFile(coalStage, ".GeoPcDx");
    TexUse missingBase = texUse(coalShape, "00", "Textures\\CoalStage_Missing");
    TexUse roof = texUse(coalShape, "0c", "Textures\\CoalStage_Roof");
    TexUse wallNormal = texUse(coalShape, "00", "Textures\\CoalStage_Wall_nm");
    TexUse wall = texUse(coalShape, "0d", "Textures\\CoalStage_Wall");
    if (!writeTextures(ctx, roof, {"_AU"}) || !writeTextures(ctx, wallNormal, {"c"}) || !writeTextures(ctx, wall) ||
        !writeGeometry(ctx, coalShape, {{missingBase}, {roof}, {wall, wallNormal}}, false) ||
        !ctx.out.blueprint(assetFile(coalStage), sceneryXml(ctx, "Coal stage", assetsRelative(coalStage))))
        return false;
    FaultyItem coal{coalStage, {}};
    auto textureFault = [&](const std::string& kind, const TexUse& use, const std::string& suffix,
                            const std::string& expect) {
        Fault f = makeFault(kind, "textures", use.file + suffix + ".TgPcDx", coalShape, use.value, expect);
        f.details = {{"code", use.code}, {"variant", suffix}};
        ctx.manifest.add(f);
        coal.faults.push_back(ctx.manifest.faults.size() - 1);
    };
    textureFault("missing-texture", missingBase, "", "reported missing, called by Coal_Stage.GeoPcDx");
    textureFault("missing-seasonal-texture", roof, "_AU",
                 "reported missing (code 0c needs _AU and _WI); the _WI variant is still tested and found");
    textureFault("missing-texture", wallNormal, "c", "the normal map's companion (name + \"c\") reported missing");
    ctx.cat.faulty.push_back(coal);

    Ref lampHut{P, Q, "Scenery\\Faulty\\LampHut\\Lamp_Hut.xml"};
    std::string hutShape = assetFile(lampHut, ".GeoPcDx");
    TexUse tooDeep = texUse(hutShape, "00", "..\\..\\..\\SharedTextures\\Brick");
    if (!writeGeometry(ctx, hutShape, {{tooDeep}}, false) ||
        !ctx.out.blueprint(assetFile(lampHut), sceneryXml(ctx, "Lamp hut", assetsRelative(lampHut))))
        return false;
    Fault deep = makeFault("texture-path-too-deep", "textures", tooDeep.file + ".TgPcDx", hutShape, tooDeep.value,
                       "reported missing: the path climbs one folder too many (" + brick.file +
                           ".TgPcDx exists)");
    deep.details = {{"levels", "3"}, {"intended", brick.file + ".TgPcDx"}};
    ctx.manifest.add(deep);
    ctx.cat.faulty.push_back({lampHut, {ctx.manifest.faults.size() - 1}});

    // Sound emitters: one sound, one naming a missing proxy, one missing a sound file.
    Ref birdsong{P, Q, "Audio\\Ambient\\Birdsong.xml"};
    if (!writeProxy(ctx, P, Q, "Audio\\Ambient\\Birdsong", {"Birds1.wav", "Birds2.wav"}, false) ||
        !ctx.out.blueprint(assetFile(birdsong), soundBlueprintXml(ctx, "Birdsong", P + "\\" + Q + "\\Audio\\Ambient\\Birdsong")))
        return false;
    ctx.cat.ambient.push_back(birdsong);
    std::string trackProxies[4];
    const char* controls[4] = {"Rumble", "Tingle", "Junction", "Derailment"};
    for (int i = 0; i < 4; ++i) {
        std::string proxy = std::string("Audio\\Track\\") + controls[i];
        trackProxies[i] = P + "\\" + Q + "\\" + proxy;
        if (!writeProxy(ctx, P, Q, proxy, {std::string(controls[i]) + ".wav"}, true))
            return false;
    }
    Ref trackSound{P, Q, "Audio\\Track\\Jointed_Track.xml"};
    if (!ctx.out.blueprint(assetFile(trackSound), trackSoundXml(ctx, "Jointed track", trackProxies)))
        return false;
    ctx.cat.ambient.push_back(trackSound);

    Ref church{P, Q, "Audio\\Ambient\\Church_Bells.xml"};
    std::string churchProxy = P + "\\" + Q + "\\Audio\\Ambient\\Church_Bells";
    if (!ctx.out.blueprint(assetFile(church), soundBlueprintXml(ctx, "Church bells", churchProxy)))
        return false;
    ctx.manifest.add(makeFault("missing-proxy", "audio", "Assets/" + slashes(churchProxy) + ".proxyxml", assetFile(church),
                           churchProxy, "the audio proxy is reported missing, called by the blueprint"));
    ctx.cat.faulty.push_back({church, {ctx.manifest.faults.size() - 1}});

    Ref stream{P, Q, "Audio\\Ambient\\Stream.xml"};
    if (!writeProxy(ctx, P, Q, "Audio\\Ambient\\Stream", {"Stream1.wav", "Stream2.wav"}, true, {"Stream2.wav"}) ||
        !ctx.out.blueprint(assetFile(stream), soundBlueprintXml(ctx, "Stream", P + "\\" + Q + "\\Audio\\Ambient\\Stream")))
        return false;
    ctx.manifest.add(makeFault("missing-sound", "audio", "Assets/" + P + "/" + Q + "/Audio/Ambient/Stream2.wav",
                           assetFile(P, Q, "Audio\\Ambient\\Stream", ".proxyxml"),
                           P + "\\" + Q + "\\Audio\\Ambient\\Stream2.wav",
                           "the sound file is reported missing, called by the proxy; Stream1.wav is found"));
    ctx.cat.faulty.push_back({stream, {ctx.manifest.faults.size() - 1}});

    // A zero-length blueprint, as a crashed editor leaves them.
    if (!ctx.out.raw("Assets/DemoRail/Class66Pack/Scenery/Broken/Empty_Hut.bin", ""))
        return false;
    ctx.manifest.add(makeFault("zero-length-file", "asset-list", "Assets/DemoRail/Class66Pack/Scenery/Broken/Empty_Hut.bin",
                           "", "", "the blueprint cannot be converted: listed as invalid, the check goes on"));

    return generatedScenery(ctx, P, Q) && pak(ctx, P, Q);
}

bool alpenbahn(Context& ctx) {
    const std::string P = kAlpen, Q = kGotthard;
    Vehicle re460, ew2, ew1, motor, trailer;
    if (!writeStock(ctx,
                    {P, Q, "RailVehicles\\Electric\\Re460\\Engine", "Electric", false, false, "Re460_SBB",
                     "Alpenbahn Re 460 SBB", "460 0", 84,
                     {{"09", "Textures\\Re460_Body"},
                      {"00", "..\\Pantograph\\Textures\\Panto"},
                      {"00", "..\\..\\Shared\\Textures\\Roof"}}},
                    re460))
        return false;
    ctx.cat.engines.push_back(re460);
    if (!writeStock(ctx,
                    {P, Q, "RailVehicles\\Passenger\\EWIV", "", false, false, "EWIV_2nd",
                     "Alpenbahn EW IV 2. Klasse", "50 85 20", 40,
                     {{"08", "Textures\\EWIV_Body"}, {"00", "Textures\\EWIV_Interior"}}},
                    ew2) ||
        !writeStock(ctx,
                    {P, Q, "RailVehicles\\Passenger\\EWIV", "", false, false, "EWIV_1st",
                     "Alpenbahn EW IV 1. Klasse", "50 85 10", 41,
                     {{"08", "Textures\\EWIV_Body"}, {"00", "Textures\\EWIV_Interior"}}},
                    ew1))
        return false;
    ctx.cat.wagons.push_back(ew2);
    ctx.cat.wagons.push_back(ew1);
    if (!ctx.out.readOnly(assetFile(ew1.ref)))
        return false;
    ctx.manifest.add(makeFault("read-only-file", "file-attributes", assetFile(ew1.ref), "", "",
                           "a write-back must clear the read-only flag first or report the file"));
    if (!writeStock(ctx,
                    {P, Q, "RailVehicles\\EMU\\RABDe500", "Electric", false, false, "RABDe500_Motor",
                     "Alpenbahn RABDe 500 motor car", "500 0", 58, {{"0d", "Textures\\RABDe500"}}},
                    motor) ||
        !writeStock(ctx,
                    {P, Q, "RailVehicles\\EMU\\RABDe500", "", false, false, "RABDe500_Trailer",
                     "Alpenbahn RABDe 500 trailer", "500 1", 44, {{"0d", "Textures\\RABDe500"}}},
                    trailer))
        return false;
    ctx.cat.engines.push_back(motor);
    ctx.cat.wagons.push_back(trailer);

    for (auto [kind, path, name] :
         {std::tuple{"cTrackBlueprint", "RailNetwork\\Track\\Gotthard_Concrete", "Concrete sleepers"},
          std::tuple{"cTrackBlueprint", "RailNetwork\\Track\\Gotthard_Wood", "Wooden sleepers"}}) {
        Ref r = section(ctx, kind, P, Q, path, name);
        if (r.empty())
            return false;
        ctx.cat.track.push_back(r);
    }
    Ref road = section(ctx, "cRoadBlueprint", P, Q, "RoadNetwork\\Roads\\Alpine_Road", "Alpine road");
    Ref fence = section(ctx, "cLoftBlueprint", P, Q, "Loft\\Fence_Wood", "Wooden fence");
    Ref wall = section(ctx, "cLoftBlueprint", P, Q, "Loft\\Retaining_Wall", "Retaining wall");
    if (road.empty() || fence.empty() || wall.empty())
        return false;
    ctx.cat.road.push_back(road);
    ctx.cat.loft = {fence, wall};

    ctx.cat.grun = scenery(ctx, P, Q, "Scenery\\Buildings\\Bahnhof Grün", "Bahnhof Grün", {{"0d", "Textures\\Bahnhof"}});
    ctx.cat.cafe = scenery(ctx, P, Q, "Scenery\\Buildings\\Café Alpina", "Café Alpina", {{"00", "Textures\\Cafe"}});
    Ref larch = scenery(ctx, P, Q, "Scenery\\Trees\\Larch", "Larch", {{"0d", "Textures\\Larch"}}, true);
    if (ctx.cat.grun.empty() || ctx.cat.cafe.empty() || larch.empty())
        return false;
    ctx.cat.scenery.push_back(larch);

    // A transfer point: its container and the cargo it hands over.
    Ref hopper = scenery(ctx, P, Q, "Scenery\\TransferPoints\\Gravel_Hopper", "Gravel hopper", {{"00", "Textures\\Hopper"}});
    Ref gravel{P, Q, "Cargo\\Gravel.xml"};
    if (hopper.empty() ||
        !ctx.out.blueprint(assetFile(gravel), simpleBlueprint(ctx, "cCargoBlueprint", "Gravel", [](XmlBuilder& x) {
            x.str("BulkFreightType", "Gravel").float32("Density", 1.6);
        })))
        return false;
    ctx.cat.transferPoint = {P, Q, "Scenery\\TransferPoints\\Gravel_Loader.xml"};
    XmlBuilder tp("cBlueprintLoader", ctx.rng.id());
    tp.open("Blueprint").open("cTransferPointBlueprint").str("Name", "Gravel loader");
    browse(tp, "Gravel loader", "eIndustry");
    blueprintRef(tp, "ContainerBlueprintID", hopper);
    tp.open("CargoList");
    blueprintRef(tp, "CargoBlueprintID", gravel);
    tp.close();
    tp.float32("TransferRate", 12);
    if (!ctx.out.blueprint(assetFile(ctx.cat.transferPoint), tp.finish()))
        return false;

    return generatedScenery(ctx, P, Q) && pak(ctx, P, Q);
}

bool heritage(Context& ctx) {
    const std::string P = kHeritage, Q = kSteam;
    Vehicle black5, tender, mk1, dmbs, dtcl;
    if (!writeStock(ctx,
                    {P, Q, "RailVehicles\\Steam\\Black5\\Engine", "Steam", false, false, "Black5", "Heritage Black 5",
                     "45", 72, {{"0d", "Textures\\Black5_Body"}, {"00", "Textures\\Black5_Body_nm"},
                                {"00", "..\\..\\..\\SteamCommon\\Textures\\Smokebox"}}},
                    black5) ||
        !writeStock(ctx,
                    {P, Q, "RailVehicles\\Steam\\Black5\\Tender", "", true, true, "Black5_Tender",
                     "Heritage Black 5 tender", "T", 53, {{"0d", "..\\Engine\\Textures\\Black5_Body"}}},
                    tender) ||
        !writeStock(ctx,
                    {P, Q, "RailVehicles\\Passenger\\Mk1", "", false, false, "Mk1_BSK", "Heritage Mk1 BSK", "M35",
                     33, {{"08", "Textures\\Mk1_Maroon"}}},
                    mk1))
        return false;
    ctx.cat.engines.push_back(black5);
    ctx.cat.wagons.push_back(tender);
    ctx.cat.wagons.push_back(mk1);

    // The diesel multiple unit and the station scenery ship packed in the product's .ap.
    ctx.out.beginArchive("Assets/" + P + "/" + Q, "SteamDaysAssets.ap");
    bool packed =
        writeStock(ctx,
                   {P, Q, "RailVehicles\\DMU\\Class101", "Diesel", false, false, "Class101_DMBS",
                    "Heritage Class 101 DMBS", "51", 32, {{"09", "Textures\\Class101_Green"}}},
                   dmbs) &&
        writeStock(ctx,
                   {P, Q, "RailVehicles\\DMU\\Class101", "", false, false, "Class101_DTCL",
                    "Heritage Class 101 DTCL", "56", 30, {{"09", "Textures\\Class101_Green"}}},
                   dtcl);
    Ref canopy = packed ? scenery(ctx, P, Q, "Scenery\\Station\\Platform_Canopy", "Platform canopy",
                                  {{"08", "Textures\\Canopy"}})
                        : Ref{};
    if (!ctx.out.endArchive() || canopy.empty())
        return false;
    // Unpacked by the table's measure: the product's RailVehicles folder lies beside it.
    ctx.manifest.archives.push_back(
        {ctx.out.lastArchive().path, "assets", "Unpacked", ctx.out.lastArchive().entries.size(), true, "", {}});
    ctx.cat.engines.push_back(dmbs);
    ctx.cat.wagons.push_back(dtcl);
    Fault inArchive = makeFault("blueprint-in-archive", "route", assetFile(canopy), "", canopy.id,
                            "reported missing by the route check, which does not look inside .ap files; "
                            "the blueprint is an entry of the product's SteamDaysAssets.ap");
    inArchive.details = {{"archive", "Assets/Heritage/SteamDays/SteamDaysAssets.ap"}};
    ctx.manifest.add(inArchive);
    ctx.cat.faulty.push_back({canopy, {ctx.manifest.faults.size() - 1}});

    return generatedScenery(ctx, P, Q) && pak(ctx, P, Q);
}

bool kuju(Context& ctx) {
    const std::string P = kKuju, Q = kCore;
    ctx.cat.routeTemplate = {P, Q, "TemplateRoutes\\Demo_Template.xml"};
    ctx.cat.weather = {P, Q, "Weather\\Clear.xml"};
    ctx.cat.terrain = {P, Q, "Environment\\Terrain\\Demo_Terrain.xml"};
    const char* seasons[4] = {"Spring", "Summer", "Autumn", "Winter"};
    for (int i = 0; i < 4; ++i) {
        ctx.cat.skies[i] = {P, Q, std::string("TimeOfDay\\") + seasons[i] + ".xml"};
        if (!ctx.out.blueprint(assetFile(ctx.cat.skies[i]), simpleBlueprint(ctx, "cTimeOfDayBlueprint", seasons[i], [](XmlBuilder& x) {
                x.float32("SunriseTime", 21600).float32("SunsetTime", 72000);
            })))
            return false;
    }
    if (!ctx.out.blueprint(assetFile(ctx.cat.weather), simpleBlueprint(ctx, "cWeatherBlueprint", "Clear", [](XmlBuilder& x) {
            x.float32("CloudCover", 0.1).float32("Precipitation", 0);
        })) ||
        !ctx.out.blueprint(assetFile(ctx.cat.routeTemplate),
                           simpleBlueprint(ctx, "cRouteBlueprint", "Demo template", [&](XmlBuilder& x) {
                               blueprintRef(x, "TerrainBlueprint", ctx.cat.terrain);
                               blueprintRef(x, "WeatherBlueprint", ctx.cat.weather);
                           })))
        return false;

    // Terrain textures: one plain set with seasons, one split into the _A.._H tiles.
    const std::string folder = "Assets/" + P + "/" + Q + "/TerrainTextures/";
    for (const char* name : {"Grass", "Grass_SP", "Grass_SU", "Grass_AU", "Grass_WI", "Gravel"})
        if (!writeTexture(ctx, folder + name, ""))
            return false;
    for (char part = 'A'; part <= 'H'; ++part)
        if (!writeTexture(ctx, folder + "Rock", std::string("_") + part))
            return false;
    auto terrainName = [&](const std::string& n) { return P + "\\" + Q + "\\TerrainTextures\\" + n; };
    XmlBuilder x("cBlueprintLoader", ctx.rng.id());
    x.open("Blueprint").open("cTerrainBlueprint").str("Name", "Demo terrain").open("MixTextures");
    struct Mix {
        std::string base, spring, summer, autumn, winter;
    };
    for (const Mix& m : {Mix{"Grass", "Grass_SP", "Grass_SU", "Grass_AU", "Grass_WI"}, Mix{"Rock", "", "", "", ""},
                         Mix{"Gravel", "", "", "", ""}}) {
        x.open("cMixTexDescriptor", ctx.rng.id()).str("BaseTextureName", terrainName(m.base));
        for (auto [tag, value] : {std::pair{"BaseSpringTextureName", m.spring}, std::pair{"BaseSummerTextureName", m.summer},
                                  std::pair{"BaseAutumnTextureName", m.autumn}, std::pair{"BaseWinterTextureName", m.winter}})
            x.str(tag, value.empty() ? "" : terrainName(value));
        x.float32("Scale", 8).close();
    }
    if (!ctx.out.blueprint(assetFile(ctx.cat.terrain), x.finish()))
        return false;
    // The lamps that the rolling-stock commands put on vehicles' buffer beams.
    for (const auto& [path, name, texture] :
         {std::tuple{"Scenery\\Animated\\oillamp_white_drb", "Oil lamp white", "Textures\\OilLamp"},
          std::tuple{"Scenery\\Animated\\Zugschlusslaterne", "Zugschlusslaterne", "Textures\\TailLamp"}})
        if (scenery(ctx, P, "RailSimulator", path, name, {{"00", texture}}).empty())
            return false;
    return true;
}

} // namespace

bool writeAssets(Context& ctx) {
    for (auto part : {demoRail, alpenbahn, heritage, kuju}) {
        if (ctx.cancelled() || !part(ctx))
            return false;
        ctx.progress();
    }
    return true;
}

} // namespace velmora::demo
