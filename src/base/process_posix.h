// One program that was started: its descriptors, its end, and the Ctrl+C that it is told of.
#pragma once

#include <poll.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/child.h"

namespace zv {

// Closes what it holds.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { close(); }

  int number() const { return number_; }
  bool open() const { return number_ >= 0; }
  int release() { return std::exchange(number_, -1); }
  // False when what was written did not arrive.
  bool close() { return !open() || ::close(release()) == 0; }

 private:
  int number_ = -1;
};

struct Pipe {
  Descriptor read;
  Descriptor write;
};

// No program inherits either end, and their numbers are above those that programs are given.
// Throws Error.
Pipe make_pipe();

class Process {
 public:
  using Deadline = std::optional<std::chrono::steady_clock::time_point>;
  // Whether the program goes on when this one is killed.
  enum class Bond { free, ends_with_us };

  // descriptors[i] becomes the program's descriptor i. Signals that we ignore it ignores as well,
  // but for SIGPIPE and SIGXFSZ. Throws Error when it cannot be started.
  Process(const std::vector<std::string>& command, const std::vector<int>& descriptors, Relay relay,
          Bond bond = Bond::free);
  // Kills what still runs.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t id() const { return id_; }
  const std::optional<ExitState>& exit() const { return exit_; }
  void kill(int signal);
  // Returns when one of the descriptors is ready, something may have happened to the program, or
  // at the deadline. Ctrl+C is passed on meanwhile: after a moment, once; a second one kills.
  void wait(std::vector<pollfd>& watched, Deadline until = std::nullopt);

 private:
  bool look();
  void relay_interrupt();
  int milliseconds_to(Deadline until) const;

  pid_t id_ = -1;
  Relay relay_;
  std::optional<ExitState> exit_;
  Deadline pass_on_at_;
  bool passed_on_ = false;
};

}  // namespace zv
