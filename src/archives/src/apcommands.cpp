#include "velmora/archives/apcommands.h"

#include "velmora/archives/aptable.h"
#include "velmora/archives/routenames.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/journal.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <chrono>
#include <ctime>

namespace velmora::archives {

namespace {

const char* const kBackupAdvice = "I suggest you make one before carrying out this procedure!";
const char* const kAllUnpacked = "All selected folders have been unpacked and files made read/write.";

// The closing message of an unpack: the usual one when everything went in, else what did not.
void closingMessage(UserInterface& ui, const ApCommandResult& out) {
    if (out.problems.empty()) {
        ui.message(kAllUnpacked);
        return;
    }
    std::string text = std::to_string(out.problems.size()) + " problem(s) while unpacking:\n";
    for (std::size_t i = 0; i < out.problems.size() && i < 10; ++i)
        text += out.problems[i] + "\n";
    if (out.problems.size() > 10)
        text += "... and " + std::to_string(out.problems.size() - 10) + " more in the report.\n";
    ui.message(text + "Everything else was unpacked and made read/write.", Icon::Warning);
}

std::string backupWarning(const char* what) {
    return std::string("If you do not have a back-up of ") + what + " you are about to alter,\n" + kBackupAdvice;
}

EntrySet setOf(UnpackCommand command) {
    switch (command) {
    case UnpackCommand::Unpack: return EntrySet::All;
    case UnpackCommand::RollingStock: return EntrySet::RollingStock;
    case UnpackCommand::Scenarios: return EntrySet::Scenarios;
    case UnpackCommand::LocoShapes: return EntrySet::LocoShapes;
    case UnpackCommand::RollingStockBins: return EntrySet::RollingStockBins;
    }
    return EntrySet::All;
}

void collect(ApCommandResult& out, UnpackResult r) {
    out.summary += describe(r);
    if (!r.ok && !r.cancelled)
        out.problems.push_back(r.error);
    for (const auto& refused : r.refused)
        out.problems.push_back(r.archive.string() + ": " + refused);
    out.unpacked.push_back(std::move(r));
}


} // namespace

std::string unpackQuestion(UnpackCommand command) {
    switch (command) {
    case UnpackCommand::Unpack:
        return "This will unpack all selected .ap files into their correct folders using 7zip\n" +
               backupWarning("the Asset and Content");
    case UnpackCommand::RollingStock:
        return "This will unpack all rolling-stock from selected .ap files into their correct folders\n" +
               backupWarning("the Asset folder");
    case UnpackCommand::Scenarios:
        return "This will unpack all Scenarios from selected .ap files into their correct folders\n" +
               backupWarning("the Content folder");
    case UnpackCommand::LocoShapes:
        return "This will unpack all Locomotive .geopcdx files from .ap files into their correct folders\n" +
               backupWarning("the Asset folder");
    case UnpackCommand::RollingStockBins:
        return "This will unpack all rolling stock .bin files from .ap files into their correct folders\n" +
               backupWarning("the Asset folder");
    }
    return {};
}

ApCommandResult unpackSelected(AppContext& ctx, UserInterface& ui, const std::vector<fs::path>& aps,
                               UnpackCommand command, UnpackMode mode, const fs::path& destination) {
    ApCommandResult out;
    if (ui.ask(unpackQuestion(command), Buttons::OkCancel) != Answer::Ok)
        return out;
    out.ran = true;
    JournalCommand entry(ctx.files().journal(), "ap unpack");
    for (const auto& ap : aps) {
        if (ap.empty())
            continue; // a row with an empty first column
        if (ui.cancelled())
            break;
        UnpackOptions options;
        options.mode = mode;
        options.kind = setOf(command);
        options.destination = destination;
        if (mode == UnpackMode::NewFolder && destination.empty()) {
            const auto folder = ui.chooseFolder("Save Unpacked Files in:-", ap.parent_path());
            if (!folder)
                continue;
            options.destination = *folder;
        }
        collect(out, unpackArchive(ctx.files(), ap, options, &ui));
    }
    closingMessage(ui, out);
    return out;
}

ApCommandResult unpackEverywhere(AppContext& ctx, UserInterface& ui, EntrySet set) {
    ApCommandResult out;
    const bool stock = set == EntrySet::RollingStock;
    const std::string question =
        stock ? "This option will extract all Rolling-stock files from all .ap\nfiles in Assets and place them in the "
                "appropriate \nRailworks\\Assets\\Provider\\Product folder,\noverwriting existing files without prompting"
              : "This option will extract all Scenario files from all .ap\nfiles in Content and place them in the "
                "appropriate \nRailworks\\Content\\Routes folder,\noverwriting existing files without prompting";
    if (ui.ask(question, Buttons::OkCancel) != Answer::Ok)
        return out;
    out.ran = true;
    ApFindOptions find;
    find.search = stock ? ApSearch::Assets : ApSearch::Scenarios;
    find.details = false;
    const ApTable table = findApFiles(ctx.railWorks(), find, &ui);
    out.problems.insert(out.problems.end(), table.unreadable.begin(), table.unreadable.end());
    JournalCommand entry(ctx.files().journal(), stock ? "ap unpack rolling stock" : "ap unpack scenarios");
    UnpackOptions options;
    options.kind = set;
    for (const auto& ap : table.files) {
        if (ui.cancelled())
            break;
        collect(out, unpackArchive(ctx.files(), ap.path, options, &ui));
    }
    return out;
}

ApCommandResult extractRouteProperties(AppContext& ctx, UserInterface& ui, const std::vector<fs::path>& aps) {
    ApCommandResult out;
    if (ui.ask("This will unpack all RouteProperties.xml files from selected .ap files into their correct folders\n" +
                   backupWarning("the Content folder"),
               Buttons::OkCancel) != Answer::Ok)
        return out;
    out.ran = true;
    JournalCommand entry(ctx.files().journal(), "ap unpack RouteProperties.xml");
    UnpackOptions options;
    options.kind = EntrySet::RouteProperties;
    options.keepPaths = false;
    for (const auto& ap : aps) {
        if (ap.empty())
            continue;
        const auto main = ctx.resolver.resolve(ap.parent_path(), "MainContent.ap");
        if (!main) {
            out.problems.push_back(ap.parent_path().string() + ": holds no MainContent.ap");
            continue;
        }
        collect(out, unpackArchive(ctx.files(), *main, options, &ui));
    }
    closingMessage(ui, out);
    return out;
}

ApCommandResult addRouteNames(AppContext& ctx, UserInterface& ui) {
    ApCommandResult out;
    const Answer a = ui.ask("This option will extract RouteProperties.xml files from all .ap\nfiles in Content and "
                            "place them in the appropriate \nRailworks\\Content\\Routes folder, plus add a \n"
                            "'RouteName.txt' file for each route",
                            Buttons::YesNoCancel);
    if (a == Answer::Cancel)
        return out;
    out.ran = true;
    if (a == Answer::Yes)
        out.problems = extractAllRouteProperties(ctx, &ui);
    const RouteNameFolders folders = addRouteNameFolders(ctx.railWorks() / "Content" / "Routes");
    out.problems.insert(out.problems.end(), folders.problems.begin(), folders.problems.end());
    for (const auto& made : folders.made)
        out.summary += "made " + made.string() + "\n";
    ui.message("All RouteProperties.xml files have been extracted and\nRoute Names added in the Routes folder where "
               "possible");
    return out;
}

ApCommandResult buildRouteIndex(AppContext& ctx, UserInterface& ui) {
    ApCommandResult out;
    if (ui.ask("This option will extract RouteProperties.xml files from all .ap\nfiles in Content and place them in "
               "the appropriate \nRailworks\\Content\\Routes folder, plus add a \n'RouteIndex.csv' file in 'Reports'",
               Buttons::OkCancel) != Answer::Ok)
        return out;
    out.ran = true;
    JournalCommand entry(ctx.files().journal(), "route index");
    out.problems = extractAllRouteProperties(ctx, &ui);
    std::string error;
    if (!writeRouteIndex(ctx, &error)) {
        out.problems.push_back(error);
        return out;
    }
    out.summary = (ctx.reports() / "RouteIndex.csv").string() + ": " + std::to_string(ctx.routes.size()) +
                  " routes\n";
    ui.message("All RouteProperties.xml files have been extracted and\nRouteIndex.csv written to 'Reports' folder");
    return out;
}

ApCommandResult deleteFolders(AppContext& ctx, UserInterface& ui, const std::vector<fs::path>& aps) {
    ApCommandResult out;
    if (ui.ask("This will DELETE all selected folders - You have been warned!!!\nIf you do not have a back-up of the "
               "folder you are about to alter, I suggest\nyou make one before carrying out this procedure!",
               Buttons::OkCancel, Icon::Warning) != Answer::Ok)
        return out;
    out.ran = true;
    JournalCommand entry(ctx.files().journal(), "delete .ap folders");
    const fs::path keepIn = ctx.appPath() / "Deleted" / localTimeText("%Y%m%d-%H%M%S");
    for (const auto& ap : aps) {
        if (ap.empty())
            continue;
        const fs::path folder = ap.parent_path();
        std::error_code ec;
        if (!fs::is_directory(folder, ec))
            continue;
        const std::vector<std::string> problems = ctx.files().removeFolder(folder, keepIn);
        out.problems.insert(out.problems.end(), problems.begin(), problems.end());
        out.summary += folder.string() + ": moved to " + keepIn.string() + "\n";
    }
    ui.message("All selected folders have been deleted.");
    return out;
}

std::string entryListing(const ZipReader& zip) {
    std::string text = "Listing archive: " + zip.path().string() + "\n\n"
                       "   Date      Time    Attr         Size   Compressed  Name\n"
                       "------------------- ----- ------------ ------------  ------------------------\n";
    std::uint64_t size = 0, packed = 0, files = 0, folders = 0;
    char line[256];
    for (const ZipEntry& e : zip.entries()) {
        const std::string when = localTimeText("%Y-%m-%d %H:%M:%S", e.modified);
        std::snprintf(line, sizeof line, "%s %s %12llu %12llu  ", when.c_str(), e.folder ? "D...." : ".....",
                      static_cast<unsigned long long>(e.size), static_cast<unsigned long long>(e.packed));
        text += line + windowsName(e.name) + "\n";
        size += e.size;
        packed += e.packed;
        ++(e.folder ? folders : files);
    }
    std::snprintf(line, sizeof line, "------------------- ----- ------------ ------------  ------------------------\n"
                                     "                          %12llu %12llu  %llu files, %llu folders\n",
                  static_cast<unsigned long long>(size), static_cast<unsigned long long>(packed),
                  static_cast<unsigned long long>(files), static_cast<unsigned long long>(folders));
    return text + line;
}

} // namespace velmora::archives
