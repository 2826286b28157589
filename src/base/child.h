// A child process with pipes on chosen descriptors.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zv {

struct ExitState {
  int status = 0;
  int signal = 0;  // 0 unless a signal ended it

  bool success() const { return status == 0 && signal == 0; }
  // "exit status 3", "signal 9"
  std::string text() const;
};

// Which Ctrl+C the child is told of: every one, or only what the terminal did not send it already,
// because a second one would break off its tidying up. A second Ctrl+C kills it in any case.
enum class Relay { every, unless_from_terminal };

class Child {
 public:
  // What a descriptor of the child is: ours, nothing, or a pipe that we read or write.
  enum class Stream { inherit, ignore, read, write };
  using Limit = std::optional<std::chrono::milliseconds>;

  // streams[i] becomes the child's descriptor i; it ignores the signals that we ignore. Throws
  // Error when the program cannot be started.
  Child(const std::vector<std::string>& command, const std::vector<Stream>& streams,
        Relay relay = Relay::every);
  // Kills what still runs.
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Sent while run_until serves the pipes. SIGPIPE has to be ignored.
  void write(std::size_t descriptor, std::string_view data);
  void close(std::size_t descriptor);
  // Bytes received so far; the caller may take them out.
  std::string& received(std::size_t descriptor);
  // Whether the child has closed its end, which of a pipe that we write is noticed by writing.
  bool ended(std::size_t descriptor) const;
  const std::optional<ExitState>& exit() const;

  // Serves the pipes until `done` holds, and tells whether it does or time is up. The child is told
  // of Ctrl+C meanwhile.
  bool run_until(const std::function<bool()>& done, Limit limit = std::nullopt);
  void kill();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zv
