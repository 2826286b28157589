// Standard output and standard error as streams: flushed at every line end, always valid UTF-8, and
// on a terminal without control characters but for line ends and tabs.
#pragma once

#include <cstdio>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace zv {

// The reader of our output has gone away. Like Interrupted no std::exception: nothing is left to
// tell.
class OutputClosed {};

// Text of others within a line of ours: a file's name, a plate, an answer. On a terminal its line
// breaks are shown as escapes, so that it cannot pass for a line of the program.
struct Foreign {
  std::string_view text;
};
std::ostream& operator<<(std::ostream& stream, const Foreign& foreign);

class OutputStream : public std::ostream {
 public:
  explicit OutputStream(std::FILE* file, bool terminal = false);

  // errno of the first write that failed, 0 while all is well. Output after it is dropped, so that
  // the work itself goes on.
  int failure() const { return buffer_.failure; }

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer(std::FILE* target, bool is_terminal) : file_(target), terminal_(is_terminal) {}
    int failure = 0;

   protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

   private:
    void write_out();
    std::FILE* file_;
    bool terminal_;
    std::string pending_;
  };

  Buffer buffer_;
};

}  // namespace zv
