// Finds a response that is cut, too large, late or from the wrong server but counts as whole, a
// request that is sent otherwise than asked, and a handle that outlives its request. All over the
// loopback interface.

#include <cstdlib>
#include <limits>
#include <string>

#include "platform/win32.h"
#include "steam_stand_in/stand_in_test.h"
#include "support/system.h"

namespace launcher {
namespace {

enum Method { kGet = 1, kHead, kPost, kPut, kDelete, kOptions, kPatch };

const std::string kText = "hello from the server";
const std::string kFailed = "failed";

class StandInHttp : public test::StandInTest {
 protected:
  StandInHttp() { Start(R"({"httpBodyLimitBytes": 4096})"); }

  static ISteamHTTP& Http() { return *SteamHTTP(); }

  static std::uint32_t Create(int method, const std::string& page) {
    return Http().CreateHTTPRequest(method, UrlOf(page).c_str());
  }

  static bool SetBody(std::uint32_t request, const char* type, std::string body) {
    return Http().SetHTTPRequestRawPostBody(request, type,
                                            reinterpret_cast<std::uint8_t*>(body.data()),
                                            static_cast<std::uint32_t>(body.size()));
  }

  // The response's body, or kFailed, for a request that is released then.
  static std::string Send(std::uint32_t request) {
    constexpr std::uint64_t kNoCall = 99;
    std::uint64_t call = kNoCall;
    std::uint32_t size = kNoCall;
    std::string body = kFailed;
    const bool isSent = Http().SendHTTPRequest(request, &call);
    EXPECT_EQ(Http().GetHTTPResponseHeaderSize(request, "content-length", &size), isSent);
    if (isSent) {
      body.assign(size, '#');
      EXPECT_TRUE(Http().GetHTTPResponseBodyData(
          request, reinterpret_cast<std::uint8_t*>(body.data()), size));
      EXPECT_FALSE(Http().SendHTTPRequest(request, &call)) << "it is sent once";
    } else {
      EXPECT_EQ(call, kNoCall);
      EXPECT_EQ(size, kNoCall);
      EXPECT_FALSE(Http().GetHTTPResponseBodyData(request, nullptr, 0));
    }
    EXPECT_TRUE(Http().ReleaseHTTPRequest(request));
    return body;
  }
};

TEST_F(StandInHttp, HasWholeResponsesOnly) {
  std::string repeated;
  for (int i = 0; i < 100; ++i) repeated += kText;
  struct Case {
    int method;
    std::string page;
    std::string body;
  };
  const Case cases[] = {
      {kGet, "/text", kText},
      {kGet, "/empty", ""},
      {kGet, "/no-content", ""},
      {kGet, "/unannounced", kText},
      {kGet, "/chunked", kText},
      {kGet, "/gzip", repeated},
      {kGet, "/nul", std::string("a\0b\0", 4)},
      {kGet, "/size/4096", std::string(4096, 'x')},
      {kGet, "/size/4097", kFailed},
      {kGet, "/status/401", "status 401"},
      {kGet, "/status/500", "status 500"},
      {kGet, "/path/a%20b?c=d&e=%2F#f", "/path/a%20b?c=d&e=%2F"},
      {kGet, "/redirect/302?../text", kText},
      {kPost, "/redirect/307?" + UrlOf("/echo"), "POST - "},
      {kGet, "/redirect/302?file:///etc/hostname", kFailed},
      {kGet, "/cut", kFailed},
      {kGet, "/claims-4-gib", kFailed},
      {kGet, "/nothing", kFailed},
      {kGet, "/nonsense", kFailed},
      {kGet, "/echo", "GET - "},
      {kHead, "/echo", ""},
      {kPost, "/echo", "POST - "},
      {kPut, "/echo", "PUT - "},
      {kDelete, "/echo", "DELETE - "},
      {kOptions, "/echo", "OPTIONS - "},
      {kPatch, "/echo", "PATCH - "},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.page);
    EXPECT_EQ(Send(Create(each.method, each.page)), each.body);
  }
#if !defined(_WIN32)  // Wine's WinHTTP takes such a body for whole.
  EXPECT_EQ(Send(Create(kGet, "/chunked-cut")), kFailed);
#endif
  for (const int method : {0, 8, -1, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(Create(method, "/echo"), 0u);
  }
}

TEST_F(StandInHttp, KeepsItsTimeLimits) {
  // The page is complete after a second, the other one after 100.
  Start(R"({"httpConnectLimitMs": 900})");
  EXPECT_EQ(Send(Create(kGet, "/slow")), kText);
  Start(R"({"httpRequestLimitMs": 300})");
  EXPECT_EQ(Send(Create(kGet, "/trickle")), kFailed);
}

TEST_F(StandInHttp, TrustsNoUnknownServer) {
  // The server listens on 127.0.0.1 alone.
  std::string url = UrlOf("/text");
  url.replace(url.find("127.0.0.1"), 9, "127.0.0.2");
  EXPECT_EQ(Send(Http().CreateHTTPRequest(kGet, url.c_str())), kFailed);
  const char* const port = std::getenv("TEST_HTTPS_PORT");
  ASSERT_NE(port, nullptr);
  if (std::string(port) == "0") GTEST_SKIP() << "no certificate was made for the server";
  url = "https://localhost:" + std::string(port) + "/text";
  EXPECT_EQ(Send(Http().CreateHTTPRequest(kGet, url.c_str())), kFailed);
}

TEST_F(StandInHttp, SendsTheBodyThatWasSet) {
  const std::string body("a\0b", 3);
  for (const int method : {kPost, kPut, kPatch, kGet, kHead, kDelete, kOptions}) {
    const bool hasBody = method == kPost || method == kPut || method == kPatch;
    const std::uint32_t request = Create(method, "/echo");
    EXPECT_EQ(SetBody(request, "text/plain", body), hasBody) << method;
    const std::string echo = Send(request);
    EXPECT_EQ(echo.find(" text/plain " + body) != std::string::npos, hasBody) << echo;
  }
  const std::uint32_t request = Create(kPost, "/echo");
  std::uint8_t byte = 'x';
  EXPECT_FALSE(Http().SetHTTPRequestRawPostBody(request, nullptr, &byte, 1));
  EXPECT_FALSE(Http().SetHTTPRequestRawPostBody(request, "text/plain", nullptr, 1));
  // A line end would begin another header.
  for (const char* const type : {"", "a\r\nb: c", "a\x1F", "a\x7F", "\xC3\xA4"}) {
    EXPECT_FALSE(SetBody(request, type, "x"));
  }
  EXPECT_FALSE(SetBody(request, "text/plain", std::string(4097, 'x')));
  EXPECT_FALSE(SetBody(request + 1, "text/plain", "x"));
  EXPECT_TRUE(SetBody(request, "a ~", std::string(4068, 'x')));
  EXPECT_TRUE(Http().SendHTTPRequest(request, nullptr));
  EXPECT_FALSE(SetBody(request, "text/plain", "x")) << "it was sent";
  EXPECT_TRUE(SetBody(Create(kPut, "/echo"), "text/plain", std::string(4096, 'x')));
}

TEST_F(StandInHttp, GivesAHeadersSizeAndTheBodyForItsSizeAlone) {
  const std::uint32_t request = Create(kGet, "/text");
  std::uint32_t size = 99;
  EXPECT_FALSE(Http().GetHTTPResponseHeaderSize(request, "X-Five", &size));
  ASSERT_TRUE(Http().SendHTTPRequest(request, nullptr));
  for (const char* const name : {"X-Absent", "X-Fiv", "", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(Http().GetHTTPResponseHeaderSize(request, name, &size));
  }
  EXPECT_FALSE(Http().GetHTTPResponseHeaderSize(request, "X-Five", nullptr));
  EXPECT_EQ(size, 99u);
  EXPECT_TRUE(Http().GetHTTPResponseHeaderSize(request, "x-fIVE", &size));
  EXPECT_EQ(size, 5u) << "without the blanks around it";
  for (const std::uint32_t wrong : {0u, 5u, 20u, 22u, 0xFFFFFFFFu}) {
    std::uint8_t buffer[32] = {7};
    EXPECT_FALSE(Http().GetHTTPResponseBodyData(request, buffer, wrong));
    EXPECT_EQ(buffer[0], 7);
  }
  EXPECT_FALSE(Http().GetHTTPResponseBodyData(request, nullptr, 21));
  const std::uint32_t compressed = Create(kGet, "/gzip");
  ASSERT_TRUE(Http().SendHTTPRequest(compressed, nullptr));
  EXPECT_TRUE(Http().GetHTTPResponseHeaderSize(compressed, "Content-Length", &size));
  EXPECT_EQ(size, 2100u) << "of the body as it is given, not as it was sent";
#if !defined(_WIN32)  // Not every WinHTTP can decompress.
  EXPECT_TRUE(Http().GetHTTPResponseHeaderSize(compressed, "Content-Encoding", &size));
#endif
}

TEST_F(StandInHttp, NumbersItsRequestsAndHas64) {
  const std::uint32_t first = Create(kGet, "/text");
  for (std::uint32_t i = 1; i < 64; ++i) ASSERT_EQ(Create(kGet, "/text"), first + i);
  EXPECT_EQ(Create(kGet, "/text"), 0u);
  EXPECT_TRUE(Http().ReleaseHTTPRequest(first + 6));
  EXPECT_EQ(Http().CreateHTTPRequest(kGet, nullptr), 0u);
  EXPECT_EQ(Http().CreateHTTPRequest(kGet, "ftp://127.0.0.1/"), 0u);
  EXPECT_EQ(Create(kGet, "/text"), first + 64);
  std::uint64_t call = 0;
  EXPECT_TRUE(Http().SendHTTPRequest(first, nullptr));
  EXPECT_TRUE(Http().SendHTTPRequest(first + 64, &call));
  EXPECT_EQ(call, 2u);
  for (const std::uint32_t unknown : {0u, first + 6, first + 65, 0xFFFFFFFFu}) {
    EXPECT_FALSE(Http().SendHTTPRequest(unknown, nullptr));
    EXPECT_FALSE(Http().GetHTTPResponseBodyData(unknown, nullptr, 0));
    EXPECT_FALSE(Http().ReleaseHTTPRequest(unknown));
  }
}

// For the threads of the last test.
std::uint32_t slowRequest = 0;
bool endsSession = false;
bool wasSent = false;
bool hasEnded = false;

TEST_F(StandInHttp, FailsIfTheRequestOrTheSessionEndsMeanwhile) {
  for (const bool ends : {false, true}) {
    endsSession = ends;
    slowRequest = Create(kGet, "/slow");
    test::RunInThreads(2, [](int number) {
      ISteamHTTP* const http = SteamHTTP();
      if (number == 0) {
        wasSent = http != nullptr && http->SendHTTPRequest(slowRequest, nullptr);
        return;
      }
      Sleep(100);  // usually enough for the other thread to begin
      if (endsSession) SteamAPI_Shutdown();
      hasEnded = endsSession ? SteamAPI_Init() : http->ReleaseHTTPRequest(slowRequest);
    });
    EXPECT_FALSE(wasSent);
    EXPECT_TRUE(hasEnded);
  }
}

}  // namespace
}  // namespace launcher
