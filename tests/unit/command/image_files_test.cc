#include "command/image_files.h"

#include <gtest/gtest.h>

#include <fstream>

namespace zv {
namespace {

namespace fs = std::filesystem;

class ValidateFilePathTest : public testing::Test {
 protected:
  ValidateFilePathTest() : folder_(fs::canonical(fs::temp_directory_path()) / "zv-validate-test") {
    fs::remove_all(folder_);
    fs::create_directories(folder_ / "x.jpg.d" / "x.jpg");
  }
  ~ValidateFilePathTest() override { fs::remove_all(folder_); }

  std::string make(const std::string& name) {
    std::ofstream(folder_ / name).put('x');
    return (folder_ / name).string();
  }
  fs::path folder_;
};

TEST_F(ValidateFilePathTest, AnswersTheResolvedPathOfAnImage) {
  const std::string photo = make("photo.JPG");
  EXPECT_EQ(validate_file_path(photo), photo);
  EXPECT_EQ(validate_file_path((folder_ / "x.jpg.d" / ".." / "photo.JPG").string()), photo);
}

TEST_F(ValidateFilePathTest, JudgesALinkByWhatItPointsAt) {
  fs::create_symlink(make("photo.png"), folder_ / "link.txt");
  fs::create_symlink(make("notes.txt"), folder_ / "notes.jpg");
  EXPECT_EQ(validate_file_path((folder_ / "link.txt").string()), folder_ / "photo.png");
  EXPECT_FALSE(validate_file_path((folder_ / "notes.jpg").string()));
}

TEST_F(ValidateFilePathTest, RefusesAllElse) {
  EXPECT_FALSE(validate_file_path(make("scan.webp")));
  EXPECT_FALSE(validate_file_path(make("jpg")));
  EXPECT_FALSE(validate_file_path((folder_ / "x.jpg.d" / "x.jpg").string()));
  EXPECT_FALSE(validate_file_path((folder_ / "missing.jpg").string()));
  EXPECT_FALSE(validate_file_path(""));
  EXPECT_FALSE(validate_file_path(std::string(10000, 'a') + ".jpg"));
}

TEST(AllowedImageExtensions, AreSix) {
  EXPECT_EQ(allowed_image_extensions().size(), 6U);
}

}  // namespace
}  // namespace zv
