#include "image/font.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

#include "base/error.h"

namespace zv::image {
namespace {

std::string rendered(std::string_view text) {
  const TextMask mask = builtin_font()->render(text);
  std::string rows;
  for (std::size_t i = 0; i < mask.coverage.size(); ++i) {
    if (i != 0 && i % static_cast<std::size_t>(mask.box.width()) == 0) rows += '|';
    rows += mask.coverage[i] == 255 ? '#' : '.';
  }
  return rows;
}

TEST(BuiltinFont, DrawsItsTable) {
  EXPECT_EQ(rendered("L"), "#.....|#.....|#.....|#.....|#.....|#.....|#####.|......|......");
}

TEST(BuiltinFont, MeasuresItsGrid) {
  const TextBox box = builtin_font()->text_box("12AB (0.98)");
  EXPECT_EQ(box.width(), 11 * 6);
  EXPECT_EQ(box.height(), 9);
  EXPECT_EQ(builtin_font()->text_box("").width(), 0);
  EXPECT_EQ(builtin_font()->text_box("").height(), 0);
}

TEST(BuiltinFont, ShowsOneBoxForWhatItLacks) {
  const std::string box = rendered("\x7F");
  EXPECT_EQ(rendered("京"), box);
  EXPECT_EQ(rendered("\xFF"), box);
  EXPECT_EQ(rendered("\n"), box);
  EXPECT_NE(rendered("~"), box);
}

TEST(BuiltinFont, DrawsEachCharacterInItsOwnWay) {
  std::set<std::string> glyphs;
  for (char c = ' '; c <= '~'; ++c) glyphs.insert(rendered(std::string(1, c)));
  EXPECT_EQ(glyphs.size(), 95U);
  EXPECT_EQ(rendered("g"), "......|......|.####.|#...#.|#...#.|#...#.|.####.|....#.|.###..");
}

std::string load_failure(const std::string& path) {
  try {
    load_font(path, 16);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(LoadFont, RefusesWhatIsNoFont) {
  const std::string path = testing::TempDir() + "no_font.ttf";
  std::ofstream(path) << "no font";
  EXPECT_EQ(load_failure(path), "cannot open font '" + path + "'");
  EXPECT_EQ(load_failure("/none.ttf"), "cannot open font '/none.ttf'");
}

constexpr char INSTALLED[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

TEST(LoadFont, RendersAntiAliasedText) {
  if (!std::filesystem::exists(INSTALLED)) GTEST_SKIP() << INSTALLED << " is not installed";
  const auto font = load_font(INSTALLED, 16);
  const TextBox box = font->text_box("12AB3456 (0.98)");
  EXPECT_EQ(box.left, 0);
  EXPECT_EQ(box.top, 3);
  EXPECT_EQ(box.right, 134);
  EXPECT_EQ(box.bottom, 17);
  const auto ink = font->render("O").coverage;
  EXPECT_TRUE(std::any_of(ink.begin(), ink.end(), [](int c) { return c > 0 && c < 255; }));
}

TEST(LoadFont, MeasuresAnEmptyTextAsNothing) {
  if (!std::filesystem::exists(INSTALLED)) GTEST_SKIP() << INSTALLED << " is not installed";
  const TextBox box = load_font(INSTALLED, 16)->text_box("");
  EXPECT_EQ(box.width(), 0);
  EXPECT_EQ(box.height(), 0);
}

// A copy of the font with nonsense in place of its outlines.
std::string without_outlines() {
  std::ifstream file(INSTALLED, std::ios::binary);
  std::string font{std::istreambuf_iterator<char>(file), {}};
  const auto number = [&](std::size_t at) {
    std::size_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
      value = value << 8 | static_cast<unsigned char>(font[i]);
    return value;
  };
  const std::size_t entry = font.find("glyf");
  font.replace(number(entry + 8), number(entry + 12), number(entry + 12), '\x11');
  const std::string path = testing::TempDir() + "without_outlines.ttf";
  std::ofstream(path, std::ios::binary) << font;
  return path;
}

TEST(LoadFont, NeverLeavesOutAGlyphThatCannotBeDrawn) {
  if (!std::filesystem::exists(INSTALLED)) GTEST_SKIP() << INSTALLED << " is not installed";
  const auto font = load_font(without_outlines(), 16);
  EXPECT_THROW(font->text_box("12AB"), Error);
  EXPECT_THROW(font->render("12AB"), Error);
}

}  // namespace
}  // namespace zv::image
