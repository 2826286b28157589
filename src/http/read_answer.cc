#include "http/read_answer.h"

#include <array>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <limits>
#include <optional>

#include "http/errors.h"

namespace zv::http {
namespace {

namespace beast = boost::beast;
using boost::system::error_code;
using Parser = beast::http::response_parser<beast::http::string_body>;

constexpr std::uint32_t LONGEST_HEADER = 1 << 16;
constexpr std::size_t RECEIVE_AT_ONCE = 1 << 16;

// An answer without a body of its own that only announces the real one.
bool interim(unsigned status) {
  return status >= 100 && status < 200 && status != 101;
}

// Bytes beyond one piece of the answer are kept for the next.
class Answer {
 public:
  Answer(Connection& connection, bool without_body)
      : connection_(connection), without_body_(without_body) {
    begin();
  }

  std::string body() {
    read_until([this] { return parser_->is_header_done(); });
    while (interim(parser_->get().result_int())) {
      begin();
      read_until([this] { return parser_->is_header_done(); });
    }
    const auto& head = parser_->get();
    const unsigned status = head.result_int();
    if (status < 200 || status > 299) {
      throw HttpStatusError(static_cast<int>(status), reason_of(head));
    }
    read_until([this] { return parser_->is_done(); });
    return std::move(parser_->get().body());
  }

 private:
  static std::string reason_of(const Parser::value_type& head) {
    const std::string sent(head.reason());
    return sent.empty() ? std::string(beast::http::obsolete_reason(head.result())) : sent;
  }

  void begin() {
    parser_.emplace();
    parser_->header_limit(LONGEST_HEADER);
    parser_->body_limit(std::numeric_limits<std::uint64_t>::max());
    parser_->skip(without_body_);
  }

  template <class Done>
  void read_until(Done done) {
    while (!done()) {
      if (!consume()) receive();
    }
  }

  // Whether the parser could make use of what is there.
  bool consume() {
    if (unread_.empty()) return false;
    error_code error;
    const std::size_t used = parser_->put(boost::asio::buffer(unread_), error);
    unread_.erase(0, used);
    any_ = true;
    if (error == beast::http::error::need_more) return false;
    if (error) throw HttpError("the answer is no well-formed HTTP (" + error.message() + ")");
    return used > 0;
  }

  void receive() {
    std::array<char, RECEIVE_AT_ONCE> buffer;
    const std::size_t count = connection_.receive(buffer);
    unread_.append(buffer.data(), count);
    if (count == 0) end();
  }

  // The end of the connection is the end of an answer that did not tell its length.
  void end() {
    if (!any_) throw HttpError("the server closed the connection without an answer");
    error_code error;
    parser_->put_eof(error);
    if (error) throw HttpError("the connection was cut in the middle of the answer");
  }

  Connection& connection_;
  bool without_body_;
  std::optional<Parser> parser_;
  std::string unread_;
  bool any_ = false;
};

}  // namespace

std::string read_answer(Connection& connection, bool without_body) {
  return Answer(connection, without_body).body();
}

}  // namespace zv::http
