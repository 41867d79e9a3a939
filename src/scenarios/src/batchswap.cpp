// Swap in ALL Scenarios for this route, and the swap by rules over a route: every scenario read,
// changed and encoded first, then all written as one journal entry.

#include "velmora/scenarios/batchswap.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"
#include "velmora/scenarios/scenariosave.h"

#include <algorithm>
#include <functional>

namespace velmora::scenarios {

const char* const kAllScenariosSaved =
    "All changed Scenario.bin & ScenarioProperties.xml files have been saved. ";

namespace {

// What a batch does to one opened scenario: the swaps, with what changed put in the outcome.
using Change = std::function<void(const AppContext&, ScenarioDocument&, ScenarioOutcome&)>;

struct Prepared {
    ScenarioOutcome outcome;
    std::string error; // the scenario could not be read or encoded: the batch stops
};

std::string pathOf(const Reference& r) {
    return r.provider + "\\" + r.product + "\\" + r.blueprintId;
}

Prepared prepare(AppContext& ctx, const fs::path& folder, const BatchOptions& options, const Change& change) {
    Prepared p;
    ScenarioOutcome& o = p.outcome;
    o.folder = folder;
    const fs::path bin = ctx.resolver.resolve(folder, "Scenario.bin").value_or(folder / "Scenario.bin");
    std::error_code ec;
    const auto status = fs::status(bin, ec);
    if (!fs::exists(status)) {
        o.passedOver = "there is no Scenario.bin";
        return p;
    }
    if (!fs::is_regular_file(status)) {
        p.error = bin.string() + ": is not a file.";
        return p;
    }
    ScenarioDocument d = openScenario(ctx, folder);
    o.name = d.properties.displayName;
    o.scenarioFile = d.scenarioFile;
    o.propertiesFile = d.propertiesFile;
    if (!d.ok()) {
        p.error = d.error;
        return p;
    }
    if (d.refused) {
        o.passedOver = "a Quick Drive scenario is not edited";
        return p;
    }
    change(ctx, d, o);
    if (o.swapped.empty() || options.dryRun)
        return p;
    std::string error;
    if (!d.requiredAssets.empty()) {
        o.propertiesText = withRequiredAssets(ctx, d.propertiesText, d.requiredAssets, error);
        if (!error.empty()) {
            p.error = error;
            return p;
        }
        if (o.propertiesText == d.propertiesText)
            o.propertiesText.clear();
        else if (o.propertiesText.back() != '\n')
            o.propertiesText += "\r\n"; // as the editor's save writes it
    }
    if (const ConvertResult c = xmlTextToBin(d.scenarioText, o.scenarioBin, d.scenarioFile.string()); !c)
        p.error = c.message;
    return p;
}

// What a failed batch says of the files it had written before: put back, or which were not.
std::string putBack(AppContext& ctx, const std::vector<WriteResult>& written) {
    if (written.empty())
        return {};
    const std::string lost = ctx.files().putBack(written);
    return lost.empty() ? " The scenarios written before were put back as they were." : " " + lost;
}

void commit(AppContext& ctx, const std::string& command, BatchResult& result, UserInterface* ui) {
    std::vector<ScenarioOutcome*> changed;
    for (auto& o : result.scenarios)
        if (!o.scenarioBin.empty())
            changed.push_back(&o);
    JournalCommand entry(&ctx.journal(), command);
    if (ui)
        ui->beginProgress("Writing scenarios", static_cast<std::int64_t>(changed.size()));
    std::vector<WriteResult> written; // to be put back when a later write fails
    for (ScenarioOutcome* o : changed) {
        WriteOptions scenario;
        scenario.backupStem = "Scenario";
        const WriteResult s = ctx.files().write(o->scenarioFile, o->scenarioBin, scenario);
        if (s)
            written.push_back(s);
        WriteResult p;
        if (s && !o->propertiesText.empty()) {
            WriteOptions properties;
            properties.backupStem = "ScenarioProperties";
            p = ctx.files().write(o->propertiesFile, o->propertiesText, properties);
            if (p)
                written.push_back(p);
        }
        ctx.resolver.invalidate(o->folder);
        if (!s || (!o->propertiesText.empty() && !p)) {
            result.message = (s ? p.message : s.message) + putBack(ctx, written);
            result.written = 0;
            result.backups.clear();
            if (ui)
                ui->endProgress();
            return;
        }
        for (const WriteResult* w : std::initializer_list<const WriteResult*>{&s, &p})
            if (!w->backup.empty())
                result.backups.push_back(w->backup);
        ++result.written;
        if (ui)
            ui->progress(result.written);
    }
    if (ui)
        ui->endProgress();
    result.ok = true;
}

BatchResult run(AppContext& ctx, const RouteEntry& route, const std::string& command,
                const BatchOptions& options, bool refusalsStop, const Change& change) {
    BatchResult result;
    bool noFolder = false;
    const std::vector<ScenarioEntry> entries = routes::listScenarios(ctx, route, &noFolder);
    if (noFolder) {
        result.message =
            (route.path / "Scenarios").string() + ": the route has no Scenarios folder; nothing was written.";
        return result;
    }
    bool stopped = false;
    std::vector<Prepared> prepared = parallelMap<Prepared>(
        entries.size(), options.threads, options.ui, "Reading scenarios of " + route.name, stopped,
        [&](std::size_t i) {
            const fs::path folder = route.path / "Scenarios" / entries[i].folder;
            return onePiece([&] { return prepare(ctx, folder, options, change); },
                            [&](const std::string& why) {
                                Prepared failed;
                                failed.error = (folder / "Scenario.bin").string() + ": " + why + ".";
                                return failed;
                            });
        });
    if (stopped) {
        result.stopped = true;
        result.message = "Stopped before anything was written.";
        return result;
    }
    for (const Prepared& p : prepared)
        if (!p.error.empty()) {
            result.message = p.error + " The batch stopped before anything was written.";
            return result;
        }
    for (Prepared& p : prepared) {
        result.swapped += static_cast<int>(p.outcome.swapped.size());
        result.scenarios.push_back(std::move(p.outcome));
    }
    if (refusalsStop) {
        int refused = 0;
        for (const auto& o : result.scenarios)
            refused += static_cast<int>(o.refused.size());
        if (refused) {
            result.message = std::to_string(refused) + (refused == 1 ? " vehicle" : " vehicles") +
                             " cannot take the stock a rule gives it; nothing was written.";
            return result;
        }
    }
    if (options.dryRun || result.swapped == 0) {
        result.ok = true;
        result.message = options.dryRun ? "A dry run: nothing was written."
                                        : "No vehicle was changed; nothing was written.";
        return result;
    }
    commit(ctx, command, result, options.ui);
    if (result.ok)
        result.message = kAllScenariosSaved;
    return result;
}

template <typename T> void inDocumentOrder(std::vector<T>& items) {
    std::sort(items.begin(), items.end(), [](const T& a, const T& b) {
        return std::pair(a.consist, a.vehicle) < std::pair(b.consist, b.vehicle);
    });
}

} // namespace

BatchResult swapInAllScenarios(AppContext& ctx, const RouteEntry& route, const std::string& name,
                               const ChosenStock& stock, const BatchOptions& options) {
    const std::string stockPath = stock.provider + "\\" + stock.product + "\\" + stock.path;
    Change change = [&](const AppContext& c, ScenarioDocument& d, ScenarioOutcome& o) {
        std::vector<VehicleSwap> named;
        for (std::size_t i = 0; i < d.consists.size(); ++i)
            for (std::size_t j = 0; j < d.consists[i].vehicles.size(); ++j) {
                const Vehicle& v = d.consists[i].vehicles[j];
                if (!v.name.empty() && iequals(v.name, name))
                    named.push_back({static_cast<int>(i), static_cast<int>(j), v.name, pathOf(v.blueprint),
                                     stock.name, stockPath, 0});
            }
        if (named.empty())
            return;
        const SwapResult r = swapEveryConsist(c, d, name, stock, options.swap);
        if (!r.ok()) {
            // The test looks at the document's first vehicle: the whole scenario stays as it is.
            o.refused.push_back({0, 0,
                                 d.consists.empty() || d.consists[0].vehicles.empty()
                                     ? std::string()
                                     : d.consists[0].vehicles[0].name,
                                 r.error});
            return;
        }
        o.swapped = std::move(named);
    };
    BatchResult result = run(ctx, route, "Swap in ALL Scenarios for this route", options, false, change);
    if (result.ok && result.swapped == 0 && !options.dryRun) {
        result.ok = false;
        result.message =
            "No vehicle is named '" + name + "' in any scenario of " + route.name + "; nothing was written.";
        for (const ScenarioOutcome& o : result.scenarios)
            if (!o.refused.empty()) {
                result.message = o.refused.front().reason + " Nothing was written.";
                break;
            }
    }
    return result;
}

BatchResult swapByRules(AppContext& ctx, const RouteEntry& route, const SwapRules& rules,
                        const BatchOptions& options) {
    Change change = [&](const AppContext& c, ScenarioDocument& d, ScenarioOutcome& o) {
        std::vector<VehicleSwap> planned;
        const StockPicker pick = [&](int consist, int vehicle, const Vehicle& v) -> const ChosenStock* {
            const SwapRule* rule = ruleFor(rules, v);
            if (!rule) {
                if (v.missing)
                    o.uncovered.push_back({consist, vehicle, v.name, pathOf(v.blueprint)});
                return nullptr;
            }
            if (options.missingOnly && !v.missing)
                return nullptr;
            const ChosenStock& s = rule->stock;
            planned.push_back({consist, vehicle, v.name, pathOf(v.blueprint), s.name,
                               s.provider + "\\" + s.product + "\\" + s.path, rule->line});
            return &s;
        };
        swapEach(c, d, pick, &o.refused, options.swap);
        for (const Refusal& r : o.refused)
            std::erase_if(planned, [&](const VehicleSwap& p) {
                return p.consist == r.consist && p.vehicle == r.vehicle;
            });
        inDocumentOrder(planned);
        inDocumentOrder(o.uncovered);
        o.swapped = std::move(planned);
    };
    return run(ctx, route, "Swap stock by rules", options, true, change);
}

std::string batchReport(const BatchResult& result) {
    std::string out;
    for (const ScenarioOutcome& o : result.scenarios) {
        if (o.swapped.empty() && o.refused.empty() && o.uncovered.empty() && o.passedOver.empty())
            continue;
        out += utf8FromDocument(DecodedChars(o.name)) + " (" + o.folder.filename().string() + ")\n";
        if (!o.passedOver.empty())
            out += "\tpassed over: " + o.passedOver + "\n";
        const auto place = [](int c, int v) {
            return "consist " + std::to_string(c) + ", vehicle " + std::to_string(v);
        };
        for (const VehicleSwap& s : o.swapped)
            out += "\t" + place(s.consist, s.vehicle) + ": " + utf8FromDocument(s.name) + " (" +
                   utf8FromDocument(s.blueprint) + ") -> " + utf8FromDocument(s.stock) + " (" + utf8FromDocument(s.stockPath) +
                   ")" + (s.rule ? ", rule of line " + std::to_string(s.rule) : std::string()) + "\n";
        for (const Refusal& r : o.refused)
            out += "\t" + place(r.consist, r.vehicle) + ": " + utf8FromDocument(r.name) +
                   ": refused: " + r.reason + "\n";
        for (const Uncovered& u : o.uncovered)
            out += "\t" + place(u.consist, u.vehicle) + ": " + utf8FromDocument(u.name) + " (" +
                   utf8FromDocument(u.blueprint) + ") is missing and no rule covers it\n";
    }
    return out;
}

} // namespace velmora::scenarios
