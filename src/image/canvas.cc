#include "image/canvas.h"

#include <algorithm>
#include <utility>

#include "base/error.h"

namespace zv::image {
namespace {

void check_order(const Rectangle& area) {
  if (area.right < area.left) throw Error("x1 must be greater than or equal to x0");
  if (area.bottom < area.top) throw Error("y1 must be greater than or equal to y0");
}

std::uint8_t blend(unsigned below, unsigned above, unsigned coverage) {
  const unsigned sum = below * (255 - coverage) + above * coverage + 128;
  return static_cast<std::uint8_t>((sum + (sum >> 8)) >> 8);
}

}  // namespace

void Canvas::fill_span(std::int64_t left, std::int64_t top, std::int64_t end_x, std::int64_t end_y,
                       const Rgb& colour) {
  const auto from = static_cast<int>(std::clamp<std::int64_t>(left, 0, picture_.width));
  const auto to = static_cast<int>(std::clamp<std::int64_t>(end_x, from, picture_.width));
  const auto last = std::min<std::int64_t>(end_y, picture_.height);
  for (auto y = std::max<std::int64_t>(top, 0); y < last; ++y) {
    std::uint8_t* pixel = picture_.pixel(from, static_cast<int>(y));
    for (int x = from; x < to; ++x) pixel = std::copy(colour.begin(), colour.end(), pixel);
  }
}

void Canvas::fill_rectangle(const Rectangle& area, const Rgb& colour) {
  check_order(area);
  fill_span(area.left, area.top, area.right + 1, area.bottom + 1, colour);
}

void Canvas::outline_rectangle(const Rectangle& area, const Rgb& colour, std::int64_t line_width) {
  check_order(area);
  const auto& [left, top, right, bottom] = area;
  std::int64_t sides_from = top + line_width;
  std::int64_t sides_end = bottom - line_width + 1;
  // In a rectangle lower than its two lines the sides join them the other way round.
  if (sides_from > sides_end) std::swap(++sides_from, ++sides_end);
  for (std::int64_t i = 0; i < line_width; ++i) {
    fill_span(left, top + i, right + 1, top + i + 1, colour);
    fill_span(left, bottom - i, right + 1, bottom - i + 1, colour);
    fill_span(left + i, sides_from, left + i + 1, sides_end, colour);
    fill_span(right - i, sides_from, right - i + 1, sides_end, colour);
  }
}

void Canvas::draw_text(std::int64_t x, std::int64_t y, std::string_view utf8, const Font& font,
                       const Rgb& colour) {
  const TextMask mask = font.render(utf8);
  for (int row = 0; row < mask.box.height(); ++row) {
    const std::int64_t to_y = y + mask.box.top + row;
    if (to_y < 0 || to_y >= picture_.height) continue;
    for (int column = 0; column < mask.box.width(); ++column) {
      const std::int64_t to_x = x + mask.box.left + column;
      if (to_x < 0 || to_x >= picture_.width) continue;
      const unsigned coverage = mask.coverage[mask.index(column, row)];
      std::uint8_t* pixel = picture_.pixel(static_cast<int>(to_x), static_cast<int>(to_y));
      for (std::size_t c = 0; c < 3; ++c) pixel[c] = blend(pixel[c], colour[c], coverage);
    }
  }
}

}  // namespace zv::image
