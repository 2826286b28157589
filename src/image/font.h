// Measuring and rendering one line of text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

namespace zv::image {

// Pixels relative to the drawing origin, which lies at the left end of the line, one ascender above
// the baseline; right and bottom lie just outside. An empty text has an empty box at the origin.
struct TextBox {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  int width() const { return right - left; }
  int height() const { return bottom - top; }
};

// The ink of a line: how much of each pixel of the box is covered, 0 to 255, rows from the top.
struct TextMask {
  explicit TextMask(const TextBox& size)
      : box(size),
        coverage(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height())) {
  }

  TextBox box;
  std::vector<std::uint8_t> coverage;

  // Where the coverage of a pixel stands, counted from the box's left and top.
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(box.width()) +
           static_cast<std::size_t>(x);
  }
};

class Font {
 public:
  virtual ~Font() = default;
  // The texts are UTF-8; a character without a glyph shows as the font's box. Both throw Error for
  // a glyph that cannot be drawn.
  virtual TextBox text_box(std::string_view utf8) const = 0;
  virtual TextMask render(std::string_view utf8) const = 0;
};

// A TrueType or OpenType font with an em of `pixels`. Throws Error when the file is missing,
// unreadable or no font.
std::unique_ptr<Font> load_font(const std::filesystem::path& path, unsigned pixels);

// The font that is always there: printable ASCII, 5 x 9 pixels in a grid of 6.
std::unique_ptr<Font> builtin_font();

}  // namespace zv::image
