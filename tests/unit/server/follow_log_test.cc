#include "server/follow_log.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace zv::server {
namespace {

namespace fs = std::filesystem;

class FollowLog : public testing::Test {
 protected:
  FollowLog() : log_(fs::path(testing::TempDir()) / ("follow-" + name() + ".log")) {
    fs::remove(log_);
  }
  ~FollowLog() override { fs::remove(log_); }

  static std::string name() {
    return testing::UnitTest::GetInstance()->current_test_info()->name();
  }
  void write(const std::string& text, std::ios::openmode mode = std::ios::app) {
    std::ofstream(log_, std::ios::binary | mode) << text;
  }

  fs::path log_;
  std::ostringstream out_;
};

TEST_F(FollowLog, BeginsWithTheLastTenLines) {
  for (int i = 1; i <= 12; ++i) write(std::to_string(i) + "\n");
  LogFollower follower(log_, out_);
  EXPECT_EQ(out_.str(), "3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n");
}

TEST_F(FollowLog, ShowsAllOfAShortLogAndAnUnfinishedLine) {
  write("\none\ntwo");
  LogFollower follower(log_, out_);
  EXPECT_EQ(out_.str(), "\none\ntwo");
}

TEST_F(FollowLog, CopiesWhatIsAdded) {
  write("");
  LogFollower follower(log_, out_);
  follower.copy_new();
  write("a\nb");
  follower.copy_new();
  follower.copy_new();
  write("c\n");
  follower.copy_new();
  EXPECT_EQ(out_.str(), "a\nbc\n");
}

TEST_F(FollowLog, GoesOnAfterTheLogWasEmptied) {
  write("a long first line\n");
  LogFollower follower(log_, out_);
  write("new\n", std::ios::trunc);
  follower.copy_new();
  write("newer\n");
  follower.copy_new();
  EXPECT_EQ(out_.str(), "a long first line\nnew\nnewer\n");
}

TEST_F(FollowLog, ShowsWhatWasWrittenBetweenTheLastLookAndARotation) {
  const fs::path rotated = log_.string() + ".1";
  write("seen\n");
  LogFollower follower(log_, out_);
  write("written, not yet seen\n");
  fs::copy_file(log_, rotated, fs::copy_options::overwrite_existing);
  write("new\n", std::ios::trunc);
  follower.copy_new();
  fs::remove(rotated);
  EXPECT_EQ(out_.str(), "seen\nwritten, not yet seen\nnew\n");
}

TEST_F(FollowLog, TakesNoOlderLogForTheOneThatWasRotated) {
  const fs::path rotated = log_.string() + ".1";
  std::ofstream(rotated) << "old\n";
  write("a long first line\n");
  LogFollower follower(log_, out_);
  write("new\n", std::ios::trunc);
  follower.copy_new();
  fs::remove(rotated);
  EXPECT_EQ(out_.str(), "a long first line\nnew\n");
}

TEST_F(FollowLog, TakesNoLargerLogOfLongAgoForTheOneThatWasRotated) {
  const fs::path rotated = log_.string() + ".1";
  std::ofstream(rotated) << std::string(100, 'o') << "\n";
  write("a first line\n");
  LogFollower follower(log_, out_);
  write("new\n", std::ios::trunc);
  follower.copy_new();
  fs::remove(rotated);
  EXPECT_EQ(out_.str(), "a first line\nnew\n");
}

TEST_F(FollowLog, WaitsForALogThatWasMovedAway) {
  write("first line\n");
  LogFollower follower(log_, out_);
  fs::remove(log_);
  follower.copy_new();
  write("again\n");
  follower.copy_new();
  EXPECT_EQ(out_.str(), "first line\nagain\n");
}

}  // namespace
}  // namespace zv::server
