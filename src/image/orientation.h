// How a photo must be turned to stand upright, and turning it.
#pragma once

#include <string_view>

#include "image/picture.h"

namespace zv::image {

// Gathers what a file says in the places where cameras and editors note it: an EXIF block wins over
// an XMP packet, the first block of a kind over later ones. Nonsense counts as "nothing said".
class Orientation {
 public:
  // A TIFF header and its directories, with or without the "Exif" prefix.
  void add_exif(std::string_view block);
  void add_xmp(std::string_view packet);
  // The content of a JPEG APP1 segment, which holds one or the other.
  void add_jpeg_segment(std::string_view segment);
  // An EXIF block as older editors hide it in a PNG text: a name, a length, hexadecimal digits.
  void add_raw_profile(std::string_view text);

  // 1 (upright) to 8, numbered as in EXIF.
  int value() const { return exif_ != 0 ? exif_ : xmp_ != 0 ? xmp_ : 1; }

 private:
  int exif_ = 0;
  int xmp_ = 0;
};

// The picture that stands upright when `stored` carries this EXIF orientation (1 to 8).
Picture upright(Picture stored, int orientation);

}  // namespace zv::image
