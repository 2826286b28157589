// JPEG files to pixels and back: baseline and progressive, grey, RGB, YCbCr, CMYK and YCCK.
// Written as cameras and editors do by default: quality 75, colour at half size.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
// clang-format off: these two rely on those before them
#include <jerror.h>
#include <jpeglib.h>
// clang-format on

#include "base/error.h"
#include "base/interrupt.h"
#include "image/codec.h"
#include "image/orientation.h"

namespace zv::image {
namespace {

constexpr int QUALITY = 75;
// A hostile file can ask for endless passes over the picture; no encoder writes this many.
constexpr int MAX_SCANS = 500;
// With the shortest codes there are, on the largest blocks.
constexpr std::uint64_t MOST_PIXELS_PER_BYTE = 4096;

unsigned char* bytes_of(std::string_view text) {
  return reinterpret_cast<unsigned char*>(const_cast<char*>(text.data()));
}

struct Codec : Escape {
  template <class Jpeg>
  void create(Jpeg& jpeg, void (*create_struct)(Jpeg*)) {
    jpeg.err = jpeg_std_error(&errors);
    jpeg.client_data = this;
    errors.error_exit = give_up;
    errors.emit_message = note;
    create_struct(&jpeg);
    progress.progress_monitor = watch;
    jpeg.progress = &progress;
  }

  static Codec& of(j_common_ptr jpeg) { return *static_cast<Codec*>(jpeg->client_data); }
  [[noreturn]] static void give_up(j_common_ptr jpeg) {
    char text[JMSG_LENGTH_MAX];
    jpeg->err->format_message(jpeg, text);
    of(jpeg).leave(text);
  }
  static void note(j_common_ptr jpeg, int level);
  static void watch(j_common_ptr jpeg);

  jpeg_error_mgr errors{};
  jpeg_progress_mgr progress{};
  bool ended = false;         // the file had no more bytes
  bool starved = false;       // and picture data was missing, not only the end marker
  JDIMENSION sound_rows = 0;  // that were there before
};

// Each row of blocks that the first pass over the picture has seen, or all after it.
JDIMENSION rows_seen(const jpeg_decompress_struct& jpeg) {
  if (jpeg.input_scan_number > 1) return jpeg.image_height;
  const auto block = static_cast<JDIMENSION>(jpeg.max_v_samp_factor * DCTSIZE);
  return std::min(jpeg.image_height, jpeg.input_iMCU_row * block);
}

void Codec::note(j_common_ptr jpeg, int level) {
  if (level >= 0) return;
  Codec& self = of(jpeg);
  const bool first = jpeg->err->msg_code == JWRN_JPEG_EOF && !self.ended;
  if (first) self.ended = true;
  if (jpeg->err->msg_code == JWRN_HIT_MARKER && self.ended) self.starved = true;
  if (first) self.sound_rows = rows_seen(*reinterpret_cast<j_decompress_ptr>(jpeg));
}

void Codec::watch(j_common_ptr jpeg) {
  const bool endless = jpeg->is_decompressor != 0 &&
                       reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > MAX_SCANS;
  if (endless) ERREXIT(jpeg, JERR_BAD_PROGRESSION);
  if (pending_interrupts() > 0) of(jpeg).leave("interrupted");
}

struct Reader : Codec {
  ~Reader() { jpeg_destroy_decompress(&jpeg); }

  void open(std::string_view file);
  void begin();
  void read_rows(Picture& picture);
  void finish(Decoded& result, bool whole);
  [[noreturn]] void fail() const;

  jpeg_decompress_struct jpeg{};
};

void Reader::open(std::string_view file) {
  create<jpeg_decompress_struct>(jpeg, [](j_decompress_ptr self) { jpeg_create_decompress(self); });
  jpeg_mem_src(&jpeg, bytes_of(file), file.size());
  jpeg_save_markers(&jpeg, JPEG_APP0 + 1, 0xFFFF);
  jpeg_read_header(&jpeg, TRUE);
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
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW row = picture.row(static_cast<int>(jpeg.output_scanline));
    jpeg_read_scanlines(&jpeg, cmyk ? inks : &row, 1);
    if (cmyk) convert_inverted_cmyk(inks[0], row, picture.width);
  }
}

void Reader::fail() const {
  check_interrupt();
  if (ended) throw Error(TRUNCATED);
  throw Error("broken JPEG file: " + std::string(message));
}

// A quarter of a picture is worth showing, as it is to the engine; what is missing becomes grey.
void Reader::finish(Decoded& result, bool whole) {
  const bool truncated = ended && (starved || jpeg.progressive_mode != 0);
  if (whole && !truncated) return;
  check_interrupt();
  if (!ended) sound_rows = jpeg.output_scanline;
  if (sound_rows < (jpeg.image_height + 3) / 4) ended ? throw Error(TRUNCATED) : fail();
  std::fill(result.picture.row(static_cast<int>(jpeg.output_scanline)),
            result.picture.row(result.picture.height), std::uint8_t{128});
  result.damage = ended ? TRUNCATED : message;
}

int orientation_of(const jpeg_decompress_struct& jpeg) {
  Orientation orientation;
  for (auto* marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
    orientation.add_jpeg_segment({reinterpret_cast<char*>(marker->data), marker->data_length});
  }
  return orientation.value();
}

struct Writer : Codec {
  ~Writer() {
    // The library knows best where its buffer lies by now.
    if (jpeg.dest != nullptr) jpeg.dest->term_destination(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::free(bytes);
  }

  void write(const Picture& picture);

  jpeg_compress_struct jpeg{};
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
};

void Writer::write(const Picture& picture) {
  create<jpeg_compress_struct>(jpeg, [](j_compress_ptr self) { jpeg_create_compress(self); });
  jpeg_mem_dest(&jpeg, &bytes, &size);
  jpeg.image_width = static_cast<JDIMENSION>(picture.width);
  jpeg.image_height = static_cast<JDIMENSION>(picture.height);
  jpeg.input_components = 3;
  jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, QUALITY, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  while (jpeg.next_scanline < jpeg.image_height) {
    auto* row = const_cast<JSAMPROW>(picture.row(static_cast<int>(jpeg.next_scanline)));
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
}

}  // namespace

Decoded decode_jpeg(std::string_view file) {
  Reader reader;
  if (!reader.run([&] { reader.open(file); })) reader.fail();
  check_size(reader.jpeg.image_width, reader.jpeg.image_height);
  const std::uint64_t pixels = std::uint64_t{reader.jpeg.image_width} * reader.jpeg.image_height;
  if (pixels / MOST_PIXELS_PER_BYTE > file.size()) throw Error(TRUNCATED);
  if (!reader.run([&] { reader.begin(); })) reader.fail();
  Decoded result{unpainted(reader.jpeg.image_width, reader.jpeg.image_height),
                 orientation_of(reader.jpeg),
                 {}};
  const bool whole = reader.run([&] { reader.read_rows(result.picture); });
  reader.finish(result, whole);
  return result;
}

std::string encode_jpeg(const Picture& picture) {
  Writer writer;
  const bool done = writer.run([&] { writer.write(picture); });
  check_interrupt();
  if (!done) throw Error("cannot write JPEG: " + std::string(writer.message));
  return {reinterpret_cast<char*>(writer.bytes), writer.size};
}

}  // namespace zv::image
