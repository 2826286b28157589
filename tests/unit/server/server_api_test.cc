#include "server/server_api.h"

#include <gtest/gtest.h>

namespace zv::server {
namespace {

TEST(ServerBaseUrl, HasDefaults) {
  EXPECT_EQ(_server_base_url({}), "http://127.0.0.1:8000");
  EXPECT_EQ(_server_base_url({{"host", nullptr}, {"port", nullptr}}), "http://127.0.0.1:8000");
  EXPECT_EQ(_server_base_url({{"host", ""}, {"port", 0}}), "http://127.0.0.1:8000");
}

TEST(ServerBaseUrl, TakesHostAndPortAsGiven) {
  EXPECT_EQ(_server_base_url({{"host", "0.0.0.0"}, {"port", 8001}}), "http://0.0.0.0:8001");
  EXPECT_EQ(_server_base_url({{"host", "[::1]"}}), "http://[::1]:8000");
}

}  // namespace
}  // namespace zv::server
