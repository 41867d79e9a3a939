#pragma once
// What the picture viewer and `texture png` do to a decoded picture: turn it upside down, turn
// it a quarter at a time, make it grey. The steps are kept in order, so that another mip level
// of the same texture is shown with the same ones.

#include "velmora/textures/texture.h"

#include <string>
#include <vector>

namespace velmora::textures {

enum class PictureStep { Flip, Rotate, Grey };

// Upside down: the last row first.
Image flipped(const Image& picture);
// A quarter turn clockwise; the width and height change places.
Image rotated(const Image& picture);
// Each pixel's brightness (ITU-R 601 weights) in all three colours; alpha stays.
Image greyed(const Image& picture);

Image applied(Image picture, PictureStep step);
Image applied(Image picture, const std::vector<PictureStep>& steps);

// "--rotate" in degrees as quarter turns: 0, 90, 180, 270 (and the same plus or minus whole
// turns); nothing for any other angle.
bool quarterTurns(long long degrees, int& turns);

} // namespace velmora::textures
