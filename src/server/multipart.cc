#include "server/multipart.h"

#include <chrono>

#include "base/value_text.h"

namespace zv::server {
std::string make_boundary() {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  return "----Boundary" + std::to_string(duration_cast<milliseconds>(now).count());
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the contents are moved out of it
std::vector<std::string> multipart_body(std::string_view boundary, Uploads files, const Map& data) {
  const std::string open = "--" + std::string(boundary) + "\r\n";
  const std::string field = "Content-Disposition: form-data; name=\"";
  std::vector<std::string> body;
  std::string text;
  for (auto& [name, file] : files) {
    text += open + field + name + "\"; filename=\"" + file.file_name + "\"\r\n";
    text += "Content-Type: " + file.content_type + "\r\n\r\n";
    body.push_back(std::move(text));
    body.push_back(std::move(file.content));
    text = "\r\n";
  }
  for (const auto& [name, value] : data.entries()) {
    text += open + field + name + "\"\r\n\r\n" + plain_text(value) + "\r\n";
  }
  body.push_back(text + "--" + std::string(boundary) + "--\r\n");
  return body;
}

}  // namespace zv::server
