// The physics grids and the simulation tables from the command line: a vehicle's values and its
// engine simulation's shown and changed by the names the grids show, a .dcsv table shown,
// changed and drawn. Each save is one journal entry with the old file kept as its numbered
// backup; a command that cannot do all it was asked writes nothing.

#include "session.h"

#include "velmora/core/textboundary.h"
#include "velmora/physics/dcsvtable.h"
#include "velmora/physics/physicsdoc.h"

#include "curveimage.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QByteArray>

namespace velmora::cli {

namespace {

using physics::PhysicsRow;

std::string kindWord(physics::RowKind kind) {
    switch (kind) {
    case physics::RowKind::Reference: return "reference";
    case physics::RowKind::Table: return "table";
    case physics::RowKind::Empty: return "empty";
    case physics::RowKind::Value: break;
    }
    return "value";
}

// The blueprint a command names: the path as given, or below the simulator's Assets folder.
std::optional<fs::path> blueprintPath(Session& s, const std::string& given) {
    std::error_code ec;
    if (fs::exists(fs::path(given), ec))
        return fs::path(given);
    if (!s.requireRoot())
        return std::nullopt;
    if (auto found = s.ctx.resolver.resolve(s.ctx.railWorks() / "Assets", given))
        return *found;
    s.fail(given + ": no such file (looked for as given and below " + (s.ctx.railWorks() / "Assets").string() + ")");
    return std::nullopt;
}

// --steam or --diesel picks the simulation list; neither lets the documents say.
std::optional<physics::SimKind> kindOption(const Arguments& a) {
    if (a.has("--steam"))
        return physics::SimKind::Steam;
    if (a.has("--diesel"))
        return physics::SimKind::DieselElectric;
    return std::nullopt;
}

bool openSet(Session& s, const Arguments& a, const std::string& given, physics::PhysicsSet& set) {
    s.start();
    const auto file = blueprintPath(s, given);
    if (!file)
        return false;
    const auto kind = kindOption(a);
    if (std::string problem = physics::openPhysics(*file, s.ctx.railWorks(), s.ctx.resolver, set, kind ? &*kind : nullptr);
        !problem.empty()) {
        s.fail(problem);
        return false;
    }
    return true;
}

std::vector<std::vector<std::string>> gridCells(const physics::PhysicsDocument& doc) {
    std::vector<std::vector<std::string>> rows;
    for (const PhysicsRow& r : doc.rows)
        rows.push_back({r.qualifiedName(), r.value, r.key, std::to_string(r.position), kindWord(r.kind)});
    return rows;
}

int cmdShow(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json", "--steam", "--diesel"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1)
        return s.fail("needs one blueprint (.bin or .xml)");
    physics::PhysicsSet set;
    if (!openSet(s, a, a.plain[0], set))
        return Error;
    if (a.has("--json")) {
        std::string out = "[";
        bool first = true;
        for (const physics::PhysicsDocument* doc : {&set.vehicle, &set.simulation})
            for (const PhysicsRow& r : doc->rows) {
                out += std::string(first ? "\n" : ",\n") + "  {\"document\": " + jsonString(doc->file.string()) +
                       ", \"name\": " + jsonString(r.item) + ", \"value\": " + jsonString(r.value) +
                       ", \"position\": " + std::to_string(r.position) + "}";
                first = false;
            }
        s.out << out << (first ? "]\n" : "\n]\n");
        if (!set.simProblem.empty())
            s.err << shown(set.simProblem) << "\n";
        return Success;
    }
    const std::vector<std::string> columns = {"Item", "Data", "Key", "Position", "Kind"};
    s.out << "Stock being checked: " << shown(set.vehicle.file.string()) << "\n"
          << tableText(columns, gridCells(set.vehicle), '\t', false);
    if (!set.simProblem.empty()) {
        s.out << "\n" << shown(set.simProblem) << "\n";
        return Success;
    }
    s.out << "\nSimulation (" << (set.kind == physics::SimKind::Steam ? "steam" : "diesel or electric")
          << "): " << shown(set.simulation.file.string()) << "\n"
          << tableText(columns, gridCells(set.simulation), '\t', false);
    return Success;
}

int cmdSet(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--sim", "--steam", "--diesel"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2)
        return s.fail("needs a blueprint and NAME=VALUE (see velmora-cli physics set --help)");
    physics::PhysicsSet set;
    if (!openSet(s, a, a.plain[0], set))
        return Error;
    physics::PhysicsDocument& doc = a.has("--sim") ? set.simulation : set.vehicle;
    if (a.has("--sim") && doc.file.empty())
        return s.fail(set.simProblem);
    const std::string file = doc.file.string();
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        const std::string& word = a.plain[i];
        const std::size_t eq = word.find('=');
        if (eq == std::string::npos || eq == 0)
            return s.fail("'" + word + "' is not NAME=VALUE");
        const std::string name = word.substr(0, eq), value = word.substr(eq + 1);
        const std::vector<std::size_t> found = physics::findRows(doc.rows, name);
        if (found.empty())
            return s.fail(file + " has no row " + name + (a.has("--sim") ? "" : " (values of the simulation take --sim)") +
                          "; nothing was written");
        if (found.size() > 1) {
            std::string list;
            for (std::size_t k : found)
                list += "\n  " + std::string(doc.rows[k].section.empty() ? "/" : "") + doc.rows[k].qualifiedName() + "  (or " +
                        doc.rows[k].item + "@" + std::to_string(doc.rows[k].position) + ")";
            return s.fail(name + " is ambiguous in " + file + "; name one of these:" + list);
        }
        const PhysicsRow& row = doc.rows[found.front()];
        if (row.kind == physics::RowKind::Reference || row.kind == physics::RowKind::Table)
            return s.fail(file + ": " + row.qualifiedName() + " is a " + kindWord(row.kind) +
                          ", not a value to change here; nothing was written");
        if (std::string problem = physics::setValue(doc, found.front(), value); !problem.empty())
            return s.fail(file + ": " + problem + "; nothing was written");
    }
    const physics::SaveResult saved = physics::saveDocument(s.ctx, doc, "physics set " + file);
    if (!saved.ok)
        return s.fail(saved.message);
    s.out << "Saved " << shown(file);
    if (!saved.backup.empty())
        s.out << " (the old file is " << shown(saved.backup.filename().string()) << ")";
    s.out << "\n";
    return Success;
}

void printTable(Session& s, const physics::DcsvTable& t, bool json) {
    if (json) {
        std::string out = "[";
        for (std::size_t i = 0; i < t.points.size(); ++i)
            out += std::string(i ? ",\n" : "\n") + "  {\"row\": " + std::to_string(i + 1) + ", \"x\": " +
                   jsonString(t.points[i].x) + ", \"y\": " + jsonString(t.points[i].y) + "}";
        s.out << out << (t.points.empty() ? "]\n" : "\n]\n");
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < t.points.size(); ++i)
        rows.push_back({std::to_string(i + 1), t.points[i].x, t.points[i].y});
    s.out << tableText({"Row", "X", "Y"}, rows, '\t', false);
}

// The row an X given on the command line stands for; says why when there is none or several.
std::optional<std::size_t> rowByX(Session& s, const physics::DcsvTable& t, const std::string& x) {
    double value = 0;
    if (!physics::parseNumber(x, value)) {
        s.fail("X '" + x + "' is not a number; nothing was written");
        return std::nullopt;
    }
    const int row = physics::rowOfX(t, value);
    if (row == -1)
        s.fail(t.file.string() + " has no row with X = " + x + "; nothing was written");
    else if (row == -2)
        s.fail(t.file.string() + " has several rows with X = " + x + "; nothing was written");
    if (row < 0)
        return std::nullopt;
    return static_cast<std::size_t>(row);
}

int cmdTable(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--set", "--add", "--remove"}, {"--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1)
        return s.fail("needs one table (.dcsv)");
    s.start();
    physics::DcsvTable t;
    if (std::string problem = physics::readTable(fs::path(a.plain[0]), t); !problem.empty())
        return s.fail(problem);
    for (const auto& [option, value] : a.options) {
        std::string problem;
        if (option == "--set") {
            const std::size_t eq = value.find('=');
            if (eq == std::string::npos)
                return s.fail("--set takes X=Y, not '" + value + "'");
            const auto row = rowByX(s, t, value.substr(0, eq));
            if (!row)
                return Error;
            problem = physics::setPoint(t, *row, t.points[*row].x, value.substr(eq + 1));
        } else if (option == "--add") {
            const std::size_t comma = value.find(',');
            if (comma == std::string::npos)
                return s.fail("--add takes X,Y, not '" + value + "'");
            problem = physics::addPoint(t, value.substr(0, comma), value.substr(comma + 1));
        } else {
            const auto row = rowByX(s, t, value);
            if (!row)
                return Error;
            problem = physics::removePoint(t, *row);
        }
        if (!problem.empty())
            return s.fail(problem + "; nothing was written");
    }
    if (!a.options.empty()) {
        fs::path backup;
        if (std::string problem = physics::saveTable(s.ctx, t, "physics table " + t.file.string(), &backup); !problem.empty())
            return s.fail(problem);
        if (!a.has("--json"))
            s.out << "Saved " << shown(t.file.string())
                  << (backup.empty() ? std::string() : " (the old file is " + shown(backup.filename().string()) + ")")
                  << "\n";
    }
    printTable(s, t, a.has("--json"));
    return Success;
}

