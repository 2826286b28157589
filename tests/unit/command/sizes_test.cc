#include "command/sizes.h"

#include <gtest/gtest.h>

namespace zv {
namespace {

TEST(FmtSize, ChoosesTheUnit) {
  EXPECT_EQ(_fmt_size(0), "0 B");
  EXPECT_EQ(_fmt_size(1023), "1023 B");
  EXPECT_EQ(_fmt_size(512.5), "512.5 B");
  EXPECT_EQ(_fmt_size(1024), "1.0 KB");
  EXPECT_EQ(_fmt_size(1536), "1.5 KB");
  EXPECT_EQ(_fmt_size(1048575), "1024.0 KB");
  EXPECT_EQ(_fmt_size(1024 * 1024), "1.0 MB");
  EXPECT_EQ(_fmt_size(std::int64_t{5} << 40), "5120.0 GB");
}

}  // namespace
}  // namespace zv
