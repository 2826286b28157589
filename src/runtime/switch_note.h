// A note in the environment that a switch of its packages is under way. One that is found there
// tells that the last switch was cut off, and that what looks installed may be half installed.
#pragma once

#include <string>

#include "command/engine.h"

namespace zv::runtime {

class SwitchNote {
 public:
  explicit SwitchNote(Engine& engine);

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
