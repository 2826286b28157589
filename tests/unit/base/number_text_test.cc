#include "base/number_text.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/value_text.h"

namespace zv {
namespace {

TEST(RealText, IsTheShortestThatReadsBack) {
  EXPECT_EQ(real_text(0.5), "0.5");
  EXPECT_EQ(real_text(4.0), "4.0");
  EXPECT_EQ(real_text(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(real_text(-0.0), "-0.0");
}

TEST(RealText, UsesExponentsOutsideTheMiddle) {
  EXPECT_EQ(real_text(1e15), "1000000000000000.0");
  EXPECT_EQ(real_text(1e16), "1e+16");
  EXPECT_EQ(real_text(0.0001), "0.0001");
  EXPECT_EQ(real_text(0.00001), "1e-05");
  EXPECT_EQ(real_text(1.5e300), "1.5e+300");
}

TEST(RealText, NamesWhatIsNotFinite) {
  EXPECT_EQ(real_text(std::nan("")), "nan");
  EXPECT_EQ(real_text(INFINITY), "inf");
  EXPECT_EQ(real_text(-INFINITY), "-inf");
}

TEST(FixedText, RoundsTiesToEven) {
  EXPECT_EQ(fixed_text(2.5, 0), "2");
  EXPECT_EQ(fixed_text(3.5, 0), "4");
  EXPECT_EQ(fixed_text(0.125, 2), "0.12");
  EXPECT_EQ(fixed_text(0.98, 2), "0.98");
}

TEST(ParseInteger, TakesWhatPeopleType) {
  EXPECT_EQ(plain_text(*parse_integer(" 42 ")), "42");
  EXPECT_EQ(plain_text(*parse_integer("-007")), "-7");
  EXPECT_EQ(plain_text(*parse_integer("+1_000")), "1000");
  EXPECT_EQ(plain_text(*parse_integer("-0")), "0");
}

TEST(ParseInteger, KeepsNumbersOfAnySize) {
  EXPECT_EQ(plain_text(*parse_integer("9223372036854775808")), "9223372036854775808");
  EXPECT_EQ(plain_text(*parse_integer("-99999999999999999999")), "-99999999999999999999");
}

TEST(ParseInteger, RefusesTheRest) {
  for (const char* text : {"", " ", "abc", "1.0", "1__0", "_1", "1_", "--1", "0x10", "1 2"}) {
    EXPECT_FALSE(parse_integer(text)) << text;
  }
}

TEST(ParseReal, TakesWhatPeopleType) {
  EXPECT_EQ(*parse_real("0.5"), 0.5);
  EXPECT_EQ(*parse_real(" -.5 "), -0.5);
  EXPECT_EQ(*parse_real("+1e-3"), 0.001);
  EXPECT_EQ(*parse_real("1_0.5"), 10.5);
  EXPECT_TRUE(std::isinf(*parse_real("1e999")));
  EXPECT_TRUE(std::isinf(*parse_real("Infinity")));
  EXPECT_TRUE(std::isnan(*parse_real("nan")));
}

TEST(ParseReal, RefusesTheRest) {
  for (const char* text : {"", "abc", "0x1p3", "1e", "--1", "+-1", "1.0.0", "nan(1)"}) {
    EXPECT_FALSE(parse_real(text)) << text;
  }
}

}  // namespace
}  // namespace zv
