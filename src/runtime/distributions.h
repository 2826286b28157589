// Which distributions of the inference runtime the environment has.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "command/engine.h"

namespace zv::runtime {

// Name in lower case -> version, of the distributions whose name starts with "onnxruntime".
using InstalledMap = std::map<std::string, std::string>;
InstalledMap installed_runtimes(Engine& engine);

struct Conflict {
  std::string message;  // empty: there is none
  std::string backend;  // what gpu-setup is to be called with
};
// Two runtimes that hide each other's providers. Never fails: what cannot be read is no conflict.
Conflict _detect_ort_conflict(Engine& engine);

// Deletes what an installer left half done since the file was written.
void sweep_half_installed(Engine& engine, const std::string& since_file);

}  // namespace zv::runtime
