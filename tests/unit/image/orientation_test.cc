#include "image/orientation.h"

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace zv::image {
namespace {

// Where the stored top left and bottom right pixels of a 3 x 2 picture end up.
struct Case {
  int orientation;
  int width;
  Rgb top_left;
  Rgb bottom_right;
};

constexpr std::uint8_t kAny = kGrey[2];

TEST(Upright, TurnsAndMirrors) {
  const Case cases[] = {
      {1, 3, {0, 0, kAny}, {2, 1, kAny}}, {2, 3, {2, 0, kAny}, {0, 1, kAny}},
      {3, 3, {2, 1, kAny}, {0, 0, kAny}}, {4, 3, {0, 1, kAny}, {2, 0, kAny}},
      {5, 2, {0, 0, kAny}, {2, 1, kAny}}, {6, 2, {0, 1, kAny}, {2, 0, kAny}},
      {7, 2, {2, 1, kAny}, {0, 0, kAny}}, {8, 2, {2, 0, kAny}, {0, 1, kAny}},
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
