// The two read-mostly views of a scenario from the command line: the details grid (as a text
// table, CSV, or saved as .csv, .txt or .xls) with the route's track index made when it is
// missing, and the driver's work order as HTML.

#include "scenarioargs.h"
#include "session.h"

#include "velmora/assets/assetgrid.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/instructions.h"
#include "velmora/scenarios/scenariodetails.h"
#include "velmora/scenarios/trackindex.h"
#include "velmora/scenarios/workorder.h"

#include <algorithm>

namespace velmora::cli {

namespace {

namespace sc = velmora::scenarios;

struct Opened {
    sc::ScenarioRef ref;
    sc::ScenarioDocument doc;
};

// The scenario the words name, opened, its warnings said; nothing after saying why not.
std::optional<Opened> openedScenario(Session& s, const Arguments& a) {
    auto ref = scenarioArgument(s, a);
    if (!ref)
        return std::nullopt;
    sc::ScenarioDocument d = sc::openScenario(s.ctx, ref->folder);
    for (const auto& w : d.warnings)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(w) << '\n';
    if (!d.ok()) {
        s.fail(shown(d.error));
        return std::nullopt;
    }
    return Opened{std::move(*ref), std::move(d)};
}

// The route's track index: the one made before, else made now (said on standard error).
// Nothing when it cannot be made; `problem` is set then.
std::optional<sc::TrackIndex> routeIndex(Session& s, const routes::RouteEntry& route, bool& problem) {
    const fs::path file = sc::trackIndexFile(s.ctx, route.folder);
    if (auto index = sc::readTrackIndex(file))
        return index;
    UserInterface& ui = s.ctx.ui();
    ui.beginProgress("Indexing the route's tracks", 1000);
    const sc::IndexResult built = sc::buildTrackIndex(s.ctx, route.path, file, [&](std::int64_t done, std::int64_t total) {
        ui.progress(total ? done * 1000 / total : 0, {});
        return !ui.cancelled();
    });
    ui.endProgress();
    if (!built) {
        problem = true;
        s.err << "velmora-cli: " << s.g.command << ": " << shown(built.message) << '\n';
        return std::nullopt;
    }
    if (!s.g.quiet)
        s.err << "velmora-cli: " << s.g.command << ": indexed the route's tracks into " << file.string() << " ("
              << built.index.ribbons.size() << " ribbons)\n";
    return built.index;
}

// The grid as a table for the terminal: each column as wide as its widest cell (up to 40),
// line breaks inside a cell shown as " / ".
std::string textTable(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::vector<std::string>> cells;
    std::vector<std::size_t> widths;
    for (const auto& r : rows) {
        std::vector<std::string> line;
        for (std::size_t c = 0; c < r.size(); ++c) {
            std::string cell = shown(r[c]);
            for (std::size_t p = cell.find_first_of("\r\n"); p != std::string::npos; p = cell.find_first_of("\r\n", p))
                cell.replace(p, cell[p] == '\r' && p + 1 < cell.size() && cell[p + 1] == '\n' ? 2 : 1, " / ");
            if (widths.size() <= c)
                widths.resize(c + 1, 0);
            widths[c] = std::max(widths[c], std::min<std::size_t>(cell.size(), 40));
            line.push_back(std::move(cell));
        }
        cells.push_back(std::move(line));
    }
    std::string out;
    for (const auto& line : cells) {
        std::string text;
        for (std::size_t c = 0; c < line.size(); ++c) {
            text += line[c];
            if (c + 1 < line.size())
                text += std::string(line[c].size() < widths[c] ? widths[c] - line[c].size() + 2 : 2, ' ');
        }
        while (!text.empty() && text.back() == ' ')
            text.pop_back();
        out += text + '\n';
    }
    return out;
}

int cmdScenarioDetails(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--out"}, {"--csv", "--no-index"});
    const auto opened = openedScenario(s, a);
    if (!opened)
        return Error;
    bool problem = false;
    std::optional<sc::TrackIndex> index;
    if (!a.has("--no-index"))
        index = routeIndex(s, opened->ref.route, problem);
    const sc::DetailsGrid grid = sc::detailsGrid(opened->doc, index ? &*index : nullptr, sc::documentLanguage(s.ctx));
    if (const auto out = a.value("--out")) {
        std::string error;
        if (!sc::saveDetailsGrid(s.ctx.files(), *out, grid, &error))
            return s.fail(shown(error));
        if (!s.g.quiet)
            s.out << grid.rows.size() << " rows written to " << *out << '\n';
    } else if (a.has("--csv")) {
        std::vector<std::vector<std::string>> rows;
        for (const auto& r : grid.rows) {
            std::vector<std::string> cells;
            for (const auto& c : r)
                cells.push_back(shown(c));
            rows.push_back(std::move(cells));
        }
        s.out << assets::listText(assets::ListForm::Csv, rows, {});
    } else {
        s.out << textTable(grid.rows);
    }
    return problem ? ProblemsFound : Success;
}

int cmdScenarioWorkOrder(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--out"}, {});
    const auto opened = openedScenario(s, a);
    if (!opened)
        return Error;
    const std::string html = sc::workOrderHtml(opened->doc, opened->ref.route.name, sc::documentLanguage(s.ctx));
    if (const auto out = a.value("--out")) {
        if (const WriteResult written = s.ctx.files().write(*out, html); !written)
            return s.fail(written.message);
        if (!s.g.quiet)
            s.out << "Work order written to " << *out << '\n';
        return Success;
    }
    s.out << html;
    return Success;
}

} // namespace

std::vector<Command> scenarioDetailsCommands() {
    return {
        {"scenario details", "ROUTE SCENARIO [--csv] [--out FILE.csv|.txt|.xls] [--no-index]",
         "every consist in labelled lines: service, class, destination, times, instructions, vehicles and, by the "
         "route's track index (made when missing), where they stand",
         cmdScenarioDetails},
        {"scenario work-order", "ROUTE SCENARIO [--out FILE.html]",
         "the driver's work order of the scenario as HTML", cmdScenarioWorkOrder},
    };
}

} // namespace velmora::cli
