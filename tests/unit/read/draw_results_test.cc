#include "read/draw_results.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "image/pictures.h"
#include "read/label_font.h"

namespace zv::read {
namespace {

using image::Picture;
using image::pixel_at;
using image::Rgb;

constexpr Rgb GREEN{0, 255, 0};
constexpr int LEFT = 20;

Plate plate(List bbox) {
  return Plate(Map{{"ocr_text", "12AB3456"}, {"ocr_conf", 0.98}, {"bbox", std::move(bbox)}});
}

image::TextBox label_box() {
  return _get_cli_font()->text_box("12AB3456 (0.98)");
}

// First and last row of the label strip, seen just right of its text's left edge.
struct Rows {
  int first;
  int last;
};

Rows strip_rows(int box_top) {
  const Picture drawn =
      draw_results(image::filled(300, 200), {plate({LEFT, box_top, LEFT + 250, box_top + 60})});
  const int column = LEFT + label_box().width();
  Rows rows{-1, -1};
  for (int y = 0; y < drawn.height; ++y) {
    const bool outline = y == box_top || y == box_top + 1 || y >= box_top + 59;
    if (outline || pixel_at(drawn, column, y) != GREEN) continue;
    if (rows.first < 0) rows.first = y;
    rows.last = y;
  }
  return rows;
}

TEST(DrawResults, LeavesTheInputAlone) {
  const Picture input = image::numbered(40, 30);
  const Picture before = input;
  EXPECT_EQ(draw_results(input, {}).rgb, before.rgb);
  EXPECT_NE(draw_results(input, {plate({5, 5, 30, 20})}).rgb, before.rgb);
  EXPECT_EQ(input.rgb, before.rgb);
}

TEST(DrawResults, PutsTheLabelAboveTheBox) {
  const int height = label_box().height();
  const Rows rows = strip_rows(100);
  EXPECT_EQ(rows.first, 90 - height - 5);
  EXPECT_EQ(rows.last, 90 + 5);
}

TEST(DrawResults, PutsTheLabelInsideWhereThereIsNoRoom) {
  const int height = label_box().height();
  const Rows rows = strip_rows(5);
  EXPECT_EQ(rows.first, 5 + height + 10 - height - 5);
  EXPECT_EQ(rows.last, 5 + height + 10 + 5);
}

TEST(DrawResults, NeedsMoreRoomThanTheTextIsHigh) {
  const int height = label_box().height();
  EXPECT_GT(strip_rows(height + 10).first, height + 10);
  EXPECT_LT(strip_rows(height + 11).first, height + 11);
}

TEST(DrawResults, StripIsAsWideAsTheText) {
  const Picture drawn = draw_results(image::filled(300, 200), {plate({LEFT, 100, 270, 150})});
  const int right = LEFT + label_box().width();
  const int row = 90 + 5;
  EXPECT_EQ(pixel_at(drawn, LEFT - 1, row), image::GREY);
  EXPECT_EQ(pixel_at(drawn, LEFT, row), GREEN);
  EXPECT_EQ(pixel_at(drawn, right, row), GREEN);
  EXPECT_EQ(pixel_at(drawn, right + 1, row), image::GREY);
}

TEST(DrawResults, WritesInBlack) {
  const Picture drawn = draw_results(image::filled(300, 200), {plate({LEFT, 100, 270, 150})});
  const image::TextBox box = label_box();
  const int text_top = 90 - box.height();
  int black = 0;
  for (int y = text_top + box.top; y < text_top + box.bottom; ++y) {
    for (int x = LEFT; x < LEFT + box.width(); ++x) {
      if (pixel_at(drawn, x, y) == Rgb{0, 0, 0}) ++black;
    }
  }
  EXPECT_GT(black, 20);
}

TEST(DrawResults, OutlineIsTwoPixels) {
  const Picture drawn = draw_results(image::filled(300, 200), {plate({LEFT, 100, 270, 150})});
  for (int i = 0; i < 4; ++i) {
    const Rgb expected = i < 2 ? GREEN : image::GREY;
    EXPECT_EQ(pixel_at(drawn, 150, 100 + i), expected) << i;
    EXPECT_EQ(pixel_at(drawn, 150, 150 - i), expected) << i;
    EXPECT_EQ(pixel_at(drawn, LEFT + i, 125), expected) << i;
    EXPECT_EQ(pixel_at(drawn, 270 - i, 125), expected) << i;
  }
  EXPECT_EQ(pixel_at(drawn, LEFT - 1, 125), image::GREY);
  EXPECT_EQ(pixel_at(drawn, 271, 125), image::GREY);
}

TEST(DrawResults, LaterPlatesCoverEarlierOnes) {
  const Plate first = plate({LEFT, 100, 270, 150});
  const Plate second = plate({LEFT, 101, 270, 150});
  const Picture both = draw_results(image::filled(300, 200), {first, second});
  const Picture steps = draw_results(draw_results(image::filled(300, 200), {first}), {second});
  EXPECT_EQ(both.rgb, steps.rgb);
  EXPECT_NE(both.rgb, draw_results(image::filled(300, 200), {second, first}).rgb);
}

TEST(DrawResults, ClipsPlatesThatReachOut) {
  EXPECT_NO_THROW(draw_results(image::filled(50, 40), {plate({-30, -20, 500, 400})}));
  EXPECT_NO_THROW(draw_results(image::filled(50, 40), {plate({45, 35, 49, 39})}));
  const Picture far = draw_results(image::filled(50, 40), {plate({9000, 9000, 9999, 9999})});
  EXPECT_EQ(far.rgb, image::filled(50, 40).rgb);
}

TEST(DrawResults, RefusesBackwardBoxes) {
  EXPECT_THROW(draw_results(image::filled(50, 40), {plate({30, 10, 20, 20})}), Error);
  EXPECT_THROW(draw_results(image::filled(50, 40), {Plate(Map{})}), Error);
}

}  // namespace
}  // namespace zv::read
