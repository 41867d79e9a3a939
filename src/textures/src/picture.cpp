#include "velmora/textures/picture.h"

#include <algorithm>
#include <cstring>

namespace velmora::textures {

namespace {

std::size_t at(int width, int x, int y) {
    return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4;
}

} // namespace

Image flipped(const Image& picture) {
    if (!picture.valid())
        return picture;
    Image out = picture;
    const std::size_t row = static_cast<std::size_t>(picture.width) * 4;
    for (int y = 0; y < picture.height; ++y)
        std::memcpy(&out.rgba[at(picture.width, 0, picture.height - 1 - y)], &picture.rgba[at(picture.width, 0, y)], row);
    return out;
}

Image rotated(const Image& picture) {
    if (!picture.valid())
        return picture;
    Image out;
    out.width = picture.height;
    out.height = picture.width;
    out.rgba.resize(picture.rgba.size());
    // Source (x, y) lands at (height - 1 - y, x).
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            std::memcpy(&out.rgba[at(out.width, picture.height - 1 - y, x)], &picture.rgba[at(picture.width, x, y)], 4);
    return out;
}

Image greyed(const Image& picture) {
    Image out = picture;
    for (std::size_t i = 0; i + 3 < out.rgba.size(); i += 4) {
        const int y = (299 * out.rgba[i] + 587 * out.rgba[i + 1] + 114 * out.rgba[i + 2] + 500) / 1000;
        const auto v = static_cast<std::uint8_t>(std::min(y, 255));
        out.rgba[i] = out.rgba[i + 1] = out.rgba[i + 2] = v;
    }
    return out;
}

Image applied(Image picture, PictureStep step) {
    switch (step) {
    case PictureStep::Flip: return flipped(picture);
    case PictureStep::Rotate: return rotated(picture);
    case PictureStep::Grey: return greyed(picture);
    }
    return picture;
}

Image applied(Image picture, const std::vector<PictureStep>& steps) {
    for (const PictureStep step : steps)
        picture = applied(std::move(picture), step);
    return picture;
}

bool quarterTurns(long long degrees, int& turns) {
    if (degrees % 90 != 0)
        return false;
    turns = static_cast<int>(((degrees / 90) % 4 + 4) % 4);
    return true;
}

} // namespace velmora::textures
