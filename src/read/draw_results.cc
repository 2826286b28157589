#include "read/draw_results.h"

#include "image/canvas.h"
#include "read/label_font.h"

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

void draw(image::Canvas& canvas, const Plate& plate, const image::Font& font) {
  const image::Rectangle box = plate.box();
  const std::string label = plate.label();
  const std::int64_t left = box.left;
  canvas.outline_rectangle(box, GREEN, LINE_WIDTH);
  const image::TextBox text = font.text_box(label);
  const std::int64_t edge = label_edge(box.top, text.height());
  const std::int64_t text_top = edge - text.height();
  canvas.fill_rectangle({left, text_top - MARGIN, left + text.width(), edge + MARGIN}, GREEN);
  canvas.draw_text(left, text_top, label, font, BLACK);
}

}  // namespace

image::Picture draw_results(const image::Picture& image, const std::vector<Plate>& plates) {
  image::Picture annotated = image;
  image::Canvas canvas(annotated);
  const auto font = _get_cli_font();
  for (const Plate& plate : plates) draw(canvas, plate, *font);
  return annotated;
}

}  // namespace zv::read
