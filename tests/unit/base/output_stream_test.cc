#include "base/output_stream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>

namespace zv {
namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

std::string contents(std::FILE* file) {
  std::rewind(file);
  char buffer[256];
  return {buffer, std::fread(buffer, 1, sizeof buffer, file)};
}

TEST(OutputStream, HoldsALineBackUntilItEndsOrIsFlushed) {
  const File file(std::tmpfile());
  OutputStream out(file.get());
  out << "car.jpg: ";
  EXPECT_EQ(contents(file.get()), "");
  out.flush();
  EXPECT_EQ(contents(file.get()), "car.jpg: ");
  out << "No plates\n";
  EXPECT_EQ(contents(file.get()), "car.jpg: No plates\n");
}

TEST(OutputStream, NeverWritesWhatIsNoUtf8) {
  const File file(std::tmpfile());
  OutputStream out(file.get());
  out << "caf\xe9 京\n";
  EXPECT_EQ(contents(file.get()), "caf\\udce9 京\n");
}

TEST(OutputStream, ShowsNoControlCharactersOnATerminal) {
  const std::string evil = "a\x1b]0;x\x07\x7f\xc2\x9b京\tb\nc\r";
  const File file(std::tmpfile());
  OutputStream out(file.get());
  out << Foreign{evil} << std::flush;
  EXPECT_EQ(contents(file.get()), evil);
  const File screen(std::tmpfile());
  OutputStream terminal(screen.get(), true);
  terminal << "name: " << Foreign{evil} << "\n" << evil << "\n";
  EXPECT_EQ(contents(screen.get()),
            "name: a\\x1b]0;x\\x07\\x7f\\x9b京\tb\\nc\\x0d\n"
            "a\\x1b]0;x\\x07\\x7f\\x9b京\tb\nc\\x0d\n");
}

TEST(OutputStream, RemembersAFullDiskAndGoesOn) {
  const File file(std::fopen("/dev/full", "w"));
  if (!file) GTEST_SKIP() << "no /dev/full here";
  OutputStream out(file.get());
  out << "line\n";
  out << "line\n";
  EXPECT_EQ(out.failure(), ENOSPC);
}

TEST(OutputStream, EndsTheRunWhenTheReaderHasGone) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  std::signal(SIGPIPE, SIG_IGN);
  const File file(fdopen(ends[1], "w"));
  OutputStream out(file.get());
  EXPECT_THROW(out << "line\n", OutputClosed);
}

}  // namespace
}  // namespace zv
