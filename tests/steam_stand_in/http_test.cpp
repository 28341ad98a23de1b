// Finds a response that is cut, too large, late or from the wrong server but counts as whole, a
// request that is sent otherwise than asked, a redirect with the wrong method, a handle that
// outlives its request, a redirect from https to http that is followed, and a missing lock. All
// over the loopback interface, except for redirects from https: no client trusts the server of the
// tests.

#include <atomic>

#include "platform/win32.h"
#include "steam_stand_in/http_requests.h"
#include "steam_stand_in/stand_in_test.h"

namespace launcher {

namespace stand_in {

static std::vector<HttpLimits> exchanges;

// In place of the stand-in's own, for Fetch in this program: redirects to the body.
std::optional<HttpResponse> Exchange(const HttpRequest& request, const HttpLimits& limits) {
  exchanges.push_back(limits);
  Sleep(2);
  return HttpResponse{302, {}, "", request.body};
}

TEST(Redirects, KeepASecretAndTheLimits) {
  for (const auto& [from, to, count] : {std::tuple{"HTTPS://a/", "http://a/", 1u},
                                        {"HTTPS://a/", "https://a/", 11u},
                                        {"http://a/", "https://a/", 11u}}) {
    exchanges.clear();
    EXPECT_FALSE(Fetch({"GET", *ParseUrl(from), "", to}, {60'000, 60'000, 7}));
    EXPECT_EQ(exchanges.size(), count);
  }
  EXPECT_LE(exchanges.back().requestMs, 60'000u - 2 * 10);
  EXPECT_EQ(exchanges.back().connectMs, exchanges.back().requestMs);
}

}  // namespace stand_in

namespace {

enum Method { kGet = 1, kHead, kPost, kPut, kDelete, kOptions, kPatch };

constexpr std::uint32_t kLimit = 21;  // the bytes of each response below, or more
const std::string kText = "hello from the server";
const std::string kBody("a\0b", 3);
const std::string kFailed = "failed";
constexpr std::uint32_t kUntouched = 99;

// A port of tests/support/http_server.py. Throws without that server.
std::string Port(const char* variable) { return std::getenv(variable); }

class StandInHttp : public test::StandInTest {
 protected:
  StandInHttp() { Start(R"({"httpBodyLimitBytes": 21})"); }

  static ISteamHTTP& Http() { return *SteamHTTP(); }

  static std::uint32_t Create(int method, const std::string& url) {
    const std::string server = url[0] == '/' ? "http://127.0.0.1:" + Port("TEST_HTTP_PORT") : "";
    return Http().CreateHTTPRequest(method, (server + url).c_str());
  }

  static bool SetBody(std::uint32_t request, const char* type, std::uint32_t size) {
    static std::uint8_t body[kLimit + 1] = {'a', 0, 'b'};
    return Http().SetHTTPRequestRawPostBody(request, type, body, size);
  }

  // Returns the length of a header's value, or kUntouched.
  static std::uint32_t Length(std::uint32_t request, const char* header) {
    std::uint32_t length = kUntouched;
    const bool isFound = Http().GetHTTPResponseHeaderSize(request, header, &length);
    EXPECT_EQ(length != kUntouched, isFound);
    return length;
  }

