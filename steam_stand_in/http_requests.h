// The open requests of ISteamHTTP. A handle is the number of a request and its response.

#ifndef LAUNCHER_STEAM_STAND_IN_HTTP_REQUESTS_H_
#define LAUNCHER_STEAM_STAND_IN_HTTP_REQUESTS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "steam_stand_in/http_exchange.h"

namespace launcher::stand_in {

// Sends a request and follows redirects. None if there is no whole response within the limits.
std::optional<HttpResponse> Fetch(HttpRequest request, const HttpLimits& limits);

class HttpRequests {
 public:
  static constexpr std::size_t kMostOpen = 64;

  explicit HttpRequests(const HttpLimits& limits) : limits_(limits) {}

  // Returns 0 if the method or the URL is refused, or if kMostOpen requests are open.
  std::uint32_t Create(int method, const char* url);
  bool SetBody(std::uint32_t handle, const std::string& contentType, const void* body,
               std::size_t size);
  // Sending takes three steps: BeginSending, Fetch, EndSending. Fetch does not use this object, so
  // that other calls can use it during the transfer. Each request is sent once. Sending fails if
  // there is no complete response; a response with an HTTP error status is complete.
  std::optional<HttpRequest> BeginSending(std::uint32_t handle);
  bool EndSending(std::uint32_t handle, std::optional<HttpResponse> response, std::uint64_t* call);
  const HttpLimits& Limits() const { return limits_; }
  std::optional<std::uint32_t> HeaderSize(std::uint32_t handle, const char* name) const;
  bool CopyBody(std::uint32_t handle, void* buffer, std::size_t size) const;
  bool Release(std::uint32_t handle) { return open_.erase(handle) != 0; }

 private:
  struct Open {
    HttpRequest request;
    bool wasSent = false;
    std::optional<HttpResponse> response;
  };

  const HttpResponse* ResponseOf(std::uint32_t handle) const;

  const HttpLimits limits_;
  std::map<std::uint32_t, Open> open_;
  // For all sessions, so that a handle of an ended session is not valid in the next one.
  static inline std::uint32_t lastHandle_ = 0;
  std::uint64_t lastCall_ = 0;
};

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_HTTP_REQUESTS_H_
