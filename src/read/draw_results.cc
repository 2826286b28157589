#include "read/draw_results.h"

#include "image/canvas.h"
#include "read/label_font.h"
#include "read/plate_label.h"

namespace zv::read {
namespace {

constexpr image::Rgb GREEN{0, 255, 0};
constexpr image::Rgb BLACK{0, 0, 0};
constexpr std::int64_t LINE_WIDTH = 2;
constexpr std::int64_t GAP = 10;    // between a box and its label
constexpr std::int64_t MARGIN = 5;  // above and below the text in its strip

// The lower edge of the label: above the box, or inside its top where there is no room above.
std::int64_t label_edge(std::int64_t box_top, std::int64_t text_height) {
  const bool fits_above = box_top - GAP > text_height;
  return fits_above ? box_top - GAP : box_top + text_height + GAP;
}

void draw(image::Canvas& canvas, const PlateLabel& label, const image::Font& font) {
  const std::int64_t left = label.box.left;
  canvas.outline_rectangle(label.box, GREEN, LINE_WIDTH);
  const image::TextBox text = font.text_box(label.text);
  const std::int64_t edge = label_edge(label.box.top, text.height());
  const std::int64_t text_top = edge - text.height();
  canvas.fill_rectangle({left, text_top - MARGIN, left + text.width(), edge + MARGIN}, GREEN);
  canvas.draw_text(left, text_top, label.text, font, BLACK);
}

}  // namespace

image::Picture draw_results(const image::Picture& image, const List& results) {
  image::Picture annotated = image;
  image::Canvas canvas(annotated);
  const auto font = _get_cli_font();
  for (const Value& record : results) draw(canvas, plate_label(record), *font);
  return annotated;
}

}  // namespace zv::read
