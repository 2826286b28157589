#include "read/output_files.h"

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

TEST(WrittenFiles, TellsWhatIsLostUnderAnyNameOfAFile) {
  WrittenFiles files({"/none/a.png"});
  EXPECT_EQ(files.add("/none/b.png", "a copy"), "");
  EXPECT_EQ(files.add("/none/./a.png", "a copy"),
            "zv-anpr: /none/./a.png held the photo and now holds a copy");
  EXPECT_EQ(files.add("/none/x/../b.png", "another"),
            "zv-anpr: /none/x/../b.png held a copy and now holds another");
}

}  // namespace
}  // namespace zv::read
