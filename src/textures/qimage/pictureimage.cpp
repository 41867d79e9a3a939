#include "pictureimage.h"

#include <QImageReader>

#include <cstring>

namespace velmora::textures {

QImage toQImage(const Image& picture) {
    if (!picture.valid())
        return {};
    return QImage(picture.rgba.data(), picture.width, picture.height, picture.width * 4, QImage::Format_RGBA8888).copy();
}

Image fromQImage(const QImage& image) {
    Image out;
    if (image.isNull())
        return out;
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    out.width = rgba.width();
    out.height = rgba.height();
    const std::size_t row = static_cast<std::size_t>(out.width) * 4;
    out.rgba.resize(row * static_cast<std::size_t>(out.height));
    for (int y = 0; y < out.height; ++y)
        std::memcpy(out.rgba.data() + row * static_cast<std::size_t>(y), rgba.constScanLine(y), row);
    return out;
}

Image readPictureFile(const std::filesystem::path& file, std::string& error) {
    QImageReader reader(QString::fromStdU16String(file.u16string()));
    const QImage image = reader.read();
    if (image.isNull()) {
        error = file.string() + ": " + reader.errorString().toStdString();
        return {};
    }
    return fromQImage(image);
}

} // namespace velmora::textures
