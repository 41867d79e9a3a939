#include "cli.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/installinfo.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"

#include <charconv>
#include <iostream>
#include <map>
#include <optional>

namespace velmora::cli {

namespace fs = std::filesystem;

namespace {

const char* const kUsage = R"(Usage: velmora-cli [global options] COMMAND [arguments]

Global options:
  --railworks DIR   the simulator's root folder (holds RailWorks.exe, Assets, Content)
  --home DIR        the program's own folder (settings, TempFiles, Reports, Errors.txt)
  --yes             answer Yes or OK to every question
  --answer TEXT     the answer to the next question, text prompt or file choice
                    (yes, no, ok, cancel, a text or a path); may be given several times
  --quiet           print only warnings and errors
  --help            this text

Commands:
  info                          the simulator root, its products and its routes
  demo-install DIR [--scale N] [--seed S]
                                write a demo simulator install into DIR
  options                       the paths and language in use
  guid                          new identifiers in the forms the documents use

Exit codes: 0 success, 1 a check found problems, 2 an error.
)";

struct Global {
    std::optional<fs::path> railWorks;
    std::optional<fs::path> home;
    bool yes = false;
    bool quiet = false;
    bool help = false;
    std::vector<std::string> answers;
    std::string command;
    std::vector<std::string> rest;
};

// Global options may stand anywhere; the first other word is the command.
std::optional<std::string> parseGlobal(const std::vector<std::string>& args, Global& g) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](const char* name) -> std::optional<std::string> {
            if (i + 1 >= args.size())
                return std::nullopt;
            (void)name;
            return args[++i];
        };
        if (a == "--railworks" || a == "--home" || a == "--answer") {
            auto v = value(a.c_str());
            if (!v)
                return a + " needs a value";
            if (a == "--railworks")
                g.railWorks = fs::path(*v);
            else if (a == "--home")
                g.home = fs::path(*v);
            else
                g.answers.push_back(*v);
        } else if (a == "--yes" || a == "-y") {
            g.yes = true;
        } else if (a == "--quiet" || a == "-q") {
            g.quiet = true;
        } else if (a == "--help" || a == "-h") {
            g.help = true;
        } else if (g.command.empty() && !a.empty() && a[0] != '-') {
            g.command = a;
        } else {
            g.rest.push_back(a);
        }
    }
    return std::nullopt;
}

std::optional<long long> parseNumber(const std::string& s) {
    long long v = 0;
    auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || ptr != s.data() + s.size())
        return std::nullopt;
    return v;
}

struct Session {
    Global& g;
    std::ostream& out;
    std::ostream& err;
    ConsoleUi ui;
    AppContext ctx;
    StartupResult startup;

    Session(Global& global, std::ostream& o, std::ostream& e)
        : g(global), out(o), err(e), ui(global.yes, global.answers, o, e, global.quiet),
          ctx(global.home.value_or(defaultHomeFolder()), findDataFolder(executablePath()), ui) {}

    void start() {
        StartupOptions options;
        options.railWorks = g.railWorks;
        if (const char* home = std::getenv("HOME"))
            options.userHome = home;
        options.askForRoot = false; // the command line says what is missing instead
        startup = runStartup(ctx, options);
    }

    // The simulator root must be there for commands that work on it.
    bool requireRoot() {
        if (startup.problems.empty())
            return true;
        for (const auto& p : startup.problems)
            err << "velmora-cli: " << p << '\n';
        err << "velmora-cli: pass the simulator's root folder with --railworks DIR\n";
        return false;
    }
};

