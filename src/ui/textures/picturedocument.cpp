#include "picturedocument.h"

#include "pictureimage.h"

#include "../assets/textureimage.h"
#include "velmora/core/filewrite.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace velmora::ui {

namespace fs = std::filesystem;

namespace {

constexpr std::array<int, 12> kZoomSteps{10, 25, 33, 50, 75, 100, 150, 200, 300, 400, 600, 800};
static_assert(kZoomSteps[5] == 100, "the viewer starts at full size");

std::string lower(std::string s) {
    for (char& c : s)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return s;
}

std::string named(const fs::path& file, const std::string& what) { return file.string() + ": " + what; }

} // namespace

textures::Image fromQImage(const QImage& image) { return textures::fromQImage(image); }

bool PictureDocument::load(const fs::path& file, std::string& error) {
    clear();
    const std::string ext = lower(file.extension().string());
    std::string textureError;
    if (ext == ".tgpcdx" || ext == ".dds") {
        textures::TextureLevels levels;
        if (textures::readTextureFile(file, levels, textureError) && !levels.levels.empty()) {
            std::string why;
            m_shown = textures::levelImage(levels, 0, &why);
            if (!m_shown.valid()) {
                error = named(file, why);
                return false;
            }
            m_texture = std::move(levels);
            m_file = file;
            return true;
        }
        if (ext == ".tgpcdx") {
            error = textureError;
            return false;
        }
    }
    // Any other picture, and a .dds a paint program wrote in a kind textures never use.
    QImageReader reader(QString::fromStdString(file.string()));
    reader.setAutoTransform(true);
    QImage picture = reader.read();
    if (picture.isNull()) {
        error = !textureError.empty() ? textureError
                                      : named(file, "the picture cannot be read (" + reader.errorString().toStdString() + ")");
        return false;
    }
    m_file = file;
    m_shown = fromQImage(picture);
    return true;
}

void PictureDocument::clear() {
    m_file.clear();
    m_texture = {};
    m_steps.clear();
    m_shown = {};
    m_mip = 0;
}

std::size_t PictureDocument::pixelsOf(int mip) const {
    if (!isTexture())
        return m_shown.rgba.size() / 4;
    const int w = std::max(1, m_texture.width >> mip), h = std::max(1, m_texture.height >> mip);
    return static_cast<std::size_t>(w) * static_cast<std::size_t>(h);
}

bool PictureDocument::showMip(int mip, std::string& error) {
    if (mip < 0 || mip >= mipCount()) {
        error = named(m_file, "there is no mip level " + std::to_string(mip) + "; it has " + std::to_string(mipCount()));
        return false;
    }
    if (mip == m_mip)
        return true;
    std::string why;
    textures::Image level = textures::levelImage(m_texture, mip, &why);
    if (!level.valid()) {
        error = named(m_file, why);
        return false;
    }
    m_mip = mip;
    m_shown = textures::applied(std::move(level), m_steps);
    return true;
}

void PictureDocument::step(textures::PictureStep s) {
    if (empty())
        return;
    m_steps.push_back(s);
    m_shown = textures::applied(std::move(m_shown), s);
}

QImage PictureDocument::image() const { return textureImage(m_shown); }

std::string PictureDocument::caption() const {
    if (empty())
        return "PicView";
    return "PicView - " + m_file.filename().string() + " (" + std::to_string(m_shown.width) + "x" +
           std::to_string(m_shown.height) + ")";
}

int PictureDocument::zoom() const { return kZoomSteps[m_zoomIndex]; }

bool PictureDocument::zoomIn() {
    if (m_zoomIndex + 1 >= kZoomSteps.size())
        return false;
    ++m_zoomIndex;
    return true;
}

bool PictureDocument::zoomOut() {
    if (m_zoomIndex == 0)
        return false;
    --m_zoomIndex;
    return true;
}

void PictureDocument::setZoom(int percent) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < kZoomSteps.size(); ++i)
        if (std::abs(kZoomSteps[i] - percent) < std::abs(kZoomSteps[best] - percent))
            best = i;
    m_zoomIndex = best;
}

const char* PictureDocument::formatFor(const fs::path& file) {
    const std::string ext = lower(file.extension().string());
    if (ext == ".png")
        return "PNG";
    if (ext == ".jpg" || ext == ".jpeg")
        return "JPEG";
    if (ext == ".bmp")
        return "BMP";
    return "";
}

WriteResult PictureDocument::saveAs(WriteService& files, const fs::path& target) const {
    WriteResult r;
    const char* format = formatFor(target);
    if (empty()) {
        r.message = named(target, "there is no picture to save");
        return r;
    }
    if (!*format) {
        r.message = named(target, "pictures are saved as .png, .jpg or .bmp; choose one of those endings");
        return r;
    }
    QImage picture = image();
    if (std::strcmp(format, "PNG") != 0) // JPEG and BMP keep no alpha
        picture = picture.convertToFormat(QImage::Format_RGB888);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (std::strcmp(format, "JPEG") == 0)
        writer.setQuality(95);
    if (!writer.write(picture)) {
        r.message = named(target, "the picture cannot be made a " + std::string(format) + " (" +
                                      writer.errorString().toStdString() + ")");
        return r;
    }
    return files.write(target, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

} // namespace velmora::ui
