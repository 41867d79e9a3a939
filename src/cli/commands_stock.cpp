// The Available Stock list of the scenario editor from the command line.

#include "session.h"

#include "velmora/core/services.h"
#include "velmora/scenarios/stocklist.h"

namespace velmora::cli {

namespace {

using scenarios::StockCategory;
using scenarios::StockKind;

std::string itemsAsJson(const std::vector<scenarios::StockItem>& items) {
    std::string out = "[\n";
    for (std::size_t i = 0; i < items.size(); ++i) {
        const auto& it = items[i];
        out += "  {\"category\": " + jsonString(scenarios::categoryCaption(it.category)) +
               ", \"class\": " + jsonString(scenarios::kindName(it.kind)) + ", \"provider\": " + jsonString(it.provider) +
               ", \"product\": " + jsonString(it.product) + ", \"name\": " + jsonString(it.name) +
               ", \"path\": " + jsonString(it.path) + ", \"file\": " + jsonString(it.file.string()) + "}";
        out += i + 1 < items.size() ? ",\n" : "\n";
    }
    return out + "]\n";
}

std::string itemsAsText(const std::vector<scenarios::StockItem>& items) {
    std::string out = "Category\tClass\tProvider\tProduct\tName\tPath\tFile\n";
    for (const auto& it : items)
        out += std::string(scenarios::categoryCaption(it.category)) + '\t' + scenarios::kindName(it.kind) + '\t' +
               shown(it.provider) + '\t' + shown(it.product) + '\t' + shown(it.name) + '\t' + shown(it.path) + '\t' +
               shown(it.file.string()) + '\n';
    return out;
}

// The folder listed: Assets, or Assets/PROVIDER, or Assets/PROVIDER/PRODUCT, each found
// without regard to letter case.
std::optional<fs::path> stockFolder(Session& s, const Arguments& a) {
    const auto provider = a.value("--provider");
    const auto product = a.value("--product");
    if (product && !provider) {
        s.fail("--product needs --provider");
        return std::nullopt;
    }
    for (const auto& word : {provider, product})
        if (word && (word->empty() || word->find_first_of("/\\") != std::string::npos || *word == "." || *word == "..")) {
            s.fail("'" + *word + "' is not a folder name");
            return std::nullopt;
        }
    const auto assetsFolder = s.ctx.resolver.resolve(s.ctx.railWorks(), "Assets");
    if (!assetsFolder) {
        s.fail((s.ctx.railWorks() / "Assets").string() + ": the simulator root has no Assets folder");
        return std::nullopt;
    }
    fs::path folder = *assetsFolder;
    for (const auto& word : {provider, product}) {
        if (!word)
            break;
        const auto next = s.ctx.resolver.resolve(folder, *word);
        if (!next || !fs::is_directory(*next)) {
            s.fail("no folder " + *word + " in " + folder.string());
            return std::nullopt;
        }
        folder = *next;
    }
    return folder;
}

int cmdStockList(Session& s) {
    const Arguments a =
        parseArguments(s.g.rest, {"--provider", "--product", "--category", "--threads"}, {"--locos", "--wagons", "--tenders", "--json"});
    if (!s.noWords(a))
        return Error;
    const auto threads = s.threads(a);
    if (!threads)
        return Error;

    // The classes asked for; each brings the categories that list it.
    std::vector<StockKind> kinds;
    std::vector<StockCategory> categories;
    auto add = [&](std::initializer_list<StockCategory> list) {
        for (StockCategory c : list)
            if (std::find(categories.begin(), categories.end(), c) == categories.end())
                categories.push_back(c);
    };
    if (a.has("--locos")) {
        kinds.push_back(StockKind::Loco);
        add({StockCategory::Diesel, StockCategory::Electric, StockCategory::Steam});
    }
    if (a.has("--wagons")) {
        kinds.push_back(StockKind::Wagon);
        add({StockCategory::Passenger, StockCategory::Freight});
    }
    if (a.has("--tenders")) {
        kinds.push_back(StockKind::Tender);
        add({StockCategory::Tender});
    }
    if (const auto caption = a.value("--category")) {
        const auto category = scenarios::categoryFromCaption(*caption);
        if (!category)
            return s.fail("--category must be one of Diesel, Electric, Steam, Passenger, Freight, Tender, DMU, EMU, not '" +
                          *caption + "'");
        categories = {*category};
    }
    if (categories.empty())
        add({StockCategory::Diesel, StockCategory::Electric, StockCategory::Steam, StockCategory::Passenger,
             StockCategory::Freight, StockCategory::Tender});

    s.start();
    if (!s.requireRoot())
        return Error;
    const auto folder = stockFolder(s, a);
    if (!folder)
        return Error;
    auto listing = scenarios::listStock(s.ctx, *folder, categories, *threads, &s.ui);
    for (const auto& u : listing.unreadable)
        s.err << "velmora-cli: " << s.g.command << ": cannot read " << shown(u) << '\n';
    if (listing.stopped)
        return s.fail("stopped");
    if (!kinds.empty())
        std::erase_if(listing.items, [&](const scenarios::StockItem& it) {
            return std::find(kinds.begin(), kinds.end(), it.kind) == kinds.end();
        });
    s.out << (a.has("--json") ? itemsAsJson(listing.items) : itemsAsText(listing.items));
    return Success;
}

const char* const kStockListHelp = R"(The Available Stock walk of the scenario editor over the Assets folder, or over
Assets/P, or Assets/P/Q (names found whatever their letter case).

  --locos         the locomotives of the Diesel, Electric and Steam categories
  --wagons        the wagons of the Passenger and Freight categories
  --tenders       the tenders of the Tender category
                  (several may be given; none lists those six categories whole)
  --category C    one category as the editor lists it: Diesel, Electric, Steam,
                  Passenger, Freight, Tender, DMU or EMU
  --provider P    only below Assets/P; --product Q only below Assets/P/Q
  --threads N     blueprints read on N threads (default: one per core)
  --json          a JSON array instead of tab-separated text

A blueprint is listed under every category that takes it: outside a
RailVehicles folder a wagon is both Passenger and Freight, and Steam takes
tenders as well.

Text: a header line, then a row per item, tab-separated:
  Category, Class, Provider, Product, Name, Path, File
JSON: an array of objects with exactly these keys:
  "category"  the category that listed it (Diesel, ..., EMU)
  "class"     "loco", "wagon" or "tender": the test that took it
  "provider"  "product"  the two folders below Assets
  "name"      the display name
  "path"      the blueprint below the product, with backslashes, ending .xml
  "file"      the .bin file
Files and folders that cannot be read are named on standard error; they do
not change the exit code. Exit 2 on a bad option or a folder that is not there.
)";

} // namespace

std::vector<Command> stockCommands() {
    return {
        {"stock list", "[--locos|--wagons|--tenders] [--category C] [--provider P [--product Q]] [--threads N] [--json]",
         "the rolling stock the scenario editor offers, by category", cmdStockList, true, kStockListHelp},
    };
}

} // namespace velmora::cli
