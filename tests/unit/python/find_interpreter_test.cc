#include "python/find_interpreter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

namespace zv::python {
namespace {

namespace fs = std::filesystem;

class FindInterpreterTest : public testing::Test {
 protected:
  FindInterpreterTest() : folder_(fs::temp_directory_path() / "zv-find-test") {
    fs::remove_all(folder_);
  }
  ~FindInterpreterTest() override { fs::remove_all(folder_); }

  std::string make(const std::string& name, bool executable = true) {
    const fs::path path = folder_ / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path).put('#');
    if (executable) fs::permissions(path, fs::perms::owner_all);
    return path.string();
  }

  Found find() const {
    const Surroundings surroundings{[this](const std::string& name) -> std::optional<std::string> {
                                      const auto found = variables_.find(name);
                                      if (found == variables_.end()) return std::nullopt;
                                      return found->second;
                                    },
                                    beside_};
    return find_interpreter(surroundings);
  }

  fs::path folder_;
  std::map<std::string, std::string> variables_;
  std::string beside_;
};

TEST_F(FindInterpreterTest, TakesTheFirstPlaceInOrder) {
  std::vector<std::string> expected;
  variables_["PATH"] = (folder_ / "path").string();
  expected.push_back(make("path/python3"));
  EXPECT_EQ(find().interpreter, expected.back());
  variables_["CONDA_PREFIX"] = (folder_ / "conda").string();
  expected.push_back(make("conda/bin/python3"));
  EXPECT_EQ(find().interpreter, expected.back());
  variables_["VIRTUAL_ENV"] = (folder_ / "venv").string();
  expected.push_back(make("venv/bin/python"));
  EXPECT_EQ(find().interpreter, expected.back());
  beside_ = (folder_ / "beside").string();
  expected.push_back(make("beside/python3"));
  EXPECT_EQ(find().interpreter, expected.back());
  variables_["ZV_ANPR_PYTHON"] = make("chosen");
  EXPECT_EQ(find().interpreter, (folder_ / "chosen").string());
}

TEST_F(FindInterpreterTest, LooksUpABareNameOnThePath) {
  variables_["PATH"] = "/nowhere:" + (folder_ / "path").string();
  variables_["ZV_ANPR_PYTHON"] = "python3.12";
  EXPECT_EQ(find().interpreter, "");
  const std::string python = make("path/python3.12");
  EXPECT_EQ(find().interpreter, python);
}

TEST_F(FindInterpreterTest, PassesOverWhatCannotRun) {
  variables_["PATH"] = (folder_ / "path").string();
  make("path/python3", false);
  const std::string python = make("path/python");
  EXPECT_EQ(find().interpreter, python);
}

TEST_F(FindInterpreterTest, HintsAtAChoiceItPassedOver) {
  variables_["ZV_ANPR_PYTHON"] = "/nowhere/python";
  EXPECT_THAT(find().hint, testing::HasSubstr("/nowhere/python"));
}

TEST_F(FindInterpreterTest, ListsEveryPlaceItTried) {
  variables_ = {{"ZV_ANPR_PYTHON", "/a/python"}, {"VIRTUAL_ENV", "/b"}, {"PATH", "/d"}};
  beside_ = "/e";
  EXPECT_THAT(find().tried, testing::ElementsAre(
                                "ZV_ANPR_PYTHON (/a/python)", "beside the program (/e/python)",
                                "beside the program (/e/python3)", "VIRTUAL_ENV (/b/bin/python)",
                                "VIRTUAL_ENV (/b/bin/python3)", "PATH (python3)", "PATH (python)"));
}

}  // namespace
}  // namespace zv::python
