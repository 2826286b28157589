// Image files to upright 8-bit RGB, and back.
#pragma once

#include <filesystem>
#include <string>

#include "image/picture.h"

namespace zv::image {

struct Photo {
  Picture picture;
  std::string damage;  // why a part of the picture is missing; empty for a whole one
};

// Reads a JPEG, PNG, BMP or TIFF file; the format is told by the content, never by the name. Of
// several pages the first counts. Samples of 16 bits are scaled, transparency is dropped, inks are
// converted without a profile. A JPEG file that breaks off is shown as far as it goes, if that is
// a quarter of its rows. Throws Error with one line for a file that is missing, unreadable, of
// another format, truncated, broken or larger than MAX_PIXELS, and Interrupted for Ctrl+C.
Photo decode_file(const std::filesystem::path& path);

// Writes the picture in the format of the path's suffix (in any case): .jpg .jpeg .jpe .jfif,
// .png, .bmp, .tif .tiff. No folder is created; a file that is there is replaced as a whole or not
// at all. Throws Error with one line for another suffix (then nothing was opened) and for a file
// that cannot be written to its end, and Interrupted for Ctrl+C.
void encode_file(const Picture& picture, const std::filesystem::path& path);

}  // namespace zv::image
