// What every codec file offers to decode.cc and encode.cc. A decoder reads from the start of the
// file, returns the pixels as stored and says how they must be turned; all throw Error.
#pragma once

#include "image/input_file.h"
#include "image/output_file.h"
#include "image/picture.h"

namespace zv::image {

struct Decoded {
  Picture picture;
  int orientation = 1;  // as in EXIF, 1 (upright) to 8
};

inline constexpr char kTruncated[] = "image file is truncated";

Decoded decode_jpeg(InputFile& file);
Decoded decode_png(InputFile& file);
Decoded decode_bmp(InputFile& file);
Decoded decode_tiff(InputFile& file);

void encode_jpeg(const Picture& picture, OutputFile& file);
void encode_png(const Picture& picture, OutputFile& file);
void encode_bmp(const Picture& picture, OutputFile& file);
void encode_tiff(const Picture& picture, OutputFile& file);

}  // namespace zv::image
