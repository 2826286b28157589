#include "python/host.h"

#include "base/interrupt.h"
#include "base/json.h"
#include "base/python_text.h"
#include "python/wire.h"
#include "src/python/bridge.py.inc"
#include "src/python/host.py.inc"

namespace zv::python {
namespace {

constexpr std::size_t REQUESTS = 3;  // 0 to 2 belong to the user's terminal
constexpr std::size_t ANSWERS = 4;
constexpr std::int64_t PROTOCOL = 1;
// More than the engine takes to end itself in the middle of a call (bridge.py).
constexpr std::chrono::seconds TIME_TO_END{10};
// For an engine that has closed a pipe: its answer may still be on the way, or its end.
constexpr std::chrono::seconds LAST_WORDS{2};

std::vector<std::string> command(const std::string& interpreter,
                                 const std::vector<std::string>& names) {
  std::vector<std::string> words = {interpreter,
                                    "-X",  // file names are bytes to us, and UTF-8 to people
                                    "utf8",
                                    "-c",
                                    std::string(HOST_SOURCE),
                                    std::to_string(REQUESTS),
                                    std::to_string(ANSWERS),
                                    std::string(BRIDGE_SOURCE)};
  words.insert(words.end(), names.begin(), names.end());
  return words;
}

std::string text_of(const Map& map, std::string_view key) {
  return plain_text(get(map, key, ""));
}

Reference reference_of(const Value& number) {
  return Reference{static_cast<std::uint64_t>(expected<std::int64_t>(number))};
}

Kept kept_of(const Value& answer) {
  const List& parts = expected<List>(answer);
  if (parts.size() != 2) throw Error(NO_ANSWER);
  return {reference_of(parts[0]), parts[1]};
}

Hello read_hello(const Map& answer) {
  if (answer.find("interrupted")) throw Interrupted();
  if (answer.find("problem")) throw LoadError(text_of(answer, "problem"));
  if (expected<std::int64_t>(get(answer, "protocol")) != PROTOCOL) {
    throw LoadError("the engine host speaks another protocol");
  }
  Hello hello{text_of(answer, "executable"), text_of(answer, "version"), {}};
  const Value names = get(answer, "names");
  for (const Value& number : expected<List>(names)) hello.names.push_back(reference_of(number));
  return hello;
}

Value read_result(const Map& answer) {
  if (const Value* value = answer.find("ok")) return *value;
  if (const Value* code = answer.find("exit")) {
    const auto* status = code->as<std::int64_t>();
    throw ExitRequest(status ? static_cast<int>(*status) : 1);
  }
  const Value* error = answer.find("error");
  if (!error) throw Interrupted();
  const Map& map = expected<Map>(*error);
  throw PythonError(text_of(map, "type"), text_of(map, "text"), truthy(get(map, "import")));
}

}  // namespace

Host::Host(const std::string& interpreter, const std::vector<std::string>& names, std::ostream& out)
    : child_(command(interpreter, names),
             {Child::Stream::inherit, Child::Stream::inherit, Child::Stream::inherit,
              Child::Stream::write, Child::Stream::read}),
      out_(out),
      interpreter_(interpreter) {}

Host::~Host() {
  child_.close(REQUESTS);
  child_.run_until([this] { return ended(); }, TIME_TO_END);
}

void Host::expect_no_calls() {
  child_.close(REQUESTS);
}

const Hello& Host::hello() {
  if (hello_) return *hello_;
  try {
    hello_ = std::make_unique<Hello>(read_hello(answer()));
  } catch (const LoadError&) {
    throw;
  } catch (const Error& error) {
    throw LoadError(error.what());
  }
  return *hello_;
}

Kept Host::import(std::string_view module, std::string_view name) {
  return kept_of(request({{"import", List{module, name}}, {"keep", true}}));
}

Reference Host::builtin(const std::string& module, const std::string& name) {
  const auto known = builtins_.find({module, name});
  if (known != builtins_.end()) return known->second;
  return builtins_.emplace(std::pair{module, name}, import(module, name).object).first->second;
}

Value Host::value(Reference object) {
  return request({{"value", object}, {"keep", false}});
}

Value Host::call(Reference function, List arguments, Map keywords) {
  return request({{"call", function},
                  {"args", std::move(arguments)},
                  {"keywords", std::move(keywords)},
                  {"keep", false}});
}

Kept Host::call_keep(Reference function, List arguments, Map keywords) {
  return kept_of(request({{"call", function},
                          {"args", std::move(arguments)},
                          {"keywords", std::move(keywords)},
                          {"keep", true}}));
}

Value Host::request(Map request) {
  check_interrupt();
  List drop;
  for (const Reference& reference : dropped_)
    drop.push_back(static_cast<std::int64_t>(reference.id));
  dropped_.clear();
  if (!drop.empty()) request.set("drop", std::move(drop));
  out_.flush();
  child_.write(REQUESTS, json_line(request) + "\n");
  const Map answered = answer();
  if (answered.find("interrupted")) throw Interrupted();
  check_interrupt();
  return read_result(answered);
}

Map Host::answer() {
  return expected<Map>(read_answer(next_line()));
}

std::string Host::next_line() {
  std::string& received = child_.received(ANSWERS);
  std::size_t end = std::string::npos;
  auto answered = [&, searched = std::size_t{0}]() mutable {
    end = received.find('\n', searched);
    searched = received.size();
    return end != std::string::npos;
  };
  const auto closed = [this] { return child_.ended(ANSWERS) || child_.ended(REQUESTS); };
  const auto gone = [this] { return child_.ended(ANSWERS) && ended(); };
  child_.run_until([&] { return answered() || closed() || ended(); });
  if (end == std::string::npos) child_.run_until([&] { return answered() || gone(); }, LAST_WORDS);
  if (end == std::string::npos) give_up();
  std::string line = received.substr(0, end);
  received.erase(0, end + 1);
  return line;
}

// There is no talking any more to an engine that has closed a pipe; it is ended, so that another
// one can take its place.
void Host::give_up() {
  check_interrupt();
  const bool ended_itself = ended();
  child_.kill();
  child_.run_until([this] { return ended(); }, LAST_WORDS);
  const std::string how =
      ended_itself ? "ended (" + child_.exit()->text() + ")" : "closed its pipe";
  throw Error("the engine process " + interpreter_ + " " + how + " before it answered");
}

}  // namespace zv::python
