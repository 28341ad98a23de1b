#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "platform/owners.h"
#include "platform/win32.h"
#include "steam_stand_in/ascii.h"
#include "steam_stand_in/http_exchange.h"
// These need <windows.h> first.
#include <shlwapi.h>
#include <winhttp.h>

namespace launcher::stand_in {
namespace {

struct InternetHandleKind {
  using Handle = HINTERNET;
  static constexpr Handle kNone = nullptr;
  static void Release(Handle handle) { WinHttpCloseHandle(handle); }
};
using InternetHandle = Owner<InternetHandleKind>;

// For URLs and headers: each byte becomes one character, without a code page.
std::wstring Widen(const std::string& text) {
  std::wstring wide;
  for (const char c : text) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return wide;
}

std::string Narrow(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t c : text) narrow += static_cast<char>(c);
  return narrow;
}

struct UrlParts {
  std::wstring host;
  std::wstring pathAndQuery;
  INTERNET_PORT port;
};

std::optional<UrlParts> Crack(const std::string& url) {
  const std::wstring wide = Widen(url);
  URL_COMPONENTS found = {};
  found.dwStructSize = sizeof found;
  // A length other than 0 asks for a pointer into the text.
  found.dwHostNameLength = found.dwUrlPathLength = found.dwExtraInfoLength = 1;
  if (!WinHttpCrackUrl(wide.c_str(), static_cast<DWORD>(wide.size()), 0, &found)) {
    return std::nullopt;
  }
  UrlParts parts{{found.lpszHostName, found.dwHostNameLength},
                 {found.lpszUrlPath, found.dwUrlPathLength},
                 found.nPort};
  parts.pathAndQuery.append(found.lpszExtraInfo, found.dwExtraInfoLength);
  // A URL such as "http://host?query" has no path.
  if (parts.pathAndQuery.empty() || parts.pathAndQuery[0] != L'/')
    parts.pathAndQuery.insert(0, 1, L'/');
  return parts;
}

std::string Absolute(const std::string& base, const std::string& reference) {
  constexpr DWORD kLongest = 2084;  // INTERNET_MAX_URL_LENGTH
  std::wstring combined(kLongest, L'\0');
  DWORD length = kLongest;
  if (FAILED(UrlCombineW(Widen(base).c_str(), Widen(reference).c_str(), combined.data(), &length,
                         0))) {
    return reference;
  }
  combined.resize(length);
  return Narrow(combined);
}

// The time that is left. Each limit of WinHTTP is for one step only, so it is set before each step.
class Deadline {
 public:
  explicit Deadline(std::uint64_t milliseconds)
      : end_(Clock::now() + std::chrono::milliseconds(milliseconds)) {}

  bool ApplyTo(HINTERNET request) const {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end_ - Clock::now()).count();
    if (left <= 0) return false;
    DWORD milliseconds = static_cast<DWORD>(left);
    return WinHttpSetOption(request, WINHTTP_OPTION_RECEIVE_TIMEOUT, &milliseconds,
                            sizeof milliseconds) != 0;
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point end_;
};

const std::string* FindHeader(const HttpResponse& response, const char* lowerCaseName) {
  for (const auto& [name, value] : response.headers) {
    if (LowerCase(name) == lowerCaseName) return &value;
  }
  return nullptr;
}

bool ReadHead(HINTERNET request, HttpResponse* response) {
  DWORD status = 0;
  DWORD size = sizeof status;
  if (!WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                           WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX)) {
    return false;
  }
  response->status = static_cast<int>(status);

  size = 0;
  WinHttpQueryHeaders(request, WINHTTP_QUERY_RAW_HEADERS_CRLF, WINHTTP_HEADER_NAME_BY_INDEX,
                      WINHTTP_NO_OUTPUT_BUFFER, &size, WINHTTP_NO_HEADER_INDEX);
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return false;
  std::wstring wide(size / sizeof(wchar_t), L'\0');
  if (!WinHttpQueryHeaders(request, WINHTTP_QUERY_RAW_HEADERS_CRLF, WINHTTP_HEADER_NAME_BY_INDEX,
                           wide.data(), &size, WINHTTP_NO_HEADER_INDEX)) {
    return false;
  }
  wide.resize(size / sizeof(wchar_t));

  const std::string text = Narrow(wide);
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find("\r\n", start), text.size());
    const std::string line = text.substr(start, end - start);
    start = end + 2;
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos) continue;
    std::string value =
        line.substr(std::min(line.find_first_not_of(" \t", colon + 1), line.size()));
    value.erase(value.find_last_not_of(" \t") + 1);
    response->headers.emplace_back(line.substr(0, colon), value);
  }
  return true;
}

