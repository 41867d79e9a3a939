// velmora-cli cases written as data: each file in cases/ gives the arguments, the exit code
// and texts that must (or must not) appear on standard output and standard error.
//
//   args: --home {home} --railworks {tree} info "a word with blanks"
//   exit: 0
//   out: Products: 3
//   err: needs a value
//   no-out: (no name)
//   empty-err
//
// A case may hold several steps: every "args:" line starts one, and the lines after it check
// that step. Before the next step runs, "copy: FROM TO" copies a file, "write: PATH TEXT"
// writes the text (maybe none) into a file, "mode: OCTAL PATH" sets a file's permissions,
// "fifo: PATH" makes a named pipe (which a reader that opened it would wait on for ever).
// "same: A B" and "differ: A B" compare two files after the step before, "absent: P" wants P
// not to exist and "exists: P" wants it to.
//
// Placeholders: {home} a fresh program folder, {tree} a small hand-made install,
// {new} a folder that does not exist yet, {missing} a path that never exists,
// {work} an empty scratch folder, {testdata} the real simulator documents shipped for tests,
// {demo} a demo install generated for the case.

#include "cli.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <fstream>
#include <iomanip>

#include <sys/stat.h>
#include <unistd.h>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// Something done to the files before a step: "copy", "write" or "mode", and its two words.
struct Preparation {
    std::string kind, first, rest;
};

struct Step {
    std::vector<Preparation> before;
    std::vector<std::string> args;
    int exit = 0;
    std::vector<std::string> out, err, noOut;
    bool emptyErr = false;
    std::vector<std::pair<std::string, std::string>> same, differ; // after the run
    std::vector<std::string> absent, exists;
};

struct Case {
    std::string name;
    std::vector<Step> steps;
};

std::string replaceAll(std::string s, const std::string& from, const std::string& to) {
    for (std::size_t p = s.find(from); p != std::string::npos; p = s.find(from, p + to.size()))
        s.replace(p, from.size(), to);
    return s;
}

Case readCase(const fs::path& file, const std::map<std::string, std::string>& vars) {
    Case c;
    c.name = file.stem().string();
    std::ifstream in(file);
    std::string line;
    auto expand = [&](std::string s) {
        for (const auto& [k, v] : vars)
            s = replaceAll(s, k, v);
        return s;
    };
    auto pair = [](const std::string& value) {
        std::istringstream words(value);
        std::pair<std::string, std::string> p;
        words >> p.first >> p.second;
        return p;
    };
    std::vector<Preparation> pending;
    auto current = [&]() -> Step& {
        if (c.steps.empty())
            c.steps.emplace_back();
        return c.steps.back();
    };
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line[0] == '#')
            continue;
        auto colon = line.find(": ");
        std::string key = line.substr(0, colon);
        std::string value = colon == std::string::npos ? "" : expand(line.substr(colon + 2));
        if (key == "args") {
            Step step;
            step.before.swap(pending);
            std::istringstream words(value);
            for (std::string w; words >> std::quoted(w);)
                step.args.push_back(w);
            c.steps.push_back(std::move(step));
        } else if (key == "copy" || key == "mode") {
            const auto [a, b] = pair(value);
            pending.push_back({key, a, b});
        } else if (key == "fifo") {
            pending.push_back({key, value, ""});
        } else if (key == "write") {
            const auto blank = value.find(' ');
            pending.push_back({key, value.substr(0, blank), blank == std::string::npos ? "" : value.substr(blank + 1)});
        } else if (key == "same") {
            current().same.push_back(pair(value));
        } else if (key == "differ") {
            current().differ.push_back(pair(value));
        } else if (key == "absent") {
            current().absent.push_back(value);
        } else if (key == "exists") {
            current().exists.push_back(value);
        } else if (key == "exit") {
            current().exit = std::stoi(value);
        } else if (key == "out") {
            current().out.push_back(value);
        } else if (key == "err") {
            current().err.push_back(value);
        } else if (key == "no-out") {
            current().noOut.push_back(value);
        } else if (key == "empty-err") {
            current().emptyErr = true;
        } else {
            ADD_FAILURE() << file << ": unknown key " << key;
        }
    }
    return c;
}

