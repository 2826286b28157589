// Image files to upright 8-bit RGB.
#pragma once

#include <filesystem>

#include "image/picture.h"

namespace zv::image {

// Reads a JPEG, PNG, BMP or TIFF file; the format is told by the content, never by the name. Of
// several pages the first counts. Samples of 16 bits are scaled, transparency is dropped, inks are
// converted without a profile. Throws Error with one line for a file that is missing, unreadable,
// of another format, truncated, broken or larger than kMaxPixels.
Picture decode_file(const std::filesystem::path& path);

}  // namespace zv::image
