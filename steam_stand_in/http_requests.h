// The requests of ISteamHTTP: numbers that stand for a request and its response.

#ifndef LAUNCHER_STEAM_STAND_IN_HTTP_REQUESTS_H_
#define LAUNCHER_STEAM_STAND_IN_HTTP_REQUESTS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "steam_stand_in/http_exchange.h"

namespace launcher::stand_in {

class HttpRequests {
 public:
  static constexpr std::size_t kMostOpen = 64;

  explicit HttpRequests(const HttpLimits& limits) : limits_(limits) {}

  // 0 where the method or the URL is refused, or kMostOpen are open.
  std::uint32_t Create(int method, const char* url);
  bool SetBody(std::uint32_t handle, const std::string& contentType, const void* body,
               std::size_t size);
  // Once for each request. Fails without a whole response; an HTTP error status is one.
  bool Send(std::uint32_t handle, std::uint64_t* call);
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

  HttpLimits limits_;
  std::map<std::uint32_t, Open> open_;
  std::uint32_t lastHandle_ = 0;
  std::uint64_t lastCall_ = 0;
};

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_HTTP_REQUESTS_H_
