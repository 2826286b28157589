// A child process with pipes on chosen descriptors, driven by an event loop of its own.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/interrupt_relay.h"

namespace zv {

struct ExitState {
  int status = 0;
  int signal = 0;  // 0 unless a signal ended it

  bool success() const { return status == 0 && signal == 0; }
  // "exit status 3", "signal 9"
  std::string text() const;
};

class Child {
 public:
  // What a descriptor of the child is: ours, nothing, or a pipe that we read or write.
  enum class Stream { inherit, ignore, read, write };

  // streams[i] becomes the child's descriptor i. Throws Error when the program cannot be started.
  Child(const std::vector<std::string>& command, const std::vector<Stream>& streams,
        Relay relay = Relay::every);
  // Kills what still runs.
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void write(std::size_t descriptor, std::string data);
  void close(std::size_t descriptor);
  // Bytes received so far; the caller may take them out.
  std::string& received(std::size_t descriptor);
  bool ended(std::size_t descriptor) const;
  const std::optional<ExitState>& exit() const;

  // Serves the pipes until `done` holds; the child is told of Ctrl+C meanwhile.
  void run_until(const std::function<bool()>& done);
  void kill();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zv
