// Drawing on a picture. Whatever lies outside the picture is left out.
#pragma once

#include <cstdint>
#include <string_view>

#include "image/font.h"
#include "image/picture.h"

namespace zv::image {

// Pixels; both corners belong to the rectangle, and both may lie anywhere.
struct Rectangle {
  std::int64_t left;
  std::int64_t top;
  std::int64_t right;
  std::int64_t bottom;
};

class Canvas {
 public:
  explicit Canvas(Picture& picture) : picture_(picture) {}

  // Both throw Error for a rectangle whose right or bottom lies before its left or top.
  void fill_rectangle(const Rectangle& area, const Rgb& colour);
  // The line lies inside the rectangle, unless that is smaller than two lines.
  void outline_rectangle(const Rectangle& area, const Rgb& colour, std::int64_t line_width);

  // The text's origin (see TextBox) comes to lie on (x, y); its edges are blended.
  void draw_text(std::int64_t x, std::int64_t y, std::string_view utf8, const Font& font,
                 const Rgb& colour);

 private:
  // Columns and rows up to, but not including, the last.
  void fill_span(std::int64_t left, std::int64_t top, std::int64_t end_x, std::int64_t end_y,
                 const Rgb& colour);

  Picture& picture_;
};

}  // namespace zv::image
