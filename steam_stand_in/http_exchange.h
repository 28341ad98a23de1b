// Sends one request with the system's HTTP client and receives the response.

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
  std::string redirectUrl;  // absolute; empty if the response has none
};

struct HttpLimits {
  std::uint64_t connectMs;
  std::uint64_t requestMs;  // from the start to the last byte of the body
  std::size_t bodySize;
};

// True if a request of this method always has a body, even an empty one.
bool AlwaysHasBody(const std::string& method);

// Does not follow redirects. Returns none if no complete response arrives within the limits, or if
// the server's certificate is not valid for it.
std::optional<HttpResponse> Exchange(const HttpRequest& request, const HttpLimits& limits);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_HTTP_EXCHANGE_H_
