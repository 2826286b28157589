#include "runtime/distributions.h"

#include <exception>
#include <set>

#include "base/value_text.h"
#include "src/runtime/distributions.py.inc"

namespace zv::runtime {
namespace {

constexpr std::string_view RUNTIME_PREFIX = "onnxruntime";

Value call_script(Engine& engine, const char* function, List arguments = {}) {
  const python::Object names = engine.load("builtins", "dict").make();
  engine.load("builtins", "exec").call({DISTRIBUTIONS_SOURCE, names});
  return names.item(function).call(std::move(arguments));
}

struct Registry {
  std::vector<std::pair<std::string, std::string>> distributions;  // name in lower case, version
  bool complete = false;
};

Registry read_registry(Engine& engine) {
  const Value answer = call_script(engine, "installed");
  const Map& map = *answer.as<Map>();
  Registry registry{{}, truthy(get(map, "complete"))};
  const Value found = get(map, "found");
  for (const Value& entry : *found.as<List>()) {
    const List& pair = *entry.as<List>();
    registry.distributions.emplace_back(plain_text(pair.at(0)), plain_text(pair.at(1)));
  }
  return registry;
}

Conflict conflict_among(const std::set<std::string>& names) {
  if (!names.contains("onnxruntime")) return {};
  if (names.contains("onnxruntime-gpu")) {
    return {"Both onnxruntime (CPU) and onnxruntime-gpu are installed — GPU provider may be hidden",
            "cuda"};
  }
  if (names.contains("onnxruntime-directml")) {
    return {
        "Both onnxruntime (CPU) and onnxruntime-directml are installed — DirectML provider may "
        "be hidden",
        "directml"};
  }
  return {};
}

}  // namespace

InstalledMap installed_runtimes(Engine& engine) {
  InstalledMap installed;
  for (const auto& [name, version] : read_registry(engine).distributions) {
    // The first one found is the one that gets imported.
    if (name.starts_with(RUNTIME_PREFIX)) installed.emplace(name, version);
  }
  return installed;
}

Conflict _detect_ort_conflict(Engine& engine) {
  try {
    const Registry registry = read_registry(engine);
    if (!registry.complete) return {};
    std::set<std::string> names;
    for (const auto& distribution : registry.distributions) names.insert(distribution.first);
    return conflict_among(names);
  } catch (const std::exception&) {
    return {};
  }
}

void sweep_half_installed(Engine& engine, const std::string& since_file) {
  call_script(engine, "sweep", {since_file});
}

}  // namespace zv::runtime
