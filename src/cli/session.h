#pragma once
// What every velmora-cli command works with: the parsed global options, the console channel
// for questions and progress, and the program's start-up context.

#include "cli.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/routes.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace velmora::assets {
struct AssetRow;
}

namespace velmora::cli {

namespace fs = std::filesystem;

struct Global {
    std::optional<fs::path> railWorks;
    std::optional<fs::path> home;
    bool yes = false;
    bool quiet = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> answers;
    std::string command;
    std::vector<std::string> rest; // the command's own words, in order
};

struct Arguments;

struct Session {
    Global& g;
    std::ostream& out;
    std::ostream& err;
    ConsoleUi ui;
    AppContext ctx;
    StartupResult startup;

    Session(Global& global, std::ostream& o, std::ostream& e);

    // Start-up as the desktop program does it, without asking for a missing root.
    void start();
    // The simulator root must be there for commands that work on it; says what is missing.
    bool requireRoot();
    // "velmora-cli: <command>: <text>" on standard error; returns Error.
    int fail(const std::string& text);
    // For commands that take no words of their own (bar options): false after saying what is
    // wrong with `a`.
    bool noWords(const Arguments& a);
    // noWords, then start-up with the root required. False after saying why.
    bool startWithout(const Arguments& a);
    // --threads N (1 to 256), 0 when absent; nothing after saying what is wrong.
    std::optional<int> threads(const Arguments& a);
};

using Handler = int (*)(Session&);

// The rows of blueprints named on the command line (full paths, or below Assets); false after
// naming the one that is not a blueprint below the Assets folder.
bool rowsFromPaths(Session& s, const std::vector<std::string>& paths, std::vector<assets::AssetRow>& rows);

struct Command {
    const char* name;
    const char* synopsis; // arguments, as shown in the usage text
    const char* summary;
    Handler handler;
    // Whatever the command writes is one journal entry, named by its command line. The journal's
    // own commands keep their entries themselves.
    bool journal = true;
    // What `COMMAND --help` adds to the synopsis and summary: options, output keys.
    const char* help = nullptr;
};

// The commands of each subsystem; run() puts them together.
std::vector<Command> basicCommands();
std::vector<Command> editorCommands();
std::vector<Command> assetCommands();
std::vector<Command> batchEditCommands();
std::vector<Command> assetEditCommands();
std::vector<Command> soundCommands();
std::vector<Command> cloneCommands();
std::vector<Command> contentCommands();
std::vector<Command> routeCommands();
std::vector<Command> routeSubstituteCommands();
std::vector<Command> scenarioCommands();
std::vector<Command> scenarioTransferCommands();
std::vector<Command> scenarioDetailsCommands();
std::vector<Command> historyCommands();
std::vector<Command> stockCommands();
std::vector<Command> batchSwapCommands();
std::vector<Command> scenarioHousekeepingCommands();
std::vector<Command> consistCommands();
std::vector<Command> qdBuildCommands();
std::vector<Command> consistBuilderCommands();
std::vector<Command> qdCommands();
std::vector<Command> archiveCommands();
std::vector<Command> searchReplaceCommands();
std::vector<Command> textureCommands();
std::vector<Command> backupCommands();
std::vector<Command> physicsCommands();
std::vector<Command> routeEditCommands();
std::vector<Command> markerCommands();
std::vector<Command> routeTemplateCommands();
std::vector<Command> packageCommands();

// The route a command names by its folder or display name, found after the session starts;
// nothing after saying why (no simulator root, a folder that is no route, no such route).
std::optional<routes::RouteEntry> routeArgument(Session& s, const std::string& which);

std::optional<long long> parseNumber(const std::string& s);

// A text for the terminal (UTF-8) and for JSON: names repaired to Windows-1252 are converted,
// text that is UTF-8 already (paths, most names) is left as it is.
std::string shown(const std::string& cp1252);
std::string jsonString(const std::string& cp1252);
// A CSV field in quotes, quotes inside doubled.
std::string csvField(const std::string& text);
// Rows of cells under their column names: a JSON array of objects, one a row; or lines of
// text, the column names first, the cells joined by `separator` (each in quotes if `quoted`).
std::string tableJson(const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows);
std::string tableText(const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows, char separator, bool quoted);

// Splits a command's words into options with values, flags and plain arguments.
// `withValue` lists the options that take the next word as their value.
struct Arguments {
    std::vector<std::string> plain;
    std::vector<std::pair<std::string, std::string>> options; // in order, repeats kept
    std::vector<std::string> flags;
    std::string problem; // empty when the words parsed

    std::optional<std::string> value(const std::string& option) const;
    bool has(const std::string& flag) const;
};
Arguments parseArguments(const std::vector<std::string>& words, const std::vector<std::string>& withValue,
                         const std::vector<std::string>& flags);

} // namespace velmora::cli
