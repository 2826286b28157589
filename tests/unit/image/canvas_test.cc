#include "image/canvas.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "image/pictures.h"

namespace zv::image {
namespace {

constexpr Rgb GREEN{0, 255, 0};
using Rows = std::vector<std::string>;

TEST(Canvas, OutlineIsTwoPixelsWideAndInside) {
  Picture picture = filled(9, 8);
  Canvas(picture).outline_rectangle({1, 1, 7, 6}, GREEN, 2);
  EXPECT_EQ(drawing(picture, GREEN), (Rows{".........", ".#######.", ".#######.", ".##...##.",
                                           ".##...##.", ".#######.", ".#######.", "........."}));
}

TEST(Canvas, FillHoldsBothCorners) {
  Picture picture = filled(4, 3);
  Canvas(picture).fill_rectangle({1, 1, 2, 2}, GREEN);
  EXPECT_EQ(drawing(picture, GREEN), (Rows{"....", ".##.", ".##."}));
}

TEST(Canvas, WhatLiesOutsideIsLeftOut) {
  constexpr std::int64_t far = std::int64_t{1} << 40;
  Picture picture = filled(4, 3);
  Canvas canvas(picture);
  canvas.fill_rectangle({-far, 2, far, far}, GREEN);
  canvas.outline_rectangle({-far, -far, far, far}, GREEN, 2);
  canvas.fill_rectangle({far, far, far, far}, GREEN);
  canvas.outline_rectangle({-1, -1, 9, 9}, GREEN, 2);
  EXPECT_EQ(drawing(picture, GREEN), (Rows{"####", "#...", "####"}));
}

std::string failure(const Rectangle& area, bool outline) {
  Picture picture = filled(4, 3);
  try {
    outline ? Canvas(picture).outline_rectangle(area, GREEN, 2)
            : Canvas(picture).fill_rectangle(area, GREEN);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(Canvas, RefusesBackwardRectangles) {
  for (const bool outline : {false, true}) {
    EXPECT_EQ(failure({3, 1, 2, 1}, outline), "x1 must be greater than or equal to x0");
    EXPECT_EQ(failure({1, 2, 1, 1}, outline), "y1 must be greater than or equal to y0");
    EXPECT_EQ(failure({1, 1, 1, 1}, outline), "");
  }
}

// Two pixels: the first half covered, the second wholly.
class TwoPixels : public Font {
 public:
  TextBox text_box(std::string_view) const override { return {1, 2, 3, 3}; }
  TextMask render(std::string_view text) const override {
    TextMask mask(text_box(text));
    mask.coverage = {128, 255};
    return mask;
  }
};

TEST(Canvas, TextIsBlendedAtItsOrigin) {
  Picture picture = filled(6, 5, {200, 100, 0});
  Canvas(picture).draw_text(1, 1, "x", TwoPixels(), {0, 0, 255});
  EXPECT_EQ(pixel_at(picture, 2, 3), (Rgb{100, 50, 128}));
  EXPECT_EQ(pixel_at(picture, 3, 3), (Rgb{0, 0, 255}));
  EXPECT_EQ(pixel_at(picture, 4, 3), (Rgb{200, 100, 0}));
}

TEST(Canvas, TextIsClipped) {
  Picture picture = filled(2, 2);
  Canvas canvas(picture);
  canvas.draw_text(-2, -2, "x", TwoPixels(), {0, 0, 255});
  EXPECT_EQ(pixel_at(picture, 0, 0), (Rgb{0, 0, 255}));
  const auto before = picture.rgb;
  canvas.draw_text(1, 0, "x", TwoPixels(), {0, 0, 255});
  canvas.draw_text(-9, -9, "x", TwoPixels(), {0, 0, 255});
  EXPECT_EQ(picture.rgb, before);
}

}  // namespace
}  // namespace zv::image
