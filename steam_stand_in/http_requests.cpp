#include "steam_stand_in/http_requests.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "steam_stand_in/ascii.h"

namespace launcher::stand_in {
namespace {

constexpr const char* kMethods[] = {"GET", "HEAD", "POST", "PUT", "DELETE", "OPTIONS", "PATCH"};
constexpr int kMethodCount = sizeof kMethods / sizeof kMethods[0];

constexpr int kMostRedirects = 10;

bool IsRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// As browsers do and RFC 9110 permits: 301 and 302 turn a POST into a GET, and 303 turns every
// method except HEAD into a GET.
bool BecomesGet(int status, const std::string& method) {
  return status == 303 ? method != "HEAD" : (status == 301 || status == 302) && method == "POST";
}

}  // namespace

std::optional<HttpResponse> Fetch(HttpRequest request, const HttpLimits& limits) {
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;
  const Clock::time_point end = Clock::now() + Milliseconds(limits.requestMs);

  for (int redirects = 0;; ++redirects) {
    const auto left = std::chrono::duration_cast<Milliseconds>(end - Clock::now()).count();
    if (left <= 0) return std::nullopt;
    HttpLimits now = limits;
    now.requestMs = static_cast<std::uint64_t>(left);
    now.connectMs = std::min(limits.connectMs, now.requestMs);

    std::optional<HttpResponse> response = Exchange(request, now);
    if (!response || !IsRedirect(response->status) || response->redirectUrl.empty()) {
      return response;
    }
    const std::optional<Url> next = ParseUrl(response->redirectUrl);
    if (redirects == kMostRedirects || !next || !MayLeadTo(request.url, *next)) return std::nullopt;
    request.url = *next;
    if (BecomesGet(response->status, request.method)) {
      request.method = "GET";
      request.contentType.clear();
      request.body.clear();
    }
  }
}

bool AlwaysHasBody(const std::string& method) {
  return method == "POST" || method == "PUT" || method == "PATCH";
}

std::uint32_t HttpRequests::Create(int method, const char* url) {
  if (method < 1 || method > kMethodCount || open_.size() >= kMostOpen) return 0;
  const std::optional<Url> parsed = ParseUrl(url);
  if (!parsed) return 0;
  open_[lastHandle_ + 1].request = {kMethods[method - 1], *parsed, "", ""};
  return ++lastHandle_;
}

bool HttpRequests::SetBody(std::uint32_t handle, const std::string& contentType, const void* body,
                           std::size_t size) {
  const auto found = open_.find(handle);
  if (found == open_.end() || found->second.wasSent || size > limits_.bodySize) return false;
  HttpRequest& request = found->second.request;
  if (!AlwaysHasBody(request.method)) return false;
  // A line end would start another header.
  const bool isPlain = std::all_of(contentType.begin(), contentType.end(),
                                   [](char c) { return c >= ' ' && c < 0x7F; });
  if (contentType.empty() || !isPlain) return false;

  std::string content(static_cast<const char*>(body), size);
  request.contentType = contentType;
  request.body = std::move(content);
  return true;
}

std::optional<HttpRequest> HttpRequests::BeginSending(std::uint32_t handle) {
  const auto found = open_.find(handle);
  if (found == open_.end() || found->second.wasSent) return std::nullopt;
  found->second.wasSent = true;
  return found->second.request;
}

bool HttpRequests::EndSending(std::uint32_t handle, std::optional<HttpResponse> response,
                              std::uint64_t* call) {
  const auto found = open_.find(handle);  // the caller may have released it meanwhile
  if (found == open_.end() || !response) return false;
  found->second.response = std::move(response);
  ++lastCall_;
  if (call != nullptr) *call = lastCall_;
  return true;
}

std::optional<std::uint32_t> HttpRequests::HeaderSize(std::uint32_t handle,
                                                      const char* name) const {
  const HttpResponse* const response = ResponseOf(handle);
  if (response == nullptr) return std::nullopt;
  const std::string wanted = LowerCase(name);
  if (wanted == "content-length") return static_cast<std::uint32_t>(response->body.size());
  for (const auto& [header, value] : response->headers) {
    if (LowerCase(header) == wanted) return static_cast<std::uint32_t>(value.size());
  }
  return std::nullopt;
}

bool HttpRequests::CopyBody(std::uint32_t handle, void* buffer, std::size_t size) const {
  const HttpResponse* const response = ResponseOf(handle);
  if (response == nullptr || size != response->body.size()) return false;
  if (size > 0) std::memcpy(buffer, response->body.data(), size);
  return true;
}

const HttpResponse* HttpRequests::ResponseOf(std::uint32_t handle) const {
  const auto found = open_.find(handle);
  if (found == open_.end() || !found->second.response) return nullptr;
  return &*found->second.response;
}

}  // namespace launcher::stand_in
