// From a host name to socket addresses, without ever holding up Ctrl+C or a time-out.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <vector>

#include "http/url.h"

namespace zv::http {

// In the order in which they are to be tried, never empty. Throws UrlError and Interrupted.
std::vector<boost::asio::ip::tcp::endpoint> resolve(const Url& url,
                                                    std::chrono::milliseconds timeout);

}  // namespace zv::http
