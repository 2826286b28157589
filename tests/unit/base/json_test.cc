#include "base/json.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/python_text.h"

namespace zv {
namespace {

std::string read_and_show(std::string_view text) {
  return plain_text(parse_json(text));
}

TEST(ParseJson, KeepsWholeNumbersAndRealsApart) {
  EXPECT_EQ(read_and_show("[1, 1.0, -7, 1e2, 18446744073709551615, 1000000000000000000000]"),
            "[1, 1.0, -7, 100.0, 18446744073709551615, 1000000000000000000000]");
}

TEST(ParseJson, KeepsOrderAndTheLastOfEqualKeys) {
  EXPECT_EQ(read_and_show(R"({"b": 1, "a": 2, "b": 3})"), "{'b': 3, 'a': 2}");
}

TEST(ParseJson, ReadsEscapes) {
  EXPECT_EQ(read_and_show(R"("\ud83d\ude00\u00e4\n")"), "😀ä\n");
}

TEST(ParseJson, TakesHalvesOfSurrogatePairsAsTheyAre) {
  EXPECT_EQ(*parse_json(R"("\uDE00\ud83d\ud83d\ude00x")").as<std::string>(),
            "\xED\xB8\x80\xED\xA0\xBD😀x");
  EXPECT_EQ(*parse_json(R"("\u0001d83d\\ud83d\u0000")").as<std::string>(),
            std::string("\1d83d\\ud83d\0", 12));
  EXPECT_EQ(parse_json(R"({"\udc00": 1})").as<Map>()->entries()[0].first, "\xED\xB0\x80");
}

TEST(ParseJson, ReadsObjectsWithVeryManyKeys) {
  std::string text = "{";
  for (int i = 0; i < 50'000; ++i) text += "\"k" + std::to_string(i) + "\": 1, ";
  const Value value = parse_json(text + "\"k7\": 2}");
  ASSERT_EQ(value.as<Map>()->size(), 50'000U);
  EXPECT_EQ(*value.as<Map>()->entries()[7].second.as<std::int64_t>(), 2);
}

TEST(ParseJson, RefusesWhatIsNoJson) {
  for (const char* text : {"", "{", "\"\\u\"", "\"\\ud83\"", "\"\\", "{'a': 1}", "[1,]", "1 2",
                           "{} x", "\"\xff\"", "nul", "<html>"}) {
    EXPECT_THROW(parse_json(text), JsonError) << text;
  }
}

TEST(ParseJson, RefusesBottomlessNesting) {
  EXPECT_THROW(parse_json(std::string(100000, '[')), JsonError);
  EXPECT_NO_THROW(parse_json(std::string(400, '[') + std::string(400, ']')));
}

TEST(JsonLine, SeparatesWithBlanksAndEscapesToAscii) {
  EXPECT_EQ(json_line(Map{{"region", "größe"}, {"n", List{1, 2.0, true, nullptr}}}),
            R"({"region": "gr\u00f6\u00dfe", "n": [1, 2.0, true, null]})");
  EXPECT_EQ(json_line("😀\"\\\n\x01\x7f"), "\"\\ud83d\\ude00\\\"\\\\\\n\\u0001\\u007f\"");
}

TEST(JsonLine, WritesNumbersThatJsonHasNoWordFor) {
  EXPECT_EQ(json_line(List{std::nan(""), INFINITY, -INFINITY}), "[NaN, Infinity, -Infinity]");
  EXPECT_EQ(json_line(BigInteger{"100000000000000000000"}), "100000000000000000000");
}

TEST(JsonLine, KeepsBytesThatAreNoText) {
  EXPECT_EQ(json_line("caf\xe9"), "\"caf\\udce9\"");
  EXPECT_EQ(json_line("\xed\xa0\xbd"), "\"\\udced\\udca0\\udcbd\"");
}

TEST(JsonLine, RefusesWhatItCannotWrite) {
  EXPECT_THROW(json_line(Opaque{"Decimal", "1", "Decimal('1')"}), JsonError);
}

TEST(JsonIndented, KeepsHalvesOfSurrogatePairs) {
  EXPECT_EQ(json_indented("\xed\xa0\xbd caf\xe9 \xed"), "\"\\ud83d caf\\udce9 \\udced\"");
}

TEST(JsonIndented, PutsEveryElementOnALine) {
  EXPECT_EQ(json_indented(List{Map{{"a", List{1}}, {"b", List()}, {"c", Map()}}}),
            "[\n  {\n    \"a\": [\n      1\n    ],\n    \"b\": [],\n    \"c\": {}\n  }\n]");
  EXPECT_EQ(json_indented(List()), "[]");
}

}  // namespace
}  // namespace zv
