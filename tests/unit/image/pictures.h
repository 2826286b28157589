// Small pictures for the tests of this room.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image/picture.h"

namespace zv::image {

inline constexpr Rgb GREY{90, 90, 90};

inline Picture filled(int width, int height, const Rgb& colour = GREY) {
  Picture picture =
      unpainted(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
  for (std::size_t i = 0; i < picture.rgb.size(); ++i) picture.rgb[i] = colour[i % 3];
  return picture;
}

// No two pixels alike.
inline Picture numbered(int width, int height) {
  Picture picture = filled(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      std::uint8_t* pixel = picture.pixel(x, y);
      pixel[0] = static_cast<std::uint8_t>(x);
      pixel[1] = static_cast<std::uint8_t>(y);
    }
  }
  return picture;
}

inline Rgb pixel_at(const Picture& picture, int x, int y) {
  const std::uint8_t* pixel = picture.row(y) + 3 * x;
  return {pixel[0], pixel[1], pixel[2]};
}

// One text per row: '#' where the pixel has the colour, '.' elsewhere.
inline std::vector<std::string> drawing(const Picture& picture, const Rgb& colour) {
  std::vector<std::string> rows;
  for (int y = 0; y < picture.height; ++y) {
    std::string row;
    for (int x = 0; x < picture.width; ++x) row += pixel_at(picture, x, y) == colour ? '#' : '.';
    rows.push_back(row);
  }
  return rows;
}

}  // namespace zv::image
