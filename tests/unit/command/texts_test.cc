#include "command/texts.h"

#include <gtest/gtest.h>

namespace zv {
namespace {

constexpr const char* DNS = "DNS lookup failed — check your internet connection";
constexpr const char* TIME_OUT = "connection timed out — check your internet connection";
constexpr const char* REFUSED = "connection refused by MMC server";

TEST(HumanizeNetworkError, KnowsMessages) {
  EXPECT_EQ(_humanize_network_error("[Errno 8] nodename nor servname provided, or not known"), DNS);
  EXPECT_EQ(_humanize_network_error("[Errno -3] Temporary failure in name resolution"), DNS);
  EXPECT_EQ(_humanize_network_error("The read operation Timed Out"), TIME_OUT);
  EXPECT_EQ(_humanize_network_error("[Errno 111] Connection refused"), REFUSED);
}

TEST(HumanizeNetworkError, IsCaseSensitiveWhereItSaysSo) {
  EXPECT_EQ(_humanize_network_error("GETADDRINFO FAILED"), "GETADDRINFO FAILED");
  EXPECT_EQ(_humanize_network_error("connection refused"), "connection refused");
}

TEST(HumanizeNetworkError, KnowsKindsWithoutTheirWords) {
  EXPECT_EQ(_humanize_network_error("x", NetworkFailure::name_resolution), DNS);
  EXPECT_EQ(_humanize_network_error("x", NetworkFailure::time_out), TIME_OUT);
  EXPECT_EQ(_humanize_network_error("x", NetworkFailure::refused), REFUSED);
}

TEST(HumanizeNetworkError, TheFirstRuleWins) {
  EXPECT_EQ(_humanize_network_error("getaddrinfo failed: timed out"), DNS);
  EXPECT_EQ(_humanize_network_error("SSL: Connection refused"), REFUSED);
}

TEST(HumanizeNetworkError, CutsByCharacters) {
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "ü";
  EXPECT_EQ(_humanize_network_error(umlauts), umlauts.substr(0, 240));
  EXPECT_EQ(_humanize_network_error("[SSL: CERTIFICATE_VERIFY_FAILED] " + umlauts),
            "SSL/TLS error — [SSL: CERTIFICATE_VERIFY_FAILED] " + umlauts.substr(0, 94));
  EXPECT_EQ(_humanize_network_error("bad certificate"), "SSL/TLS error — bad certificate");
  EXPECT_EQ(_humanize_network_error(""), "");
}

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