int cmdInfo(Session& s) {
    s.start();
    if (!s.requireRoot())
        return Error;
    InstallSummary info = summarizeInstall(s.ctx.railWorks(), s.ctx.resolver);
    s.out << "Simulator root: " << info.root.string() << '\n';
    if (!info.hasExecutable)
        s.out << "  (RailWorks.exe is not in this folder)\n";
    s.out << "Products: " << info.products.size() << '\n';
    for (const auto& p : info.products)
        s.out << "  " << p.provider << '\\' << p.product << '\n';
    s.out << "Routes: " << info.routes.size() << '\n';
    for (const auto& r : info.routes)
        s.out << "  " << r.folder << "  " << (r.displayName.empty() ? "(no name)" : r.displayName) << '\n';
    return Success;
}

int cmdDemoInstall(Session& s) {
    std::optional<fs::path> dir;
    demo::DemoOptions options;
    auto& rest = s.g.rest;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if ((rest[i] == "--scale" || rest[i] == "--seed") && i + 1 < rest.size()) {
            auto n = parseNumber(rest[i + 1]);
            if (!n || *n < 0 || (rest[i] == "--scale" && (*n < 1 || *n > 10000))) {
                s.err << "velmora-cli: " << rest[i] << " needs a whole number, not '" << rest[i + 1] << "'\n";
                return Error;
            }
            if (rest[i] == "--scale")
                options.scale = static_cast<int>(*n);
            else
                options.seed = static_cast<std::uint64_t>(*n);
            ++i;
        } else if (!dir && !rest[i].empty() && rest[i][0] != '-') {
            dir = fs::path(rest[i]);
        } else {
            s.err << "velmora-cli: demo-install: unexpected argument '" << rest[i] << "'\n";
            return Error;
        }
    }
    if (!dir) {
        s.err << "velmora-cli: demo-install needs the folder to write into\n";
        return Error;
    }
    auto result = demo::generateDemoInstall(*dir, options, &s.ui);
    if (!result.ok) {
        s.err << "velmora-cli: demo-install: " << (result.error.empty() ? "stopped" : result.error) << '\n';
        return Error;
    }
    if (!s.g.quiet)
        s.out << "Wrote a demo install of " << result.files << " files with " << result.products.size()
              << " products and " << result.routes.size() << " routes to " << dir->string() << '\n';
    return Success;
}

int cmdOptions(Session& s) {
    s.start();
    for (const auto& [label, value] : optionsSummary(s.ctx))
        s.out << label << ": " << value << '\n';
    s.out << "Program folder: " << s.ctx.appPath().string() << '\n';
    s.out << "Data folder: " << s.ctx.dataPath().string() << '\n';
    return Success;
}

int cmdGuid(Session& s) {
    s.out << formatGuidForms(makeGuidForms()) << '\n';
    return Success;
}

} // namespace

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    Global g;
    if (auto problem = parseGlobal(args, g)) {
        err << "velmora-cli: " << *problem << '\n';
        return Error;
    }
    if (g.help || g.command.empty() || g.command == "help") {
        (g.help || g.command == "help" ? out : err) << kUsage;
        return g.command.empty() && !g.help ? Error : Success;
    }
    using Handler = int (*)(Session&);
    static const std::map<std::string, Handler> commands = {
        {"info", cmdInfo}, {"demo-install", cmdDemoInstall}, {"options", cmdOptions}, {"guid", cmdGuid}};
    auto it = commands.find(g.command);
    if (it == commands.end()) {
        err << "velmora-cli: unknown command '" << g.command << "' (see --help)\n";
        return Error;
    }
    if (g.command != "demo-install" && !g.rest.empty()) {
        err << "velmora-cli: " << g.command << ": unexpected argument '" << g.rest.front() << "'\n";
        return Error;
    }
    try {
        Session session(g, out, err);
        int code = it->second(session);
        if (code == Success && session.ui.unanswered()) {
            for (const auto& q : session.ui.unansweredQuestions())
                err << "velmora-cli: no answer was given to: " << q << '\n';
            return Error;
        }
        return code;
    } catch (const std::exception& e) {
        err << "velmora-cli: " << e.what() << '\n';
        return Error;
    }
}

} // namespace velmora::cli
