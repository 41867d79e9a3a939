// Clones of a route or a scenario under new identities.

#include "staging.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/textsearch.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"
#include "velmora/routes/routeedits.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>

namespace velmora::routes {

namespace {

const ScanSettings kExact{Match::Binary};
const ScanSettings kAnyCase{Match::Text};

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// The value between the first ">" at or after `open` and the next "<", replaced.
bool replaceValueAt(std::string& text, std::size_t open, const std::string& value) {
    const std::size_t gt = text.find('>', open);
    const std::size_t lt = gt == std::string::npos ? gt : text.find('<', gt);
    if (lt == std::string::npos)
        return false;
    text.replace(gt + 1, lt - gt - 1, value);
    return true;
}

// The next "<e>" or "<e d:..." element at or after `from` (0-based), npos when none.
std::size_t nextE(const std::string& text, std::size_t from) {
    for (std::size_t at = text.find("<e", from); at != std::string::npos; at = text.find("<e", at + 2))
        if (at + 2 < text.size() && (text[at + 2] == '>' || text[at + 2] == ' '))
            return at;
    return std::string::npos;
}

void setValue(std::string& text, std::size_t from, const char* tag, const std::string& value,
              const ScanSettings& settings = kExact) {
    std::size_t pos = from;
    PutDetail(text, pos, tag, value, settings);
}

struct FileToCopy {
    fs::path source, target;
    bool edited = false; // a properties file that gets its new identity
};

// The staged copy and the report lines of a clone.
bool stageClone(AppContext& ctx, const std::vector<FileToCopy>& plan,
                const std::function<bool(std::string&, const FileToCopy&)>& edit, detail::Staging& staging,
                bool dryRun, EditReport& report) {
    ctx.ui().beginProgress("Cloning", static_cast<std::int64_t>(plan.size()));
    std::int64_t done = 0;
    for (const FileToCopy& f : plan) {
        if (ctx.ui().cancelled()) {
            report.aborted = true;
            report.message = "Aborted: nothing was copied.";
            ctx.ui().endProgress();
            return false;
        }
        std::string error;
        bool ok = true;
        if (f.edited) {
            std::string text = ReadTextFile(f.source);
            if (text.empty()) {
                error = f.source.string() + ": cannot be read, or is empty; nothing was copied.";
                ok = false;
            } else if (!edit(text, f)) {
                error = f.source.string() + ": holds no <UUID>; nothing was copied.";
                ok = false;
            } else if (!dryRun) {
                ok = staging.stage(f.target, text, error);
            }
            report.lines.push_back(f.target.string() + ": new identity");
        } else if (!dryRun) {
            ok = staging.stageCopy(f.source, f.target, error);
            report.lines.push_back(f.target.string() + ": copied");
        } else if (!std::ifstream(f.source, std::ios::binary)) {
            error = f.source.string() + ": cannot be read; nothing was copied.";
            ok = false;
        } else {
            report.lines.push_back(f.target.string() + ": copied");
        }
        if (!ok) {
            report.message = error;
            ctx.ui().endProgress();
            return false;
        }
        report.files.push_back(f.target);
        ctx.ui().progress(++done);
    }
    ctx.ui().endProgress();
    return true;
}

} // namespace

Identity newIdentity() {
    std::string text = makeGuidForms().uuid1;
    return *identityOf(text);
}

std::optional<Identity> identityOf(const std::string& text) {
    if (text.size() != 36)
        return std::nullopt;
    std::string hex;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash != (text[i] == '-') || (!dash && hexDigit(text[i]) < 0))
            return std::nullopt;
        if (!dash)
            hex += text[i];
    }
    unsigned char bytes[16];
    for (int i = 0; i < 16; ++i)
        bytes[i] = static_cast<unsigned char>(hexDigit(hex[std::size_t(2 * i)]) * 16 + hexDigit(hex[std::size_t(2 * i + 1)]));
    // The first three groups are little-endian numbers in the 16 bytes the documents hold.
    std::swap(bytes[0], bytes[3]);
    std::swap(bytes[1], bytes[2]);
    std::swap(bytes[4], bytes[5]);
    std::swap(bytes[6], bytes[7]);
    Identity id;
    id.text = text;
    std::transform(id.text.begin(), id.text.end(), id.text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    for (int i = 7; i >= 0; --i) {
        id.a = (id.a << 8) | bytes[i];
        id.b = (id.b << 8) | bytes[8 + i];
    }
    return id;
}

