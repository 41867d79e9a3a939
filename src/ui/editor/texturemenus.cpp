#include "texturemenus.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/journal.h"
#include "velmora/core/process.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <QStandardPaths>

namespace velmora::ui {

namespace fs = std::filesystem;

namespace {

std::string entry(const AppContext& ctx, int n, const char* fallback) {
    return ctx.lang.has(n) && !ctx.lang.text(n).empty() ? ctx.lang.text(n) : fallback;
}

} // namespace

fs::path tempDdsFolder(const AppContext& ctx) { return ctx.appPath() / "TempDDS"; }

textures::DdsExport textureToTempDds(AppContext& ctx, const fs::path& texture) {
    const fs::path folder = tempDdsFolder(ctx);
    if (!MakePath(folder)) {
        textures::DdsExport r;
        r.message = folder.string() + ": the folder cannot be made";
        return r;
    }
    JournalCommand journalled(&ctx.journal(), "Convert to .dds " + texture.string());
    return textures::textureToDds(ctx.files(), texture, folder / (texture.stem().string() + ".dds"));
}

bool mnuDDS_Click(AppContext& ctx, const fs::path& texture) {
    const textures::DdsExport r = textureToTempDds(ctx, texture);
    ctx.ui().message(r.message, r.ok ? Icon::Information : Icon::Warning);
    return r.ok;
}

void openDdsWith(AppContext& ctx, const std::string& program, const fs::path& texture) {
    const fs::path dds = tempDdsFolder(ctx) / (texture.stem().string() + ".dds");
    std::error_code ec;
    if (program.empty() || !fs::is_regular_file(program, ec)) {
        ctx.ui().message("To view DDS files you need to install a suitable Texture viewer (e.g. IrfanView) on your PC "
                         "\nand select the path from the Options menu.",
                         Icon::Information);
        return;
    }
    if (!startDetached(program, {dds.string()}, ctx.appPath()))
        ctx.ui().message(program + ": the program cannot be started", Icon::Warning);
}

void mnuDDStoKrs_Click(AppContext& ctx, const fs::path& texture) {
    const fs::path folder = tempDdsFolder(ctx);
    const auto dds = ctx.ui().chooseFile({"Convert .dds file", folder, "DDS Files (*.dds)|*.dds", false});
    if (!dds)
        return;
    fs::path target = texture;
    if (target.empty() || target.stem() != dds->stem()) {
        ctx.ui().message("Open the texture " + dds->stem().string() + ".TgPcDx first: the .dds goes back into it.",
                         Icon::Warning);
        return;
    }
    if (ctx.ui().ask("This option will convert your modified file " + dds->filename().string() + "\nto " +
                         target.string() + "\nand create a backup of the original file. Continue?",
                     Buttons::YesNo, Icon::Question, "Convert .dds file") != Answer::Yes)
        return;
    JournalCommand journalled(&ctx.journal(), "Convert .dds to TgPcDx " + target.string());
    const textures::DdsImport r = textures::ddsToTexture(ctx.files(), *dds, target);
    if (!r.ok)
        ctx.ui().message(r.message, Icon::Critical);
    else
        ctx.ui().message("Saved " + r.written.string() + (r.backup.empty() ? "" : "\nBackup: " + r.backup.string()));
}

void mnuRSBT_Click(AppContext& ctx) {
    const fs::path tool = ctx.appPath() / "RSBinTool" / "rsbintool.exe";
    std::error_code ec;
    if (!fs::is_regular_file(tool, ec)) {
        ctx.ui().message(tool.string() + ": the program is not there", Icon::Warning);
        return;
    }
    std::string program = tool.string();
    std::vector<std::string> arguments;
#ifndef _WIN32
    const QString wine = QStandardPaths::findExecutable("wine");
    if (wine.isEmpty()) {
        ctx.ui().message(tool.string() + ": RSBinTool is a Windows program; install Wine to run it here.",
                         Icon::Information);
        return;
    }
    arguments = {program};
    program = wine.toStdString();
#endif
    ctx.ui().beginProgress("Waiting for RSBinTool to close", 0);
    const ExecResult run = ExecCmd(program, arguments, ctx.appPath(), &ctx.ui(), WindowStyle::Normal);
    ctx.ui().endProgress();
    if (!run.started)
        ctx.ui().message(tool.string() + ": the program cannot be started", Icon::Warning);
}

void mnuEmpt_Click(AppContext& ctx) {
    if (ctx.ui().ask(entry(ctx, 411, "This will delete the TempDDS folder and all the files in it.") + "\n" +
                         entry(ctx, 412, "Do you wish to continue?"),
                     Buttons::YesNo, Icon::Question) != Answer::Yes)
        return;
    JournalCommand journalled(&ctx.journal(), "Empty TempDDS");
    const std::string problems = textures::emptyTempDds(ctx.files(), tempDdsFolder(ctx),
                                                        ctx.appPath() / "Deleted" / localTimeText("%Y%m%d-%H%M%S"));
    if (!problems.empty())
        ctx.ui().message(problems, Icon::Warning);
}

} // namespace velmora::ui
