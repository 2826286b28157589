// Probes of the environment's modules, each in an interpreter of its own, all at the same time.
#pragma once

#include <memory>
#include <string>

#include "base/child.h"
#include "base/value.h"
#include "command/engine.h"

namespace zv::runtime {

// One running probe; letting it go ends it.
class Probe {
 public:
  // `name` is a function of probes.py: "pillow", "onnxruntime", "torch", "cuda_runtime",
  // "tensorrt". Throws Error when it cannot be started.
  Probe(Engine& engine, const std::string& name);

  // Waits. One value per step that succeeded: fewer than the probe has mean that it failed there.
  const List& answers();

 private:
  std::unique_ptr<Child> child_;  // none: its answers were taken
  List answers_;
};

// Whether there is anything to import under this name. Never fails.
bool importable(Engine& engine, const std::string& module);

}  // namespace zv::runtime
