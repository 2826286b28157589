#include <fcntl.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "base/child.h"
#include "base/error.h"
#include "base/process_posix.h"

namespace zv {
namespace {

// Our end of one of the child's descriptors.
struct PipeEnd {
  Child::Stream kind;
  Descriptor end;
  std::string data;  // received, or still to be written
  bool ended = false;

  // A pipe with nothing to send is watched as well: the other side may close it.
  pollfd watch() const {
    const int sent = data.empty() ? 0 : POLLOUT;
    const int events = kind == Child::Stream::read ? POLLIN : sent;
    return {end.number(), static_cast<std::int16_t>(events), 0};
  }

  void transfer() {
    const ssize_t count = kind == Child::Stream::read ? take() : give();
    const bool later = count < 0 && (errno == EAGAIN || errno == EINTR);
    if (count > 0 || later) return;
    ended = true;
    end.close();
  }

 private:
  ssize_t take() {
    std::array<char, 1 << 16> chunk;
    const ssize_t count = ::read(end.number(), chunk.data(), chunk.size());
    if (count > 0) data.append(chunk.data(), static_cast<std::size_t>(count));
    return count;
  }

  ssize_t give() {
    const ssize_t count = ::write(end.number(), data.data(), data.size());
    if (count > 0) data.erase(0, static_cast<std::size_t>(count));
    return count;
  }
};

Descriptor nothing() {
  const int opened = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (opened < 0) throw Error(os_error_text(errno, "/dev/null"));
  return Descriptor(opened);
}

}  // namespace

struct Child::State {
  std::vector<PipeEnd> ends;
  std::optional<Process> process;  // the last member, so that it ends before its pipes do

  // The child's end; none for what it shares with us.
  Descriptor open(Child::Stream kind) {
    PipeEnd& ours = ends.emplace_back(PipeEnd{kind, {}, {}});
    if (kind == Child::Stream::inherit) return {};
    if (kind == Child::Stream::ignore) return nothing();
    Pipe pipe = make_pipe();
    const bool reads = kind == Child::Stream::read;
    ours.end = std::move(reads ? pipe.read : pipe.write);
    if (fcntl(ours.end.number(), F_SETFL, O_NONBLOCK) != 0) throw Error(os_error_text(errno));
    return std::move(reads ? pipe.write : pipe.read);
  }

  void serve(Process::Deadline until) {
    std::vector<pollfd> watched;
    std::vector<PipeEnd*> waiting;
    for (PipeEnd& end : ends) {
      if (!end.end.open()) continue;
      watched.push_back(end.watch());
      waiting.push_back(&end);
    }
    process->wait(watched, until);
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      if (watched[i].revents != 0) waiting[i]->transfer();
    }
  }
};

Child::Child(const std::vector<std::string>& command, const std::vector<Stream>& streams,
             Relay relay)
    : state_(std::make_unique<State>()) {
  std::vector<Descriptor> theirs;
  std::vector<int> numbers;
  for (const Stream kind : streams) {
    const int own = static_cast<int>(numbers.size());
    theirs.push_back(state_->open(kind));
    numbers.push_back(theirs.back().open() ? theirs.back().number() : own);
  }
  state_->process.emplace(command, numbers, relay);
}

Child::~Child() = default;

void Child::write(std::size_t descriptor, std::string_view data) {
  state_->ends.at(descriptor).data += data;
}

void Child::close(std::size_t descriptor) {
  state_->ends.at(descriptor).end.close();
}

std::string& Child::received(std::size_t descriptor) {
  return state_->ends.at(descriptor).data;
}

bool Child::ended(std::size_t descriptor) const {
  return state_->ends.at(descriptor).ended;
}

const std::optional<ExitState>& Child::exit() const {
  return state_->process->exit();
}

bool Child::run_until(const std::function<bool()>& done, Limit limit) {
  using Clock = std::chrono::steady_clock;
  const Process::Deadline until = limit ? Process::Deadline(Clock::now() + *limit) : std::nullopt;
  while (!done()) {
    if (until && Clock::now() >= *until) return false;
    state_->serve(until);
  }
  return true;
}

void Child::kill() {
  state_->process->kill(SIGKILL);
}

}  // namespace zv
