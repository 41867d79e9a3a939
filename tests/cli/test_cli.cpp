// velmora-cli cases written as data: each file in cases/ gives the arguments, the exit code
// and texts that must (or must not) appear on standard output and standard error.
//
//   args: --home {home} --railworks {tree} info
//   exit: 0
//   out: Products: 3
//   err: needs a value
//   no-out: (no name)
//   empty-err
//
// Placeholders: {home} a fresh program folder, {tree} a small hand-made install,
// {new} a folder that does not exist yet, {missing} a path that never exists.

#include "cli.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

struct Case {
    std::string name;
    std::vector<std::string> args;
    int exit = 0;
    std::vector<std::string> out, err, noOut;
    bool emptyErr = false;
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
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        auto colon = line.find(": ");
        std::string key = line.substr(0, colon);
        std::string value = colon == std::string::npos ? "" : expand(line.substr(colon + 2));
        if (key == "args") {
            std::istringstream words(value);
            for (std::string w; words >> w;)
                c.args.push_back(w);
        } else if (key == "exit") {
            c.exit = std::stoi(value);
        } else if (key == "out") {
            c.out.push_back(value);
        } else if (key == "err") {
            c.err.push_back(value);
        } else if (key == "no-out") {
            c.noOut.push_back(value);
        } else if (key == "empty-err") {
            c.emptyErr = true;
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
        m_dir = fs::temp_directory_path() / ("velmora-cli-" + GetParam().stem().string());
        fs::remove_all(m_dir);
        // A small install made by hand, mixed letter case included.
        write(m_dir / "tree/RailWorks.exe", "");
        write(m_dir / "tree/Assets/DemoRail/Class66Pack/RailVehicles/Engine.bin", "");
        write(m_dir / "tree/Assets/DemoRail/Wagons/x.bin", "");
        write(m_dir / "tree/Assets/Heritage/SteamDays/y.bin", "");
        write(m_dir / "tree/content/routes/1234-abcd/RouteProperties.xml",
              "<DisplayName>\n<Localisation-cUserLocalisedString>\n"
              "<English d:type=\"cDeltaString\">Demo Valley &amp; Co</English>\n");
        fs::create_directories(m_dir / "tree/content/routes/ffff-0000");
    }
    void TearDown() override { fs::remove_all(m_dir); }
    fs::path m_dir;
};

TEST_P(CliCases, Run) {
    const std::map<std::string, std::string> vars = {{"{home}", (m_dir / "home").string()},
                                                     {"{tree}", (m_dir / "tree").string()},
                                                     {"{new}", (m_dir / "new").string()},
                                                     {"{missing}", (m_dir / "missing").string()}};
    Case c = readCase(GetParam(), vars);
    std::ostringstream out, err;
    int code = velmora::cli::run(c.args, out, err);
    SCOPED_TRACE("stdout:\n" + out.str() + "\nstderr:\n" + err.str());
    EXPECT_EQ(code, c.exit);
    for (const auto& s : c.out)
        EXPECT_NE(out.str().find(s), std::string::npos) << "missing on stdout: " << s;
    for (const auto& s : c.noOut)
        EXPECT_EQ(out.str().find(s), std::string::npos) << "unexpected on stdout: " << s;
    for (const auto& s : c.err)
        EXPECT_NE(err.str().find(s), std::string::npos) << "missing on stderr: " << s;
    if (c.emptyErr) {
        EXPECT_EQ(err.str(), "");
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
