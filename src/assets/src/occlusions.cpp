// "Add Cab Occlusions": a Class 37 or Class 47 loco gets the children of a cab shadow, whose
// blueprint is copied beside the loco's from the occlusion pack in the program's folder; the
// pack's shapes go to Assets\Waggonz once.

#include "soundshared.h"

#include "rsshared.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/templates.h"
#include "velmora/core/xmltext.h"

#include <fstream>
#include <iterator>

namespace velmora::assets::snd {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kChildClose = "</cEntityContainerBlueprint-sChild>";

struct OcclusionPack {
    const char* folder;   // below Occlusions\Waggonz and Assets\Waggonz
    const char* shadow;   // the cab shadow's blueprint, beside each loco
    const char* children; // the template
};

OcclusionPack packOf(SoundCommand command) {
    if (command == SoundCommand::Occlusion47)
        return {"47Occ", "47CabShadow", "Class47Children.txt"};
    return {"37Occ", "37CabShadow", "Class37Children.txt"};
}

// The Occlusions folder of the program: its own folder first, then its data folder.
fs::path occlusionFolder(AppContext& ctx) {
    for (const fs::path& base : {ctx.appPath(), ctx.dataPath()})
        if (auto found = ctx.resolver.resolve(base, "Occlusions"); found && fs::is_directory(*found))
            return *found;
    return {};
}

bool readBytes(const fs::path& file, std::string& bytes) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return false;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

// Every plain file of the pack's folder copied below Assets\Waggonz, as one journal entry.
std::string installShapes(AppContext& ctx, const fs::path& source, const fs::path& target, const std::string& command) {
    JournalCommand entry(&ctx.journal(), command + ": the occlusion shapes");
    std::error_code ec;
    for (fs::recursive_directory_iterator it(source, fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        if (!it->is_regular_file(ec) || it->is_symlink(ec))
            continue;
        const fs::path to = target / fs::relative(it->path(), source);
        if (const WriteResult w = ctx.files().copy(it->path(), to); !w)
            return it->path().string() + " could not be copied to " + to.string() + ": " + w.message;
    }
    ctx.resolver.invalidate();
    if (ec)
        return source.string() + " could not be read: " + ec.message();
    return {};
}

// The blueprint's folder below its product, with backslashes.
std::string folderInProduct(const RowInput& input) {
    std::string path = input.row ? input.row->path : input.file.filename().string();
    for (char& c : path)
        if (c == '/')
            c = '\\';
    const std::size_t slash = path.rfind('\\');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

} // namespace

std::string loadOcclusion(AppContext& ctx, SoundSettings& settings) {
    const OcclusionPack pack = packOf(settings.command);
    const fs::path folder = occlusionFolder(ctx);
    if (folder.empty())
        return "The occlusion pack is not installed: there is no Occlusions folder in " + ctx.appPath().string() +
               " or " + ctx.dataPath().string() + ".";
    const std::string shapes = std::string("Waggonz/") + pack.folder;
    const auto source = ctx.resolver.resolve(folder, shapes);
    if (!source || !fs::is_directory(*source))
        return "The occlusion pack is not complete: " + (folder / "Waggonz" / pack.folder).string() + " is missing.";
    const std::string shadowFile = std::string(pack.shadow) + ".bin";
    const auto shadow = ctx.resolver.resolve(folder, shadowFile);
    if (!shadow || !readBytes(*shadow, settings.cabShadow) || settings.cabShadow.empty())
        return "The occlusion pack is not complete: " + (folder / shadowFile).string() + " is missing or empty.";
    if (!ctx.resolver.resolve(settings.assets, shapes)) {
        const fs::path target = ctx.resolver.resolveForWrite(settings.assets, shapes);
        for (const auto& info : soundCommands())
            if (info.command == settings.command)
                return installShapes(ctx, *source, target, info.caption);
    }
    return {};
}

RowEdit occlusion(const SoundSettings& settings, const RowInput& input) {
    const OcclusionPack pack = packOf(settings.command);
    const std::string shadowId = std::string(pack.shadow) + ".xml";
    if (InStr(1, input.xml, shadowId, Match::Text))
        return notChanged(settings, input);
    std::string xml = input.xml;
    const std::size_t container = InStr(1, xml, "<ContainerComponent>", Match::Text);
    const std::size_t close = container ? InStr(container, xml, "</Children>", Match::Text) : 0;
    const std::size_t last = close ? InStrRev(xml, kChildClose, close, Match::Text) : 0;
    std::size_t where = std::string::npos;
    if (last > container && container)
        where = last - 1 + kChildClose.size();
    else
        where = rs::openChildren(xml);
    if (where == std::string::npos)
        return rs::passOver(input, "The blueprint has no ContainerComponent with Children to carry the cab shadow.");

    RowIds ids(settings, input);
    const std::string first = ids.next(), second = ids.next();
    std::string block = fillTemplate(templateText(settings, pack.children, xml),
                                     {{"aaaaaa", documentText(input.row ? input.row->provider : "")},
                                      {"bbbbbb", documentText(input.row ? input.row->product : "")},
                                      {"cccccc", documentText(folderInProduct(input)) + shadowId},
                                      {"dddddd", first},
                                      {"eeeeee", second}});
    xml.insert(where, rs::lineEnd(xml) + block);
    RowEdit e;
    e.xml = std::move(xml);
    e.files.push_back({input.file.parent_path() / (std::string(pack.shadow) + ".bin"), settings.cabShadow});
    return e;
}

} // namespace velmora::assets::snd
