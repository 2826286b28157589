#include "base/glob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace zv {
namespace {

TEST(Matches, KnowsStarsQuestionMarksAndSets) {
  EXPECT_TRUE(matches("*.jpg", "a.jpg"));
  EXPECT_TRUE(matches("*", ""));
  EXPECT_TRUE(matches("a*b*c", "aXbYbZc"));
  EXPECT_FALSE(matches("*.jpg", "a.JPG"));
  EXPECT_TRUE(matches("?.jpg", "京.jpg"));
  EXPECT_FALSE(matches("?.jpg", "ab.jpg"));
  EXPECT_TRUE(matches("car[0-9].png", "car7.png"));
  EXPECT_FALSE(matches("car[!0-9].png", "car7.png"));
  EXPECT_TRUE(matches("[]a].x", "].x"));
  EXPECT_TRUE(matches("[a", "[a"));
}

class GlobTest : public testing::Test {
 protected:
  GlobTest() : folder_(std::filesystem::temp_directory_path() / "zv-glob-test") {
    std::filesystem::remove_all(folder_);
    for (const char* name : {"a/x.jpg", "a/y.png", "b/x.jpg", ".hidden.jpg", "z.jpg"}) {
      std::filesystem::create_directories((folder_ / name).parent_path());
      std::ofstream(folder_ / name).put('x');
    }
  }
  ~GlobTest() override { std::filesystem::remove_all(folder_); }

  std::vector<std::string> names(const std::string& pattern) const {
    std::vector<std::string> found;
    for (const std::string& path : glob((folder_ / pattern).string())) {
      found.push_back(std::filesystem::relative(path, folder_).string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

 private:
  std::filesystem::path folder_;
};

TEST_F(GlobTest, MatchesInEveryPartOfThePath) {
  EXPECT_EQ(names("*/x.jpg"), (std::vector<std::string>{"a/x.jpg", "b/x.jpg"}));
  EXPECT_EQ(names("a/*"), (std::vector<std::string>{"a/x.jpg", "a/y.png"}));
}

TEST_F(GlobTest, LeavesHiddenNamesToPatternsThatBeginSo) {
  EXPECT_EQ(names("*.jpg"), (std::vector<std::string>{"z.jpg"}));
  EXPECT_EQ(names(".*.jpg"), (std::vector<std::string>{".hidden.jpg"}));
}

TEST_F(GlobTest, FindsNothingWhereNothingIs) {
  EXPECT_TRUE(names("nowhere/*.jpg").empty());
  EXPECT_TRUE(names("*.gif").empty());
}

}  // namespace
}  // namespace zv
