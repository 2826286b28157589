#include "base/run.h"

#include <gtest/gtest.h>

#include <csignal>

#include "base/error.h"
#include "base/unicode.h"

namespace zv {
namespace {

Completed shell(const std::string& script) {
  return run_captured({"/bin/sh", "-c", script});
}

TEST(RunCaptured, KeepsBothStreamsAndTheState) {
  const Completed done = shell("echo out; echo err >&2; exit 3");
  EXPECT_EQ(done.out, "out\n");
  EXPECT_EQ(done.err, "err\n");
  EXPECT_EQ(done.exit.status, 3);
  EXPECT_FALSE(done.exit.success());
}

TEST(RunCaptured, ReadsMoreThanAPipeHoldsFromBothStreams) {
  const Completed done =
      shell("head -c 3000000 /dev/zero | tr '\\0' x; head -c 2000000 /dev/zero | tr '\\0' y >&2");
  EXPECT_EQ(done.out.size(), 3000000U);
  EXPECT_EQ(done.err.size(), 2000000U);
}

TEST(RunCaptured, MakesTextOfAnyBytes) {
  EXPECT_EQ(shell("printf 'a\\r\\nb\\377\\rc'").out, "a\nb\uFFFD\nc");
}

TEST(RunCaptured, TellsTheSignal) {
  EXPECT_EQ(shell("kill -9 $$").exit.text(), "signal 9");
  EXPECT_EQ(shell("exit 4").exit.text(), "exit status 4");
}

TEST(RunCaptured, LetsTheChildIgnoreHangupsWhenWeDo) {
  EXPECT_EQ(shell("kill -HUP $$; echo went on").exit.text(), "signal 1");
  const auto before = std::signal(SIGHUP, SIG_IGN);
  const Completed done = shell("kill -HUP $$; echo went on");
  std::signal(SIGHUP, before);
  EXPECT_EQ(done.out, "went on\n");
  EXPECT_TRUE(done.exit.success());
}

TEST(RunCaptured, SaysWhenAProgramCannotBeStarted) {
  try {
    run_captured({"/nowhere/program"});
    FAIL();
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), "[Errno 2] No such file or directory: '/nowhere/program'");
  }
}

}  // namespace
}  // namespace zv
