#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "steam_stand_in/http_exchange.h"

namespace launcher::stand_in {
namespace {

// libcurl counts its users, so this does not disturb a program that uses libcurl too.
class CurlUse {
 public:
  CurlUse() : isReady_(curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK) {}
  CurlUse(const CurlUse&) = delete;
  CurlUse& operator=(const CurlUse&) = delete;
  ~CurlUse() {
    if (isReady_) curl_global_cleanup();
  }

  explicit operator bool() const { return isReady_; }

 private:
  bool isReady_;
};

struct EasyDeleter {
  void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
using OwnedEasy = std::unique_ptr<CURL, EasyDeleter>;

struct ListDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using OwnedList = std::unique_ptr<curl_slist, ListDeleter>;

bool Append(OwnedList* list, const std::string& line) {
  // The result is the start of the list, which is the old start unless the list was empty.
  curl_slist* const longer = curl_slist_append(list->get(), line.c_str());
  if (longer == nullptr) return false;
  static_cast<void>(list->release());
  list->reset(longer);
  return true;
}

// What TakeBody and TakeHeader write to.
struct Arrival {
  HttpResponse response;
  std::size_t bodyLimit;
};

// A result other than `count` ends the transfer. No exception may pass through libcurl.
std::size_t TakeBody(char* data, std::size_t, std::size_t count, void* target) noexcept {
  auto* const arrival = static_cast<Arrival*>(target);
  std::string& body = arrival->response.body;
  if (count > arrival->bodyLimit - body.size()) return 0;
  try {
    body.append(data, count);
  } catch (...) {
    return 0;
  }
  return count;
}

std::size_t TakeHeader(char* data, std::size_t, std::size_t count, void* target) noexcept {
  auto& headers = static_cast<Arrival*>(target)->response.headers;
  std::string_view line(data, count);
  try {
    // A status line starts a response. An interim one, such as 100, comes before the final one.
    if (line.compare(0, 5, "HTTP/") == 0) headers.clear();
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return count;
    std::string_view value = line.substr(colon + 1);
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    value = value.substr(0, value.find_last_not_of(" \t\r\n") + 1);
    headers.emplace_back(line.substr(0, colon), value);
  } catch (...) {
    return 0;
  }
  return count;
}

}  // namespace

std::optional<HttpResponse> Exchange(const HttpRequest& request, const HttpLimits& limits) {
  const CurlUse curl;
  if (!curl) return std::nullopt;
  const OwnedEasy owned(curl_easy_init());
  if (!owned) return std::nullopt;
  CURL* const easy = owned.get();

  Arrival arrival{{}, limits.bodySize};
  bool isSet = true;
  const auto set = [&](CURLoption option, auto value) {
    isSet = isSet && curl_easy_setopt(easy, option, value) == CURLE_OK;
  };
  set(CURLOPT_URL, request.url.text.c_str());
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_SSL_VERIFYPEER, 1L);
  set(CURLOPT_SSL_VERIFYHOST, 2L);
  // Otherwise libcurl would set signal handlers in the caller's program.
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connectMs));
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(limits.requestMs));
  // The empty text asks for every encoding that this build of libcurl can decode.
  set(CURLOPT_ACCEPT_ENCODING, "");
  set(CURLOPT_WRITEFUNCTION, TakeBody);
  set(CURLOPT_WRITEDATA, static_cast<void*>(&arrival));
  set(CURLOPT_HEADERFUNCTION, TakeHeader);
  set(CURLOPT_HEADERDATA, static_cast<void*>(&arrival));
  // A proxy on another machine could not reach a server on this one.
  if (request.url.isLoopback) set(CURLOPT_PROXY, "");

  OwnedList headers;
  // An empty value removes a header that libcurl would send by itself. With "Expect" libcurl would
  // wait a second if the server does not know that header.
  isSet = isSet && Append(&headers, "Expect:") &&
          Append(&headers,
                 "Content-Type:" + (request.contentType.empty() ? "" : ' ' + request.contentType));
  set(CURLOPT_HTTPHEADER, headers.get());
  if (AlwaysHasBody(request.method)) {
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    set(CURLOPT_POSTFIELDS, request.body.data());
  }
  // With the method alone libcurl would wait for the body that Content-Length announces.
  if (std::string_view(request.method) == "HEAD") {
    set(CURLOPT_NOBODY, 1L);
  } else {
    set(CURLOPT_CUSTOMREQUEST, request.method);
  }
  if (!isSet || curl_easy_perform(easy) != CURLE_OK) return std::nullopt;

  long status = 0;
  const char* redirectUrl = nullptr;
  curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(easy, CURLINFO_REDIRECT_URL, &redirectUrl);
  arrival.response.status = static_cast<int>(status);
  if (redirectUrl != nullptr) arrival.response.redirectUrl = redirectUrl;
  return std::move(arrival.response);
}

}  // namespace launcher::stand_in
