// Annotated copies: a green box around each plate, and a green strip with its text beside it.
#pragma once

#include <vector>

#include "image/picture.h"
#include "read/plate.h"

namespace zv::read {

// A copy of `image` with all plates drawn in order. Throws Error for a plate without a box of four
// numbers and for a box that ends before it begins.
image::Picture draw_results(const image::Picture& image, const std::vector<Plate>& plates);

}  // namespace zv::read