void write(const fs::path& p, const std::string& bytes) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << bytes;
}

class CliCases : public ::testing::TestWithParam<fs::path> {
protected:
    void SetUp() override {
        // The process id keeps two runs of the suite at once (two checkouts on one machine) apart.
        m_dir = fs::temp_directory_path() /
                ("velmora-cli-" + GetParam().stem().string() + "-" + std::to_string(::getpid()));
        fs::remove_all(m_dir);
        // A small install made by hand, mixed letter case included.
        write(m_dir / "tree/RailWorks.exe", "");
        write(m_dir / "tree/Assets/DemoRail/Class66Pack/RailVehicles/Engine.bin", "");
        write(m_dir / "tree/Assets/DemoRail/Wagons/x.bin", "");
        write(m_dir / "tree/Assets/DemoRail/Class66Pack/Docs/ReadMe.txt", "read me");
        write(m_dir / "tree/Assets/Heritage/SteamDays/y.bin", "");
        write(m_dir / "tree/content/routes/1234-abcd/RouteProperties.xml",
              "<DisplayName>\n<Localisation-cUserLocalisedString>\n"
              "<English d:type=\"cDeltaString\">Demo Valley &amp; Co</English>\n");
        fs::create_directories(m_dir / "tree/content/routes/ffff-0000");
    }
    void TearDown() override { fs::remove_all(m_dir); }
    fs::path m_dir;
};

std::string readAll(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST_P(CliCases, Run) {
    const fs::path testdata = fs::path(VELMORA_TESTDATA);
    const std::map<std::string, std::string> vars = {{"{home}", (m_dir / "home").string()},
                                                     {"{tree}", (m_dir / "tree").string()},
                                                     {"{new}", (m_dir / "new").string()},
                                                     {"{missing}", (m_dir / "missing").string()},
                                                     {"{work}", (m_dir / "work").string()},
                                                     {"{testdata}", testdata.string()},
                                                     {"{demo}", (m_dir / "demo").string()}};
    Case c = readCase(GetParam(), vars);
    // A generated demo install for the cases that work on one.
    if (readAll(GetParam()).find("{demo}") != std::string::npos) {
        std::ostringstream out, err;
        ASSERT_EQ(velmora::cli::run({"--quiet", "--home", (m_dir / "home").string(), "demo-install", (m_dir / "demo").string()},
                                    out, err),
                  0)
            << err.str();
    }
    if (!fs::exists(testdata) && readAll(GetParam()).find("{testdata}") != std::string::npos)
        GTEST_SKIP() << "the shared test documents are not beside this checkout";
    fs::create_directories(m_dir / "work");
    for (std::size_t i = 0; i < c.steps.size(); ++i) {
        const Step& step = c.steps[i];
        for (const Preparation& p : step.before) {
            if (p.kind == "copy") {
                ASSERT_TRUE(fs::copy_file(p.first, p.rest, fs::copy_options::overwrite_existing)) << p.first;
            } else if (p.kind == "fifo") {
                fs::create_directories(fs::path(p.first).parent_path());
                ASSERT_EQ(::mkfifo(p.first.c_str(), 0600), 0) << p.first;
            } else if (p.kind == "write") {
                fs::create_directories(fs::path(p.first).parent_path());
                std::ofstream(p.first, std::ios::binary | std::ios::trunc) << p.rest;
            } else {
                fs::permissions(p.rest, static_cast<fs::perms>(std::stoi(p.first, nullptr, 8)));
            }
        }
        std::ostringstream out, err;
        int code = velmora::cli::run(step.args, out, err);
        SCOPED_TRACE("step " + std::to_string(i + 1) + "\nstdout:\n" + out.str() + "\nstderr:\n" + err.str());
        EXPECT_EQ(code, step.exit);
        for (const auto& s : step.out)
            EXPECT_NE(out.str().find(s), std::string::npos) << "missing on stdout: " << s;
        for (const auto& s : step.noOut)
            EXPECT_EQ(out.str().find(s), std::string::npos) << "unexpected on stdout: " << s;
        for (const auto& s : step.err)
            EXPECT_NE(err.str().find(s), std::string::npos) << "missing on stderr: " << s;
        if (step.emptyErr) {
            EXPECT_EQ(err.str(), "");
        }
        for (const auto& [a, b] : step.same) {
            EXPECT_TRUE(fs::exists(a)) << a;
            EXPECT_EQ(readAll(a), readAll(b)) << a << " and " << b << " differ";
        }
        for (const auto& p : step.absent)
            EXPECT_FALSE(fs::exists(p)) << p << " should not exist";
        for (const auto& p : step.exists)
            EXPECT_TRUE(fs::exists(p)) << p << " should exist";
        for (const auto& [a, b] : step.differ)
            EXPECT_NE(readAll(a), readAll(b)) << a << " and " << b << " are the same";
    }
}

std::vector<fs::path> allCases() {
    std::vector<fs::path> files;
    for (const auto& e : fs::directory_iterator(VELMORA_CLI_CASES))
        if (e.path().extension() == ".case")
            files.push_back(e.path());
    std::sort(files.begin(), files.end());
    return files;
}

INSTANTIATE_TEST_SUITE_P(Files, CliCases, ::testing::ValuesIn(allCases()),
                         [](const auto& param) {
                             std::string n = param.param.stem().string();
                             for (char& ch : n)
                                 if (!std::isalnum(static_cast<unsigned char>(ch)))
                                     ch = '_';
                             return n;
                         });

} // namespace

