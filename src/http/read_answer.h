// Reads one answer off a connection.
#pragma once

#include <string>

#include "http/connection.h"

namespace zv::http {

// The body, decoded from its transfer form; of an answer to HEAD there is none. Throws
// HttpStatusError for a status outside 2xx, without reading on, and HttpError for what is no whole
// answer.
std::string read_answer(Connection& connection, bool without_body);

}  // namespace zv::http
