// The route template: built from Templates\AdvRoute15.txt, and an older one given the browse
// filtering the simulator's route list sorts by.

#include "velmora/routes/routetemplate.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

namespace velmora::routes {

namespace {

std::string squeezed(const std::string& name) {
    std::string out;
    for (char c : name)
        if (c != ' ' && c != '_' && c != '-')
            out += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return out;
}

template <std::size_t N>
int indexIn(const std::array<const char*, N>& names, const std::string& name) {
    for (std::size_t i = 0; i < N; ++i)
        if (squeezed(names[i]) == squeezed(name))
            return static_cast<int>(i);
    return -1;
}

const char* flag(bool set) { return set ? "eTrue" : "eFalse"; }

// The first "<tag" that is the element itself (not a longer name beginning with it); npos if none.
std::size_t elementAt(const std::string& xml, const std::string& tag, std::size_t from = 0) {
    for (std::size_t at = xml.find("<" + tag, from); at != std::string::npos; at = xml.find("<" + tag, at + 1)) {
        const char next = at + tag.size() + 1 < xml.size() ? xml[at + tag.size() + 1] : '\0';
        if (next == '>' || next == ' ' || next == '/' || next == '\t' || next == '\r' || next == '\n')
            return at;
    }
    return std::string::npos;
}

std::string unixLines(std::string text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text)
        if (c != '\r')
            out += c;
    return out;
}

} // namespace

const char* slotName(int slot) {
    static const char* names[kTemplateSlots] = {"Spring Sky", "Summer Sky", "Autumn Sky", "Winter Sky", "Weather", "Terrain"};
    return slot >= 0 && slot < kTemplateSlots ? names[slot] : "";
}

std::array<TemplateItem, kTemplateSlots> defaultTemplateItems() {
    const std::string core = "RailSimulatorCore";
    return {{{"Kuju", core, "TimeOfDay\\Spring.xml"},
             {"Kuju", core, "TimeOfDay\\Summer.xml"},
             {"Kuju", core, "TimeOfDay\\Autumn.xml"},
             {"Kuju", core, "TimeOfDay\\Winter.xml"},
             {"Kuju", core, "Weather\\Clear.xml"},
             {"Kuju", "RailSimulator", "Environment\\Terrain\\Terrain.xml"}}};
}

fs::path pickerFolder(AppContext& ctx, int slot) {
    const char* relative = slot == Weather   ? "Assets\\Kuju\\RailSimulatorCore\\Weather"
                           : slot == Terrain ? "Assets\\Kuju\\RailSimulator\\Environment\\Terrain"
                                             : "Assets\\Kuju\\RailSimulatorCore\\TimeOfDay";
    return ctx.resolver.resolveForWrite(ctx.railWorks(), relative);
}

std::optional<TemplateItem> itemFromPath(const std::string& chosen) {
    std::string path = chosen;
    for (char& c : path)
        if (c == '/')
            c = '\\';
    // Behind the last "\Assets" folder, whatever its letter case.
    std::size_t cut = std::string::npos;
    for (std::size_t at = 0; (at = path.find('\\', at)) != std::string::npos; ++at)
        if (iequals(std::string_view(path).substr(at, 8), "\\Assets\\"))
            cut = at + 8;
    if (cut == std::string::npos)
        return std::nullopt;
    const std::size_t one = path.find('\\', cut);
    const std::size_t two = one == std::string::npos ? one : path.find('\\', one + 1);
    if (two == std::string::npos || two + 1 >= path.size() || path.size() - two - 1 < 3)
        return std::nullopt;
    TemplateItem item{path.substr(cut, one - cut), path.substr(one + 1, two - one - 1), path.substr(two + 1)};
    item.path.replace(item.path.size() - 3, 3, "xml");
    if (item.provider.empty() || item.product.empty())
        return std::nullopt;
    return item;
}

int locationIndex(const std::string& name) { return indexIn(kLocations, name); }
int eraIndex(const std::string& name) { return indexIn(kEras, name); }
int terrainIndex(const std::string& name) { return indexIn(kTerrains, name); }

std::vector<std::pair<std::string, std::string>> browseTokens(const BrowseFlags& f) {
    std::vector<std::pair<std::string, std::string>> t;
    const char* location[] = {"aaabbb", "aaaccc", "aaaddd", "aaaeee", "aaafff", "aaaggg"};
    for (int i = 0; i < 6; ++i)
        t.emplace_back(location[i], flag(f.location == i));
    const char* era[] = {"bbbccc", "bbbddd", "bbbeee"};
    for (int i = 0; i < 3; ++i)
        t.emplace_back(era[i], flag(f.era == i));
    const char* terrain[] = {"cccddd", "ccceee", "cccfff", "cccggg"};
    for (int i = 0; i < 4; ++i)
        t.emplace_back(terrain[i], flag(f.terrain[static_cast<std::size_t>(i)]));
    return t;
}

