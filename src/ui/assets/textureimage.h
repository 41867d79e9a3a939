#pragma once
// A decoded texture as a picture for a screen.

#include "velmora/textures/texture.h"

#include <QImage>

namespace velmora::ui {

// A null image when the texture is not valid.
QImage textureImage(const textures::Image& texture);

} // namespace velmora::ui
