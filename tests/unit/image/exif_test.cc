#include "image/exif.h"

#include <gtest/gtest.h>

#include <string>

namespace zv::image {
namespace {

using namespace std::string_literals;

std::span<const std::uint8_t> bytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

int orientation_of(const std::string& block) {
  OrientationFinder finder;
  finder.add_exif(bytes(block));
  return finder.orientation();
}

// A block whose only entry is the orientation.
const std::string kLittle = "II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0"s;
const std::string kBig = "MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x08\0\0\0\0\0\0"s;

TEST(OrientationFinder, ReadsBothByteOrders) {
  EXPECT_EQ(orientation_of(kLittle), 6);
  EXPECT_EQ(orientation_of(kBig), 8);
}

TEST(OrientationFinder, AcceptsThePrefix) {
  EXPECT_EQ(orientation_of("Exif\0\0"s + kLittle), 6);
}

TEST(OrientationFinder, TakesNumbersOfAnyWidth) {
  std::string block = kLittle;
  block[12] = 4;
  EXPECT_EQ(orientation_of(block), 6);
  block[12] = 1;
  EXPECT_EQ(orientation_of(block), 6);
  block[12] = 2;  // a text
  EXPECT_EQ(orientation_of(block), 1);
}

TEST(OrientationFinder, IgnoresValuesOutOfRange) {
  std::string block = kLittle;
  for (char value : {'\0', '\x09', '\xFF'}) {
    block[18] = value;
    EXPECT_EQ(orientation_of(block), 1);
  }
}

TEST(OrientationFinder, SurvivesEveryCut) {
  for (std::size_t length = 0; length < 20; ++length) {
    EXPECT_EQ(orientation_of(kLittle.substr(0, length)), 1) << length;
  }
}

TEST(OrientationFinder, SurvivesADirectoryBeyondTheBlock) {
  std::string block = kLittle;
  block.replace(4, 4, "\xFF\xFF\xFF\xFF");
  EXPECT_EQ(orientation_of(block), 1);
}

TEST(OrientationFinder, ReadsBothFormsOfXmp) {
  OrientationFinder attribute, element;
  attribute.add_xmp("<d tiff:Orientation=\"3\"/>");
  element.add_xmp("<tiff:Orientation>5</tiff:Orientation>");
  EXPECT_EQ(attribute.orientation(), 3);
  EXPECT_EQ(element.orientation(), 5);
}

TEST(OrientationFinder, PrefersExif) {
  OrientationFinder finder;
  finder.add_xmp("<d tiff:Orientation=\"3\"/>");
  finder.add_exif(bytes(kLittle));
  EXPECT_EQ(finder.orientation(), 6);
}

TEST(OrientationFinder, TellsJpegSegmentsApart) {
  OrientationFinder exif, xmp, neither;
  exif.add_jpeg_segment(bytes("Exif\0\0"s + kBig));
  xmp.add_jpeg_segment(bytes("http://ns.adobe.com/xap/1.0/\0<d tiff:Orientation=\"7\"/>"s));
  neither.add_jpeg_segment(bytes(kBig));
  EXPECT_EQ(exif.orientation(), 8);
  EXPECT_EQ(xmp.orientation(), 7);
  EXPECT_EQ(neither.orientation(), 1);
}

}  // namespace
}  // namespace zv::image
