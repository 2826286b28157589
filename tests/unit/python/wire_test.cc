#include "python/wire.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "base/python_text.h"

namespace zv::python {
namespace {

std::string shown(std::string_view line) {
  return plain_text(read_answer(line));
}

TEST(ReadAnswer, TakesPlainJsonAsItIs) {
  EXPECT_EQ(shown(R"({"ok": [1, 2.0, "x", null]})"), "{'ok': [1, 2.0, 'x', None]}");
}

TEST(ReadAnswer, UndoesTheTags) {
  EXPECT_EQ(shown(R"({"$int": "100000000000000000000"})"), "100000000000000000000");
  EXPECT_EQ(shown(R"({"$real": "nan"})"), "nan");
  EXPECT_EQ(shown(R"({"$real": "-inf"})"), "-inf");
  EXPECT_EQ(shown(R"({"$bytes": "636166e9"})"), "caf\xe9");
  EXPECT_EQ(shown(R"({"$map": [["a", {"$map": []}], ["$x", 1]]})"), "{'a': {}, '$x': 1}");
  EXPECT_EQ(shown(R"x({"$opaque": ["Decimal", "1.5", "Decimal('1.5')"]})x"), "1.5");
}

TEST(ReadAnswer, RefusesTagsWithoutSense) {
  EXPECT_ANY_THROW(read_answer(R"({"$map": 1})"));
  EXPECT_ANY_THROW(read_answer(R"({"$int": []})"));
  for (const char* line : {R"({"$bytes": "zz"})", R"({"$bytes": "6"})", R"({"$map": [["a"]]})",
                           R"({"$opaque": []})", R"({"$opaque": "x"})", "no JSON"}) {
    try {
      read_answer(line);
      ADD_FAILURE() << line;
    } catch (const Error& error) {
      EXPECT_STREQ(error.what(), NO_ANSWER) << line;
    }
  }
}

}  // namespace
}  // namespace zv::python
