// Every input that is kept, and the same damaged variants of each in every run, through its
// harness.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "base/files.h"
#include "harness.h"

namespace zv::fuzz {
namespace {

namespace fs = std::filesystem;

constexpr int VARIANTS = 15;

// Made by seeds.py, and found by fuzzers earlier.
std::vector<fs::path> inputs(std::string_view target) {
  const char* seeds = std::getenv("ZV_FUZZ_SEEDS");
  std::vector<fs::path> files;
  for (const fs::path& folder :
       {fs::path(seeds ? seeds : ZV_FUZZ_SEEDS), fs::path(ZV_FUZZ_FOUND)}) {
    if (!fs::exists(folder / target)) continue;
    for (const auto& entry : fs::directory_iterator(folder / target)) files.push_back(entry);
  }
  return files;
}

// One to four bytes changed, left out, or said twice.
std::string damaged(std::string bytes, std::mt19937& random) {
  for (unsigned left = 1 + random() % 4; left > 0 && !bytes.empty(); --left) {
    const std::size_t at = random() % bytes.size();
    switch (random() % 4) {
      case 0:
        bytes[at] = static_cast<char>(random());
        break;
      case 1:
        bytes[at] = static_cast<char>(bytes[at] ^ 1 << random() % 8);
        break;
      case 2:
        bytes.erase(at, 1 + random() % 8);
        break;
      default:
        bytes.insert(at, bytes.substr(at, 1 + random() % 8));
        break;
    }
  }
  return bytes;
}

class Replay : public testing::TestWithParam<Target> {};

TEST_P(Replay, TakesWhateverComes) {
  const auto files = inputs(GetParam().name);
  ASSERT_FALSE(files.empty()) << "no inputs: run tests/fuzz/seeds.py " << ZV_FUZZ_SEEDS;
  for (const fs::path& file : files) {
    const std::string content = read_file(file);
    GetParam().harness(content);
    std::mt19937 random(static_cast<std::mt19937::result_type>(content.size()));
    for (int i = 0; i < VARIANTS; ++i) GetParam().harness(damaged(content, random));
  }
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Replay, testing::ValuesIn(targets().begin(), targets().end()),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace

void PrintTo(const Target& target, std::ostream* out) {
  *out << target.name;
}

}  // namespace zv::fuzz
