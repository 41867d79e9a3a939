#pragma once
// A small hand-made install for the package tests: a root with whatever files a test writes,
// the program's own folder beside it, and a context on both.

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace velmora::test {

namespace fs = std::filesystem;

class PackageTest : public ::testing::Test {
protected:
    void SetUp() override {
        static int serial = 0;
        m_dir = fs::temp_directory_path() /
                ("velmora-package-" + std::to_string(::getpid()) + "-" + std::to_string(++serial));
        fs::remove_all(m_dir);
        fs::create_directories(root());
        fs::create_directories(home());
        m_ctx = std::make_unique<AppContext>(home(), m_dir / "data", m_ui);
        m_ctx->setRailWorksOverride(root());
    }
    void TearDown() override {
        std::error_code ec;
        fs::permissions(m_dir, fs::perms::all, fs::perm_options::add, ec);
        fs::remove_all(m_dir, ec);
    }

    fs::path root() const { return m_dir / "rw"; }
    fs::path home() const { return m_dir / "home"; }
    fs::path out() const { return m_dir / "out"; }
    AppContext& ctx() { return *m_ctx; }

    static void put(const fs::path& file, const std::string& bytes) {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }
    static std::string read(const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    fs::path m_dir;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
};

} // namespace velmora::test
