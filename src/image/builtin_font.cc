// The font that needs no file: small, not smoothed, enough to read a label.
#include <cstddef>
#include <cstdint>

#include "base/unicode.h"
#include "image/font.h"

namespace zv::image {
namespace {

constexpr std::size_t GLYPH_WIDTH = 5;
constexpr std::size_t GLYPH_HEIGHT = 9;
constexpr std::size_t GLYPH_ADVANCE = 6;
constexpr std::uint32_t FIRST_GLYPH = 0x20;

// A glyph is nine digits of base 32: a row of five pixels each, from the top; the last two rows lie
// below the line.
constexpr std::string_view UNKNOWN_GLYPH = "VHHHHHV00";
constexpr std::string_view GLYPHS =
    "000000000444440400AAA0000000AVAVA0004FKE5U400PP248JJ00CIICJID00444000000248888420842222480"
    "04LEL4000044V44000000006648000E0000000000CC0011248GG00EHJLPHE004CK444V00EH168GV00U11E11U00"
    "26AIV2200VGU11HE0068GUHHE00V12244400EHHEHHE00EHHF12C000CC00CC0006600664812484210000V0V0000"
    "G84248G00EH1640400EHNLNGE004AAHVHH00UHHUHHU00FGGGGGF00SIHHHIS00VGGUGGV00VGGUGGG00FGGJHHF00"
    "HHHVHHH00V44444V0072222IC00HIKOKIH00GGGGGGV00HRLLHHH00HPPLJJH00EHHHHHE00UHHUGGG00EHHHLID00"
    "UHHUKIH00FGGE11U00V44444400HHHHHHE00HHHHAA400HHHLLRH00HHA4AHH00HHAA44400V1248GV00E888888E0"
    "GG8421100E222222E04AH00000000000000V84000000000E1FHF00GGUHHHU0000FGGGF0011FHHHF0000EHVGF00"
    "68U88880000FHHHF1EGGUHHHH0040C444E0020622222CGGIKOKI00C4444460000QLLLL0000UHHHH0000EHHHE00"
    "00UHHHUGG00FHHHF1100MOGGG0000FGE1U0088U88860000HHHHF0000HHAA40000HLLLA0000HA4AH0000HHHHF1E"
    "00V248V006888G8860444444440C222122C0009LI0000";

std::string_view glyph_of(std::uint32_t code_point) {
  const bool known =
      code_point >= FIRST_GLYPH && code_point - FIRST_GLYPH < GLYPHS.size() / GLYPH_HEIGHT;
  if (!known) return UNKNOWN_GLYPH;
  return GLYPHS.substr((code_point - FIRST_GLYPH) * GLYPH_HEIGHT, GLYPH_HEIGHT);
}

int row_bits(char digit) {
  return digit <= '9' ? digit - '0' : digit - 'A' + 10;
}

class BuiltinFont : public Font {
 public:
  TextBox text_box(std::string_view utf8) const override {
    const auto width = static_cast<int>(count_characters(utf8) * GLYPH_ADVANCE);
    return {0, 0, width, width > 0 ? static_cast<int>(GLYPH_HEIGHT) : 0};
  }

  TextMask render(std::string_view utf8) const override {
    TextMask mask(text_box(utf8));
    const auto width = static_cast<std::size_t>(mask.box.width());
    std::size_t x = 0;
    for (std::size_t at = 0; at < utf8.size(); x += GLYPH_ADVANCE) {
      const std::string_view glyph = glyph_of(next_code_point(utf8, at));
      for (std::size_t i = 0; i < GLYPH_WIDTH * GLYPH_HEIGHT; ++i) {
        const std::size_t row = i / GLYPH_WIDTH;
        const std::size_t column = i % GLYPH_WIDTH;
        const bool ink = (row_bits(glyph[row]) >> (GLYPH_WIDTH - 1 - column) & 1) != 0;
        if (ink) mask.coverage[row * width + x + column] = 255;
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
