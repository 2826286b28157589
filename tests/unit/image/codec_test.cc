#include <gtest/gtest.h>

#include <fstream>

#include "base/error.h"
#include "image/image_file.h"
#include "image/pictures.h"

namespace zv::image {
namespace {

std::string file_named(const std::string& name) {
  return testing::TempDir() + "codec_" + name;
}

class EveryFormat : public testing::TestWithParam<const char*> {};

TEST_P(EveryFormat, KeepsThePicture) {
  const std::string path = file_named(std::string("a") + GetParam());
  const Picture picture = numbered(21, 13);
  encode_file(picture, path);
  const Picture back = decode_file(path).picture;
  ASSERT_EQ(back.width, 21);
  ASSERT_EQ(back.height, 13);
  const bool lossy = GetParam()[1] == 'j' || GetParam()[1] == 'J';
  for (std::size_t i = 0; i < picture.rgb.size(); ++i) {
    ASSERT_NEAR(back.rgb[i], picture.rgb[i], lossy ? 25 : 0) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Suffixes, EveryFormat,
                         testing::Values(".jpg", ".jpeg", ".jpe", ".jfif", ".png", ".bmp", ".tif",
                                         ".tiff", ".PNG", ".JpG"));

template <class Action>
std::string failure(Action action) {
  try {
    action();
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(EncodeFile, JudgesTheSuffixFirst) {
  const auto refused = [](const char* path) {
    return failure([&] { encode_file(filled(2, 2), path); });
  };
  EXPECT_EQ(refused("/none/a.xyz"), "unknown file extension: .xyz");
  EXPECT_EQ(refused("/none/a.WEBP"), "unknown file extension: .webp");
  EXPECT_EQ(refused("/none/a"), "unknown file extension: ");
  EXPECT_EQ(refused("/none/.png"), "unknown file extension: ");
  EXPECT_EQ(refused("/none/a.png"), "[Errno 2] No such file or directory: '/none/a.png'");
}

TEST(DecodeFile, NamesAFileItCannotRead) {
  EXPECT_EQ(failure([] { decode_file("/none/a.png"); }),
            "[Errno 2] No such file or directory: '/none/a.png'");
  const std::string path = file_named("text.jpg");
  std::ofstream(path) << "no picture";
  EXPECT_EQ(failure([&] { decode_file(path); }), "cannot identify image file '" + path + "'");
}

TEST(DecodeFile, KeepsAnOddNameOnOneLine) {
  EXPECT_EQ(failure([] { decode_file("/none/a\nb.png"); }),
            "[Errno 2] No such file or directory: '/none/a\\nb.png'");
}

TEST(CheckSize, RefusesNothingAndTooMuch) {
  EXPECT_EQ(failure([] { check_size(0, 5); }), "image has no pixels");
  EXPECT_EQ(failure([] { check_size(150'000'000, 1); }), "");
  EXPECT_EQ(failure([] { check_size(150'000'001, 1); }),
            "image size (150000001 x 1 pixels) exceeds the limit of 150000000 pixels");
  EXPECT_NE(failure([] { check_size(~0ULL, ~0ULL); }), "");
}

}  // namespace
}  // namespace zv::image
