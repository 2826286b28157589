// What every codec file offers to image_file.cc: from the bytes of a whole file to pixels as they
// are stored, and back. All throw Error, and Interrupted for Ctrl+C.
#pragma once

#include <string>
#include <string_view>

#include "image/picture.h"

namespace zv::image {

struct Decoded {
  Picture picture;
  int orientation = 1;  // as in EXIF, 1 (upright) to 8
  std::string damage;   // why a part of the picture is missing; empty for a whole one
};

inline constexpr char TRUNCATED[] = "image file is truncated";

Decoded decode_jpeg(std::string_view file);
Decoded decode_png(std::string_view file);
Decoded decode_bmp(std::string_view file);
Decoded decode_tiff(std::string_view file);

std::string encode_jpeg(const Picture& picture);
std::string encode_png(const Picture& picture);
std::string encode_bmp(const Picture& picture);
std::string encode_tiff(const Picture& picture);

}  // namespace zv::image
