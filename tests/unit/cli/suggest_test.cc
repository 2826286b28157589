#include <gtest/gtest.h>

#include "cli/options.h"

namespace zv::cli {
namespace {

TEST(Suggestion, NamesTheNearestKnownWord) {
  EXPECT_EQ(suggestion("servr", {"version", "server"}), " (did you mean 'server'?)");
  EXPECT_EQ(suggestion("gpu-inof", {"gpu-setup", "gpu-info"}), " (did you mean 'gpu-info'?)");
}

TEST(Suggestion, IsSilentWhenNothingIsNear) {
  EXPECT_EQ(suggestion("photograph", {"server", "version"}), "");
  EXPECT_EQ(suggestion(std::string(5000, 'x'), {std::string(5001, 'x')}), "");
}

}  // namespace
}  // namespace zv::cli
