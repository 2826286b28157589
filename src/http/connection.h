// One TCP connection whose every operation is limited in time and gives way to Ctrl+C.
#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string_view>

#include "http/url.h"

namespace zv::http {

class Connection {
 public:
  // Throws UrlError and, as all of them do, Interrupted.
  Connection(const Url& url, std::chrono::milliseconds timeout);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // False when the peer answers or hangs up before it has taken everything. Throws HttpError.
  bool send(std::string_view data);
  // How many bytes came; 0 at the end. Throws HttpError.
  std::size_t receive(std::span<char> buffer);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zv::http
