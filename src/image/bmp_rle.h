// The run-length compression of BMP files.
#pragma once

#include "image/bmp_header.h"
#include "image/picture.h"

namespace zv::image {

// Paints the runs from the file's position on; pixels that no run reaches keep the palette's first
// colour. Throws Error when the file ends before the picture does.
void decode_bmp_runs(InputFile& file, const BmpHeader& header, Picture& picture);

}  // namespace zv::image
