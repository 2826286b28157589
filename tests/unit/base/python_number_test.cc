#include "base/python_number.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/error.h"
#include "base/python_text.h"

namespace zv {
namespace {

template <class Action>
std::string refusal(Action action) {
  try {
    action();
  } catch (const Error& error) {
    return error.what();
  }
  return "nothing refused";
}

TEST(Compare, MixesKindsOfNumbers) {
  EXPECT_TRUE(greater(1.0001, 1));
  EXPECT_FALSE(greater(1, 1));
  EXPECT_FALSE(greater(true, 1));
  EXPECT_TRUE(greater(BigInteger{"100000000000000000000"}, 1));
  EXPECT_TRUE(greater_equal(0.9, 0.9));
  EXPECT_TRUE(less(59.6, 60));
  EXPECT_FALSE(greater_equal(std::nan(""), 0));
}

TEST(Compare, RefusesOtherKindsInWords) {
  EXPECT_EQ(refusal([] { greater("high", 1); }),
            "'>' not supported between instances of 'str' and 'int'");
  EXPECT_EQ(refusal([] { less(nullptr, 60); }),
            "'<' not supported between instances of 'NoneType' and 'int'");
}

TEST(Divide, IsReal) {
  EXPECT_EQ(divide(95, 100.0), 0.95);
  EXPECT_EQ(divide(97.5, 100.0), 0.975);
  EXPECT_EQ(refusal([] { divide(BigInteger{std::string(400, '9')}, 100.0); }),
            "int too large to convert to float");
}

TEST(FixedText, FormatsNumbersOnly) {
  EXPECT_EQ(fixed_text(Value(1), 2), "1.00");
  EXPECT_EQ(fixed_text(Value(true), 2), "1.00");
  EXPECT_EQ(refusal([] { fixed_text(Value("x"), 2); }),
            "Unknown format code 'f' for object of type 'str'");
  EXPECT_EQ(refusal([] { fixed_text(Value(), 0); }),
            "unsupported format string passed to NoneType.__format__");
}

TEST(Truncate, GoesTowardZeroAndNeverOverflows) {
  EXPECT_EQ(truncate(10.7), 10);
  EXPECT_EQ(truncate(-10.7), -10);
  EXPECT_EQ(truncate(1e300), 2147483647);
  EXPECT_EQ(refusal([] { truncate(std::nan("")); }), "cannot convert float NaN to integer");
  EXPECT_EQ(refusal([] { truncate("1"); }), "a box coordinate must be a number, not 'str'");
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
