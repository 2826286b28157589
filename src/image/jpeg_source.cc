#include "image/jpeg_source.h"

namespace zv::image {

JpegSource::JpegSource(InputFile& file) : jpeg_source_mgr{}, file_(file) {
  init_source = [](j_decompress_ptr) {};
  fill_input_buffer = fill;
  skip_input_data = skip;
  resync_to_restart = jpeg_resync_to_restart;
  term_source = [](j_decompress_ptr) {};
}

boolean JpegSource::fill(j_decompress_ptr codec) {
  JpegSource& source = of(codec);
  std::size_t got = source.file_.read(source.buffer_.data(), source.buffer_.size());
  if (got == 0) {
    source.ended_ = true;
    source.buffer_[0] = 0xFF;
    source.buffer_[1] = JPEG_EOI;
    got = 2;
  }
  source.next_input_byte = source.buffer_.data();
  source.bytes_in_buffer = got;
  return TRUE;
}

void JpegSource::skip(j_decompress_ptr codec, long count) {
  JpegSource& source = of(codec);
  auto left = static_cast<std::size_t>(count > 0 ? count : 0);
  while (left > source.bytes_in_buffer && !source.ended_) {
    left -= source.bytes_in_buffer;
    fill(codec);
  }
  if (source.ended_) return;
  source.next_input_byte += left;
  source.bytes_in_buffer -= left;
}

}  // namespace zv::image
