// Standard output and standard error as streams: flushed at every line end, always valid UTF-8.
#pragma once

#include <cstdio>
#include <ostream>
#include <streambuf>
#include <string>

namespace zv {

// The reader of our output has gone away. Like Interrupted no std::exception: nothing is left to
// tell.
class OutputClosed {};

class OutputStream : public std::ostream {
 public:
  explicit OutputStream(std::FILE* file);

  // errno of the first write that failed, 0 while all is well. Output after it is dropped, so that
  // the work itself goes on.
  int failure() const { return buffer_.failure; }

 private:
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(std::FILE* target) : file(target) {}
    int failure = 0;

   protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

   private:
    void write_out();
    std::FILE* file;
    std::string pending_;
  };

  Buffer buffer_;
};

}  // namespace zv
