// Turning and mirroring whole pictures.
#pragma once

#include "image/picture.h"

namespace zv::image {

// The picture that stands upright when `stored` carries this EXIF orientation (1 to 8).
Picture upright(Picture stored, int orientation);

}  // namespace zv::image
