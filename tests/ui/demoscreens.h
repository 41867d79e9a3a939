#pragma once
// The screen tests that work on a demo install: one install per test class, generated in
// initTestCase, and a fresh program context on it for each test function.

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"

#include <QCoreApplication>

#include <filesystem>
#include <memory>
#include <string>

namespace velmora::test {

struct DemoScreens {
    std::filesystem::path dir;
    std::unique_ptr<ScriptedUi> ui;
    std::unique_ptr<AppContext> ctx;

    // A fresh folder named for the suite with a demo install in rw/; false when it failed.
    bool generate(const std::string& suite) {
        dir = std::filesystem::temp_directory_path() /
              ("velmora-" + suite + "-" + std::to_string(QCoreApplication::applicationPid()));
        std::filesystem::remove_all(dir);
        return demo::generateDemoInstall(dir / "rw", {}).ok;
    }
    void remove() { std::filesystem::remove_all(dir); }
    // The program started on the install, as the desktop program starts, without questions.
    // `shipped` gives it the program's own data (templates, help) beside the test program;
    // otherwise its data folder is empty.
    void start(bool shipped = false) {
        ui = std::make_unique<ScriptedUi>();
        const std::filesystem::path data =
            shipped ? std::filesystem::path(QCoreApplication::applicationDirPath().toStdString()) / "data" : dir / "data";
        ctx = std::make_unique<AppContext>(dir / "home", data, *ui);
        StartupOptions o;
        o.railWorks = dir / "rw";
        o.askForRoot = false;
        runStartup(*ctx, o);
    }
    // Whether a box, question or text prompt so far held `part`.
    bool prompted(const std::string& part) const {
        for (const auto& p : ui->prompts)
            if (p.text.find(part) != std::string::npos)
                return true;
        return false;
    }
};

} // namespace velmora::test
