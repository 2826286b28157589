// The body of an upload: files first, then plain fields.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/value.h"

namespace zv::server {

struct Upload {
  std::string file_name;
  std::string content;
  std::string content_type;
};
// By field name, in the order in which they are sent.
using Uploads = std::vector<std::pair<std::string, Upload>>;

// Unique per millisecond.
std::string make_boundary();
// In pieces, the contents as they are in pieces of their own. Names and values go in as they are.
std::vector<std::string> multipart_body(std::string_view boundary, Uploads files, const Map& data);

}  // namespace zv::server
