#include <gtest/gtest.h>

#include "cli/parse.h"

namespace zv::cli {
namespace {

bool inserts(const std::string& word) {
  return with_read({word}).front() == "read" && with_read({word}).size() == 2;
}

TEST(WithRead, TakesPathLikeWordsForImages) {
  for (const char* word :
       {"car.jpg", "./images", "a/b", "a\\b", "*.png", "*", ".", "Version.", "/"}) {
    EXPECT_TRUE(inserts(word)) << word;
  }
}

TEST(WithRead, LeavesOptionsCommandsAndUnknownWordsAlone) {
  for (const char* word : {"-h", "--version", "-x.jpg", "server", "version", "gpu-info",
                           "gpu-setup", "model-info", "no-such-entry-here", ""}) {
    EXPECT_FALSE(inserts(word)) << word;
  }
  EXPECT_TRUE(with_read({}).empty());
}

}  // namespace
}  // namespace zv::cli