int cmdPlot(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--png", "--title"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    const auto png = a.value("--png");
    if (a.plain.size() != 1 || !png)
        return s.fail("needs one table (.dcsv) and --png OUT.png");
    s.start();
    physics::DcsvTable t;
    if (std::string problem = physics::readTable(fs::path(a.plain[0]), t); !problem.empty())
        return s.fail(problem);
    const std::string stem = fs::path(a.plain[0]).stem().string();
    const physics::AxisTitles titles = physics::axisTitlesOf(stem);
    physics::CurvePlot plot{a.value("--title").value_or(stem), titles.x, titles.y, {}};
    for (const physics::TablePoint& p : t.points)
        plot.points.emplace_back(p.xValue, p.yValue);
    const auto app = physics::ensureGuiApplication();
    const QImage image = physics::renderCurve(plot);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        return s.fail(*png + ": the picture could not be made");
    WriteOptions o;
    o.backup = Backup::None;
    const WriteResult w = s.ctx.files().write(fs::path(*png), std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())), o);
    if (!w)
        return s.fail(w.message);
    s.out << "Drew " << t.points.size() << " points of " << shown(t.file.string()) << " into " << shown(*png) << "\n";
    return Success;
}

} // namespace

std::vector<Command> physicsCommands() {
    return {
        {"physics show", "PATH [--json] [--steam|--diesel]",
         "the physics grids of a rail vehicle and of the engine simulation it calls", cmdShow, false,
         "PATH is a blueprint (.bin or .xml), as given or below the Assets folder. The first grid is the vehicle's,\n"
         "the second its engine simulation's (EngineSimulationContainer), read by the steam list when the\n"
         "simulation is a steam one (--steam or --diesel picks the list). Columns: Item (SECTION/NAME), Data, Key,\n"
         "Position (where the element stands in the XML text) and Kind (value, reference, table, empty).\n"
         "  --json   a list of {\"document\", \"name\", \"value\", \"position\"}; a missing simulation is told on\n"
         "           standard error\n"},
        {"physics set", "PATH NAME=VALUE... [--sim] [--steam|--diesel]",
         "changes values of the vehicle's grid (or with --sim the simulation's) and saves the document", cmdSet, true,
         "NAME is a row's name as physics show gives it: NAME, SECTION/NAME, /NAME (outside every section) or\n"
         "NAME@POSITION where a name stands in several places (an ambiguous name is refused with the\n"
         "candidates). A number element takes only a number of its type. All changes are made or none; the\n"
         "document is written once, the old one kept as its numbered backup (.bak, .bak1 ...), one entry of\n"
         "the journal.\n"},
        {"physics table", "FILE.dcsv [--json] [--set X=Y]... [--add X,Y]... [--remove X]...",
         "shows a simulation table; --set, --add and --remove change its rows by X and save it", cmdTable, true,
         "--set X=Y gives the row whose X is X the value Y; --add X,Y adds a row in X order; --remove X takes a row\n"
         "away (the last row stays). The changes are made in the order given, all or none, and the table is\n"
         "written once with its numbered backup. A table left unchanged keeps every byte.\n"
         "  --json   a list of {\"row\", \"x\", \"y\"}\n"},
        {"physics plot", "FILE.dcsv --png OUT.png [--title TEXT]", "draws a simulation table as a PNG picture", cmdPlot,
         true,
         "The curve in red on a light blue grid, five steps on each axis, the axis titles from the table's name\n"
         "(TractiveEffortVsSpeed: X Speed, Y Tractive effort). The title is the file's name unless --title says.\n"},
    };
}

} // namespace velmora::cli