// The user guide shipped in data/Help: it tells of every command --help lists, and it is one
// self-contained page whose links all land inside it.
TEST(UserGuide, NamesEveryCommandAndLinksOnlyWithinItself) {
    std::ifstream in(fs::path(VELMORA_SOURCE_DIR) / "data/Help/guide.html");
    ASSERT_TRUE(in) << "data/Help/guide.html is missing";
    std::stringstream buffer;
    buffer << in.rdbuf();
    const std::string guide = buffer.str();

    std::ostringstream out, err;
    ASSERT_EQ(velmora::cli::run({"--help"}, out, err), 0);
    std::istringstream usage(out.str());
    std::string line;
    bool inCommands = false;
    int commands = 0;
    while (std::getline(usage, line)) {
        if (line == "Commands:") {
            inCommands = true;
            continue;
        }
        if (!inCommands || line.size() < 3 || line[0] != ' ' || line[2] == ' ')
            continue;
        // The name is the leading lower-case words, one or two, before the arguments.
        std::istringstream words(line.substr(2, 30));
        std::string word, name;
        for (int n = 0; n < 2 && words >> word && word.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == std::string::npos; ++n)
            name += (name.empty() ? "" : " ") + word;
        ASSERT_FALSE(name.empty()) << line;
        EXPECT_NE(guide.find("<code>" + name), std::string::npos) << "the guide does not tell of " << name;
        ++commands;
    }
    EXPECT_GT(commands, 30);

    // Nothing is fetched from elsewhere, and every #link has its target.
    for (const char* outside : {"src=\"http", "href=\"http", "<link", "<script", "@import"})
        EXPECT_EQ(guide.find(outside), std::string::npos) << outside;
    for (std::size_t at = guide.find("href=\"#"); at != std::string::npos; at = guide.find("href=\"#", at + 1)) {
        const std::size_t start = at + 7;
        const std::string id = guide.substr(start, guide.find('"', start) - start);
        EXPECT_NE(guide.find("id=\"" + id + "\""), std::string::npos) << "no target for #" << id;
    }
}
