#include "image/orientation.h"

#include <gtest/gtest.h>

#include <string>

#include "image/pictures.h"

namespace zv::image {
namespace {

using namespace std::string_literals;

int orientation_of(const std::string& block) {
  Orientation found;
  found.add_exif(block);
  return found.value();
}

// A block whose only entry is the orientation.
const std::string LITTLE = "II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0"s;
const std::string BIG = "MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x08\0\0\0\0\0\0"s;

TEST(Orientation, ReadsBothByteOrders) {
  EXPECT_EQ(orientation_of(LITTLE), 6);
  EXPECT_EQ(orientation_of(BIG), 8);
}

TEST(Orientation, AcceptsThePrefix) {
  EXPECT_EQ(orientation_of("Exif\0\0"s + LITTLE), 6);
}

TEST(Orientation, TakesNumbersOfAnyWidth) {
  std::string block = LITTLE;
  block[12] = 4;
  EXPECT_EQ(orientation_of(block), 6);
  block[12] = 1;
  EXPECT_EQ(orientation_of(block), 6);
  block[12] = 2;  // a text
  EXPECT_EQ(orientation_of(block), 1);
}

TEST(Orientation, IgnoresValuesOutOfRange) {
  std::string block = LITTLE;
  for (char value : {'\0', '\x09', '\xFF'}) {
    block[18] = value;
    EXPECT_EQ(orientation_of(block), 1);
  }
}

TEST(Orientation, SurvivesEveryCut) {
  for (std::size_t length = 0; length < 20; ++length) {
    EXPECT_EQ(orientation_of(LITTLE.substr(0, length)), 1) << length;
  }
}

TEST(Orientation, SurvivesADirectoryBeyondTheBlock) {
  std::string block = LITTLE;
  block.replace(4, 4, "\xFF\xFF\xFF\xFF");
  EXPECT_EQ(orientation_of(block), 1);
}

TEST(Orientation, ReadsBothFormsOfXmp) {
  Orientation attribute, element;
  attribute.add_xmp("<d tiff:Orientation=\"3\"/>");
  element.add_xmp("<tiff:Orientation>5</tiff:Orientation>");
  EXPECT_EQ(attribute.value(), 3);
  EXPECT_EQ(element.value(), 5);
}

TEST(Orientation, PrefersExif) {
  Orientation found;
  found.add_xmp("<d tiff:Orientation=\"3\"/>");
  found.add_exif(LITTLE);
  EXPECT_EQ(found.value(), 6);
}

TEST(Orientation, TellsJpegSegmentsApart) {
  Orientation exif, xmp, neither;
  exif.add_jpeg_segment("Exif\0\0"s + BIG);
  xmp.add_jpeg_segment("http://ns.adobe.com/xap/1.0/\0<d tiff:Orientation=\"7\"/>"s);
  neither.add_jpeg_segment(BIG);
  EXPECT_EQ(exif.value(), 8);
  EXPECT_EQ(xmp.value(), 7);
  EXPECT_EQ(neither.value(), 1);
}

// The block as older editors hide it: name, length and digits on lines of their own.
std::string raw_profile(const std::string& block) {
  std::string text = "\nexif\n" + std::to_string(block.size()) + "\n";
  for (std::size_t i = 0; i < block.size(); ++i) {
    constexpr char DIGITS[] = "0123456789abcdef";
    text += DIGITS[static_cast<unsigned char>(block[i]) / 16];
    text += DIGITS[static_cast<unsigned char>(block[i]) % 16];
    if (i % 5 == 4) text += '\n';
  }
  return text;
}

int orientation_of_profile(const std::string& text) {
  Orientation found;
  found.add_raw_profile(text);
  return found.value();
}

TEST(Orientation, ReadsDigitsBehindNameAndLength) {
  EXPECT_EQ(orientation_of_profile(raw_profile(LITTLE)), 6);
  EXPECT_EQ(orientation_of_profile(raw_profile("Exif\0\0"s + BIG)), 8);
}

TEST(Orientation, StopsAtDamagedDigits) {
  const std::string text = raw_profile(LITTLE);
  EXPECT_EQ(orientation_of_profile(text + "xx00"), 6);
  for (std::size_t length = 0; length < text.size() - 16; ++length) {
    EXPECT_EQ(orientation_of_profile(text.substr(0, length)), 1) << length;
  }
  std::string damaged = text;
  damaged[text.size() - 20] = 'x';
  EXPECT_EQ(orientation_of_profile(damaged), 1);
}

// Where the stored top left and bottom right pixels of a 3 x 2 picture end up.
struct Case {
  int orientation;
  int width;
  Rgb top_left;
  Rgb bottom_right;
};

constexpr std::uint8_t ANY = GREY[2];

TEST(Upright, TurnsAndMirrors) {
  const Case cases[] = {
      {1, 3, {0, 0, ANY}, {2, 1, ANY}}, {2, 3, {2, 0, ANY}, {0, 1, ANY}},
      {3, 3, {2, 1, ANY}, {0, 0, ANY}}, {4, 3, {0, 1, ANY}, {2, 0, ANY}},
      {5, 2, {0, 0, ANY}, {2, 1, ANY}}, {6, 2, {0, 1, ANY}, {2, 0, ANY}},
      {7, 2, {2, 1, ANY}, {0, 0, ANY}}, {8, 2, {2, 0, ANY}, {0, 1, ANY}},
  };
  for (const Case& c : cases) {
    const Picture result = upright(numbered(3, 2), c.orientation);
    ASSERT_EQ(result.width, c.width) << c.orientation;
    ASSERT_EQ(result.height, 5 - c.width) << c.orientation;
    EXPECT_EQ(pixel_at(result, 0, 0), c.top_left) << c.orientation;
    EXPECT_EQ(pixel_at(result, result.width - 1, result.height - 1), c.bottom_right)
        << c.orientation;
  }
}

TEST(Upright, LeavesNonsenseAlone) {
  const Picture stored = numbered(3, 2);
  EXPECT_EQ(upright(stored, 0).rgb, stored.rgb);
  EXPECT_EQ(upright(stored, 9).rgb, stored.rgb);
}

}  // namespace
}  // namespace zv::image
