#include "textureimage.h"

#include "pictureimage.h"

namespace velmora::ui {

QImage textureImage(const textures::Image& texture) { return textures::toQImage(texture); }

} // namespace velmora::ui
