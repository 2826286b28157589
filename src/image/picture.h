// The pixels every part of this room exchanges: upright 8-bit RGB, and the size every codec obeys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zv::image {

// Interleaved red, green, blue; rows from the top, each 3 * width bytes without padding.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;

  std::size_t stride() const { return static_cast<std::size_t>(width) * 3; }
  std::uint8_t* row(int y) { return rgb.data() + stride() * static_cast<std::size_t>(y); }
  const std::uint8_t* row(int y) const {
    return rgb.data() + stride() * static_cast<std::size_t>(y);
  }
  std::uint8_t* pixel(int x, int y) {
    return row(y) + std::size_t{3} * static_cast<std::size_t>(x);
  }
};

// A picture above this is taken for an attack or a mistake; as RGB it would fill half a gigabyte.
inline constexpr std::uint64_t kMaxPixels = 178'956'970;

// Throws Error for an empty picture and for one above kMaxPixels; called before any allocation.
void check_size(std::uint64_t width, std::uint64_t height);

// A checked picture with all rows present and black.
Picture blank_picture(std::uint64_t width, std::uint64_t height);

// A checked picture without rows: memory is set aside, but only touched as append_row is called,
// so that a small file with a lying header costs nothing.
Picture empty_picture(std::uint64_t width, std::uint64_t height);
std::uint8_t* append_row(Picture& picture);

}  // namespace zv::image
