#include "cli.h"

#include "session.h"

#include "velmora/core/about.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <sstream>

namespace velmora::cli {

namespace {

const char* const kGlobalUsage = R"(Usage: velmora-cli [global options] COMMAND [arguments]

Global options:
  --railworks DIR   the simulator's root folder (holds RailWorks.exe, Assets, Content)
  --home DIR        the program's own folder (settings, TempFiles, Reports, Errors.txt)
  --yes             answer Yes or OK to every question
  --answer TEXT     the answer to the next question, text prompt or file choice
                    (yes, no, ok, cancel, a text or a path); may be given several times
  --quiet           print only warnings and errors
  --help            this text; COMMAND --help (or help COMMAND): that command's usage
  --version         the version, licence and libraries (as the version command)

A negative number (-0.53) is a value, not an option; after -- every word is a value.
)";

std::vector<Command> allCommands() {
    std::vector<Command> all = basicCommands();
    for (auto&& group :
         {editorCommands(), assetCommands(), batchEditCommands(), assetEditCommands(), soundCommands(), cloneCommands(), contentCommands(), routeCommands(),
          scenarioCommands(), scenarioTransferCommands(), scenarioDetailsCommands(), batchSwapCommands(),
          scenarioHousekeepingCommands(), consistCommands(), consistBuilderCommands(), qdBuildCommands(),
          qdCommands(), stockCommands(), archiveCommands(), historyCommands(),
          searchReplaceCommands(), textureCommands(), backupCommands(), physicsCommands(), routeSubstituteCommands(),
          routeEditCommands(), routeTemplateCommands(), markerCommands(), packageCommands()})
        all.insert(all.end(), group.begin(), group.end());
    return all;
}

std::string usage(const std::vector<Command>& commands) {
    std::ostringstream s;
    s << kGlobalUsage << "\nCommands:\n";
    for (const Command& c : commands) {
        std::string head = std::string("  ") + c.name + (*c.synopsis ? " " : "") + c.synopsis;
        if (head.size() < 32)
            s << std::left << std::setw(32) << head << c.summary << '\n';
        else
            s << head << '\n' << std::string(32, ' ') << c.summary << '\n';
    }
    s << "\nExit codes: 0 success, 1 a check found problems, 2 an error.\n";
    return s.str();
}

// Global options may stand anywhere; the first other word is the command.
std::optional<std::string> parseGlobal(const std::vector<std::string>& args, Global& g) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--railworks" || a == "--home" || a == "--answer") {
            if (i + 1 >= args.size())
                return a + " needs a value";
            const std::string& v = args[++i];
            if (a == "--railworks")
                g.railWorks = fs::path(v);
            else if (a == "--home")
                g.home = fs::path(v);
            else
                g.answers.push_back(v);
        } else if (a == "--yes" || a == "-y") {
            g.yes = true;
        } else if (a == "--quiet" || a == "-q") {
            g.quiet = true;
        } else if (a == "--help" || a == "-h") {
            g.help = true;
        } else if (a == "--version" && g.command.empty()) {
            g.version = true;
        } else if (g.command.empty() && !a.empty() && a[0] != '-') {
            g.command = a;
        } else {
            g.rest.push_back(a);
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<long long> parseNumber(const std::string& s) {
    long long v = 0;
    auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || ptr != s.data() + s.size())
        return std::nullopt;
    return v;
}

// Paths from the file system are UTF-8 already; repaired names are Windows-1252.
std::string shown(const std::string& text) { return utf8FromDocument(text); }

std::string csvField(const std::string& text) {
    std::string out = "\"";
    for (char ch : shown(text))
        out += ch == '"' ? std::string("\"\"") : std::string(1, ch);
    return out + "\"";
}

std::string jsonString(const std::string& cp1252) { return jsonQuoted(shown(cp1252)); }

std::string tableJson(const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows) {
    std::string out = "[\n";
    for (std::size_t r = 0; r < rows.size(); ++r) {
        out += "  {";
        for (std::size_t c = 0; c < rows[r].size() && c < columns.size(); ++c)
            out += (c ? ", " : "") + jsonString(columns[c]) + ": " + jsonString(rows[r][c]);
        out += r + 1 < rows.size() ? "},\n" : "}\n";
    }
    return out + "]\n";
}

std::string tableText(const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows, char separator, bool quoted) {
    std::string out;
    auto line = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i)
            out += (i ? std::string(1, separator) : std::string()) +
                   (quoted ? csvField(cells[i]) : shown(cells[i]));
        out += '\n';
    };
    line(columns);
    for (const auto& cells : rows)
        line(cells);
    return out;
}

std::optional<std::string> Arguments::value(const std::string& option) const {
    for (auto it = options.rbegin(); it != options.rend(); ++it)
        if (it->first == option)
            return it->second;
    return std::nullopt;
}

bool Arguments::has(const std::string& flag) const {
    for (const auto& f : flags)
        if (f == flag)
            return true;
    return false;
}

