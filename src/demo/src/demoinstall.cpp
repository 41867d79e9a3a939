#include "velmora/demo/demoinstall.h"

#include "velmora/core/convert.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/xmlbuilder.h"

#include <cstdio>
#include <fstream>
#include <system_error>

namespace velmora::demo {

namespace fs = std::filesystem;

namespace {

// A small generator of our own so that the same seed gives the same install on every
// platform and standard library.
class SplitMix {
public:
    explicit SplitMix(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

private:
    std::uint64_t m_state;
};

std::string guidText(SplitMix& rng) {
    std::uint64_t a = rng.next(), b = rng.next();
    char buf[40];
    std::snprintf(buf, sizeof buf, "%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned>(a >> 32),
                  static_cast<unsigned>((a >> 16) & 0xFFFF), static_cast<unsigned>(a & 0xFFFF),
                  static_cast<unsigned>(b >> 48), static_cast<unsigned long long>(b & 0xFFFFFFFFFFFFull));
    return buf;
}

class Writer {
public:
    Writer(fs::path root, DemoResult& result) : m_root(std::move(root)), m_result(result) {}

    bool raw(const fs::path& rel, const std::string& bytes) {
        fs::path p = m_root / rel;
        std::error_code ec;
        fs::create_directories(p.parent_path(), ec);
        std::ofstream out(p, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out)
            return fail("cannot write " + p.string());
        ++m_result.files;
        return true;
    }

    // Writes an XML document through the codec as the simulator's binary form.
    bool binary(const fs::path& rel, const std::string& xml) {
        std::string bin;
        if (auto r = xmlTextToBin(xml, bin, (m_root / rel).string()); !r)
            return fail(r.message);
        return raw(rel, bin);
    }

    bool fail(const std::string& what) {
        if (m_result.error.empty())
            m_result.error = what;
        return false;
    }

private:
    fs::path m_root;
    DemoResult& m_result;
};

struct VehicleSpec {
    const char* provider;
    const char* product;
    const char* path; // below the product, without extension
    const char* kind; // cEngineBlueprint, cWagonBlueprint, cTenderBlueprint
    const char* name;
};

const VehicleSpec kVehicles[] = {
    {"DemoRail", "Class66Pack", "RailVehicles\\Diesel\\Class66\\Engine\\Class66", "cEngineBlueprint",
     "DemoRail Class 66 EWS"},
    {"DemoRail", "Class66Pack", "RailVehicles\\Freight\\HTA\\Wagon\\HTA", "cWagonBlueprint", "DemoRail HTA Coal"},
    {"Alpenbahn", "Gotthard", "RailVehicles\\Electric\\Re460\\Engine\\Re460", "cEngineBlueprint",
     "Alpenbahn Re 460 SBB"},
    {"Alpenbahn", "Gotthard", "RailVehicles\\Passenger\\EWIV\\EWIV_2nd", "cWagonBlueprint",
     "Alpenbahn EW IV 2nd class"},
    {"Heritage", "SteamDays", "RailVehicles\\Steam\\Black5\\Engine\\Black5", "cEngineBlueprint",
     "Heritage Black 5"},
    {"Heritage", "SteamDays", "RailVehicles\\Steam\\Black5\\Tender\\Black5_Tender", "cTenderBlueprint",
     "Heritage Black 5 Tender"},
};

std::string vehicleXml(const VehicleSpec& v, SplitMix& rng) {
    XmlBuilder x("cBlueprintLoader", static_cast<std::int32_t>(rng.next() & 0x7FFFFFFF));
    x.open("Blueprint").open(v.kind).str("Name", v.name);
    x.open("BrowseInformation").open("iRailVehicleBlueprint::cBrowseRVInformation");
    x.localised("DisplayName", v.name).close().close();
    x.open("RailVehicleComponent").open("cEngineComponentBlueprint");
    x.float32("Mass", 90.5).float32("MaxSpeed", 33.5).close().close();
    std::string shape = std::string(v.path) + ".GeoPcDx";
    x.open("RenderComponent").open("iRenderBlueprint::cRenderComponentBlueprint");
    x.blueprintRef("GeometryID", v.provider, v.product, shape).close().close();
    return x.finish();
}

std::string routePropertiesXml(const std::string& guid, const std::string& name, SplitMix& rng) {
    XmlBuilder x("cRouteProperties", static_cast<std::int32_t>(rng.next() & 0x7FFFFFFF));
    x.guid("ID", rng.next(), rng.next(), guid);
    x.localised("DisplayName", name);
    x.boolean("InfrastructureModified", true);
    x.blueprintRef("BlueprintID", "Kuju", "RailSimulatorCore", "TemplateRoutes\\Default.xml");
    x.open("MapProjection").open("cRouteProperties::sMapProjection");
    x.float64("Lat", 51.5).float64("Long", -0.25).close().close();
    return x.finish();
}

} // namespace

DemoResult generateDemoInstall(const fs::path& root, const DemoOptions& options, UserInterface* ui) {
    DemoResult result;
    SplitMix rng(options.seed);
    Writer w(root, result);
    const int scale = std::max(1, options.scale);

    std::error_code ec;
    fs::create_directories(root / "Assets", ec);
    fs::create_directories(root / "Content" / "Routes", ec);
    if (ec) {
        result.error = "cannot create " + (root / "Content" / "Routes").string() + ": " + ec.message();
        return result;
    }
    w.raw("RailWorks.exe", std::string());

    const std::size_t total = std::size(kVehicles) * static_cast<std::size_t>(scale) + 2;
    if (ui)
        ui->beginProgress("Writing the demo install", static_cast<std::int64_t>(total));
    std::size_t done = 0;
    for (int copy = 0; copy < scale; ++copy) {
        for (const VehicleSpec& v : kVehicles) {
            if (ui && ui->cancelled())
                return result;
            std::string product = v.product;
            if (copy > 0)
                product += std::to_string(copy);
            fs::path rel = fs::path("Assets") / v.provider / product;
            for (const auto& part : splitDocumentPath(v.path))
                rel /= part;
            rel += ".bin";
            if (!w.binary(rel, vehicleXml(v, rng)))
                return result;
            bool seen = false;
            for (const auto& p : result.products)
                seen = seen || (p.provider == v.provider && p.product == product);
            if (!seen)
                result.products.push_back({v.provider, product});
            if (ui)
                ui->progress(static_cast<std::int64_t>(++done));
        }
    }

    for (const char* name : {"Demo Valley Line", "Alpine Pass"}) {
        std::string guid = guidText(rng);
        fs::path rel = fs::path("Content") / "Routes" / guid;
        if (!w.raw(rel / "RouteProperties.xml", routePropertiesXml(guid, name, rng)))
            return result;
        fs::create_directories(root / rel / "Scenarios", ec);
        result.routes.push_back({guid, name});
        if (ui)
            ui->progress(static_cast<std::int64_t>(++done));
    }
    if (ui)
        ui->endProgress();
    result.ok = true;
    return result;
}

} // namespace velmora::demo