bool setIdentity(std::string& text, const Identity& id, const std::string& name) {
    const std::size_t uuid = text.find("<UUID");
    if (uuid == std::string::npos)
        return false;
    const std::size_t e1 = nextE(text, uuid);
    if (e1 == std::string::npos || !replaceValueAt(text, e1, std::to_string(id.a)))
        return false;
    const std::size_t e2 = nextE(text, e1 + 2);
    if (e2 == std::string::npos || !replaceValueAt(text, e2, std::to_string(id.b)))
        return false;
    setValue(text, e2 + 1, "DevString", id.text);
    if (name.empty())
        return true;
    const std::size_t display = InStr(1, text, "<DisplayName", Match::Binary);
    if (display == 0)
        return true;
    for (const char* language : {"English", "French", "Italian", "German", "Spanish"})
        setValue(text, display, language, name);
    setValue(text, display, "Key", id.text);
    return true;
}

EditReport cloneRoute(AppContext& ctx, const RouteEntry& route, const CloneOptions& options) {
    EditReport report;
    if (options.name.empty()) {
        report.message = "You have not selected a new name for your cloned route?";
        return report;
    }
    for (const RouteEntry& other : listRoutes(ctx))
        if (sameName(other.name, options.name)) {
            report.message = "A route named '" + options.name + "' exists already (" + other.folder +
                             "); choose another name.";
            return report;
        }
    const auto properties = ctx.resolver.resolve(route.path, "RouteProperties.xml");
    if (!properties) {
        report.message = route.path.string() + ": is not a route, it has no RouteProperties.xml.";
        return report;
    }
    const Identity id = newIdentity();
    const fs::path target = (options.parent ? *options.parent : route.path.parent_path()) / id.text;
    std::vector<fs::path> files;
    if (!detail::listTree(route.path, files, report.warnings, report.message))
        return report;
    // Each scenario folder gets a new identity as its name; one without properties is left out.
    std::map<std::string, Identity> scenarioIds;
    std::vector<FileToCopy> plan;
    for (const fs::path& file : files) {
        const fs::path rel = file.lexically_relative(route.path);
        auto part = rel.begin();
        FileToCopy f{file, target / rel};
        if (rel == properties->lexically_relative(route.path)) {
            f.edited = true;
        } else if (iequals(part->string(), "Scenarios") && std::distance(rel.begin(), rel.end()) > 2) {
            const std::string folder = (++part)->string();
            const fs::path source = route.path / rel.begin()->string() / folder;
            if (!scenarioIds.count(folder)) {
                if (!ctx.resolver.resolve(source, "ScenarioProperties.xml")) {
                    report.warnings.push_back(source.string() + ": has no ScenarioProperties.xml and was left out.");
                    scenarioIds[folder] = Identity{};
                } else {
                    scenarioIds[folder] = newIdentity();
                }
            }
            const Identity& sid = scenarioIds[folder];
            if (sid.text.empty())
                continue;
            const fs::path inside = file.lexically_relative(source);
            if (iequals(inside.string(), "ScenarioProperties.xml.MD5"))
                continue; // the check of the old properties: the simulator makes it anew
            f.target = target / rel.begin()->string() / sid.text / inside;
            f.edited = iequals(inside.string(), "ScenarioProperties.xml");
        }
        plan.push_back(std::move(f));
    }
    report.made = target.string();
    const std::string name = documentText(options.name);
    auto edit = [&](std::string& text, const FileToCopy& f) {
        if (f.target.filename() == properties->filename())
            return setIdentity(text, id, name);
        return setIdentity(text, scenarioIds[f.source.parent_path().filename().string()], {});
    };
    detail::Staging staging(ctx);
    if (!stageClone(ctx, plan, edit, staging, options.dryRun, report)) {
        staging.discardAll();
        detail::removeEmptyFolders(target);
        return report;
    }
    report.count = plan.size();
    report.ok = true;
    if (options.dryRun) {
        staging.discardAll();
        detail::removeEmptyFolders(target);
        return report;
    }
    if (const std::string failed = staging.commitAll("Clone Route: " + route.name + " as " + name); !failed.empty()) {
        report.ok = false;
        report.message = failed;
        detail::removeEmptyFolders(target);
        return report;
    }
    report.message = "The route has been cloned as '" + options.name + "' in " + target.string() + ".";
    return report;
}

