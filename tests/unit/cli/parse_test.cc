#include "cli/parse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <limits>

#include "base/python_text.h"
#include "cli/command_table.h"

namespace zv::cli {
namespace {

Args parsed(const std::vector<std::string>& words) {
  const Outcome outcome = parse(program(), words);
  if (const auto* error = std::get_if<UsageError>(&outcome)) ADD_FAILURE() << error->message;
  return std::get<Parsed>(outcome).args;
}

std::string problem(const std::vector<std::string>& words) {
  const Outcome outcome = parse(program(), words);
  const auto* error = std::get_if<UsageError>(&outcome);
  return error ? error->message : "no problem";
}

TEST(Parse, GivesEveryFieldItsDefault) {
  const Args args = parsed({"read", "a.jpg"});
  EXPECT_EQ(args.text("command"), "read");
  EXPECT_EQ(plain_text(args.value("input")), "['a.jpg']");
  EXPECT_EQ(args.text("detector_model"), "640p_fp32");
  EXPECT_EQ(args.text("ocr_model"), "fp32");
  EXPECT_EQ(args.text("region"), "univ");
  EXPECT_EQ(plain_text(args.value("confidence")), "0.5");
  EXPECT_TRUE(args.has("output"));
  EXPECT_TRUE(args.value("output").is_null());
  EXPECT_FALSE(args.has("server_command"));
}

TEST(Parse, LeavesHostAndPortAbsentSoThatHandlersCanTell) {
  const Args args = parsed({"server", "start"});
  EXPECT_EQ(args.text("server_command"), "start");
  for (const char* field : {"host", "port", "threads", "config"}) {
    EXPECT_TRUE(args.has(field)) << field;
    EXPECT_TRUE(args.value(field).is_null()) << field;
  }
  EXPECT_FALSE(args.flag("daemon"));
}

TEST(Parse, KnowsAServerWithoutASubCommand) {
  const Args args = parsed({"server"});
  EXPECT_TRUE(args.has("server_command"));
  EXPECT_TRUE(args.value("server_command").is_null());
}

TEST(Parse, TakesAliasesAndShortForms) {
  EXPECT_EQ(plain_text(parsed({"server", "start", "--workers", "8"}).value("threads")), "8");
  EXPECT_EQ(plain_text(parsed({"server", "start", "--threads=8"}).value("threads")), "8");
  for (const auto& spelling : std::vector<std::vector<std::string>>{
           {"-n5"}, {"-n", "5"}, {"-n=5"}, {"--lines=5"}, {"--li", "5"}}) {
    std::vector<std::string> words = {"server", "logs"};
    words.insert(words.end(), spelling.begin(), spelling.end());
    EXPECT_EQ(plain_text(parsed(words).value("lines")), "5") << spelling.front();
  }
  EXPECT_TRUE(parsed({"server", "logs", "-fn3"}).flag("follow"));
  EXPECT_TRUE(parsed({"server", "stop", "-f"}).flag("force"));
  EXPECT_TRUE(parsed({"mmc-uninstall", "-y"}).flag("yes"));
}

TEST(Parse, KeepsFieldNamesThatDifferFromTheOption) {
  const Args args = parsed({"server", "stop", "--port", "8001", "--pid", "42", "--all"});
  EXPECT_EQ(plain_text(args.value("target_port")), "8001");
  EXPECT_EQ(plain_text(args.value("target_pid")), "42");
  EXPECT_TRUE(args.flag("stop_all"));
}

TEST(Parse, TakesNegativeNumbersAndNumbersOfAnySize) {
  EXPECT_EQ(plain_text(parsed({"server", "logs", "-n", "-5"}).value("lines")), "-5");
  EXPECT_EQ(
      plain_text(parsed({"server", "health", "--port", "99999999999999999999"}).value("port")),
      "99999999999999999999");
}

TEST(Parse, LetsTheLastOneWin) {
  EXPECT_EQ(parsed({"read", "a", "--region", "kr", "--region", "jp"}).text("region"), "jp");
}

TEST(Parse, GathersPositionalsAroundOptions) {
  EXPECT_EQ(
      plain_text(parsed({"read", "a", "--json", "r", "b", "--", "-c", "--json"}).value("input")),
      "['a', 'b', '-c', '--json']");
  EXPECT_EQ(plain_text(parsed({"read", "-"}).value("input")), "['-']");
}

TEST(Parse, HasADefaultForAnOptionalPositional) {
  EXPECT_EQ(parsed({"gpu-setup"}).text("gpu_target"), "cuda");
  EXPECT_EQ(parsed({"gpu-setup", "gpu"}).text("gpu_target"), "gpu");
  EXPECT_TRUE(parsed({"mmc-backend"}).value("backend").is_null());
  EXPECT_EQ(parsed({"server", "region", ""}).text("name"), "");
}

TEST(Parse, NamesTheProblem) {
  EXPECT_EQ(
      problem({"gpu-setup", "rocm"}),
      "argument gpu_target: invalid choice: 'rocm' (choose from 'cuda', 'gpu', 'directml', 'cpu')");
  EXPECT_EQ(problem({"server", "logs", "-n", "abc"}),
            "argument --lines/-n: invalid int value: 'abc'");
  EXPECT_EQ(problem({"read"}), "the following arguments are required: input");
  EXPECT_EQ(problem({"read", "a", "--o", "x"}),
            "ambiguous option: --o could match --ocr-model, --ocr-version, --output");
  EXPECT_EQ(problem({"server", "list", "x"}), "unrecognized arguments: x");
  EXPECT_EQ(problem({"--region", "kr"}), "unrecognized arguments: --region");
}

TEST(Parse, AsksForHelpAndVersionWhereTheyAre) {
  EXPECT_TRUE(
      std::holds_alternative<HelpWanted>(parse(program(), {"server", "logs", "-h", "bad"})));
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parse(program(), {"--he"})));
  EXPECT_TRUE(std::holds_alternative<VersionWanted>(parse(program(), {"--vers"})));
  EXPECT_EQ(problem({"version", "--version"}).substr(0, 33), "unrecognized arguments: --version");
}

// Processor time of the fastest of some runs.
std::clock_t ticks_for(std::size_t words) {
  std::vector<std::string> line(words, "photo.jpg");
  line.front() = "read";
  std::clock_t best = std::numeric_limits<std::clock_t>::max();
  for (int round = 0; round < 3; ++round) {
    const std::clock_t start = std::clock();
    parse(program(), line);
    best = std::min(best, std::clock() - start);
  }
  return best;
}

TEST(Parse, TakesLongerInProportionToTheWords) {
  EXPECT_LT(ticks_for(20'000), 9 * ticks_for(5'000));  // about 4; 16 if each word met all others
}

TEST(Parse, HasNoCommandForNoWords) {
  const Outcome outcome = parse(program(), {});
  EXPECT_EQ(std::get<Parsed>(outcome).command, nullptr);
}

}  // namespace
}  // namespace zv::cli
