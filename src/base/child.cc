#include "base/child.h"

#include <uv.h>

#include <array>
#include <csignal>

#include "base/error.h"
#include "base/hangup.h"

namespace zv {
namespace {

struct Pipe {
  uv_pipe_t handle{};
  bool open = false;
  bool ended = false;
  std::string received;
  std::array<char, 1 << 16> chunk{};  // what the loop reads into
};

struct Write {
  uv_write_t request{};
  std::string data;
};

void lend_chunk(uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
  auto& chunk = static_cast<Pipe*>(handle->data)->chunk;
  *buffer = uv_buf_init(chunk.data(), static_cast<unsigned>(chunk.size()));
}

void on_read(uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) {
  auto* pipe = static_cast<Pipe*>(stream->data);
  if (count > 0) pipe->received.append(buffer->base, static_cast<std::size_t>(count));
  if (count < 0) pipe->ended = true;
}

void on_written(uv_write_t* request, int) {
  delete static_cast<Write*>(request->data);
}

int stdio_flags(Child::Stream kind) {
  switch (kind) {
    case Child::Stream::inherit:
      return UV_INHERIT_FD;
    case Child::Stream::read:
      return UV_CREATE_PIPE | UV_WRITABLE_PIPE;
    case Child::Stream::write:
      return UV_CREATE_PIPE | UV_READABLE_PIPE;
    case Child::Stream::ignore:
      break;
  }
  return UV_IGNORE;
}

}  // namespace

std::string ExitState::text() const {
  return signal != 0 ? "signal " + std::to_string(signal) : "exit status " + std::to_string(status);
}

struct Child::State {
  uv_loop_t loop{};
  uv_process_t process{};
  uv_timer_t tick{};
  std::vector<std::unique_ptr<Pipe>> pipes;
  std::optional<ExitState> exit;
  bool spawned = false;
  InterruptRelay relay;

  // Also runs when the constructor of Child fails half way.
  ~State() {
    if (spawned && !exit) uv_process_kill(&process, SIGKILL);
    while (spawned && !exit) uv_run(&loop, UV_RUN_ONCE);
    for (auto& pipe : pipes) {
      if (pipe->open) uv_close(reinterpret_cast<uv_handle_t*>(&pipe->handle), nullptr);
    }
    uv_close(reinterpret_cast<uv_handle_t*>(&tick), nullptr);
    if (process.loop) uv_close(reinterpret_cast<uv_handle_t*>(&process), nullptr);
    uv_run(&loop, UV_RUN_DEFAULT);
    uv_loop_close(&loop);
  }

  void relay_interrupts() {
    const int number = exit ? 0 : relay.due();
    if (number != 0) uv_process_kill(&process, number);
  }

  static void on_exit(uv_process_t* process, std::int64_t status, int signal) {
    static_cast<State*>(process->data)->exit = ExitState{static_cast<int>(status), signal};
  }
};

Child::Child(const std::vector<std::string>& command, const std::vector<Stream>& streams,
             Relay relay)
    : state_(std::make_unique<State>()) {
  state_->relay = InterruptRelay(relay);
  uv_loop_init(&state_->loop);
  uv_timer_init(&state_->loop, &state_->tick);
  state_->tick.data = state_.get();
  uv_timer_start(
      &state_->tick, [](uv_timer_t* tick) { static_cast<State*>(tick->data)->relay_interrupts(); },
      InterruptRelay::TICK_MS, InterruptRelay::TICK_MS);

  std::vector<uv_stdio_container_t> containers;
  for (std::size_t i = 0; i < streams.size(); ++i) {
    auto& pipe = state_->pipes.emplace_back(std::make_unique<Pipe>());
    uv_stdio_container_t container{};
    container.flags = static_cast<uv_stdio_flags>(stdio_flags(streams[i]));
    container.data.fd = static_cast<int>(i);
    if (streams[i] == Stream::read || streams[i] == Stream::write) {
      uv_pipe_init(&state_->loop, &pipe->handle, 0);
      pipe->handle.data = pipe.get();
      pipe->open = true;
      container.data.stream = reinterpret_cast<uv_stream_t*>(&pipe->handle);
    }
    containers.push_back(container);
  }

  const std::vector<std::string> words = with_hangups_as_here(command);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  uv_process_options_t options{};
  options.file = arguments[0];
  options.args = arguments.data();
  options.stdio = containers.data();
  options.stdio_count = static_cast<int>(containers.size());
  options.exit_cb = State::on_exit;
  state_->process.data = state_.get();
  const int failed = uv_spawn(&state_->loop, &state_->process, &options);
  state_->spawned = failed == 0;
  if (failed != 0) throw Error(os_error_text(-failed, command[0]));
  for (std::size_t i = 0; i < streams.size(); ++i) {
    if (streams[i] != Stream::read) continue;
    uv_read_start(reinterpret_cast<uv_stream_t*>(&state_->pipes[i]->handle), lend_chunk, on_read);
  }
}

Child::~Child() = default;

void Child::write(std::size_t descriptor, std::string data) {
  auto* write = new Write{{}, std::move(data)};
  write->request.data = write;
  const uv_buf_t buffer =
      uv_buf_init(write->data.data(), static_cast<unsigned>(write->data.size()));
  auto* stream = reinterpret_cast<uv_stream_t*>(&state_->pipes.at(descriptor)->handle);
  if (uv_write(&write->request, stream, &buffer, 1, on_written) != 0) delete write;
}

void Child::close(std::size_t descriptor) {
  Pipe& pipe = *state_->pipes.at(descriptor);
  if (pipe.open) uv_close(reinterpret_cast<uv_handle_t*>(&pipe.handle), nullptr);
  pipe.open = false;
}

std::string& Child::received(std::size_t descriptor) {
  return state_->pipes.at(descriptor)->received;
}

bool Child::ended(std::size_t descriptor) const {
  return state_->pipes.at(descriptor)->ended;
}

const std::optional<ExitState>& Child::exit() const {
  return state_->exit;
}

void Child::run_until(const std::function<bool()>& done) {
  while (!done()) uv_run(&state_->loop, UV_RUN_ONCE);
}

void Child::kill() {
  if (!state_->exit) uv_process_kill(&state_->process, SIGKILL);
}

}  // namespace zv
