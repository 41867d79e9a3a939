#pragma once
// A small simulator folder to back up, with the program's context around it.

#include "tempdir.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <functional>

namespace velmora::test {

namespace fs = std::filesystem;

// Stops the work after `cancelAfter` polls of Abort; runs `atStart` when the copying starts.
class BackupUi : public ScriptedUi {
public:
    int cancelAfter = -1;
    std::function<void()> atStart;
    void beginProgress(const std::string& label, std::int64_t total) override {
        ScriptedUi::beginProgress(label, total);
        if (atStart)
            atStart();
    }
    bool cancelled() const override { return cancelAfter >= 0 && polls++ >= cancelAfter; }

private:
    mutable int polls = 0;
};

struct BackupFixture {
    TempDir dir;
    BackupUi ui;
    AppContext ctx{dir / "home", dir / "data", ui};
    fs::path rw = dir / "rw";
    // The user's backup folder, with a name as awkward as users give them.
    fs::path backups = dir / "Sauvegardes, été \"1\"";

    BackupFixture() {
        dir.write("rw/RailWorks.exe", "exe");
        dir.write("rw/Settings.xml", "<s/>");
        dir.write("rw/Assets/Kuju/RailSimulator/Café, \"Ouest\".bin", "blueprint");
        dir.write("rw/Assets/Kuju/RailSimulator/Audio/horn.dav", std::string(70000, 'h'));
        dir.write("rw/Content/Routes/r1/RouteProperties.xml", "<route/>");
        dir.write("rw/Manuals/guide.pdf", "not copied: a folder of the root that is none of the parts");
        fs::create_directories(rw / "Content/Empty");
        ctx.setRailWorksOverride(rw);
        ctx.settings.railWorksBackup = backups.string();
    }
};

} // namespace velmora::test
