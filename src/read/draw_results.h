// Annotated copies: a green box around each plate, and a green strip with its text beside it.
#pragma once

#include "base/value.h"
#include "image/picture.h"

namespace zv::read {

// A copy of `image` with all plates drawn in order. Each of `results` is a result record: a map
// with "bbox" (left, top, right, bottom; required), "ocr_text" and "ocr_conf". Throws Error for a
// record without four numbers in "bbox" and for a box that ends before it begins.
image::Picture draw_results(const image::Picture& image, const List& results);

}  // namespace zv::read