Arguments parseArguments(const std::vector<std::string>& words, const std::vector<std::string>& withValue,
                         const std::vector<std::string>& flags) {
    Arguments a;
    auto listed = [](const std::vector<std::string>& list, const std::string& w) {
        for (const auto& x : list)
            if (x == w)
                return true;
        return false;
    };
    // A negative number ("-0.53", "-12") is a value, not an option: longitudes west of Greenwich
    // and lowered track heights are typed so. After "--" every word is a value.
    auto negativeNumber = [](const std::string& w) {
        const std::size_t digit = w.size() > 2 && w[1] == '.' ? 2 : 1;
        return w.size() > digit && w[0] == '-' && w[digit] >= '0' && w[digit] <= '9';
    };
    bool valuesOnly = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& w = words[i];
        if (valuesOnly || negativeNumber(w)) {
            a.plain.push_back(w);
        } else if (w == "--") {
            valuesOnly = true;
        } else if (listed(withValue, w)) {
            if (i + 1 >= words.size()) {
                a.problem = w + " needs a value";
                return a;
            }
            a.options.emplace_back(w, words[++i]);
        } else if (listed(flags, w)) {
            a.flags.push_back(w);
        } else if (w.size() > 1 && w[0] == '-') {
            a.problem = "unexpected argument '" + w + "'";
            return a;
        } else {
            a.plain.push_back(w);
        }
    }
    return a;
}

Session::Session(Global& global, std::ostream& o, std::ostream& e)
    : g(global), out(o), err(e), ui(global.yes, global.answers, o, e, global.quiet),
      ctx(global.home.value_or(defaultHomeFolder()), findDataFolder(executablePath()), ui) {}

void Session::start() {
    StartupOptions options;
    options.railWorks = g.railWorks;
    if (const char* home = std::getenv("HOME"))
        options.userHome = home;
    options.askForRoot = false; // the command line says what is missing instead
    startup = runStartup(ctx, options);
}

bool Session::requireRoot() {
    if (startup.problems.empty())
        return true;
    for (const auto& p : startup.problems)
        err << "velmora-cli: " << p << '\n';
    err << "velmora-cli: pass the simulator's root folder with --railworks DIR\n";
    return false;
}

bool Session::noWords(const Arguments& a) {
    if (a.problem.empty() && a.plain.empty())
        return true;
    fail(a.problem.empty() ? "unexpected argument '" + a.plain.front() + "'" : a.problem);
    return false;
}

bool Session::startWithout(const Arguments& a) {
    if (!noWords(a))
        return false;
    start();
    return requireRoot();
}

std::optional<int> Session::threads(const Arguments& a) {
    const auto t = a.value("--threads");
    if (!t)
        return 0;
    const auto n = parseNumber(*t);
    if (!n || *n < 1 || *n > 256) {
        fail("--threads needs a number from 1 to 256, not '" + *t + "'");
        return std::nullopt;
    }
    return static_cast<int>(*n);
}

int Session::fail(const std::string& text) {
    err << "velmora-cli: " << g.command << ": " << text << '\n';
    return Error;
}

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    Global g;
    if (auto problem = parseGlobal(args, g)) {
        err << "velmora-cli: " << *problem << '\n';
        return Error;
    }
    if (g.version && !g.help) {
        if (g.command.empty()) {
            out << aboutText();
            return Success;
        }
        err << "velmora-cli: --version takes no command\n";
        return Error;
    }
    const std::vector<Command> commands = allCommands();
    // "COMMAND --help" and "help COMMAND": the command's own usage, its summary and whatever more
    // it has to say (options, output keys). A command of two words is looked for first.
    const bool helpWord = g.command == "help" && !g.rest.empty();
    if ((g.help && !g.command.empty()) || helpWord) {
        std::vector<std::string> words = helpWord ? g.rest : std::vector<std::string>{g.command};
        if (!helpWord)
            words.insert(words.end(), g.rest.begin(), g.rest.end());
        const Command* found = nullptr;
        for (const Command& c : commands)
            if (words.size() > 1 && words[0] + " " + words[1] == c.name)
                found = &c;
        if (!found)
            for (const Command& c : commands)
                if (words[0] == c.name)
                    found = &c;
        if (found) {
            out << "Usage: velmora-cli " << found->name << (*found->synopsis ? " " : "") << found->synopsis << "\n\n"
                << found->summary << (std::string_view(found->summary).ends_with('.') ? "\n" : ".\n");
            if (found->help)
                out << '\n' << found->help << (std::string_view(found->help).ends_with('\n') ? "" : "\n");
            return Success;
        }
    }
    if (g.help || g.command.empty() || g.command == "help") {
        (g.help || g.command == "help" ? out : err) << usage(commands);
        return g.command.empty() && !g.help ? Error : Success;
    }
    // A command of two words ("assets list") is looked for before one of one word.
    const Command* command = nullptr;
    if (!g.rest.empty())
        for (const Command& c : commands)
            if (g.command + " " + g.rest.front() == c.name)
                command = &c;
    if (command) {
        g.command = command->name;
        g.rest.erase(g.rest.begin());
    } else {
        for (const Command& c : commands)
            if (g.command == c.name)
                command = &c;
    }
    if (!command) {
        err << "velmora-cli: unknown command '" << g.command << "' (see --help)\n";
        return Error;
    }
    try {
        Session session(g, out, err);
        std::string line = g.command;
        for (const std::string& word : g.rest)
            line += word.find_first_of(" \t\"") == std::string::npos ? " " + word : " \"" + word + "\"";
        JournalCommand journalled(command->journal ? &session.ctx.journal() : nullptr, line);
        int code = command->handler(session);
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
