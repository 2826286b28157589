#include "image/raw_profile.h"

#include <gtest/gtest.h>

namespace zv::image {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(RawProfile, ReadsDigitsBehindNameAndLength) {
  EXPECT_EQ(parse_raw_profile("\nexif\n       3\n4d4d\n00\n"), (Bytes{0x4D, 0x4D, 0x00}));
}

TEST(RawProfile, StopsAtDamage) {
  EXPECT_EQ(parse_raw_profile("\nexif\n 3\n4dxx00"), (Bytes{0x4D}));
  EXPECT_EQ(parse_raw_profile("\nexif\n 3\n4d4"), (Bytes{0x4D}));
  EXPECT_EQ(parse_raw_profile("4d4d"), Bytes{});
  EXPECT_EQ(parse_raw_profile(""), Bytes{});
}

}  // namespace
}  // namespace zv::image
