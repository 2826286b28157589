#include "base/value_text.h"

#include <gtest/gtest.h>

namespace zv {
namespace {

TEST(PlainText, ShowsEveryKind) {
  EXPECT_EQ(plain_text(nullptr), "None");
  EXPECT_EQ(plain_text(true), "True");
  EXPECT_EQ(plain_text(false), "False");
  EXPECT_EQ(plain_text(7), "7");
  EXPECT_EQ(plain_text(4.0), "4.0");
  EXPECT_EQ(plain_text("it's"), "it's");
  EXPECT_EQ(plain_text(BigInteger{"100000000000000000000"}), "100000000000000000000");
}

TEST(PlainText, QuotesInsideContainers) {
  const Value value =
      Map{{"success", false}, {"error", "unknown region"}, {"list", List{1, 2.5, nullptr}}};
  EXPECT_EQ(plain_text(value),
            "{'success': False, 'error': 'unknown region', 'list': [1, 2.5, None]}");
  EXPECT_EQ(plain_text(Map{}), "{}");
  EXPECT_EQ(plain_text(List{}), "[]");
}

TEST(QuotedText, ChoosesTheQuotesThatNeedNoEscape) {
  EXPECT_EQ(quoted_text("8001"), "'8001'");
  EXPECT_EQ(quoted_text("it's"), "\"it's\"");
  EXPECT_EQ(quoted_text("it's \"x\""), "'it\\'s \"x\"'");
}

TEST(QuotedText, EscapesWhatCannotBeSeen) {
  EXPECT_EQ(quoted_text("a\n\t\\\x01"), "'a\\n\\t\\\\\\x01'");
  EXPECT_EQ(quoted_text("ä京😀"), "'ä京😀'");
  EXPECT_EQ(quoted_text("\u200b\ufeff"), "'\\u200b\\ufeff'");
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

TEST(TypeName, UsesTheEngineLanguagesNames) {
  EXPECT_EQ(type_name(nullptr), "NoneType");
  EXPECT_EQ(type_name(1), "int");
  EXPECT_EQ(type_name(1.0), "float");
  EXPECT_EQ(type_name("x"), "str");
}

TEST(Map, KeepsTheFirstPlaceAndTheLastValue) {
  Map map{{"a", 1}, {"b", 2}};
  map.set("a", 3);
  EXPECT_EQ(plain_text(map), "{'a': 3, 'b': 2}");
}

}  // namespace
}  // namespace zv
