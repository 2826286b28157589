#include <nlohmann/json.hpp>

#include "base/json.h"

namespace zv {
namespace {

constexpr std::size_t DEEPEST = 500;

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
  bool string(std::string& text) override { return put(std::move(text)); }
  bool binary(nlohmann::json::binary_t&) override { return false; }
  bool start_object(std::size_t) override { return open(Map()); }
  bool start_array(std::size_t) override { return open(List()); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }
  bool key(std::string& name) override {
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
  struct Container {
    Value value;
    std::string key;
  };

  bool open(Value container) {
    if (open_.size() == DEEPEST) {
      problem_ = "the JSON text is nested too deeply";
      return false;
    }
    open_.push_back({std::move(container), {}});
    return true;
  }

  bool close() {
    Value done = std::move(open_.back().value);
    open_.pop_back();
    return put(std::move(done));
  }

  bool put(Value value) {
    if (open_.empty()) {
      result = std::move(value);
      return true;
    }
    Container& top = open_.back();
    if (auto* list = top.value.as_mutable<List>()) {
      list->push_back(std::move(value));
    } else {
      top.value.as_mutable<Map>()->set(std::move(top.key), std::move(value));
    }
    return true;
  }

  std::vector<Container> open_;
  std::string problem_;
};

}  // namespace

Value parse_json(std::string_view text) {
  Builder builder;
  if (!nlohmann::json::sax_parse(text.begin(), text.end(), &builder)) {
    throw JsonError(builder.problem().empty() ? "the answer is not JSON" : builder.problem());
  }
  return std::move(builder.result);
}

}  // namespace zv
