#include "mmc/live_switch.h"

#include <gtest/gtest.h>

#include <sstream>

namespace zv::mmc {
namespace {

std::string switched(const Args& args) {
  std::ostringstream out;
  switch_running_server("local", args, out);
  return out.str();
}

std::string no_server_on(const std::string& place) {
  return "   (No running server on " + place +
         " — change applies on next `zv-anpr server start`.)\n";
}

// A blank in the host makes the address invalid, so that nothing is ever asked.
TEST(LiveSwitch, TakesThePortAsGiven) {
  EXPECT_EQ(switched({{"host", "a b"}, {"port", 8123}}), no_server_on("a b:8123"));
}

TEST(LiveSwitch, TakesPortZeroAndNoPortForTheUsualOne) {
  EXPECT_EQ(switched({{"host", "a b"}, {"port", 0}}), no_server_on("a b:8000"));
  EXPECT_EQ(switched({{"host", "a b"}, {"port", nullptr}}), no_server_on("a b:8000"));
  EXPECT_EQ(switched({{"host", "a b"}}), no_server_on("a b:8000"));
}

TEST(LiveSwitch, TakesAnEmptyHostForThisMachine) {
  EXPECT_EQ(switched({{"host", ""}, {"port", -1}}), no_server_on("127.0.0.1:-1"));
  EXPECT_EQ(switched({{"port", 70000}}), no_server_on("127.0.0.1:70000"));
}

}  // namespace
}  // namespace zv::mmc
