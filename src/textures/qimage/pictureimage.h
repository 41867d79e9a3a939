#pragma once
// Decoded pictures to and from Qt's QImage, for the screens and the command line (Qt Gui only,
// no widgets).

#include "velmora/textures/texture.h"

#include <QImage>

#include <filesystem>
#include <string>

namespace velmora::textures {

// A null image when the picture is not valid.
QImage toQImage(const Image& picture);
// An empty picture when the image is null.
Image fromQImage(const QImage& image);
// A PNG, JPEG, BMP or GIF file read through Qt; an empty picture with `error` naming the file
// when it is missing or not a picture Qt reads.
Image readPictureFile(const std::filesystem::path& file, std::string& error);

} // namespace velmora::textures