RouteJob buildRouteTemplate(AppContext& ctx, const TemplateRequest& r) {
    RouteJob job;
    bool complete = !r.name.empty() && !r.provider.empty() && !r.product.empty();
    for (const auto& item : r.items)
        complete = complete && !item.empty();
    if (!complete) {
        job.message = "You have not entered details in all the boxes, please complete\nentries and try again.";
        return job;
    }
    std::string error;
    const std::string text = readTemplate(ctx, "AdvRoute15.txt", error);
    if (text.empty()) {
        job.message = error;
        return job;
    }
    // The tokens of the longer runs first, so that "aaabbb" is never taken for "aaa" and a rest.
    std::vector<std::pair<std::string, std::string>> tokens = browseTokens(r.flags);
    for (auto& [token, value] : std::vector<std::pair<std::string, std::string>>{
             {"aaaaa", documentText(r.name)}, {"bbbbb", documentText(r.provider)}, {"ccccc", documentText(r.product)}})
        tokens.emplace_back(token, value);
    const char* parts[kTemplateSlots][3] = {{"ddddd", "eeeee", "fffff"}, {"ggggg", "hhhhh", "iiiii"},
                                            {"jjjjj", "kkkkk", "lllll"}, {"mmmmm", "nnnnn", "ooooo"},
                                            {"ppppp", "qqqqq", "rrrrr"}, {"sssss", "ttttt", "uuuuu"}};
    for (int i = 0; i < kTemplateSlots; ++i) {
        const TemplateItem& item = r.items[static_cast<std::size_t>(i)];
        tokens.emplace_back(parts[i][0], documentText(item.provider));
        tokens.emplace_back(parts[i][1], documentText(item.product));
        tokens.emplace_back(parts[i][2], documentText(item.path));
    }
    const std::string xml = fillTemplate(text, tokens);

    const std::string provider = fileNameFromText(r.provider), product = fileNameFromText(r.product);
    const fs::path productFolder = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets\\" + provider + "\\" + product);
    std::string bin;
    if (const ConvertResult c = xmlTextToBin(xml, bin, "AdvRoute15.txt"); !c || bin.empty()) {
        job.message = "Serz.exe was unable to convert the route template to a .bin file.\n" + c.message;
        return job;
    }
    for (const char* folder : {"TemplateRoutes", "RouteMarkers"}) {
        std::error_code ec;
        fs::create_directories(productFolder / folder, ec);
        if (ec) {
            job.message = (productFolder / folder).string() + ": the folder cannot be made (" + ec.message() + ")";
            return job;
        }
    }
    ctx.resolver.invalidate();
    JournalCommand command(&ctx.journal(), "Build Template " + r.name);
    const fs::path target = productFolder / "TemplateRoutes" / (fileNameFromText(r.name) + ".bin");
    const WriteResult w = ctx.files().write(target, bin);
    return job.after(w, "Your new route template has been placed in your TemplateRoutes folder\n\\Assets\\" + provider +
                            "\\" + product +
                            "\\TemplateRoutes\\\nRun TrainSimulator 2019, select your template and Create your new route.");
}

// --- Check Route Template -------------------------------------------------------------------

TemplateCheck inspectRouteTemplate(AppContext& ctx, const RouteEntry& route) {
    TemplateCheck c;
    ctx.resolver.invalidate();
    const auto properties = ctx.resolver.resolve(route.path, "RouteProperties.xml");
    const std::string text = properties ? ReadTextFile(*properties) : std::string();
    if (text.empty()) {
        c.state = TemplateState::NoProperties;
        c.message = "There is no RouteProperties.xml file for this route\ntherefore the route is invalid and can't be used.";
        return c;
    }
    const std::size_t at = InStr(1, text, "<InfrastructureModified", Match::Text);
    const BlueprintRef ref = at ? GetBlueprintRef(text, at) : BlueprintRef{};
    std::string id = ref.blueprintId;
    if (id.size() > 3)
        id.replace(id.size() - 3, 3, "bin");
    const auto file = id.empty() ? std::nullopt
                                 : ctx.resolver.resolve(ctx.railWorks(), "Assets\\" + ref.provider + "\\" + ref.product + "\\" + id);
    if (!file) {
        c.state = TemplateState::NotFound;
        c.templateFile = ctx.railWorks() / "Assets" / ref.provider / ref.product / id;
        c.message = "The Route Template listed in RouteProperties.xml\nCould not be found.";
        return c;
    }
    c.templateFile = *file;
    if (const ConvertResult r = binToXmlText(*file, c.xml); !r) {
        c.state = TemplateState::Unreadable;
        c.message = r.message;
        return c;
    }
    const std::size_t filtering = elementAt(c.xml, "BrowseFiltering");
    if (filtering == std::string::npos) {
        c.state = TemplateState::NoFiltering;
        c.message = "The Route Template file does not include a\nBrowseFiltering section, so will not sort correctly\nin "
                    "TS2019 - Do you wish to add it?";
        return c;
    }
    const std::size_t end = c.xml.find("</BrowseFiltering", filtering);
    const std::string_view section = std::string_view(c.xml).substr(filtering, end == std::string::npos ? std::string::npos
                                                                                                        : end - filtering);
    if (section.find("eTrue") == std::string_view::npos) {
        c.state = TemplateState::NoFlags;
        c.message = "Although the Route Template has a BrowseFiltering section\nNo location or filtering data is included.\n"
                    "Do you wish to update it.";
        return c;
    }
    c.state = TemplateState::Filtered;
    c.message = "Route Template appears to be OK, but you\nmay edit it if you wish?";
    return c;
}