// Reads what has arrived, again and again: a call for more bytes than have arrived would wait for
// all of them, past the deadline.
bool ReadBody(HINTERNET request, const Deadline& deadline, std::size_t limit, std::string* body) {
  for (;;) {
    DWORD available = 0;
    if (!deadline.ApplyTo(request) || !WinHttpQueryDataAvailable(request, &available)) return false;
    if (available == 0) return true;
    if (available > limit - body->size()) return false;

    const std::size_t before = body->size();
    body->resize(before + available);
    DWORD count = 0;
    if (!WinHttpReadData(request, &(*body)[before], available, &count)) return false;
    body->resize(before + count);
    if (count == 0) return true;
  }
}

// A connection that ends early can look like the end of the body, so its length is compared with
// Content-Length. That is not possible for a decoded body, but there the decoder notices a missing
// end. Only WinHTTP can notice a missing chunk, since it does not show the chunks.
bool IsWhole(const HttpRequest& request, const HttpResponse& response) {
  const std::string* const announced = FindHeader(response, "content-length");
  if (announced == nullptr || FindHeader(response, "content-encoding") != nullptr) return true;
  if (std::string(request.method) == "HEAD" || response.status == 204 || response.status == 304) {
    return true;
  }
  return std::strtoull(announced->c_str(), nullptr, 10) == response.body.size();
}

}  // namespace

std::optional<HttpResponse> Exchange(const HttpRequest& request, const HttpLimits& limits) {
  const Deadline deadline(limits.requestMs);
  const std::optional<UrlParts> url = Crack(request.url.text);
  if (!url) return std::nullopt;

  const InternetHandle session(WinHttpOpen(
      L"SteamStandIn",
      request.url.isLoopback ? WINHTTP_ACCESS_TYPE_NO_PROXY : WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
      WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
  if (!session) return std::nullopt;
  const int connectMs = static_cast<int>(limits.connectMs);
  const int requestMs = static_cast<int>(limits.requestMs);
  WinHttpSetTimeouts(session.Get(), connectMs, connectMs, requestMs, requestMs);
  const InternetHandle connection(WinHttpConnect(session.Get(), url->host.c_str(), url->port, 0));
  if (!connection) return std::nullopt;
  const InternetHandle exchange(WinHttpOpenRequest(
      connection.Get(), Widen(request.method).c_str(), url->pathAndQuery.c_str(), nullptr,
      WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
      WINHTTP_FLAG_ESCAPE_DISABLE | (request.url.isSecure ? WINHTTP_FLAG_SECURE : 0)));
  if (!exchange) return std::nullopt;

  DWORD disabled =
      WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_AUTHENTICATION;
  if (!WinHttpSetOption(exchange.Get(), WINHTTP_OPTION_DISABLE_FEATURE, &disabled,
                        sizeof disabled)) {
    return std::nullopt;
  }
  // Older systems refuse the next two options. Then servers are not asked to compress, and the head
  // of the response has the limit of an ordinary step.
  DWORD encodings = WINHTTP_DECOMPRESSION_FLAG_ALL;
  WinHttpSetOption(exchange.Get(), WINHTTP_OPTION_DECOMPRESSION, &encodings, sizeof encodings);
  DWORD headMs = static_cast<DWORD>(limits.requestMs);
  WinHttpSetOption(exchange.Get(), WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &headMs, sizeof headMs);

  const std::wstring headers =
      request.contentType.empty() ? L"" : L"Content-Type: " + Widen(request.contentType) + L"\r\n";
  const auto bodySize = static_cast<DWORD>(request.body.size());
  HttpResponse response;
  if (!WinHttpSendRequest(exchange.Get(), headers.c_str(), static_cast<DWORD>(headers.size()),
                          const_cast<char*>(request.body.data()), bodySize, bodySize, 0) ||
      !deadline.ApplyTo(exchange.Get()) || !WinHttpReceiveResponse(exchange.Get(), nullptr) ||
      !ReadHead(exchange.Get(), &response) ||
      !ReadBody(exchange.Get(), deadline, limits.bodySize, &response.body) ||
      !IsWhole(request, response)) {
    return std::nullopt;
  }
  if (const std::string* const location = FindHeader(response, "location")) {
    response.redirectUrl = Absolute(request.url.text, *location);
  }
  return response;
}

}  // namespace launcher::stand_in
