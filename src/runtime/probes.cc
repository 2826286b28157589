#include "runtime/probes.h"

#include "base/interrupt.h"
#include "base/json.h"
#include "base/unicode.h"
#include "src/runtime/probes.py.inc"

namespace zv::runtime {
namespace {

constexpr std::size_t ANSWERS = 3;  // apart from 1 and 2, where the modules print what they like

List read_lines(const std::string& received) {
  List answers;
  for (const std::string& line : split_lines(received)) {
    try {
      answers.push_back(parse_json(line));
    } catch (const JsonError&) {  // cut short by a crash
      break;
    }
  }
  return answers;
}

}  // namespace

Probe::Probe(Engine& engine, const std::string& name) {
  using enum Child::Stream;
  child_ = std::make_unique<Child>(
      std::vector<std::string>{engine.python(), "-c", std::string(PROBES_SOURCE),
                               std::to_string(ANSWERS), name},
      std::vector<Child::Stream>{ignore, ignore, ignore, read});
}

const List& Probe::answers() {
  if (!child_) return answers_;
  child_->run_until([this] { return child_->exit() && child_->ended(ANSWERS); });
  check_interrupt();
  answers_ = read_lines(child_->received(ANSWERS));
  child_ = nullptr;
  return answers_;
}

bool importable(Engine& engine, const std::string& module) {
  try {
    return engine.load("importlib.util", "find_spec").make({module}).truthy();
  } catch (const std::exception&) {
    return true;  // its own probe will tell
  }
}

}  // namespace zv::runtime
