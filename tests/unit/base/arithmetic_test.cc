#include "base/arithmetic.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/error.h"

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

}  // namespace
}  // namespace zv
