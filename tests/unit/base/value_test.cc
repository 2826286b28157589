#include "base/value.h"

#include <gtest/gtest.h>

#include "base/python_text.h"

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

TEST(Truthy, IsFalseForNothingZeroAndEmpty) {
  for (const Value& value :
       {Value(), Value(false), Value(0), Value(0.0), Value(""), Value(List()), Value(Map())}) {
    EXPECT_FALSE(truthy(value)) << plain_text(value);
  }
  for (const Value& value :
       {Value(true), Value(-1), Value(0.1), Value("0"), Value(List{0}), Value(Map{{"a", 0}})}) {
    EXPECT_TRUE(truthy(value)) << plain_text(value);
  }
}

TEST(Map, KeepsTheFirstPlaceAndTheLastValue) {
  Map map{{"a", 1}, {"b", 2}};
  map.set("a", 3);
  EXPECT_EQ(plain_text(map), "{'a': 3, 'b': 2}");
}

}  // namespace
}  // namespace zv
