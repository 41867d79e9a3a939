// The comma and tab lists: RouteIndex.csv, MissingAssets.csv, MissingFiles.txt, the asset
// lists in their three forms and the lamp table UKLights.txt. What is written in a form must
// read back the same; every lamp template read is whole.
#include "fuzzinput.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/assets/rsedits.h"
#include "velmora/core/routeindex.h"
#include "velmora/core/services.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view in = fuzz::text(data, size);
    const velmora::RouteIndex index = velmora::parseRouteIndex(in);
    if (index.folders.size() != index.names.size())
        __builtin_trap();
    for (const std::string& line : velmora::SplitLines(in)) {
        const auto cells = velmora::csvCells(line);
        // A cell written by csvCell comes back whole.
        if (velmora::csvCells(velmora::csvCell(cells.front())).front() != cells.front())
            __builtin_trap();
    }
    for (const char* extension : {".csv", ".txt", ".xls"}) {
        const auto file = fuzz::scratchFile(in, extension);
        std::vector<velmora::assets::AssetRow> rows;
        velmora::assets::loadAssetList(file, velmora::assets::listFormOf(file), rows);
    }
    velmora::assets::LampTable lamps;
    std::string error;
    if (velmora::assets::readLampTable(fuzz::scratchFile(in, ".txt"), lamps, error)) {
        for (const auto* list : {&lamps.heads, &lamps.tails})
            for (const auto& lamp : *list)
                if (lamp.blueprint.size() < 3 || lamp.line == 0 || (list == &lamps.tails) != (lamp.columns[6] == "0"))
                    __builtin_trap();
    } else if (error.empty()) {
        __builtin_trap(); // a refused table always says why
    }
    return 0;
}
