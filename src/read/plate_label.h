// What is drawn for one plate, taken from its result record.
#pragma once

#include <string>

#include "base/value.h"
#include "image/canvas.h"

namespace zv::read {

struct PlateLabel {
  image::Rectangle box;
  std::string text;  // as "12AB3456 (0.98)"
};

// Coordinates are cut towards zero. Throws Error for a record without a box of four numbers and
// for a confidence that is no number.
PlateLabel plate_label(const Value& record);

}  // namespace zv::read
