#pragma once
// A picture made into DXT1 levels, for the textures this program makes itself from a user's
// picture (a route's thumbnail): scaled to the size the simulator wants, each smaller level the
// average of four pixels of the one above, each 4x4 block given its two end colours and the
// nearest of the four colours between them. Alpha is not kept.

#include "velmora/textures/dds.h"

namespace velmora::textures {

// The picture scaled to width x height, each new pixel the average of the area it covers.
Image scaled(const Image& picture, int width, int height);
// Half the width and height (at least 1), each pixel the average of the two by two it covers.
Image halved(const Image& picture);
// One level in DXT1 blocks, the picture's width and height rounded up to whole blocks.
std::string encodeDxt1(const Image& picture);
// `count` levels from width x height down, in DXT1.
TextureLevels dxt1Levels(const Image& picture, int width, int height, int count);

} // namespace velmora::textures
