// What stands before the pixels of a BMP file: size, depth, palette and channel masks.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "image/colour.h"
#include "image/input_file.h"

namespace zv::image {

enum class BmpCompression { kNone, kRle8, kRle4 };

// One channel of a 16- or 32-bit pixel.
struct BmpChannel {
  unsigned shift = 0;
  std::uint32_t maximum = 0;

  std::uint8_t value(std::uint32_t pixel) const {
    if (maximum == 0) return 0;
    return static_cast<std::uint8_t>(std::uint64_t{pixel >> shift & maximum} * 255 / maximum);
  }
};

struct BmpHeader {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  bool top_down = false;
  unsigned bits = 0;  // per pixel: 1, 2, 4, 8, 16, 24 or 32
  BmpCompression compression = BmpCompression::kNone;
  std::array<BmpChannel, 3> channels{};  // red, green, blue; of 16- and 32-bit pixels
  std::vector<Rgb> palette;              // one entry for each possible index; of 1 to 8 bits
};

// Reads the header and leaves the file at the first byte of the pixels. Throws Error for anything
// that is not a BMP this program can show.
BmpHeader read_bmp_header(InputFile& file);

}  // namespace zv::image
