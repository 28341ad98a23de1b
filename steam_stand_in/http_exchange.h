// One request and its response, over the network by the system's HTTP client.

#ifndef LAUNCHER_STEAM_STAND_IN_HTTP_EXCHANGE_H_
#define LAUNCHER_STEAM_STAND_IN_HTTP_EXCHANGE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "steam_stand_in/url.h"

namespace launcher::stand_in {

struct HttpRequest {
  const char* method;
  Url url;
  std::string contentType;  // empty for none
  std::string body;
};

struct HttpResponse {
  int status = 0;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;         // decoded
  std::string redirectUrl;  // absolute, where the response names one
};

struct HttpLimits {
  std::uint64_t connectMs;
  std::uint64_t requestMs;  // from the start to the last byte of the body
  std::size_t bodySize;
};

// Whether a request of this method always tells how long its body is, be it empty.
bool AlwaysHasBody(const std::string& method);

// Follows no redirect. None where there is no whole response within the limits, and where the
// server's certificate does not fit.
std::optional<HttpResponse> Exchange(const HttpRequest& request, const HttpLimits& limits);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_HTTP_EXCHANGE_H_
