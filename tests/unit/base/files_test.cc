#include "base/files.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "base/error.h"

namespace zv {
namespace {

namespace fs = std::filesystem;

class WriteFile : public testing::Test {
 protected:
  void SetUp() override {
    folder = fs::path(testing::TempDir()) / "files_test";
    fs::remove_all(folder);
    fs::create_directories(folder);
    std::ofstream(folder / "old") << "old content";
  }
  void TearDown() override { fs::remove_all(folder); }

  std::set<std::string> names() const {
    std::set<std::string> found;
    for (const auto& entry : fs::directory_iterator(folder)) found.insert(entry.path().filename());
    return found;
  }
  std::string failure(const fs::path& path) const {
    try {
      write_file(path, "new");
    } catch (const Error& error) {
      return error.what();
    }
    return "";
  }

  fs::path folder;
};

TEST_F(WriteFile, CreatesAndReplacesAndLeavesNothingElse) {
  write_file(folder / "fresh", "one");
  write_file(folder / "old", "two");
  write_file(folder / "old", "");
  EXPECT_EQ(read_file(folder / "fresh"), "one");
  EXPECT_EQ(read_file(folder / "old"), "");
  EXPECT_EQ(names(), (std::set<std::string>{"fresh", "old"}));
}

TEST_F(WriteFile, KeepsTheMode) {
  fs::permissions(folder / "old", fs::perms(0604));
  write_file(folder / "old", "new");
  EXPECT_EQ(fs::status(folder / "old").permissions(), fs::perms(0604));
}

TEST_F(WriteFile, KeepsLinksAndWritesTheirTargets) {
  fs::create_symlink("old", folder / "link");
  fs::create_symlink("none", folder / "dangling");
  write_file(folder / "link", "new");
  write_file(folder / "dangling", "fresh");
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(read_file(folder / "old"), "new");
  EXPECT_EQ(read_file(folder / "none"), "fresh");
}

TEST_F(WriteFile, KeepsTheOtherNamesOfAFile) {
  fs::create_hard_link(folder / "old", folder / "other");
  for (const std::string text : {"a text that is longer than the old one", "short", ""}) {
    write_file(folder / "old", text);
    EXPECT_EQ(read_file(folder / "other"), text);
  }
  EXPECT_EQ(fs::hard_link_count(folder / "old"), 2U);
}

TEST_F(WriteFile, SaysWhyUnderTheNameGiven) {
  const std::string missing = folder / "none" / "a";
  EXPECT_EQ(failure(missing), "[Errno 2] No such file or directory: '" + missing + "'");
  EXPECT_EQ(failure(folder), "[Errno 21] Is a directory: '" + folder.string() + "'");
  fs::create_symlink("loop", folder / "loop");
  EXPECT_NE(failure(folder / "loop").find("[Errno 40]"), std::string::npos);
  const std::string slash = (folder / "none").string() + "/";
  EXPECT_EQ(failure(slash), "[Errno 21] Is a directory: '" + slash + "'");
  EXPECT_EQ(names(), (std::set<std::string>{"loop", "old"}));
}

}  // namespace
}  // namespace zv
