// QX_SteamAPI_HTTPRequest: sends one request and prints the response.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "launcher_dll.h"
#include "platform/steam_api.h"
#include "platform/win32.h"

namespace launcher {
namespace {

constexpr std::int32_t kMethodPost = 3;  // in the enumeration of Steam

// Owns a request of Steam, so that every return after its creation releases it. Borrows `http`.
class HttpRequest {
 public:
  HttpRequest(ISteamHTTP& http, std::int32_t method, const char* url)
      : http_(http), handle_(http.CreateHTTPRequest(method, url)) {}
  HttpRequest(const HttpRequest&) = delete;
  HttpRequest& operator=(const HttpRequest&) = delete;
  ~HttpRequest() {
    if (handle_ != 0) http_.ReleaseHTTPRequest(handle_);
  }

  explicit operator bool() const { return handle_ != 0; }

  // Steam's parameter is not const, but Steam does not write to it. If Steam refuses the body, the
  // request is sent all the same.
  void SetBody(const char* contentType, const std::uint8_t* body, std::uint32_t size) {
    http_.SetHTTPRequestRawPostBody(handle_, contentType, const_cast<std::uint8_t*>(body), size);
  }

  // Returns when the response is complete. The handle of the call is for callbacks, which this
  // library does not use.
  bool Send() {
    std::uint64_t unusedCall = 0;
    return http_.SendHTTPRequest(handle_, &unusedCall);
  }

  // The size in bytes. For this header Steam counts the body bytes that it holds, even if the
  // server sent no such header.
  bool GetBodySize(std::uint32_t& size) {
    return http_.GetHTTPResponseHeaderSize(handle_, "Content-Length", &size);
  }

  bool GetBody(std::uint8_t* buffer, std::uint32_t size) {
    return http_.GetHTTPResponseBodyData(handle_, buffer, size);
  }

 private:
  ISteamHTTP& http_;
  std::uint32_t handle_;
};

// Prints the body, of `size` bytes, as text up to its first NUL. Nothing is printed on failure.
ResultCode PrintResponse(HttpRequest& request, std::uint32_t size) {
  // With the terminator this size would wrap to 0 in a 32-bit program.
  if (size == UINT32_MAX) return QX_OUT_OF_MEMORY;
  const std::unique_ptr<std::uint8_t[]> body(new (std::nothrow)
                                                 std::uint8_t[size + std::size_t{1}]);
  if (!body) return QX_OUT_OF_MEMORY;
  if (!request.GetBody(body.get(), size)) return QX_NO_STEAM;

  body[size] = '\0';
  printf_s("Response: %s\n", reinterpret_cast<const char*>(body.get()));
  std::fflush(stdout);
  return QX_SUCCEEDED;
}

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_SteamAPI_HTTPRequest(const char* url, std::int32_t method,
                                           const char* contentType, const std::uint8_t* body,
                                           std::uint32_t bodyLength) {
  using namespace launcher;
  // Here a missing interface is reported before a bad argument, unlike in the other Steam exports.
  ISteamHTTP* const http = SteamHTTP();
  if (http == nullptr) return QX_NO_STEAM;
  if (url == nullptr) return QX_BAD_ARGUMENT;

  HttpRequest request(*http, method, url);
  if (!request) return QX_NO_STEAM;
  if (method == kMethodPost && contentType != nullptr && body != nullptr && bodyLength != 0) {
    request.SetBody(contentType, body, bodyLength);
  }
  if (!request.Send()) return QX_NO_STEAM;

  std::uint32_t size = 0;
  if (!request.GetBodySize(size)) return QX_NO_STEAM;
  return PrintResponse(request, size);
}
