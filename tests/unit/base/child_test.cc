#include "base/child.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <exception>
#include <vector>

#include "base/error.h"
#include "base/interrupt.h"
#include "base/run.h"

namespace zv {
namespace {

using namespace std::chrono_literals;
using enum Child::Stream;
using testing::ThrowsMessage;

std::vector<std::string> shell(const std::string& script) {
  return {"/bin/sh", "-c", script};
}

TEST(Child, TalksOverAnyDescriptor) {
  Child child(shell("read line <&3; echo \"got $line\" >&5"),
              {ignore, ignore, inherit, write, ignore, read});
  child.write(3, "this\n");
  EXPECT_TRUE(child.run_until([&] { return child.ended(5) && child.exit(); }, 20s));
  EXPECT_EQ(child.received(5), "got this\n");
  EXPECT_TRUE(child.exit()->success());
}

TEST(Child, SendsMoreThanAPipeHolds) {
  Child child(shell("cat <&3 >&4"), {ignore, ignore, inherit, write, read});
  const std::string text(3'000'000, 'x');
  child.write(3, text);
  child.run_until([&] { return child.received(4).size() == text.size(); }, 20s);
  child.close(3);
  EXPECT_TRUE(child.run_until([&] { return child.ended(4); }, 20s));
  EXPECT_EQ(child.received(4), text);
}

TEST(Child, IsWaitedForNoLongerThanTold) {
  Child child(shell("exec sleep 60"), {ignore, ignore, ignore});
  EXPECT_FALSE(child.run_until([&] { return child.exit().has_value(); }, 20ms));
  child.kill();
  EXPECT_TRUE(child.run_until([&] { return child.exit().has_value(); }, 20s));
  EXPECT_EQ(child.exit()->text(), "signal 9");
}

TEST(Child, TellsThatItReadsNoMore) {
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  Child child(shell("exec 3<&-; echo closed >&4; exec sleep 60"),
              {ignore, ignore, ignore, write, read});
  EXPECT_TRUE(child.run_until([&] { return !child.received(4).empty(); }, 20s));
  child.write(3, "in vain");
  EXPECT_TRUE(child.run_until([&] { return child.ended(3); }, 20s));
  EXPECT_FALSE(child.ended(4));
  EXPECT_FALSE(child.exit());
  std::signal(SIGPIPE, before);
}

TEST(Child, InheritsNoneOfOurPipes) {
  const auto open_in_child = [] { return run_captured(shell("ls /proc/self/fd")).out; };
  const std::string before = open_in_child();
  Child other(shell("exec sleep 60"), {ignore, ignore, ignore, write});
  EXPECT_EQ(open_in_child(), before);
}

TEST(Child, NoticesThatAPipeWithNothingToSendIsClosed) {
  Child child(shell("exec 3<&-; exec sleep 60"), {ignore, ignore, inherit, write});
  EXPECT_TRUE(child.run_until([&] { return child.ended(3); }, 20s));
  EXPECT_FALSE(child.exit().has_value());
  child.kill();
}

TEST(Child, IgnoresTheInterruptsThatWeIgnore) {
  const auto before = std::signal(SIGINT, SIG_IGN);
  const Completed done = run_captured(shell("kill -INT $$; echo went on"));
  std::signal(SIGINT, before);
  EXPECT_EQ(done.out, "went on\n");
}

// Whoever starts us may hold back the signal that tells the end of a child.
TEST(Child, EndIsNoticedWhereTheSignalOfItWasHeldBack) {
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGCHLD);
  sigset_t before;
  sigprocmask(SIG_BLOCK, &held, &before);
  const InterruptScope scope;
  Child child(shell("exec sleep 0.1"), {ignore, ignore, ignore});
  EXPECT_TRUE(child.run_until([&] { return child.exit().has_value(); }, 20s));
  sigprocmask(SIG_SETMASK, &before, nullptr);
}

TEST(Child, LacksDescriptorsWithAnError) {
  run_captured(shell("true"));
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  std::vector<std::exception_ptr> refused;
  for (rlim_t most = 3; most < 40; ++most) {
    const rlimit few{most, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    try {
      EXPECT_EQ(run_captured(shell("echo done")).out, "done\n");
    } catch (...) {
      refused.push_back(std::current_exception());
    }
  }
  setrlimit(RLIMIT_NOFILE, &before);
  // Looked at only now: a sanitizer needs descriptors to check an object's type.
  for (const std::exception_ptr& one : refused) {
    EXPECT_THAT([&] { std::rethrow_exception(one); },
                ThrowsMessage<Error>("[Errno 24] Too many open files"));
  }
  EXPECT_GT(refused.size(), 4U);
  EXPECT_LT(refused.size(), 37U);
}

TEST(RunAttached, GivesTheState) {
  EXPECT_EQ(run_attached(shell("exit 3")).text(), "exit status 3");
  EXPECT_EQ(run_attached(shell("kill -9 $$")).text(), "signal 9");
  EXPECT_THROW(run_attached({"/nowhere/program"}), Error);
}

TEST(InterruptScope, LeavesIgnoredInterruptsIgnored) {
  const auto before = std::signal(SIGINT, SIG_IGN);
  {
    const InterruptScope scope;
    std::raise(SIGINT);
    EXPECT_EQ(pending_interrupts(), 0);
  }
  EXPECT_EQ(std::signal(SIGINT, before), SIG_IGN);
}

}  // namespace
}  // namespace zv
