#include "server/answer.h"

#include <gtest/gtest.h>

#include "base/error.h"

namespace zv::server {
namespace {

TEST(Answer, FallsBackOnlyForMissingKeys) {
  const Map answer = {{"region", nullptr}, {"threads", 4.0}, {"more", List{"a", 1}}};
  EXPECT_EQ(shown(answer, "region", "?"), "None");
  EXPECT_EQ(shown(answer, "threads", "?"), "4.0");
  EXPECT_EQ(shown(answer, "more", "?"), "['a', 1]");
  EXPECT_EQ(shown(answer, "missing", "?"), "?");
  EXPECT_EQ(shown(answer, "missing"), "None");
}

TEST(Answer, FallsBackToMmcEnabledOnlyWhenAvailableIsMissing) {
  EXPECT_TRUE(mmc_available({{"mmc_enabled", true}}));
  EXPECT_FALSE(mmc_available({{"mmc_available", false}, {"mmc_enabled", true}}));
  EXPECT_FALSE(mmc_available({{"mmc_available", nullptr}, {"mmc_enabled", true}}));
  EXPECT_FALSE(mmc_available({}));
}

TEST(Answer, ShowsUptimeInTheUnitThatFits) {
  EXPECT_EQ(uptime_text(0), "0s");
  EXPECT_EQ(uptime_text(42), "42s");
  EXPECT_EQ(uptime_text(59.6), "60s");
  EXPECT_EQ(uptime_text(60), "1m");
  EXPECT_EQ(uptime_text(150), "2m");  // 2.5, half to even
  EXPECT_EQ(uptime_text(3599), "60m");
  EXPECT_EQ(uptime_text(3600), "1.0h");
  EXPECT_EQ(uptime_text(5400), "1.5h");
  EXPECT_EQ(uptime_text(259200), "72.0h");
  EXPECT_EQ(uptime_text(true), "1s");
  EXPECT_THROW(uptime_text("42"), Error);
  EXPECT_THROW(uptime_text(nullptr), Error);
}

TEST(Answer, JoinsTextsOnly) {
  EXPECT_EQ(joined({"univ", "kr"}, ", "), "univ, kr");
  EXPECT_EQ(joined({}, ", "), "");
  EXPECT_THROW(joined({"univ", 1}, ", "), Error);
}

TEST(Answer, CountsWhatHasALength) {
  EXPECT_EQ(length(List{1, 2}), 2U);
  EXPECT_EQ(length(Map{{"a", 1}}), 1U);
  EXPECT_EQ(length("äö"), 2U);
  EXPECT_THROW(length(3), Error);
}

}  // namespace
}  // namespace zv::server
