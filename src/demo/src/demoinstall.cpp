#include "velmora/demo/demoinstall.h"

#include "context.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <system_error>

namespace velmora::demo {

namespace fs = std::filesystem;

DemoResult generateDemoInstall(const fs::path& root, const DemoOptions& options, UserInterface* ui) {
    DemoResult result;
    std::error_code ec;
    fs::create_directories(root, ec);
    if (ec || !fs::is_directory(root)) {
        result.error = "cannot create " + root.string() + (ec ? ": " + ec.message() : std::string());
        return result;
    }
    // Never over someone's real install: only into an empty folder or over an earlier demo.
    const bool empty = fs::directory_iterator(root, ec) == fs::directory_iterator();
    if (!empty && ReadTextFile(root / "manifest.json").find("\"velmora-demo-manifest\"") == std::string::npos) {
        result.error = root.string() + " is not empty and holds no demo install: a demo install is written only "
                                       "into an empty folder or over an earlier demo install";
        return result;
    }
    Output out(root, options.encoder, result);
    Manifest manifest;
    manifest.seed = options.seed;
    manifest.scale = std::max(1, options.scale);

    SplitMix rng(options.seed);
    Context ctx{out, manifest, rng.fork(1), manifest.scale, ui, {}, {}, 0};
    // Route folders first: the Quick Drive consists name them. The fourth is the one cut to 35.
    SplitMix routeRng = rng.fork(2);
    for (int i = 0; i < 4; ++i)
        ctx.cat.routeFolders.push_back(makeGuid(routeRng).text);
    manifest.products = {{"DemoRail", "Class66Pack", ""},
                         {"Alpenbahn", "Gotthard", ""},
                         {"Heritage", "SteamDays", "Assets/Heritage/SteamDays/SteamDaysAssets.ap"},
                         {"Kuju", "RailSimulatorCore", ""}};
    for (const auto& p : manifest.products)
        result.products.push_back({p.provider, p.product});

    const std::int64_t scale = manifest.scale;
    const std::int64_t total = 4 + 12 * scale                // products, generated scenery in steps of 20
                               + 21 * scale + 24 * scale     // scenery tiles, network tiles
                               + 15 + 14 * (scale - 1)       // scenarios
                               + 2 + scale                   // packed products
                               + 12 * (2 + scale / 10) + 1;  // packed routes, the scenario pack
    if (ui)
        ui->beginProgress("Writing the demo install", total);

    bool done = out.raw("RailWorks.exe", "") && writeAssets(ctx);
    ctx.rng = rng.fork(3); // the routes do not shift when the assets change
    done = done && writeRoutes(ctx, result);
    ctx.rng = rng.fork(4); // nor do they when the archives change
    done = done && writeArchives(ctx, result);
    if (done) {
        manifest.counts = {{"files", result.files + 1}, {"archives", result.archives},
                           {"archiveEntries", result.archiveEntries},
                           {"documents", result.documents}, {"blueprints", result.blueprints},
                           {"tiles", result.tiles}, {"scenarios", result.scenarios}};
        result.faults = manifest.faults.size();
        done = out.raw("manifest.json", manifest.json());
    }
    if (ui)
        ui->endProgress();
    result.ok = done && out.ok();
    if (!result.ok && result.error.empty() && ui && ui->cancelled())
        result.error = "stopped by the user";
    return result;
}

} // namespace velmora::demo
