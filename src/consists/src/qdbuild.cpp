// Quick Drive consists and fragments, assembled from the templates and written into PreLoad.

#include "velmora/consists/qdbuild.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <set>

namespace velmora::consists {

const char* const kNoRoute = "You do not appear to have selected a route";
const char* const kConsistCopied = "Your new consist has been copied to\nyour PreLoad folder.";
const char* const kFragmentRefused = "The name of a fragment must contain the word 'Fragment',\ne.g. Scotsman Fragment";
const char* const kNotInProduct = "The PreLoad folder must lie inside a product: Assets\\<Provider>\\<Product>\\...";
const char* const kBuildConsistCommand = "Build QD Consist";
const char* const kBuildFragmentCommand = "Build QD Fragment";

namespace {

const char* const kBadEra = "The era must be given as two years, e.g. 2000 and 2050.";

bool wholeNumber(const std::string& s) {
    return !s.empty() && s.size() <= 9 && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// One folder name: not empty, no separator, no "." or "..".
bool singleName(const std::string& s) {
    return !s.empty() && s != "." && s != ".." && s.find_first_of("/\\") == std::string::npos;
}

std::string yesNo(bool v) { return v ? "eTrue" : "eFalse"; }

std::string vehicleText(const std::string& vehicleTemplate, const std::vector<QDVehicle>& vehicles, const IdSource& ids) {
    std::string out;
    for (const QDVehicle& v : vehicles) {
        out += fillTemplate(vehicleTemplate, {{"nnnnnnnn", randomId(ids)},
                                              {"aaaaaa", documentText(v.provider)},
                                              {"bbbbbb", documentText(v.product)},
                                              {"cccccc", documentText(v.blueprintId)},
                                              {"dddddd", v.flipped == "eTrue" ? "eTrue" : "eFalse"}});
        if (!out.empty() && out.back() != '\n')
            out += "\r\n";
    }
    return out;
}

// The document encoded whole, then written with its numbered backup as one journal entry.
QDBuildResult writeDocument(AppContext& ctx, const fs::path& file, const std::string& xml, const char* command,
                            QDBuildResult r) {
    r.file = file;
    std::string bin;
    const ConvertResult encoded = xmlTextToBin(xml, bin, file.string());
    if (!encoded || bin.size() <= 8) {
        r.message = file.string() + ": the new document could not be made; nothing was written.";
        r.detail = encoded ? file.string() + ": the new document came out empty." : encoded.message;
        return r;
    }
    JournalCommand entry(&ctx.journal(), command);
    WriteOptions options;
    options.backupStem = file.stem().string(); // "Name.bak" for "Name.bin"
    const WriteResult w = ctx.files().write(file, bin, options);
    if (!w) {
        r.message = w.message;
        r.detail = w.message;
        return r;
    }
    r.ok = true;
    r.backup = w.backup;
    r.created = w.created;
    return r;
}

QDBuildResult refused(const std::string& message, const std::string& detail = {}) {
    QDBuildResult r;
    r.message = message;
    r.detail = detail.empty() ? message : detail;
    return r;
}

} // namespace

const std::vector<std::string>& consistTypes() {
    static const std::vector<std::string> kTypes = [] {
        std::vector<std::string> t;
        for (const char* s : {"Passenger Regional", "Passenger Fast", "Passenger Intercity", "Passenger International",
                              "Passenger Commuter", "Passenger Scrap", "Freight Coal", "Freight Gravel", "Freight Oil",
                              "Freight Wood", "Freight Paper", "Freight Livestock", "Freight Nuclear Flask",
                              "Freight Container", "Freight Scrap", "Preserved"})
            t.push_back(std::string("Consist Type ") + s);
        for (int i = 1; i <= 8; ++i)
            t.push_back("Consist Type Custom " + std::to_string(i));
        t.push_back("Consist Type Do Not Spawn");
        return t;
    }();
    return kTypes;
}

std::string consistTypeValue(const std::string& shown) {
    std::string out;
    for (char c : shown)
        if (c != ' ' && c != '\t')
            out += c;
    if (out.empty() || out[0] != 'e')
        out.insert(out.begin(), 'e');
    return out;
}

const std::vector<std::string>& engineTypes() {
    static const std::vector<std::string> kTypes = {"Diesel", "Electric", "Steam"};
    return kTypes;
}

std::string flippedOther(const std::string& flipped) { return flipped == "eTrue" ? "eFalse" : "eTrue"; }

std::optional<PreloadTarget> preloadTarget(AppContext& ctx, const fs::path& folder, std::string& error) {
    std::error_code ec;
    const fs::path assets = fs::weakly_canonical(ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets"), ec);
    const fs::path chosen = fs::weakly_canonical(folder, ec);
    const fs::path relative = chosen.lexically_relative(assets);
    std::vector<std::string> parts;
    for (const auto& p : relative)
        parts.push_back(p.string());
    if (ec || relative.empty() || parts.size() < 3 || parts[0] == ".." || parts[0] == ".") {
        error = std::string(kNotInProduct) + "\n" + folder.string();
        return std::nullopt;
    }
    PreloadTarget t{chosen, parts[0], parts[1], {}};
    for (std::size_t i = 2; i < parts.size(); ++i)
        t.relative += (i > 2 ? "\\" : "") + parts[i];
    return t;
}

std::optional<PreloadTarget> productPreload(AppContext& ctx, const std::string& provider, const std::string& product,
                                            std::string& error) {
    if (!singleName(provider) || !singleName(product)) {
        error = std::string(kNotInProduct) + "\n" + provider + "\\" + product;
        return std::nullopt;
    }
    const fs::path product_ = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets/" + provider + "/" + product);
    const fs::path preload = ctx.resolver.resolveForWrite(product_, "PreLoad");
    return preloadTarget(ctx, preload, error);
}

bool isFragmentName(const std::string& name) { return InStr(1, name, "Fragment", Match::Text) != 0; }

std::vector<QDVehicle> availableFragments(const PreloadTarget& target) {
    std::set<std::string> stems;
    std::error_code ec;
    for (fs::directory_iterator it(target.folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
        const std::string ext = it->path().extension().string();
        const std::string stem = it->path().stem().string();
        if (it->is_regular_file(ec) && (iequals(ext, ".bin") || iequals(ext, ".xml")) && isFragmentName(stem))
            stems.insert(stem);
    }
    std::vector<QDVehicle> rows;
    for (const std::string& stem : stems)
        rows.push_back({target.provider, target.product, target.relative + "\\" + stem + ".xml", "eFalse"});
    return rows;
}

fs::path documentFile(const PreloadTarget& target, const std::string& name) {
    return target.folder / fs::path(fileNameFromText(name) + ".bin");
}

bool readConsistTemplatesQD(AppContext& ctx, QDTemplates& t, std::string& error) {
    t.head = readTemplate(ctx, "QD1.txt", error);
    t.vehicle = readTemplate(ctx, "QD2.txt", error);
    t.metadata = readTemplate(ctx, "QD3.txt", error);
    t.route = readTemplate(ctx, "QD4.txt", error);
    t.tail = readTemplate(ctx, "QD5.txt", error);
    return error.empty();
}

bool readFragmentTemplatesQD(AppContext& ctx, QDTemplates& t, std::string& error) {
    t.fragmentHead = readTemplate(ctx, "QDF1.txt", error);
    t.vehicle = readTemplate(ctx, "QD2.txt", error);
    t.fragmentTail = readTemplate(ctx, "QDF3.txt", error);
    return error.empty();
}

std::string qdConsistText(const QDTemplates& t, const QDMetadata& meta, const std::vector<QDVehicle>& vehicles,
                          const IdSource& ids) {
    const std::string metadata = fillTemplate(t.metadata, {{"aaaaaa", documentText(meta.locoName)},
                                                           {"bbbbbb", documentText(meta.displayName)},
                                                           {"cccccc", documentText(meta.locoType)},
                                                           {"dddddd", meta.eraStart.empty() ? "2000" : meta.eraStart},
                                                           {"eeeeee", meta.eraEnd.empty() ? "2050" : meta.eraEnd}});
    std::string routes;
    for (const std::string& folder : meta.routes)
        routes += fillTemplate(t.route, {{"nnnnnn", randomId(ids)}, {"dddddd", documentText(folder)}});
    const std::string tail = fillTemplate(t.tail, {{"eeeeee", yesNo(meta.drivable)},
                                                   {"aaaaaa", documentText(consistTypeValue(meta.consistType))},
                                                   {"ffffff", yesNo(meta.pantograph)},
                                                   {"gggggg", yesNo(meta.thirdRail)},
                                                   {"hhhhhh", yesNo(meta.fourthRail)}});
    return t.head + vehicleText(t.vehicle, vehicles, ids) + metadata + routes + tail;
}

std::string qdFragmentText(const QDTemplates& t, const std::string& name, const std::vector<QDVehicle>& vehicles,
                           const IdSource& ids) {
    return fillTemplate(t.fragmentHead, {{"aaaaaa", documentText(name)}}) + vehicleText(t.vehicle, vehicles, ids) +
           t.fragmentTail;
}

QDBuildResult buildQDConsist(AppContext& ctx, const PreloadTarget& target, const QDMetadata& meta,
                             const std::vector<QDVehicle>& vehicles, const IdSource* ids) {
    if (meta.routes.empty())
        return refused(kNoRoute);
    if (meta.consistName.find_first_not_of(" \t") == std::string::npos)
        return refused("The consist has no name: type one in Consist Name.");
    for (const std::string& year : {meta.eraStart, meta.eraEnd})
        if (!year.empty() && !wholeNumber(year))
            return refused(kBadEra, std::string(kBadEra) + " (" + meta.eraStart + " - " + meta.eraEnd + ")");
    QDTemplates t;
    std::string error;
    if (!readConsistTemplatesQD(ctx, t, error))
        return refused(error);
    const IdSource system = ids ? IdSource{} : systemIds();
    QDBuildResult r = writeDocument(ctx, documentFile(target, meta.consistName),
                                    qdConsistText(t, meta, vehicles, ids ? *ids : system), kBuildConsistCommand, {});
    if (r)
        r.message = kConsistCopied;
    return r;
}

QDBuildResult buildQDFragment(AppContext& ctx, const PreloadTarget& target, const std::string& name,
                              const std::vector<QDVehicle>& vehicles, const IdSource* ids) {
    if (!isFragmentName(name))
        return refused(kFragmentRefused);
    QDTemplates t;
    std::string error;
    if (!readFragmentTemplatesQD(ctx, t, error))
        return refused(error);
    const IdSource system = ids ? IdSource{} : systemIds();
    QDBuildResult r = writeDocument(ctx, documentFile(target, name), qdFragmentText(t, name, vehicles, ids ? *ids : system),
                                    kBuildFragmentCommand, {});
    if (r)
        r.message = r.file.string();
    return r;
}

} // namespace velmora::consists
