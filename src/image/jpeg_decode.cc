// JPEG files to pixels: baseline and progressive, grey, RGB, YCbCr, CMYK and YCCK.
#include <string>

#include "base/error.h"
#include "image/codec.h"
#include "image/colour.h"
#include "image/exif.h"
#include "image/jpeg_errors.h"
#include "image/jpeg_source.h"
// clang-format off: this one relies on those before it
#include <jerror.h>
// clang-format on

namespace zv::image {
namespace {

// A hostile file can ask for endless passes over the picture; no encoder writes this many.
constexpr int kMaxScans = 500;

struct Reader : JpegErrors {
  explicit Reader(InputFile& input) : file(input), source(input) {
    attach(jpeg);
    manager.emit_message = note_warning;
  }
  ~Reader() { jpeg_destroy_decompress(&jpeg); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  void open();
  void begin();
  void read_rows(Picture& picture);
  bool truncated() const { return source.ended() && (starved || jpeg.progressive_mode); }
  [[noreturn]] void fail() const;

  static void note_warning(j_common_ptr codec, int level);
  static void watch(j_common_ptr codec);

  InputFile& file;
  jpeg_decompress_struct jpeg{};
  JpegSource source;
  jpeg_progress_mgr progress{};
  bool starved = false;  // picture data was missing, not only the end marker
};

Reader& self(j_common_ptr codec) {
  return *static_cast<Reader*>(static_cast<JpegErrors*>(codec->client_data));
}

void Reader::note_warning(j_common_ptr codec, int level) {
  if (level == -1 && codec->err->msg_code == JWRN_HIT_MARKER && self(codec).source.ended()) {
    self(codec).starved = true;
  }
}

void Reader::watch(j_common_ptr codec) {
  if (self(codec).jpeg.input_scan_number > kMaxScans) ERREXIT(codec, JERR_BAD_PROGRESSION);
}

void Reader::open() {
  jpeg_create_decompress(&jpeg);
  jpeg.src = &source;
  jpeg_save_markers(&jpeg, JPEG_APP0 + 1, 0xFFFF);
  jpeg_read_header(&jpeg, TRUE);
  progress.progress_monitor = watch;
  jpeg.progress = &progress;
}

void Reader::begin() {
  jpeg.out_color_space = jpeg.num_components == 4 ? JCS_CMYK : JCS_RGB;
  jpeg_start_decompress(&jpeg);
}

// Four-colour files follow the convention of the one program that writes them: inverted inks.
void convert_inverted_cmyk(const JSAMPLE* from, std::uint8_t* to, int width) {
  for (int x = 0; x < width; ++x, from += 4, to += 3) {
    std::uint8_t ink[4];
    for (int i = 0; i < 4; ++i) ink[i] = static_cast<std::uint8_t>(255 - from[i]);
    cmyk_to_rgb(ink, to);
  }
}

void Reader::read_rows(Picture& picture) {
  const bool cmyk = jpeg.out_color_space == JCS_CMYK;
  JSAMPARRAY inks = nullptr;
  if (cmyk) {
    inks = jpeg.mem->alloc_sarray(reinterpret_cast<j_common_ptr>(&jpeg), JPOOL_IMAGE,
                                  jpeg.output_width * 4, 1);
  }
  while (jpeg.output_scanline < jpeg.output_height && !truncated()) {
    JSAMPROW row = append_row(picture);
    jpeg_read_scanlines(&jpeg, cmyk ? inks : &row, 1);
    if (cmyk) convert_inverted_cmyk(inks[0], row, picture.width);
  }
}

void Reader::fail() const {
  file.check();
  if (source.ended()) throw Error(kTruncated);
  throw Error("broken JPEG file: " + std::string(message.data()));
}

int orientation_of(const jpeg_decompress_struct& jpeg) {
  OrientationFinder finder;
  for (auto* marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
    finder.add_jpeg_segment({marker->data, marker->data_length});
  }
  return finder.orientation();
}

}  // namespace

Decoded decode_jpeg(InputFile& file) {
  Reader reader(file);
  if (!reader.run([&] { reader.open(); })) reader.fail();
  Decoded result{empty_picture(reader.jpeg.image_width, reader.jpeg.image_height),
                 orientation_of(reader.jpeg)};
  if (!reader.run([&] { reader.begin(); })) reader.fail();
  if (!reader.run([&] { reader.read_rows(result.picture); })) reader.fail();
  file.check();
  if (reader.truncated()) throw Error(kTruncated);
  return result;
}

}  // namespace zv::image
