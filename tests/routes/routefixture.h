#pragma once
// A fresh demo install for each test of a command that changes routes, the program's context
// on it with the shipped data, and the "Demo Valley Line" found; with the helpers such tests
// share.

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/routes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace velmora::test {

namespace fs = std::filesystem;

// A document decoded to its XML (a failure is a test failure naming the file).
inline std::string decoded(const fs::path& file) {
    std::string xml;
    EXPECT_TRUE(binToXmlText(file, xml)) << file;
    return xml;
}

// How often `what` stands in `text`.
inline std::size_t count(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

class RouteTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-route-" + std::to_string(::getpid()) + "-" +
                                             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        ASSERT_TRUE(demo::generateDemoInstall(m_dir / "rw", {}).ok);
        m_ctx = std::make_unique<AppContext>(m_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
        StartupOptions o;
        o.railWorks = m_dir / "rw";
        o.askForRoot = false;
        runStartup(*m_ctx, o);
        m_routes = routes::listRoutes(*m_ctx);
        const routes::RouteEntry* valley = routes::findRoute(m_routes, "Demo Valley Line");
        ASSERT_NE(valley, nullptr);
        m_valley = *valley;
    }
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(m_dir, ec);
    }
    UndoResult undoLast() {
        const auto last = lastUndoableEntry(m_ctx->journal().entries());
        EXPECT_TRUE(last.has_value());
        return last ? undoEntry(m_ctx->files(), *last, false) : UndoResult{};
    }
    fs::path rw() const { return m_dir / "rw"; }

    fs::path m_dir;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
    std::vector<routes::RouteEntry> m_routes;
    routes::RouteEntry m_valley;
};

} // namespace velmora::test
