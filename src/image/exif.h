// How a photo must be turned to stand upright, from the places where cameras and editors note it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zv::image {

// Gathers what a file says about its orientation; an EXIF block wins over an XMP packet, the first
// block of a kind over later ones. Nonsense counts as "nothing said".
class OrientationFinder {
 public:
  // An EXIF block: a TIFF header and its directories, with or without the "Exif" prefix.
  void add_exif(std::span<const std::uint8_t> block);
  void add_xmp(std::string_view packet);
  // The content of a JPEG APP1 segment, which holds one or the other.
  void add_jpeg_segment(std::span<const std::uint8_t> segment);

  // 1 (upright) to 8, numbered as in EXIF.
  int orientation() const { return exif_ != 0 ? exif_ : xmp_ != 0 ? xmp_ : 1; }

 private:
  int exif_ = 0;
  int xmp_ = 0;
};

}  // namespace zv::image
