#include "base/value_equal.h"

#include <gtest/gtest.h>

namespace zv {
namespace {

TEST(Equal, ComparesNumbersByValue) {
  EXPECT_TRUE(equal(1, 1.0));
  EXPECT_TRUE(equal(true, 1));
  EXPECT_FALSE(equal(1, 2));
  EXPECT_FALSE(equal(1, "1"));
  EXPECT_FALSE(equal(BigInteger{"18446744073709551616"}, BigInteger{"18446744073709551617"}));
}

TEST(Equal, ComparesTextsAndNothing) {
  EXPECT_TRUE(equal("univ", "univ"));
  EXPECT_FALSE(equal("univ", "UNIV"));
  EXPECT_TRUE(equal(nullptr, nullptr));
  EXPECT_FALSE(equal(nullptr, ""));
}

TEST(Equal, ComparesContainersByTheirContent) {
  EXPECT_TRUE(equal(List{1, "a"}, List{1, "a"}));
  EXPECT_FALSE(equal(List{1}, List{1, 2}));
  EXPECT_TRUE(equal(Map{{"a", 1}, {"b", 2}}, Map{{"b", 2}, {"a", 1}}));
  EXPECT_FALSE(equal(Map{{"a", 1}}, Map{{"a", 2}}));
  EXPECT_FALSE(equal(Map{{"a", nullptr}}, Map{{"b", nullptr}}));
}

}  // namespace
}  // namespace zv
