// Textures for paint programs: a .TgPcDx out as a .dds with its header file, the edited .dds
// back into the texture, a level of either as a PNG, and the emptying of the TempDDS folder.

#include "session.h"

#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"
#include "pictureimage.h"
#include "velmora/textures/dds.h"
#include "velmora/textures/picture.h"

#include <QBuffer>
#include <QImage>

#include <cstring>

namespace velmora::cli {

namespace {

using namespace velmora::textures;

fs::path tempDds(Session& s) { return s.ctx.appPath() / "TempDDS"; }

// The one plain argument a command takes; false after saying what is wrong.
bool onePlain(Session& s, const Arguments& a, const char* what) {
    if (!a.problem.empty()) {
        s.fail(a.problem);
        return false;
    }
    if (a.plain.size() != 1) {
        s.fail(a.plain.empty() ? std::string("needs ") + what : "unexpected argument '" + a.plain[1] + "'");
        return false;
    }
    return true;
}

int cmdToDds(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--out"}, {"--json"});
    if (!onePlain(s, a, "the .TgPcDx texture to convert"))
        return Error;
    s.start();
    const fs::path texture(a.plain.front());
    fs::path dds;
    if (const auto out = a.value("--out"))
        dds = *out;
    else
        dds = tempDds(s) / (texture.stem().string() + ".dds");
    const DdsExport r = textureToDds(s.ctx.files(), texture, dds);
    if (!r.ok)
        return s.fail(r.message);
    if (a.has("--json")) {
        s.out << "{\"dds\": " << jsonString(r.dds.string()) << ", \"header\": " << jsonString(r.headerFile.string())
              << ", \"format\": " << jsonString(formatShown(r.format)) << ", \"width\": " << r.width
              << ", \"height\": " << r.height << ", \"mips\": " << r.mips << "}\n";
    } else if (!s.g.quiet) {
        s.out << "Wrote " << r.dds.string() << " and its header file " << r.headerFile.filename().string() << '\n'
              << r.message << '\n';
    }
    return Success;
}

int cmdFromDds(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--to"}, {});
    if (!onePlain(s, a, "the edited .dds file"))
        return Error;
    const auto target = a.value("--to");
    if (!target)
        return s.fail("needs --to FILE.TgPcDx, the texture to replace");
    s.start();
    const fs::path dds(a.plain.front());
    if (s.ui.ask("This option will convert your modified file " + dds.filename().string() + "\nto " + *target +
                     "\nand create a backup of the original file. Continue?",
                 Buttons::YesNo, Icon::Question, "Velmora") != Answer::Yes)
        return s.fail("nothing was converted");
    const DdsImport r = ddsToTexture(s.ctx.files(), dds, *target);
    if (!r.ok)
        return s.fail(r.message);
    if (!s.g.quiet) {
        if (!r.backup.empty())
            s.out << "Backup: " << r.backup.string() << '\n';
        s.out << "Saved " << r.written.string() << '\n';
    }
    return Success;
}

// The format --out asks for by its ending; PNG for any other.
const char* pictureFormat(const fs::path& out) {
    std::string ext = out.extension().string();
    for (char& c : ext)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (ext == ".jpg" || ext == ".jpeg")
        return "JPEG";
    if (ext == ".bmp")
        return "BMP";
    return "PNG";
}

int cmdPng(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--out", "--mip", "--rotate"}, {"--flip", "--grey"});
    if (!onePlain(s, a, "the .TgPcDx or .dds file to show"))
        return Error;
    const auto out = a.value("--out");
    if (!out)
        return s.fail("needs --out FILE.png");
    int mip = 0;
    if (const auto m = a.value("--mip")) {
        const auto n = parseNumber(*m);
        if (!n || *n < 0 || *n >= 16)
            return s.fail("--mip takes a level from 0 to 15");
        mip = static_cast<int>(*n);
    }
    // The viewer's steps, in this order: upside down, quarter turns clockwise, grey.
    std::vector<PictureStep> steps;
    if (a.has("--flip"))
        steps.push_back(PictureStep::Flip);
    if (const auto r = a.value("--rotate")) {
        const auto n = parseNumber(*r);
        int turns = 0;
        if (!n || !quarterTurns(*n, turns))
            return s.fail("--rotate takes 90, 180 or 270 (degrees clockwise)");
        steps.insert(steps.end(), static_cast<std::size_t>(turns), PictureStep::Rotate);
    }
    if (a.has("--grey"))
        steps.push_back(PictureStep::Grey);
    s.start();
    const fs::path file(a.plain.front());
    TextureLevels levels;
    std::string error;
    if (!readTextureFile(file, levels, error))
        return s.fail(error);
    const Image img = applied(levelImage(levels, mip, &error), steps);
    if (!img.valid())
        return s.fail(file.string() + ": " + error);
    const char* format = pictureFormat(*out);
    QImage picture = toQImage(img);
    if (std::strcmp(format, "PNG") != 0) // JPEG and BMP keep no alpha
        picture = picture.convertToFormat(QImage::Format_RGB888);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!picture.save(&buffer, format))
        return s.fail(*out + ": the picture cannot be made a " + format);
    const WriteResult written =
        s.ctx.files().write(*out, std::string_view(png.constData(), std::size_t(png.size())), {.backup = Backup::None});
    if (!written)
        return s.fail(written.message);
    if (!s.g.quiet)
        s.out << "Wrote " << written.target.string() << " (" << img.width << "x" << img.height << ", mip level " << mip
              << ")\n";
    return Success;
}

int cmdEmptyTemp(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!a.problem.empty() || !a.plain.empty())
        return s.fail(a.problem.empty() ? "unexpected argument '" + a.plain.front() + "'" : a.problem);
    s.start();
    if (s.ui.ask("This will delete the TempDDS folder and all the files in it.\nDo you wish to continue?",
                 Buttons::YesNo, Icon::Question, "Velmora") != Answer::Yes)
        return s.fail("nothing was deleted");
    const fs::path folder = tempDds(s);
    const std::string problems =
        emptyTempDds(s.ctx.files(), folder, s.ctx.appPath() / "Deleted" / localTimeText("%Y%m%d-%H%M%S"));
    if (!problems.empty()) {
        s.err << problems;
        return Error;
    }
    if (!s.g.quiet)
        s.out << "Emptied " << folder.string() << '\n';
    return Success;
}

} // namespace

std::vector<Command> textureCommands() {
    return {
        {"texture to-dds", "FILE.TgPcDx [--out FILE.dds] [--json]",
         "a texture as a .dds file (in TempDDS unless --out) and its header file Name.dat beside it", cmdToDds},
        {"texture from-dds", "FILE.dds --to FILE.TgPcDx",
         "an edited .dds back into its texture, keeping a numbered backup of the old one", cmdFromDds},
        {"texture png", "FILE.TgPcDx|FILE.dds --out FILE.png [--mip N] [--flip] [--rotate DEG] [--grey]",
         "one mip level of a texture as a PNG (or .jpg, .bmp by the ending), upside down, turned or grey as the "
         "picture viewer shows it",
         cmdPng},
        {"texture empty-temp", "", "empties the TempDDS folder (its files kept below Deleted)", cmdEmptyTemp},
    };
}

} // namespace velmora::cli
