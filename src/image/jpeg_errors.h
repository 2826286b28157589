// libjpeg reports errors by leaving its caller; this turns them into Error without ever throwing
// through C frames. Only the jpeg_* files may include it.
#pragma once

#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
// clang-format off: this one relies on those before it
#include <jpeglib.h>
// clang-format on

namespace zv::image {

struct JpegErrors {
  jpeg_error_mgr manager{};
  std::jmp_buf escape{};
  std::array<char, JMSG_LENGTH_MAX> message{};

  template <class Codec>
  void attach(Codec& codec) {
    codec.err = jpeg_std_error(&manager);
    codec.client_data = this;
    manager.error_exit = [](j_common_ptr c) {
      auto& self = *static_cast<JpegErrors*>(c->client_data);
      c->err->format_message(c, self.message.data());
      std::longjmp(self.escape, 1);
    };
    manager.output_message = [](j_common_ptr) {};
  }

  // Runs libjpeg calls. `step` must not own anything while it is inside libjpeg: on an error its
  // frame is left without destructors. False says that `message` holds an error.
  template <class Step>
  bool run(Step&& step) {
    if (setjmp(escape) != 0) return false;
    step();
    return true;
  }
};

}  // namespace zv::image
