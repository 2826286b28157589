#include "base/unicode.h"

#include <gtest/gtest.h>

namespace zv {
namespace {

TEST(FirstCharacters, CountsCodePointsNotBytes) {
  EXPECT_EQ(first_characters("äöü京😀x", 5), "äöü京😀");
  EXPECT_EQ(first_characters("ab", 5), "ab");
  EXPECT_EQ(first_characters("", 5), "");
}

TEST(ValidUtf8, RefusesWhatIsNoCodePoint) {
  EXPECT_TRUE(valid_utf8("ä京😀"));
  for (const char* bytes :
       {"\xff", "a\xe9", "\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe4\xba"}) {
    EXPECT_FALSE(valid_utf8(bytes));
  }
}

TEST(InvalidBytes, AreReplacedOrEscapedOneByOne) {
  EXPECT_EQ(replace_invalid("a\xff\xfe京"), "a\uFFFD\uFFFD京");
  EXPECT_EQ(replace_invalid("\xed\xa0\x80"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(escape_invalid("caf\xe9.jpg"), "caf\\udce9.jpg");
}

TEST(HalvesOfSurrogatePairs, AreEscapedWhole) {
  EXPECT_EQ(escape_invalid("\xed\xa0\x80|\xed\xaf\xbf|\xed\xb0\x80|\xed\xbf\xbf"),
            "\\ud800|\\udbff|\\udc00|\\udfff");
  EXPECT_EQ(escape_invalid("\xed\xa0"), "\\udced\\udca0");
  EXPECT_EQ(escape_invalid("\xed\x9f\xbf"), "\xed\x9f\xbf");
}

TEST(AppendCodePoint, WritesEveryLength) {
  std::string text;
  for (const std::uint32_t point : {0x41U, 0xE4U, 0x4EACU, 0x1F600U})
    append_code_point(text, point);
  EXPECT_EQ(text, "Aä京😀");
}

TEST(Strip, TakesAwayUnicodeWhiteSpaceAtBothEndsOnly) {
  EXPECT_EQ(strip(" \t\n a b \r\n"), "a b");
  EXPECT_EQ(strip("\u3000x\u00a0"), "x");
  EXPECT_EQ(strip(" \n "), "");
}

TEST(SplitLines, KnowsAllThreeLineEnds) {
  EXPECT_EQ(split_lines("a\nb\r\nc\rd"), (std::vector<std::string>{"a", "b", "c", "d"}));
  EXPECT_EQ(split_lines("a\n"), (std::vector<std::string>{"a"}));
  EXPECT_EQ(split_lines("\n\n"), (std::vector<std::string>{"", ""}));
  EXPECT_TRUE(split_lines("").empty());
}

TEST(AsciiCase, LeavesOtherLettersAlone) {
  EXPECT_EQ(ascii_lower("JPGÄ"), "jpgÄ");
  EXPECT_EQ(ascii_upper("jpgä"), "JPGä");
}

}  // namespace
}  // namespace zv
