#pragma once
// The main screen's Graphics Tools entries for textures: the open texture out to a .dds for a
// paint program, an edited .dds back into its texture, and the emptying of TempDDS. Thin: the
// work is the textures library's.

#include "velmora/textures/dds.h"

#include <filesystem>
#include <string>

namespace velmora {
class AppContext;
}

namespace velmora::ui {

// The shared scratch folder of the texture tools.
std::filesystem::path tempDdsFolder(const AppContext& ctx);

// `texture` to TempDDS\Name.dds and its header file, as one journal entry; nothing is said.
textures::DdsExport textureToTempDds(AppContext& ctx, const std::filesystem::path& texture);

// Convert to .dds: `texture` (the open document) to TempDDS\Name.dds and its header file,
// then the advice on keeping the format. True when the .dds was written.
bool mnuDDS_Click(AppContext& ctx, const std::filesystem::path& texture);

// View Texture and Edit Texture: the open texture's .dds in TempDDS shown by `program` (the
// viewer or the paint program of the options); without one, says how to set it.
void openDdsWith(AppContext& ctx, const std::string& program, const std::filesystem::path& texture);

// Convert .dds to TgPcDx: a .dds chosen in TempDDS back into `texture` (the open one), or into
// the texture of the same name beside it when none is open, after a yes.
void mnuDDStoKrs_Click(AppContext& ctx, const std::filesystem::path& texture);

// RSBinTool: the program's RSBinTool\rsbintool.exe run from the program's folder, waited for
// behind a progress box whose Abort stops it. Elsewhere than Windows it runs through Wine, or
// says that Wine is needed.
void mnuRSBT_Click(AppContext& ctx);

// Empty TempDDS, after a yes: its files are kept below Deleted, and the folder made again.
void mnuEmpt_Click(AppContext& ctx);

} // namespace velmora::ui
