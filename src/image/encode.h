// Upright 8-bit RGB to image files.
#pragma once

#include <filesystem>

#include "image/picture.h"

namespace zv::image {

// Writes the picture in the format of the path's suffix (in any case): .jpg .jpeg .jpe .jfif,
// .png, .bmp, .tif .tiff. No folder is created. Throws Error with one line for another suffix
// (then nothing was opened) and for a file that cannot be written to its end; such a file is
// removed unless it was there before.
void encode_file(const Picture& picture, const std::filesystem::path& path);

}  // namespace zv::image
