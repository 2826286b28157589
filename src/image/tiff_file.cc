#include "image/tiff_file.h"

#include <cstdarg>
#include <cstdio>

#include "base/error.h"
#include "image/codec.h"

namespace zv::image {
namespace {

// Above any block this program would decode; a header that asks for more lies.
constexpr tmsize_t kMaxAllocation = tmsize_t{1} << 31;

template <class File>
toff_t seek_in(void* client, toff_t offset, int whence) {
  auto& file = *static_cast<File*>(client);
  const toff_t base = whence == SEEK_CUR ? file.position() : whence == SEEK_END ? file.size() : 0;
  file.seek(base + offset);
  return file.position();
}

template <class File>
toff_t size_of(void* client) {
  return static_cast<File*>(client)->size();
}

tmsize_t read_from(void* client, void* to, tmsize_t count) {
  return static_cast<tmsize_t>(
      static_cast<InputFile*>(client)->read(to, static_cast<std::size_t>(count)));
}

tmsize_t write_to(void* client, void* from, tmsize_t count) {
  static_cast<OutputFile*>(client)->write(from, static_cast<std::size_t>(count));
  return count;
}

tmsize_t no_transfer(void*, void*, tmsize_t) {
  return 0;
}
int leave_open(void*) {
  return 0;
}
int no_mapping(void*, void**, toff_t*) {
  return 0;
}
void no_unmapping(void*, void*, toff_t) {}

int keep_first(TIFF*, void* user, const char*, const char* format, va_list arguments) {
  auto* message = static_cast<char*>(user);
  if (message[0] == '\0') std::vsnprintf(message, 160, format, arguments);
  return 1;
}
int stay_silent(TIFF*, void*, const char*, const char*, va_list) {
  return 1;
}

}  // namespace

TiffFile::TiffFile(InputFile& file) : input_(&file) {
  open("rm", &file, read_from, no_transfer, seek_in<InputFile>, size_of<InputFile>);
}

TiffFile::TiffFile(OutputFile& file) : output_(&file) {
  open("wm", &file, no_transfer, write_to, seek_in<OutputFile>, size_of<OutputFile>);
}

void TiffFile::open(const char* mode, void* client, TIFFReadWriteProc read, TIFFReadWriteProc write,
                    TIFFSeekProc seek, TIFFSizeProc size) {
  const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_first, message_);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), stay_silent, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxAllocation);
  handle_.reset(TIFFClientOpenExt("image", mode, client, read, write, seek, leave_open, size,
                                  no_mapping, no_unmapping, options.get()));
  if (!handle_) fail();
}

std::uint16_t TiffFile::short_field(std::uint32_t tag) const {
  std::uint16_t value = 0;
  TIFFGetFieldDefaulted(get(), tag, &value);
  return value;
}

std::uint32_t TiffFile::long_field(std::uint32_t tag) const {
  std::uint32_t value = 0;
  TIFFGetFieldDefaulted(get(), tag, &value);
  return value;
}

void TiffFile::fail() const {
  if (output_ != nullptr) {
    output_->check();
    throw Error("cannot write TIFF: " + std::string(message_));
  }
  input_->check();
  if (input_->ran_out()) throw Error(kTruncated);
  throw Error("broken TIFF file: " + std::string(message_));
}

}  // namespace zv::image