RouteJob applyBrowseFilter(AppContext& ctx, const TemplateCheck& check, const BrowseFlags& flags) {
    RouteJob job;
    if (check.state != TemplateState::NoFiltering && check.state != TemplateState::NoFlags &&
        check.state != TemplateState::Filtered) {
        job.message = check.message;
        return job;
    }
    std::string error;
    const std::string filter = unixLines(fillTemplate(readTemplate(ctx, "BrowseFilter.txt", error), browseTokens(flags)));
    if (filter.empty()) {
        job.message = error;
        return job;
    }
    std::string xml = check.xml;
    if (check.state == TemplateState::NoFiltering) {
        // The section goes in as the first thing in the route blueprint.
        const std::size_t open = elementAt(xml, "cRouteBlueprint");
        const std::size_t close = open == std::string::npos ? open : xml.find('>', open);
        if (close == std::string::npos || xml[close - 1] == '/') {
            job.message = check.templateFile.string() + ": the template holds no cRouteBlueprint to add the filtering to";
            return job;
        }
        xml.insert(close + 1, "\n" + (filter.back() == '\n' ? filter.substr(0, filter.size() - 1) : filter));
    } else {
        // The old section is replaced whole; the browse picture and everything else stay.
        std::size_t begin = elementAt(xml, "BrowseFiltering");
        const std::size_t end = xml.find("</BrowseFiltering>", begin);
        if (end == std::string::npos) {
            job.message = check.templateFile.string() + ": the BrowseFiltering section has no end";
            return job;
        }
        while (begin > 0 && (xml[begin - 1] == '\t' || xml[begin - 1] == ' '))
            --begin;
        std::string replacement = filter;
        if (!replacement.empty() && replacement.back() == '\n')
            replacement.pop_back();
        xml.replace(begin, end + std::string_view("</BrowseFiltering>").size() - begin, replacement);
    }
    std::string bin;
    if (const ConvertResult c = xmlTextToBin(xml, bin, check.templateFile.string()); !c || bin.empty()) {
        job.message = "Serz.exe was unable to convert the route template back to a .bin file.\n" + c.message;
        return job;
    }
    JournalCommand command(&ctx.journal(), "Check Route Template " + check.templateFile.filename().string());
    const WriteResult w = ctx.files().write(check.templateFile, bin);
    return job.after(w, "Your Route Template has been updated.");
}

RouteJob& RouteJob::after(const WriteResult& write, std::string done) {
    ok = static_cast<bool>(write);
    if (!ok) {
        message = write.message;
        return *this;
    }
    written.push_back(write.target);
    message = std::move(done);
    return *this;
}

RouteJob checkRouteTemplate(AppContext& ctx, const RouteEntry& route, const BrowseFlags* flags) {
    const TemplateCheck check = inspectRouteTemplate(ctx, route);
    RouteJob job;
    switch (check.state) {
    case TemplateState::NoProperties:
    case TemplateState::NotFound:
    case TemplateState::Unreadable:
        job.message = check.state == TemplateState::NotFound ? check.templateFile.string() + "\n" + check.message
                                                             : check.message;
        ctx.ui().message(job.message, Icon::Warning);
        return job;
    default:
        break;
    }
    if (ctx.ui().ask(check.message, Buttons::YesNo) != Answer::Yes || !flags) {
        job.ok = true;
        job.message = "The Route Template was not changed.";
        return job;
    }
    job = applyBrowseFilter(ctx, check, *flags);
    ctx.ui().message(job.message, job.ok ? Icon::Information : Icon::Critical);
    return job;
}

} // namespace velmora::routes
