#include <uv.h>

#include <array>
#include <csignal>

#include "base/child.h"
#include "base/error.h"
#include "base/interrupt.h"

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
  Pipe* pipe = nullptr;
};

void check(int result, const std::string& what) {
  if (result < 0) throw Error(os_error_text(-result, what));
}

template <class Handle>
uv_handle_t* base_of(Handle& handle) {
  return reinterpret_cast<uv_handle_t*>(&handle);
}

uv_stream_t* stream_of(Pipe& pipe) {
  return reinterpret_cast<uv_stream_t*>(&pipe.handle);
}

void lend_chunk(uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
  auto& chunk = static_cast<Pipe*>(handle->data)->chunk;
  *buffer = uv_buf_init(chunk.data(), static_cast<unsigned>(chunk.size()));
}

void on_read(uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) {
  auto* pipe = static_cast<Pipe*>(stream->data);
  if (count > 0) pipe->received.append(buffer->base, static_cast<std::size_t>(count));
  if (count < 0) pipe->ended = true;
}

void on_written(uv_write_t* request, int result) {
  const std::unique_ptr<Write> write(static_cast<Write*>(request->data));
  if (result < 0 && result != UV_ECANCELED) write->pipe->ended = true;
}

// An event loop whose handles are closed with it.
struct Loop {
  uv_loop_t loop{};

  Loop() { check(uv_loop_init(&loop), {}); }
  ~Loop() {
    const auto close = [](uv_handle_t* handle, void*) {
      if (!uv_is_closing(handle)) uv_close(handle, nullptr);
    };
    uv_walk(&loop, close, nullptr);
    uv_run(&loop, UV_RUN_DEFAULT);
    uv_loop_close(&loop);
  }
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;
};

uv_stdio_flags stdio_flags(Child::Stream kind) {
  switch (kind) {
    case Child::Stream::inherit:
      return UV_INHERIT_FD;
    case Child::Stream::read:
      return static_cast<uv_stdio_flags>(UV_CREATE_PIPE | UV_WRITABLE_PIPE);
    case Child::Stream::write:
      return static_cast<uv_stdio_flags>(UV_CREATE_PIPE | UV_READABLE_PIPE);
    case Child::Stream::ignore:
      break;
  }
  return UV_IGNORE;
}

}  // namespace

struct Child::State {
  uv_process_t process{};
  uv_poll_t interrupt{};
  uv_timer_t limit{};
  std::vector<std::unique_ptr<Pipe>> pipes;
  std::optional<ExitState> exit;
  bool spawned = false;
  bool late = false;
  Loop loop;  // the last member, so that it ends before its handles do

  // Also runs when the constructor of Child fails half way.
  ~State() {
    if (spawned && !exit) uv_process_kill(&process, SIGKILL);
    while (spawned && !exit) uv_run(&loop.loop, UV_RUN_ONCE);
  }

  // The console tells every process of it: only a second Ctrl+C is left to us.
  void watch_interrupts() {
    interrupt.data = this;
    const auto socket = static_cast<uv_os_sock_t>(wake_socket());
    check(uv_poll_init_socket(&loop.loop, &interrupt, socket), {});
    const auto on_wake = [](uv_poll_t* poll, int, int) {
      auto* state = static_cast<State*>(poll->data);
      clear_wake();
      if (!state->exit && pending_interrupts() >= 2) uv_process_kill(&state->process, SIGKILL);
    };
    check(uv_poll_start(&interrupt, UV_READABLE, on_wake), {});
  }

  uv_stdio_container_t container(Stream kind, int number) {
    Pipe& pipe = *pipes.emplace_back(std::make_unique<Pipe>());
    uv_stdio_container_t container{};
    container.flags = stdio_flags(kind);
    container.data.fd = number;
    if (kind != Stream::read && kind != Stream::write) return container;
    check(uv_pipe_init(&loop.loop, &pipe.handle, 0), {});
    pipe.handle.data = &pipe;
    pipe.open = true;
    container.data.stream = stream_of(pipe);
    return container;
  }

  void spawn(const std::vector<std::string>& command,
             std::vector<uv_stdio_container_t>& containers) {
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    uv_process_options_t options{};
    options.file = arguments[0];
    options.args = arguments.data();
    options.stdio = containers.data();
    options.stdio_count = static_cast<int>(containers.size());
    options.exit_cb = [](uv_process_t* ended, std::int64_t status, int signal) {
      static_cast<State*>(ended->data)->exit = ExitState{static_cast<int>(status), signal};
    };
    process.data = this;
    check(uv_spawn(&loop.loop, &process, &options), command[0]);
    spawned = true;
  }

  void start_limit(std::chrono::milliseconds time) {
    late = false;
    limit.data = this;
    const auto on_time = [](uv_timer_t* timer) { static_cast<State*>(timer->data)->late = true; };
    uv_timer_start(&limit, on_time, static_cast<std::uint64_t>(time.count()), 0);
  }
};

Child::Child(const std::vector<std::string>& command, const std::vector<Stream>& streams, Relay)
    : state_(std::make_unique<State>()) {
  check(uv_timer_init(&state_->loop.loop, &state_->limit), {});
  state_->watch_interrupts();
  std::vector<uv_stdio_container_t> containers;
  for (std::size_t i = 0; i < streams.size(); ++i) {
    containers.push_back(state_->container(streams[i], static_cast<int>(i)));
  }
  state_->spawn(command, containers);
  for (std::size_t i = 0; i < streams.size(); ++i) {
    if (streams[i] != Stream::read) continue;
    check(uv_read_start(stream_of(*state_->pipes[i]), lend_chunk, on_read), {});
  }
}

Child::~Child() = default;

void Child::write(std::size_t descriptor, std::string_view data) {
  Pipe& pipe = *state_->pipes.at(descriptor);
  auto write = std::make_unique<Write>();
  write->data = data;
  write->pipe = &pipe;
  write->request.data = write.get();
  const uv_buf_t buffer =
      uv_buf_init(write->data.data(), static_cast<unsigned>(write->data.size()));
  if (uv_write(&write->request, stream_of(pipe), &buffer, 1, on_written) == 0) {
    write.release();
  } else {
    pipe.ended = true;
  }
}

void Child::close(std::size_t descriptor) {
  Pipe& pipe = *state_->pipes.at(descriptor);
  if (pipe.open) uv_close(base_of(pipe.handle), nullptr);
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

bool Child::run_until(const std::function<bool()>& done, Limit limit) {
  state_->late = false;
  if (limit) state_->start_limit(*limit);
  while (!done() && !state_->late) uv_run(&state_->loop.loop, UV_RUN_ONCE);
  uv_timer_stop(&state_->limit);
  return done();
}

void Child::kill() {
  if (!state_->exit) uv_process_kill(&state_->process, SIGKILL);
}

}  // namespace zv
