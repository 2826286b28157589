// The font that needs no file: small, not smoothed, enough to read a label.
#include <cstddef>

#include "base/unicode.h"
#include "image/builtin_glyphs.h"
#include "image/font.h"

namespace zv::image {
namespace {

const char* glyph_of(std::uint32_t code_point) {
  const bool known = code_point >= kFirstGlyph && code_point - kFirstGlyph < kGlyphs.size();
  return known ? kGlyphs[code_point - kFirstGlyph] : kUnknownGlyph;
}

class BuiltinFont : public Font {
 public:
  TextBox text_box(std::string_view utf8) const override {
    const auto characters = static_cast<int>(count_characters(utf8));
    return {0, 0, characters * kGlyphAdvance, characters > 0 ? kGlyphHeight : 0};
  }

  TextMask render(std::string_view utf8) const override {
    TextMask mask{text_box(utf8), {}};
    const auto width = static_cast<std::size_t>(mask.box.width());
    mask.coverage.resize(width * static_cast<std::size_t>(mask.box.height()));
    std::size_t x = 0;
    for (std::size_t at = 0; at < utf8.size(); x += kGlyphAdvance) {
      const char* glyph = glyph_of(next_code_point(utf8, at));
      for (std::size_t y = 0; y < kGlyphHeight; ++y) {
        for (std::size_t i = 0; i < kGlyphWidth; ++i) {
          if (glyph[y * (kGlyphWidth + 1) + i] == '#') mask.coverage[y * width + x + i] = 255;
        }
      }
    }
    return mask;
  }
};

}  // namespace

std::unique_ptr<Font> builtin_font() {
  return std::make_unique<BuiltinFont>();
}

}  // namespace zv::image
