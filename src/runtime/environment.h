// The environment as its interpreter knows it: the machine it is for, the distributions of the
// inference runtime in it, and the note of who is changing them.
#pragma once

#include <map>
#include <string>

#include "command/engine.h"

namespace zv::runtime {

// "Linux", "Darwin", "Windows", ... and "x86_64", "aarch64", "AMD64", ...; empty when the
// interpreter cannot tell. What can be installed depends on it, not on what the executable was
// built for.
std::string system_name(Engine& engine);
std::string machine_name(Engine& engine);

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

// The environment's own folder.
std::string environment_folder(Engine& engine);

// A note in the environment that a switch of its packages is under way. One that is found there
// tells that the last switch was cut off, and that what looks installed may be half installed.
class SwitchNote {
 public:
  explicit SwitchNote(const std::string& folder);

  // Left by an earlier run.
  bool found() const { return found_; }
  // Left by an earlier run or written by this one.
  bool present() const;
  const std::string& path() const { return path_; }
  // An environment that cannot be written to goes without: the installer will fail there as well.
  void write() const;
  void remove() const;

 private:
  std::string path_;
  bool found_;
};

}  // namespace zv::runtime
