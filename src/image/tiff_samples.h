// From the samples of a TIFF picture to RGB, row by row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "image/colour.h"
#include "image/tiff_file.h"

namespace zv::image {

// How the samples of a picture are stored and what they mean.
class TiffSamples {
 public:
  // Throws Error for a meaning or depth that this program cannot show.
  explicit TiffSamples(const TiffFile& file);

  // Samples per pixel.
  std::size_t per_pixel() const { return per_pixel_; }
  unsigned bits() const { return bits_; }

  // Spreads `count` packed samples of a row to 8 bits each, `step` bytes apart; only palette
  // indices keep their value, and numbers of 32 bits are cut to 0..255; all others are scaled.
  void unpack(const std::uint8_t* packed, std::size_t count, std::uint8_t* to,
              std::size_t step) const;

  // `pixels` pixels of per_pixel() unpacked samples to RGB.
  void convert(const std::uint8_t* samples, std::size_t pixels, std::uint8_t* rgb) const;

 private:
  void read_palette(const TiffFile& file);
  void convert_pixel(const std::uint8_t* samples, std::uint8_t* rgb) const;

  std::size_t per_pixel_;
  unsigned bits_;
  std::uint16_t format_;     // whole, signed or real numbers
  std::uint16_t meaning_;    // libtiff's photometric interpretation
  bool multiplied_ = false;  // colours are stored multiplied with the alpha that follows them
  std::vector<Rgb> palette_;
};

}  // namespace zv::image
