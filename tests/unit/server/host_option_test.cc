#include "server/host_option.h"

#include <gtest/gtest.h>

namespace zv::server {
namespace {

TEST(HostOption, RecognisesPorts) {
  for (const char* port : {"8001", " 8001 ", "\t80\n", "８００１", "0"}) {
    EXPECT_TRUE(looks_like_port(port)) << port;
  }
  for (const char* host : {"", "  ", "127.0.0.1", "localhost", "80 01", "-1", "8001x", "::1"}) {
    EXPECT_FALSE(looks_like_port(host)) << host;
  }
}

TEST(HostOption, SaysWhatWasMeant) {
  EXPECT_EQ(mistaken_port("9000"), "\n✗ Invalid --host: '9000'. Did you mean --port 9000?\n");
}

}  // namespace
}  // namespace zv::server
