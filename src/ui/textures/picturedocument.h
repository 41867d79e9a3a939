#pragma once
// The picture the viewer shows, without widgets: a .TgPcDx texture or a .dds with all its mip
// levels (decoded by the textures library), or any picture Qt reads; the flips, turns and grey
// applied to it in order; the zoom; and the picture saved by extension.

#include "velmora/textures/dds.h"
#include "velmora/textures/picture.h"

#include <QImage>

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class WriteService;
struct WriteResult;
}

namespace velmora::ui {

class PictureDocument {
public:
    // Reads `file` and shows its largest level. A .TgPcDx and a .dds go through the textures
    // library; a .dds of a kind a texture never has, and every other file, through Qt's image
    // readers. False with the reason, naming the file; the document is then empty. Safe to call
    // off the GUI thread.
    bool load(const std::filesystem::path& file, std::string& error);
    void clear();

    bool empty() const { return !m_shown.valid(); }
    const std::filesystem::path& file() const { return m_file; }
    // True for a texture read by the textures library (a .TgPcDx or a texture's .dds).
    bool isTexture() const { return !m_texture.levels.empty(); }
    // 1 for a plain picture.
    int mipCount() const { return isTexture() ? static_cast<int>(m_texture.levels.size()) : empty() ? 0 : 1; }
    int mip() const { return m_mip; }
    // Shows mip level `mip` (0 the largest) with the same flips, turns and grey. The levels are
    // decoded as they are shown, so that a large texture is held once, not once a level.
    bool showMip(int mip, std::string& error);
    // Pixels of mip level `mip`, for guessing how long it takes.
    std::size_t pixelsOf(int mip) const;

    void flip() { step(textures::PictureStep::Flip); }
    void rotate() { step(textures::PictureStep::Rotate); }
    void grey() { step(textures::PictureStep::Grey); }
    const std::vector<textures::PictureStep>& steps() const { return m_steps; }

    // The level shown, with the steps applied.
    const textures::Image& picture() const { return m_shown; }
    QImage image() const;
    // "PicView - " + file name + " (" + width + "x" + height + ")"; "PicView" when empty.
    std::string caption() const;

    // Percent; in and out go one step along a fixed scale, false at its end.
    int zoom() const;
    bool zoomIn();
    bool zoomOut();
    void setZoom(int percent); // the nearest step
    std::string zoomText() const { return std::to_string(zoom()) + "%"; }

    // The Qt image format a file name asks for: "PNG", "JPEG" or "BMP"; empty for another one.
    static const char* formatFor(const std::filesystem::path& file);
    // The picture shown, encoded as its name's extension says and written through the write
    // service (a numbered backup when it replaces a file). The result says what went wrong,
    // naming the file.
    WriteResult saveAs(WriteService& files, const std::filesystem::path& target) const;

private:
    void step(textures::PictureStep s);

    std::filesystem::path m_file;
    textures::TextureLevels m_texture; // the raw levels of a texture
    std::vector<textures::PictureStep> m_steps;
    textures::Image m_shown;
    int m_mip = 0;
    std::size_t m_zoomIndex = 5; // 100% on the scale
};

// A QImage as RGBA rows, as the textures library's pictures are.
textures::Image fromQImage(const QImage& image);

} // namespace velmora::ui
