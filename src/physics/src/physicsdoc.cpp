#include "velmora/physics/physicsdoc.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/paths.h"
#include "velmora/core/textboundary.h"

#include "serz/serz.h"

#include <algorithm>

namespace velmora::physics {

namespace {

bool endsWithNoCase(std::string_view s, std::string_view end) {
    if (s.size() < end.size())
        return false;
    return std::equal(end.begin(), end.end(), s.end() - static_cast<std::ptrdiff_t>(end.size()),
                      [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b)); });
}

std::string shownPath(const fs::path& p) { return p.string(); }

fs::path findBelowAssets(const std::string& relative, const fs::path& railWorks, const PathResolver& resolver) {
    if (auto found = resolver.resolve(railWorks / "Assets", relative))
        return *found;
    return {};
}

} // namespace

std::string noSimulationMessage() { return "There is apparently no Engine Simulation file called by this .bin file"; }

std::string openDocument(const fs::path& file, PhysicsDocument& doc) {
    doc = PhysicsDocument{};
    doc.file = file;
    std::string bytes;
    if (const serz::Status read = serz::readDocument(file, bytes); !read)
        return read.message;
    if (bytes.rfind("SERZ", 0) == 0) {
        const serz::Status decoded = serz::decode(bytes, doc.xml);
        if (!decoded) {
            doc.xml.clear();
            return shownPath(file) + ": " + decoded.message + " (byte offset " + std::to_string(decoded.offset) + ")";
        }
        doc.binary = true;
        return {};
    }
    if (bytes.find('<') == std::string::npos)
        return shownPath(file) + ": is neither a simulator document nor XML text";
    doc.binary = false;
    doc.xml = std::move(bytes);
    return {};
}

SimulationLocation simulationOf(const std::string& vehicleXml, const fs::path& railWorks, const PathResolver& resolver) {
    SimulationLocation loc;
    for (const PhysicsRow& r : vehicleRows(vehicleXml))
        if (r.item == "EngineSimulationContainer" && r.kind == RowKind::Reference)
            loc.reference = r.value;
    const std::size_t last = loc.reference.rfind('\\');
    if (loc.reference.empty() || last == std::string::npos || last + 1 == loc.reference.size()) {
        loc.missing = "the blueprint names no simulation in EngineSimulationContainer";
        return loc;
    }
    std::string stem = loc.reference;
    if (endsWithNoCase(stem, ".xml") || endsWithNoCase(stem, ".bin"))
        stem.resize(stem.size() - 4);
    for (const char* ending : {".bin", ".xml"})
        if (fs::path f = findBelowAssets(utf8FromDocument(stem) + ending, railWorks, resolver); !f.empty() && fs::is_regular_file(f)) {
            loc.file = f;
            return loc;
        }
    loc.missing = "Assets\\" + utf8FromDocument(stem) + ".bin is not installed";
    return loc;
}

std::string setValue(PhysicsDocument& doc, std::size_t index, std::string_view typedUtf8) {
    if (index >= doc.rows.size())
        return "no such row";
    PhysicsRow& row = doc.rows[index];
    std::string xml = doc.xml;
    if (std::string problem = putRowValue(xml, row, typedUtf8); !problem.empty())
        return problem;
    const auto delta = static_cast<std::ptrdiff_t>(xml.size()) - static_cast<std::ptrdiff_t>(doc.xml.size());
    doc.xml = std::move(xml);
    doc.changed = true;
    row.value = documentFromUtf8(typedUtf8);
    if (row.type.rfind("s", 0) == 0 || row.type == "bool") { // numbers are kept without blanks
        while (!row.value.empty() && (row.value.back() == ' ' || row.value.back() == '\t'))
            row.value.pop_back();
        row.value.erase(0, row.value.find_first_not_of(" \t"));
    }
    // The later rows moved by the change in length; their positions follow.
    for (PhysicsRow& r : doc.rows)
        if (r.position > row.position)
            r.position = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(r.position) + delta);
    return {};
}

std::string writeBack(AppContext& ctx, const fs::path& file, bool binary, const std::string& xml,
                      const std::string& command, fs::path* backup) {
    std::string bytes;
    if (binary) {
        // The whole new document is encoded before the old one is touched.
        const ConvertResult encoded = xmlTextToBin(xml, bytes, shownPath(file));
        if (!encoded)
            return encoded.message;
        if (bytes.size() <= 8)
            return shownPath(file) + ": the new document came out empty; the file is unchanged.";
    } else {
        bytes = xml;
    }
    JournalCommand entry(&ctx.journal(), command);
    const WriteResult w = ctx.files().write(file, bytes);
    if (!w)
        return w.message;
    if (backup)
        *backup = w.backup;
    return {};
}

SaveResult saveDocument(AppContext& ctx, PhysicsDocument& doc, const std::string& command) {
    SaveResult r;
    r.message = writeBack(ctx, doc.file, doc.binary, doc.xml, command, &r.backup);
    r.ok = r.message.empty();
    if (r.ok)
        doc.changed = false;
    return r;
}

fs::path tableFile(const std::string& csvFileValue, const fs::path& railWorks, const PathResolver& resolver) {
    std::string relative = utf8FromDocument(csvFileValue);
    if (endsWithNoCase(relative, ".csv"))
        relative.resize(relative.size() - 4);
    if (!endsWithNoCase(relative, ".dcsv"))
        relative += ".dcsv";
    if (fs::path found = findBelowAssets(relative, railWorks, resolver); !found.empty())
        return found;
    return resolver.resolveForWrite(railWorks / "Assets", relative);
}

std::string openPhysics(const fs::path& vehicleFile, const fs::path& railWorks, const PathResolver& resolver,
                        PhysicsSet& set, const SimKind* kind) {
    set = PhysicsSet{};
    if (std::string problem = openDocument(vehicleFile, set.vehicle); !problem.empty())
        return problem;
    set.vehicle.rows = vehicleRows(set.vehicle.xml);
    set.simLocation = simulationOf(set.vehicle.xml, railWorks, resolver);
    if (set.simLocation.file.empty()) {
        set.simProblem = noSimulationMessage() + ": " + set.simLocation.missing + ".";
        return {};
    }
    if (std::string problem = openDocument(set.simLocation.file, set.simulation); !problem.empty()) {
        set.simProblem = problem;
        set.simulation = PhysicsDocument{};
        return {};
    }
    if (!isSimulationBlueprint(set.simulation.xml)) {
        set.simProblem = shownPath(set.simLocation.file) + ": is no engine simulation (no cEngineSimBlueprint)";
        set.simulation = PhysicsDocument{};
        return {};
    }
    readSimulationRows(set, kind ? *kind : simKindOf(set.vehicle.xml, set.simulation.xml));
    return {};
}

void readSimulationRows(PhysicsSet& set, SimKind kind) {
    set.kind = kind;
    if (!set.simulation.xml.empty())
        set.simulation.rows = simulationRows(set.simulation.xml, kind);
}

} // namespace velmora::physics
