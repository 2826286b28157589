// A TIFF handle over this room's files that prints nothing. Only the tiff_*.cc files may include
// it.
#pragma once

#include <tiffio.h>

#include <memory>
#include <string>

#include "image/input_file.h"
#include "image/output_file.h"

namespace zv::image {

class TiffFile {
 public:
  // Both throw Error when the handle cannot be made, as with a header that makes no sense.
  explicit TiffFile(InputFile& file);
  explicit TiffFile(OutputFile& file);

  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  TIFF* get() const { return handle_.get(); }

  // A field's value, or what the format says holds without it.
  std::uint16_t short_field(std::uint32_t tag) const;
  std::uint32_t long_field(std::uint32_t tag) const;

  // The library's first complaint, with the system's reason or "truncated" in its place when the
  // file itself gave out.
  [[noreturn]] void fail() const;

 private:
  struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };
  void open(const char* mode, void* client, TIFFReadWriteProc read, TIFFReadWriteProc write,
            TIFFSeekProc seek, TIFFSizeProc size);

  InputFile* input_ = nullptr;
  OutputFile* output_ = nullptr;
  char message_[160] = {};
  std::unique_ptr<TIFF, Close> handle_;
};

}  // namespace zv::image
