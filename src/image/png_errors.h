// libpng reports errors by leaving its caller; this turns them into Error without ever throwing
// through C frames. Only the png_* files may include it.
#pragma once

#include <png.h>

#include <csetjmp>
#include <cstdio>

namespace zv::image {

struct PngErrors {
  std::jmp_buf escape{};
  char message[160] = {};

  // Runs libpng calls. `step` must not own anything while it is inside libpng: on an error its
  // frame is left without destructors. False says that `message` holds an error.
  template <class Step>
  bool run(Step&& step) {
    if (setjmp(escape) != 0) return false;
    step();
    return true;
  }

  [[noreturn]] static void leave(png_structp png, png_const_charp text) {
    auto& self = *static_cast<PngErrors*>(png_get_error_ptr(png));
    std::snprintf(self.message, sizeof self.message, "%s", text);
    std::longjmp(self.escape, 1);
  }
  static void ignore_warning(png_structp, png_const_charp) {}
};

}  // namespace zv::image
