// The .ap files that the archive tools work on, beyond the product archive and the packed route
// of the assets and routes: a product whose rolling stock is only packed, a route packed whole
// and one partly unpacked, a scenario pack, a damaged archive, one whose entries would leave
// their folder; and, with the scale, more packed products and routes.

#include "context.h"

#include <cstdio>
#include <functional>

namespace velmora::demo {

namespace {

const std::string kHarbour = "Harbour";

// Where an entry lands below its archive's folder, for the manifest's details.
std::string below(const Ref& ref, const std::string& ext = ".bin") {
    const std::string file = assetFile(ref, ext);
    const std::string folder = "Assets/" + ref.provider + "/" + ref.product + "/";
    return file.substr(folder.size());
}

// Ends a product's archive and lists the product and the archive; null when a write failed.
const Output::Archive* endProductArchive(Context& ctx, DemoResult& result, const std::string& product, bool written,
                                         const std::string& state,
                                         const std::function<void(std::string&)>& damage = {}) {
    if (!ctx.out.endArchive(damage) || !written)
        return nullptr;
    const Output::Archive& a = ctx.out.lastArchive();
    ctx.manifest.products.push_back({kHarbour, product, a.path});
    result.products.push_back({kHarbour, product});
    ctx.manifest.archives.push_back({a.path, "assets", state, a.entries.size(), !damage, "", {}});
    return &a;
}

// Shunter and bolster wagon with their shapes and textures, only inside the product's .ap: no
// RailVehicles, Audio, Scenery or Elloks folder beside it.
bool packedStock(Context& ctx, DemoResult& result) {
    const std::string P = kHarbour, Q = "DockShunters";
    ctx.out.beginArchive("Assets/" + P + "/" + Q, "DockShunters.ap");
    Vehicle engine, wagon;
    const bool written =
        writeStock(ctx,
                   {P, Q, "RailVehicles\\Diesel\\Class08\\Engine", "Diesel", false, false, "Class08",
                    "Harbour Class 08 shunter", "08", 50, {{"00", "Textures\\Class08_Body"}}},
                   engine) &&
        writeStock(ctx,
                   {P, Q, "RailVehicles\\Freight\\Bolster", "", false, false, "Bolster_BDA", "Harbour BDA bolster",
                    "950", 24, {{"08", "Textures\\BDA_Body"}}},
                   wagon);
    const Output::Archive* a = endProductArchive(ctx, result, Q, written, "Not unpacked");
    if (!a)
        return false;
    Fault f = makeFault("ap-not-unpacked", "archives", a->path, "", "",
                        "listed \"Not unpacked\": no Audio, RailVehicles, Scenery or Elloks folder beside it; its "
                        "engine and wagon are found only by reading the archive");
    f.details = {{"engine", below(engine.ref)},
                 {"wagon", below(wagon.ref)},
                 {"shape", below(engine.ref, ".GeoPcDx")},
                 {"texture", "RailVehicles/Diesel/Class08/Engine/Textures/Class08_Body.TgPcDx"}};
    ctx.manifest.add(f);
    return true;
}

// The offset of a zip's central directory and its size, from the end record; false when the
// bytes hold no end record.
bool centralDirectory(const std::string& zip, std::size_t& offset, std::size_t& size) {
    const std::size_t end = zip.rfind(std::string("PK\x05\x06", 4));
    if (end == std::string::npos || end + 22 > zip.size())
        return false;
    auto le32 = [&](std::size_t at) {
        std::size_t v = 0;
        for (int i = 3; i >= 0; --i)
            v = v << 8 | static_cast<unsigned char>(zip[at + static_cast<std::size_t>(i)]);
        return v;
    };
    size = le32(end + 12);
    offset = le32(end + 16);
    return offset + size <= end;
}

// A product archive cut off halfway through its central directory, as an interrupted download
// leaves it.
bool damagedArchive(Context& ctx, DemoResult& result) {
    const std::string P = kHarbour, Q = "CraneYard";
    ctx.out.beginArchive("Assets/" + P + "/" + Q, "CraneYard.ap");
    const Ref crane = scenery(ctx, P, Q, "Scenery\\Cranes\\Portal_Crane", "Portal crane", {{"00", "Textures\\Crane"}});
    std::size_t intact = 0, cut = 0;
    auto damage = [&](std::string& bytes) {
        std::size_t offset = 0, size = 0;
        intact = bytes.size();
        cut = centralDirectory(bytes, offset, size) ? offset + size / 2 : bytes.size() / 2;
        bytes.resize(cut);
    };
    const Output::Archive* a = endProductArchive(ctx, result, Q, !crane.empty(), "Not unpacked", damage);
    if (!a)
        return false;
    Fault f = makeFault("ap-damaged", "archives", a->path, "", "",
                        "the archive cannot be opened; the error names the file and the other archives are read");
    f.details = {{"damage", "cut off inside the central directory"},
                 {"length", std::to_string(cut)},
                 {"intactLength", std::to_string(intact)}};
    ctx.manifest.add(f);
    return true;
}

// Ordinary entries, unpacked beside the archive too, and two whose names would put them outside
// the folder the archive is unpacked into.
bool unsafeEntries(Context& ctx, DemoResult& result) {
    const std::string P = kHarbour, Q = "QuaySide";
    ctx.out.beginArchive("Assets/" + P + "/" + Q, "QuaySide.ap", [](const std::string&) { return true; });
    const std::string upward = "../QuaySide_Readme.txt", absolute = "/QuaySide/Readme.txt";
    const std::string text = "Quay side scenery for the harbour routes.\r\n";
    const Ref bollard =
        scenery(ctx, P, Q, "Scenery\\Quay\\Bollard", "Quay bollard", {{"00", "Textures\\Bollard"}});
    const bool written = !bollard.empty() && ctx.out.entry(upward, text) && ctx.out.entry(absolute, text);
    const Output::Archive* a = endProductArchive(ctx, result, Q, written, "Unpacked");
    if (!a)
        return false;
    Fault f = makeFault("ap-unsafe-entry", "archives", a->path, "", "",
                        "the two entries are refused and named; nothing is written outside the folder; the other "
                        "entries unpack");
    f.details = {{"upward", upward}, {"absolute", absolute}};
    ctx.manifest.add(f);
    return true;
}

// One of the products the scale adds: a wagon packed with its parts.
bool wagonPack(Context& ctx, DemoResult& result, int n) {
    char name[24];
    std::snprintf(name, sizeof name, "Wagons%03d", n);
    const std::string P = kHarbour, Q = name;
    ctx.out.beginArchive("Assets/" + P + "/" + Q, Q + ".ap");
    Vehicle wagon;
    const bool written =
        writeStock(ctx,
                   {P, Q, "RailVehicles\\Freight\\Open", "", false, false, "Open_" + Q, "Harbour open wagon " + std::to_string(n),
                    "O" + std::to_string(n), 21, {{"08", "Textures\\Open_Body"}}},
                   wagon);
    return endProductArchive(ctx, result, Q, written, "Not unpacked") != nullptr;
}

bool packedRoutes(Context& ctx, DemoResult& result) {
    // Packed whole; a name with a comma and a colon, in three languages.
    const ArchivedRoute harbour{makeGuid(ctx.rng).text, "Harbour Branch, Line: East", "Embranchement du port, ligne : Est",
                                "Hafenbahn, Linie: Ost", false, "Harbour pick-up"};
    if (!writeArchivedRoute(ctx, harbour, result))
        return false;
    const std::string harbourAp = "Content/Routes/" + harbour.guid + "/MainContent.ap";
    Fault packed = makeFault("ap-not-unpacked", "archives", harbourAp, "", "",
                             "listed \"Not unpacked\": no MixMap folder beside it; the route is not in the route list "
                             "until it is unpacked, and the route index names it from the archive");
    // Commas become "-" and colons go: what the route index writes for it.
    packed.routes = {harbour.guid};
    packed.details = {{"name", harbour.english}, {"indexName", "Harbour Branch- Line East"}};
    ctx.manifest.add(packed);

    // Unpacked, but some tiles are only in the archive.
    const ArchivedRoute dockside{makeGuid(ctx.rng).text, "Dockside Tramway", "", "Hafentram", true, "Tram shuttle"};
    if (!writeArchivedRoute(ctx, dockside, result))
        return false;
    const ManifestRoute& written = ctx.manifest.routes.back();
    Fault partly = makeFault("ap-partly-unpacked", "archives", written.archive, "", "",
                             "listed \"Unpacked\" because the MixMap folder lies beside it, although some files are "
                             "only in the archive (the route's archiveOnly list)");
    partly.routes = {dockside.guid};
    partly.details = {{"onlyInArchive", std::to_string(written.archiveOnly.size())},
                      {"first", written.archiveOnly.empty() ? std::string() : written.archiveOnly.front()}};
    ctx.manifest.add(partly);

    // The scale adds a packed route for every ten; every second one is named only in German.
    for (int k = 1; k <= ctx.scale / 10; ++k) {
        if (ctx.cancelled())
            return false;
        const std::string n = std::to_string(k);
        const ArchivedRoute more{makeGuid(ctx.rng).text, k % 2 ? "Harbour Line " + n : "", "", "Hafenlinie " + n,
                                 false, "Harbour trip " + n};
        if (!writeArchivedRoute(ctx, more, result))
            return false;
    }
    return writeScenarioPack(ctx, 0, "ValleyScenarioPack.ap", "Valley goods (packed)", result);
}

} // namespace

bool writeArchives(Context& ctx, DemoResult& result) {
    for (auto part : {packedStock, damagedArchive, unsafeEntries}) {
        if (ctx.cancelled() || !part(ctx, result))
            return false;
        ctx.progress("Archives");
    }
    for (int n = 2; n <= ctx.scale; ++n) {
        if (ctx.cancelled() || !wagonPack(ctx, result, n))
            return false;
        ctx.progress("Archives");
    }
    return packedRoutes(ctx, result);
}

} // namespace velmora::demo
