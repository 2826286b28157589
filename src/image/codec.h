// What every codec file offers to image_file.cc: from the bytes of a whole file to pixels as they
// are stored, and back. All throw Error, and Interrupted for Ctrl+C.
#pragma once

#include <csetjmp>
#include <cstdio>
#include <string>
#include <string_view>

#include "image/picture.h"

namespace zv::image {

struct Decoded {
  Picture picture;
  int orientation = 1;      // as in EXIF, 1 (upright) to 8
  std::string damage = {};  // why a part of the picture is missing; empty for a whole one
};

inline constexpr char TRUNCATED[] = "image file is truncated";

// libjpeg and libpng report errors by leaving their caller; here they become Error, without ever
// being thrown through their frames.
class Escape {
 public:
  template <class Step>
  bool run(Step&& step) {  // false for an error; a step may not own anything inside the library
    if (setjmp(place_) != 0) return false;
    step();
    return true;
  }
  [[noreturn]] void leave(const char* why) {
    std::snprintf(message, sizeof message, "%s", why);
    std::longjmp(place_, 1);
  }
  char message[200] = {};

 private:
  std::jmp_buf place_{};
};

Decoded decode_jpeg(std::string_view file);
Decoded decode_png(std::string_view file);
Decoded decode_bmp(std::string_view file);
Decoded decode_tiff(std::string_view file);

std::string encode_jpeg(const Picture& picture);
std::string encode_png(const Picture& picture);
std::string encode_bmp(const Picture& picture);
std::string encode_tiff(const Picture& picture);

}  // namespace zv::image
