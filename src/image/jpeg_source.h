// Feeds libjpeg from an InputFile. Only the jpeg_* files may include it.
#pragma once

#include "image/input_file.h"
#include "image/jpeg_errors.h"

namespace zv::image {

// Stays where it is: libjpeg holds its address.
class JpegSource : public jpeg_source_mgr {
 public:
  explicit JpegSource(InputFile& file);
  JpegSource(const JpegSource&) = delete;
  JpegSource& operator=(const JpegSource&) = delete;

  // True once the file had no more bytes; libjpeg has been given an end marker instead.
  bool ended() const { return ended_; }

 private:
  static JpegSource& of(j_decompress_ptr codec) { return *static_cast<JpegSource*>(codec->src); }
  static boolean fill(j_decompress_ptr codec);
  static void skip(j_decompress_ptr codec, long count);

  InputFile& file_;
  bool ended_ = false;
  std::array<JOCTET, 1 << 16> buffer_{};
};

}  // namespace zv::image
