#include "base/python_text.h"

#include <gtest/gtest.h>

#include <cmath>

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

TEST(TypeName, UsesTheEngineLanguagesNames) {
  EXPECT_EQ(type_name(nullptr), "NoneType");
  EXPECT_EQ(type_name(1), "int");
  EXPECT_EQ(type_name(1.0), "float");
  EXPECT_EQ(type_name("x"), "str");
}

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

}  // namespace
}  // namespace zv
