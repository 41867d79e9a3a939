#pragma once
// A demo install generated once for a test suite, and a fresh program context on it for each
// test. `Suite` is the deriving fixture, so each suite keeps its own install.

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

namespace velmora::test {

template <typename Suite> class DemoInstallTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = std::filesystem::temp_directory_path() /
                ("velmora-" + std::string(Suite::kName) + "-" + std::to_string(::getpid()));
        std::filesystem::remove_all(s_dir);
        s_ok = demo::generateDemoInstall(s_dir / "rw", {}).ok;
    }
    static void TearDownTestSuite() { std::filesystem::remove_all(s_dir); }
    void SetUp() override {
        ASSERT_TRUE(s_ok);
        m_ctx = std::make_unique<AppContext>(s_dir / "home", s_dir / "data", m_ui);
        StartupOptions o;
        o.railWorks = s_dir / "rw";
        o.askForRoot = false;
        runStartup(*m_ctx, o);
    }

    static inline std::filesystem::path s_dir;
    static inline bool s_ok = false;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
};

} // namespace velmora::test
