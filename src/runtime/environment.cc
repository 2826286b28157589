#include "runtime/environment.h"

#include <exception>
#include <filesystem>
#include <set>

#include "base/error.h"
#include "base/files.h"
#include "base/python_text.h"
#include "python/object.h"
#include "src/runtime/environment.py.inc"

namespace zv::runtime {
namespace {

constexpr std::string_view RUNTIME_PREFIX = "onnxruntime";
constexpr const char* NOTE_FILE = "/.zv-anpr-gpu-setup";
constexpr const char* NOTE = "zv-anpr gpu-setup is changing packages here, or was cut off.\n";

Value call_script(Engine& engine, const char* function, List arguments = {}) {
  const python::Object names = engine.load("builtins", "dict").make();
  engine.load("builtins", "exec").call({ENVIRONMENT_SOURCE, names});
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

std::string system_name(Engine& engine) {
  return engine.load("platform", "system").make().text();
}

std::string machine_name(Engine& engine) {
  return engine.load("platform", "machine").make().text();
}

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

std::string environment_folder(Engine& engine) {
  return engine.load("sys", "prefix").text();
}

void sweep_half_installed(Engine& engine, const std::string& since_file) {
  call_script(engine, "sweep", {since_file});
}

SwitchNote::SwitchNote(const std::string& folder) : path_(folder + NOTE_FILE), found_(present()) {}

bool SwitchNote::present() const {
  std::error_code error;
  return std::filesystem::exists(path_, error);
}

void SwitchNote::write() const {
  if (found_) return;  // its time tells when the first of the interrupted runs began
  try {
    write_file(path_, NOTE);
  } catch (const Error&) {
    return;
  }
}

void SwitchNote::remove() const {
  std::error_code error;
  std::filesystem::remove(path_, error);
}

}  // namespace zv::runtime
