#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>
#include <unordered_map>

#include "base/json.h"
#include "base/unicode.h"

namespace zv {
namespace {

constexpr std::size_t DEEPEST = 500;
constexpr std::size_t ESCAPE_LENGTH = 6;  // of "\\u0041"
constexpr char MARK = 1;

// The unit of a "\u" escape at this place; 0 when there is none, or the zero itself.
unsigned unit_at(std::string_view text, std::size_t at) {
  const std::string_view escape = text.substr(std::min(at, text.size()), ESCAPE_LENGTH);
  if (escape.size() < ESCAPE_LENGTH || !escape.starts_with("\\u")) return 0;
  unsigned unit = 0;
  const char* end = escape.data() + escape.size();
  const auto [stop, problem] = std::from_chars(escape.data() + 2, end, unit, 16);
  return stop == end && problem == std::errc() ? unit : 0;
}

bool first_half(unsigned unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool second_half(unsigned unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// The parser takes no half of a surrogate pair, which is a value like any other: each one becomes a
// mark with its digits, and the mark itself is doubled.
std::string with_halves_marked(std::string_view text) {
  std::string marked;
  std::size_t copied = 0;
  for (std::size_t at = text.find('\\'); at < text.size(); at = text.find('\\', at)) {
    const unsigned unit = unit_at(text, at);
    const bool pair = first_half(unit) && second_half(unit_at(text, at + ESCAPE_LENGTH));
    const std::size_t length = unit == 0 ? 2 : pair ? 2 * ESCAPE_LENGTH : ESCAPE_LENGTH;
    const bool half = !pair && (first_half(unit) || second_half(unit));
    if (half || unit == MARK) {
      marked += text.substr(copied, at - copied);
      marked += half ? "\\u0001" + std::string(text.substr(at + 2, 4)) : "\\u0001\\u0001";
      copied = at + length;
    }
    at += length;
  }
  return marked += text.substr(copied);
}

void unmark_halves(std::string& text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == MARK && text[++at] != MARK) {
      append_code_point(plain, static_cast<unsigned>(std::stoul(text.substr(at, 4), nullptr, 16)));
      at += 3;
    } else {
      plain += text[at];
    }
  }
  text = std::move(plain);
}

// Builds a Value from the parser's events; open containers are kept by value on a stack.
class Builder : public nlohmann::json_sax<nlohmann::json> {
 public:
  bool null() override { return put(nullptr); }
  bool boolean(bool flag) override { return put(flag); }
  bool number_integer(std::int64_t number) override { return put(number); }
  bool number_unsigned(std::uint64_t number) override {
    if (number <= INT64_MAX) return put(static_cast<std::int64_t>(number));
    return put(BigInteger{std::to_string(number)});
  }
  bool number_float(double number, const std::string& text) override {
    const bool whole = text.find_first_of(".eE") == std::string::npos;
    return whole ? put(BigInteger{text}) : put(number);
  }
  bool string(std::string& text) override {
    if (text.find(MARK) != std::string::npos) unmark_halves(text);
    return put(std::move(text));
  }
  bool binary(nlohmann::json::binary_t&) override { return false; }
  bool start_object(std::size_t) override { return open({}); }
  bool start_array(std::size_t) override { return open({.list = List()}); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }
  bool key(std::string& name) override {
    if (name.find(MARK) != std::string::npos) unmark_halves(name);
    open_.back().key = std::move(name);
    return true;
  }
  bool parse_error(std::size_t position, const std::string&,
                   const nlohmann::json::exception&) override {
    problem_ = "the answer is not JSON (at byte " + std::to_string(position) + ")";
    return false;
  }

  Value result;
  const std::string& problem() const { return problem_; }

 private:
  // A list, or an object that finds its keys again however many they are.
  struct Container {
    std::optional<List> list = std::nullopt;
    std::vector<std::pair<std::string, Value>> members = {};
    std::unordered_map<std::string, std::size_t> places = {};
    std::string key = {};

    void add(Value value) {
      if (list) return list->push_back(std::move(value));
      const auto [place, is_new] = places.try_emplace(key, members.size());
      if (is_new) {
        members.emplace_back(std::move(key), std::move(value));
      } else {
        members[place->second].second = std::move(value);
      }
    }

    Value whole() {
      if (list) return std::move(*list);
      Map map;
      for (auto& [name, value] : members) map.append(std::move(name), std::move(value));
      return map;
    }
  };

  bool open(Container container) {
    if (open_.size() == DEEPEST) {
      problem_ = "the JSON text is nested too deeply";
      return false;
    }
    open_.push_back(std::move(container));
    return true;
  }

  bool close() {
    Value done = open_.back().whole();
    open_.pop_back();
    return put(std::move(done));
  }

  bool put(Value value) {
    if (open_.empty()) {
      result = std::move(value);
    } else {
      open_.back().add(std::move(value));
    }
    return true;
  }

  std::vector<Container> open_;
  std::string problem_;
};

}  // namespace

Value parse_json(std::string_view text) {
  Builder builder;
  const std::string marked = with_halves_marked(text);
  if (!nlohmann::json::sax_parse(marked.begin(), marked.end(), &builder)) {
    throw JsonError(builder.problem().empty() ? "the answer is not JSON" : builder.problem());
  }
  return std::move(builder.result);
}

}  // namespace zv