ScenarioKind scenarioKind(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario) {
    ScenarioKind kind;
    const auto folder = ctx.resolver.resolve(route.path, "Scenarios\\" + scenario.folder);
    const auto file = folder ? ctx.resolver.resolve(*folder, "ScenarioProperties.xml") : std::nullopt;
    const std::string text = file ? ReadTextFile(*file) : std::string();
    std::string value;
    std::size_t pos = 1;
    GetDetail(text, pos, "ScenarioClass", value, kExact);
    kind.career = pos > 0 && value == "eCareerScenarioClass";
    value.clear();
    pos = 1;
    GetDetail(text, pos, "WorkshopId", value, kAnyCase);
    kind.workshop = pos > 0 && !value.empty() && value != "0";
    return kind;
}

EditReport cloneScenario(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario,
                         const CloneOptions& options) {
    EditReport report;
    if (options.name.empty()) {
        report.message = "You have not selected a new name for your cloned scenario?";
        return report;
    }
    for (const ScenarioEntry& other : listScenarios(ctx, route))
        if (sameName(other.name, options.name)) {
            report.message = "A scenario named '" + options.name + "' exists already in this route (" + other.folder +
                             "); choose another name.";
            return report;
        }
    const auto source = ctx.resolver.resolve(route.path, "Scenarios\\" + scenario.folder);
    if (!source || !ctx.resolver.resolve(*source, "Scenario.bin")) {
        report.message = (route.path / "Scenarios" / scenario.folder).string() +
                         ": There is no scenario.bin file in this folder.";
        return report;
    }
    const auto properties = ctx.resolver.resolve(*source, "ScenarioProperties.xml");
    if (!properties) {
        report.message = source->string() + ": has no ScenarioProperties.xml; it is not a scenario.";
        return report;
    }
    const Identity id = newIdentity();
    const fs::path target = source->parent_path() / id.text;
    std::vector<fs::path> files;
    if (!detail::listTree(*source, files, report.warnings, report.message))
        return report;
    std::vector<FileToCopy> plan;
    for (const fs::path& file : files) {
        const fs::path rel = file.lexically_relative(*source);
        if (iequals(rel.string(), "ScenarioProperties.xml.MD5"))
            continue;
        plan.push_back({file, target / rel, file == *properties});
    }
    // The original properties stay in the clone as its backup.
    plan.push_back({*properties, target / "ScenarioProperties.xml.bak", false});
    report.made = target.string();
    const std::string name = documentText(options.name);
    auto edit = [&](std::string& text, const FileToCopy&) {
        if (!setIdentity(text, id, name))
            return false;
        if (options.careerToStandard && InStr(1, text, "<ScenarioClass", Match::Binary) > 0)
            setValue(text, 1, "ScenarioClass", "eStandardScenarioClass");
        if (options.workshopToStandard && InStr(1, text, "<WorkshopId", Match::Text) > 0) {
            setValue(text, 1, "WorkshopId", "0", kAnyCase);
            if (InStr(1, text, "<WorkshopBy", Match::Text) > 0)
                setValue(text, 1, "WorkshopBy", "", kAnyCase);
        }
        return true;
    };
    detail::Staging staging(ctx);
    if (!stageClone(ctx, plan, edit, staging, options.dryRun, report)) {
        staging.discardAll();
        detail::removeEmptyFolders(target);
        return report;
    }
    report.count = plan.size();
    report.ok = true;
    if (options.dryRun) {
        staging.discardAll();
        detail::removeEmptyFolders(target);
        return report;
    }
    if (const std::string failed = staging.commitAll("Clone Scenario: " + scenario.name + " as " + name); !failed.empty()) {
        report.ok = false;
        report.message = failed;
        detail::removeEmptyFolders(target);
        return report;
    }
    report.message = "Your Scenario has been Duplicated as requested.";
    return report;
}

} // namespace velmora::routes
