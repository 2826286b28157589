#include <gtest/gtest.h>

#include <sstream>

#include "base/error.h"
#include "cli/command_table.h"

namespace zv::cli {
namespace {

class NoEngine {};

TEST(CmdTestApi, ExplainsTheRetirementAndEndsWithStatus2) {
  std::ostringstream out;
  std::istringstream in;
  // The handler never touches the engine, so that none is started here.
  alignas(Engine) static unsigned char storage[sizeof(Engine)];
  Session session{out, out, in, reinterpret_cast<Engine&>(storage)};
  int status = 0;
  try {
    cmd_test_api({}, session);
  } catch (const ExitRequest& request) {
    status = request.status;
  }
  EXPECT_EQ(status, 2);
  std::istringstream lines(out.str());
  std::vector<std::string> read;
  for (std::string line; std::getline(lines, line);) read.push_back(line);
  ASSERT_EQ(read.size(), 5U);
  EXPECT_EQ(read[0], "zv-anpr test-api: the public test service has been retired.");
  EXPECT_EQ(read[2].find("one picture"), 34U);
  EXPECT_EQ(read[3].find("the local REST API"), 34U);
  EXPECT_TRUE(read[4].starts_with("or install "));
  EXPECT_TRUE(read[4].ends_with("."));
}

}  // namespace
}  // namespace zv::cli
