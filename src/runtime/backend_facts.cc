#include <algorithm>
#include <memory>

#include "base/child.h"
#include "base/interrupt.h"
#include "base/json.h"
#include "base/python_text.h"
#include "base/unicode.h"
#include "runtime/backend.h"
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

// One running probe of the environment, in an interpreter of its own; letting it go ends it.
class Probe {
 public:
  // `name` is a function of probes.py: "pillow", "onnxruntime", "torch", "cuda_runtime",
  // "tensorrt". Throws Error when it cannot be started.
  Probe(Engine& engine, const std::string& name) {
    using enum Child::Stream;
    child_ = std::make_unique<Child>(
        std::vector<std::string>{engine.python(), "-c", std::string(PROBES_SOURCE),
                                 std::to_string(ANSWERS), name},
        std::vector<Child::Stream>{ignore, ignore, ignore, read});
  }

  // Waits. One value per step that succeeded: fewer than the probe has mean that it failed there.
  const List& answers() {
    if (!child_) return answers_;
    child_->run_until([this] { return child_->exit() && child_->ended(ANSWERS); });
    check_interrupt();
    answers_ = read_lines(child_->received(ANSWERS));
    child_ = nullptr;
    return answers_;
  }

 private:
  std::unique_ptr<Child> child_;  // none: its answers were taken
  List answers_;
};

// Whether there is anything to import under this name. Never fails.
bool importable(Engine& engine, const std::string& module) {
  try {
    return engine.load("importlib.util", "find_spec").make({module}).truthy();
  } catch (const std::exception&) {
    return true;  // its own probe will tell
  }
}

// A probe whose module is not there at all needs no interpreter to find that out.
std::optional<Probe> started_if_importable(Engine& engine, const std::string& module) {
  if (!importable(engine, module)) return std::nullopt;
  return Probe(engine, module);
}

std::optional<std::string> first_text(Probe& probe) {
  const List& answers = probe.answers();
  if (answers.empty()) return std::nullopt;
  return plain_text(answers[0]);
}

void add_runtime(BackendFacts& facts, const List& answers) {
  facts.runtime_imports = !answers.empty();
  if (!answers.empty()) facts.runtime_version = plain_text(answers[0]);
  if (answers.size() < 2) return;
  const auto* listed = answers[1].as<List>();
  if (!listed) return;
  facts.providers.emplace();
  for (const Value& provider : *listed) facts.providers->push_back(plain_text(provider));
}

std::string version_from_cuda_runtime(Engine& engine) {
  Probe probe(engine, "cuda_runtime");
  const List& answers = probe.answers();
  const auto* version = answers.empty() ? nullptr : answers[0].as<std::int64_t>();
  return version ? cuda_version_text(*version) : "";
}

// The framework is asked first; the runtime library only when the framework cannot answer at all.
std::string cuda_version(Engine& engine, std::optional<Probe>& torch) {
  if (!torch || torch->answers().empty()) return version_from_cuda_runtime(engine);
  const Value& version = torch->answers()[0];
  return version.is_null() ? "" : plain_text(version);
}

}  // namespace

bool BackendFacts::lists(const std::string& provider) const {
  return providers && std::find(providers->begin(), providers->end(), provider) != providers->end();
}

std::string cuda_version_text(std::int64_t version) {
  return std::to_string(version / 1000) + "." + std::to_string(version % 1000 / 10);
}

BackendFacts gather_facts(Engine& engine) {
  Probe runtime(engine, "onnxruntime");
  auto torch = started_if_importable(engine, "torch");
  auto tensorrt = started_if_importable(engine, "tensorrt");
  Probe pillow(engine, "pillow");
  BackendFacts facts;
  facts.conflict = _detect_ort_conflict(engine);
  facts.pillow = first_text(pillow);
  add_runtime(facts, runtime.answers());
  if (facts.lists("CUDAExecutionProvider")) facts.cuda_version = cuda_version(engine, torch);
  torch.reset();
  if (facts.providers && tensorrt) facts.tensorrt = first_text(*tensorrt);
  return facts;
}

}  // namespace zv::runtime
