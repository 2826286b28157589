// Pixels to a JPEG file as cameras and editors write it by default: quality 75, colour at half
// size.
#include <string>

#include "base/error.h"
#include "image/codec.h"
#include "image/jpeg_errors.h"

namespace zv::image {
namespace {

constexpr int kQuality = 75;

struct Writer : JpegErrors {
  explicit Writer(OutputFile& output) : file(output) { attach(jpeg); }
  ~Writer() { jpeg_destroy_compress(&jpeg); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void write(const Picture& picture);
  void set_up(const Picture& picture);

  static Writer& self(j_compress_ptr codec) {
    return *static_cast<Writer*>(static_cast<JpegErrors*>(codec->client_data));
  }
  static void rewind_buffer(j_compress_ptr codec);
  static boolean flush(j_compress_ptr codec);
  static void finish(j_compress_ptr codec);

  OutputFile& file;
  jpeg_compress_struct jpeg{};
  jpeg_destination_mgr destination{};
  std::array<JOCTET, 1 << 16> buffer{};
};

void Writer::rewind_buffer(j_compress_ptr codec) {
  Writer& writer = self(codec);
  writer.destination.next_output_byte = writer.buffer.data();
  writer.destination.free_in_buffer = writer.buffer.size();
}

boolean Writer::flush(j_compress_ptr codec) {
  self(codec).file.write(self(codec).buffer.data(), self(codec).buffer.size());
  rewind_buffer(codec);
  return TRUE;
}

void Writer::finish(j_compress_ptr codec) {
  Writer& writer = self(codec);
  writer.file.write(writer.buffer.data(), writer.buffer.size() - writer.destination.free_in_buffer);
}

void Writer::set_up(const Picture& picture) {
  jpeg_create_compress(&jpeg);
  destination.init_destination = rewind_buffer;
  destination.empty_output_buffer = flush;
  destination.term_destination = finish;
  jpeg.dest = &destination;
  jpeg.image_width = static_cast<JDIMENSION>(picture.width);
  jpeg.image_height = static_cast<JDIMENSION>(picture.height);
  jpeg.input_components = 3;
  jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, kQuality, TRUE);
}

void Writer::write(const Picture& picture) {
  set_up(picture);
  jpeg_start_compress(&jpeg, TRUE);
  while (jpeg.next_scanline < jpeg.image_height) {
    auto* row = const_cast<JSAMPROW>(picture.row(static_cast<int>(jpeg.next_scanline)));
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
}

}  // namespace

void encode_jpeg(const Picture& picture, OutputFile& file) {
  Writer writer(file);
  if (writer.run([&] { writer.write(picture); })) return;
  throw Error("cannot write JPEG: " + std::string(writer.message.data()));
}

}  // namespace zv::image
