#include "textureimage.h"

namespace velmora::ui {

QImage textureImage(const textures::Image& texture) {
    if (!texture.valid())
        return {};
    return QImage(texture.rgba.data(), texture.width, texture.height, texture.width * 4,
                  QImage::Format_RGBA8888)
        .copy();
}

} // namespace velmora::ui
