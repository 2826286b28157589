#include "read/output_path.h"

#include <gtest/gtest.h>

namespace zv::read {
namespace {

TEST(OutputPath, IsTheUsersWordForOneImage) {
  EXPECT_EQ(output_path("res/x.png", "/photos/a.jpg", 1), "res/x.png");
  EXPECT_EQ(output_path("/", "/photos/a.jpg", 1), "/");
}

TEST(OutputPath, PutsSeveralImagesIntoAFolder) {
  EXPECT_EQ(output_path("/", "/photos/a.jpg", 2), "/detected_a.jpg");
}

TEST(OutputPath, PutsSeveralImagesBesideAName) {
  EXPECT_EQ(output_path("res/x.png", "/photos/a.b.jpg", 2), "res/detected_a.b.png");
  EXPECT_EQ(output_path("newdir", "/photos/a.jpg", 2), "detected_a");
  EXPECT_EQ(output_path("newdir/", "/photos/a.jpg", 2), "detected_a");
}

}  // namespace
}  // namespace zv::read