  // Sends and releases a request. Returns the response's body, or kFailed.
  static std::string Send(std::uint32_t request) {
    std::uint8_t body[kUntouched] = {};
    std::uint64_t call = 0;
    const bool isSent = Http().SendHTTPRequest(request, &call);
    EXPECT_EQ(call != 0, isSent);
    const std::uint32_t size = Length(request, "content-length");
    EXPECT_EQ(Http().GetHTTPResponseBodyData(request, body, size), isSent);
    EXPECT_FALSE(Http().SendHTTPRequest(request, nullptr));  // it is sent once
    EXPECT_TRUE(Http().ReleaseHTTPRequest(request));
    return isSent ? std::string(body, body + size) : kFailed;
  }
};

TEST_F(StandInHttp, SendsWhatIsAskedAndHasWholeResponsesOnly) {
  const std::tuple<int, std::string, std::string> cases[] = {
    {kGet, "/text", kText},
    {kGet, "/chunked", kText},
    {kGet, "/status/500", "status 500"},
    {kGet, "/path/a%20b?c=d&e=%2F#f", "/path/a%20b?c=d&e=%2F"},
    {kGet, "/path/a%20b?c=d&e=%2Fg", kFailed},
    {kGet, "/cut", kFailed},
    {kGet, "https://localhost:" + Port("TEST_HTTPS_PORT") + "/text", kFailed},
    {kDelete, "/echo", "DELETE - "},
    {kGet, "/redirect/302?file:///etc/hostname", kFailed},
    {kHead, "/redirect/303?/echo", ""},
    {kPost, "/redirect/300?/echo", "not this"},
    {kPost, "/redirect/301?/echo", "GET - "},
    {kPost, "/redirect/302?/echo", "GET - "},
    {kPost, "/redirect/307?/echo", "POST text/plain " + kBody},
    {kPut, "/redirect/301?/echo", "PUT text/plain " + kBody},
    {kPut, "/redirect/303?/echo", "GET - "},
    {kPatch, "/redirect/308?/echo", "PATCH text/plain " + kBody},
#if !defined(_WIN32)  // WinHTTP of Wine does not decode, and does not read the environment
    {kGet, "/gzip", kText},
    // The server is also the proxy. Only this machine's own names are reached without it.
    {kGet, "http://1278.8/path", "http://1278.8/path"},
    {kGet, "http://LOCALHOST:1/echo", kFailed},
#endif
  };
  for (const auto& [method, url, body] : cases) {
    SCOPED_TRACE(std::to_string(method) + ' ' + url);
    const std::uint32_t request = Create(method, url);
    const bool hasBody = method == kPost || method == kPut || method == kPatch;
    EXPECT_EQ(SetBody(request, "text/plain", 3), hasBody);
    EXPECT_EQ(Send(request), body);
  }
  EXPECT_EQ(Send(Create(kPost, "/echo")), "POST - ");
  // These pages come in parts, the slow one within about a second.
  Start(R"({"httpBodyLimitBytes": 20})");
  EXPECT_EQ(Send(Create(kGet, "/chunked")), kFailed);
  Start(R"({"httpConnectLimitMs": 500})");
  EXPECT_EQ(Send(Create(kGet, "/slow")), kText);
  Start(R"({"httpRequestLimitMs": 300})");
  EXPECT_EQ(Send(Create(kGet, "/slow")), kFailed);
}

TEST_F(StandInHttp, RefusesWrongArguments) {
  for (const int method : {0, 8}) EXPECT_EQ(Create(method, "/echo"), 0u);
  EXPECT_EQ(Http().CreateHTTPRequest(kGet, nullptr), 0u);
  for (const char* const url :
       {"a.example", "ftp://a", "http:///a", "http://:80/", "http://?a", "http://user@a/",
        "http://a b", "http://a\\b", "http://a/\x7F", "http://a/\xC3\xA4"}) {
    EXPECT_EQ(Create(kGet, url), 0u) << url;
  }
  EXPECT_NE(Create(kGet, "http://a?b/c@d~#e f"), 0u);

  const std::uint32_t request = Create(kPost, "/echo");
  // A line end would begin another header.
  for (const char* const type : {"", "a\x1F", "a\x7F", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(SetBody(request, type, 1));
  }
  EXPECT_FALSE(Http().SetHTTPRequestRawPostBody(request, "text/plain", nullptr, 1));
  EXPECT_FALSE(SetBody(request, "text/plain", kLimit + 1));
  EXPECT_FALSE(SetBody(request + 1, "text/plain", 1));
  EXPECT_TRUE(SetBody(request, "a ~", kLimit));
  EXPECT_FALSE(Http().SendHTTPRequest(request, nullptr));  // the echo exceeds the limit
  EXPECT_FALSE(SetBody(request, "text/plain", 1));
}

TEST_F(StandInHttp, NumbersItsRequestsAndHas64) {
  // Wine's WinHTTP takes an interim response for the response.
  const char* const page = test::kIsWindows ? "/text" : "/interim";
  const std::uint32_t first = Create(kGet, page);
  for (std::uint32_t i = 1; i < 64; ++i) EXPECT_EQ(Create(kGet, page), first + i);
  EXPECT_EQ(Create(kGet, page), 0u);
  EXPECT_TRUE(Http().ReleaseHTTPRequest(first + 6));
  EXPECT_EQ(Create(kGet, page), first + 64);
  EXPECT_FALSE(Http().SendHTTPRequest(first + 6, nullptr));
  EXPECT_FALSE(Http().ReleaseHTTPRequest(first + 6));
  EXPECT_TRUE(Http().SendHTTPRequest(first + 64, nullptr));
  std::uint64_t call = 0;
  EXPECT_TRUE(Http().SendHTTPRequest(first, &call));
  EXPECT_EQ(call, 2u);
  EXPECT_EQ(Length(first, "X-Zon"), kUntouched);
  EXPECT_EQ(Length(first, "x-zONE"), 5u);  // without the blanks around it
  std::uint8_t buffer[22] = {};
  EXPECT_FALSE(Http().GetHTTPResponseBodyData(first, buffer, 20));
  EXPECT_FALSE(Http().GetHTTPResponseBodyData(first, buffer, 22));
  EXPECT_FALSE(Http().GetHTTPResponseBodyData(first, nullptr, 21));
  // A transfer can outlive its session; its handle must not get another request's response.
  Start("{}");
  EXPECT_EQ(Create(kGet, page), first + 65);
  EXPECT_FALSE(Http().SendHTTPRequest(first + 1, nullptr));
}

using StandInThreads = StandInHttp;

TEST_F(StandInThreads, CallWhileARequestOrTheSessionEnds) {
  ISteamFriends* const friends = SteamFriends();
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  ISteamHTTP* const http = SteamHTTP();
  const std::uint32_t requests[] = {Create(kGet, "/slow"), Create(kGet, "/slow")};
  std::atomic<int> failures = 0;
  std::atomic<bool> isOver = false;
  test::RunInThreads(4, [&](int number) {
    if (number < 2) failures += http->SendHTTPRequest(requests[number], nullptr);
    if (number == 2) {
      Sleep(20);  // usually enough for the requests to begin
      failures += !http->ReleaseHTTPRequest(requests[0]);
      for (int i = 0; i < 20; ++i) {
        SteamAPI_Shutdown();
        failures += !SteamAPI_Init();
      }
      isOver = true;
    }
    while (!isOver) {
      storage->FileWrite("a", "x", 1);
      storage->GetFileNameAndSize(0, nullptr);
      const std::string name = friends->GetPersonaName();  // empty without a session
      failures += (name != "Player" && !name.empty()) || !SteamAPI_IsSteamRunning();
    }
  });
  EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace launcher
