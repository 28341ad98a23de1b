// Requests to the server of with_http_server.sh: for a response that is not whole, a wrong
// redirect, a limit that is not kept, and handles that are mixed up.

#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

#include "steam_stand_in/stand_in_test.h"

namespace launcher {
namespace {

enum Method { kGet = 1, kHead, kPost, kPut, kDelete, kOptions, kPatch };

const std::string kText = "hello from the server";

std::string Repeat(const std::string& text, int count) {
  std::string repeated;
  for (int i = 0; i < count; ++i) repeated += text;
  return repeated;
}

std::string Address(const std::string& path) {
  const char* const port = std::getenv("TEST_HTTP_PORT");
  if (port == nullptr) {
    ADD_FAILURE() << "no server: run this program by with_http_server.sh";
    return "http://127.0.0.1:1" + path;
  }
  return std::string("http://127.0.0.1:") + port + path;
}

class StandInHttp : public test::StandInTest {
 protected:
  StandInHttp() {
    // Nobody is there: a request that took this way would fail.
    test::SetEnvironment("http_proxy", "http://127.0.0.1:1");
    Start(R"({"httpBodyLimitBytes": 4096})");
  }

  static std::uint32_t Create(int method, const std::string& path) {
    return SteamHTTP()->CreateHTTPRequest(method, Address(path).c_str());
  }

  static bool SetBody(std::uint32_t request, const char* type, std::string body) {
    return SteamHTTP()->SetHTTPRequestRawPostBody(request, type,
                                                  reinterpret_cast<std::uint8_t*>(body.data()),
                                                  static_cast<std::uint32_t>(body.size()));
  }

  static bool Send(std::uint32_t request) {
    std::uint64_t call = 0;
    return SteamHTTP()->SendHTTPRequest(request, &call);
  }

  // The response's body, read as the library reads it.
  static std::string Body(std::uint32_t request) {
    std::uint32_t size = 0;
    if (!SteamHTTP()->GetHTTPResponseHeaderSize(request, "Content-Length", &size)) return "no size";
    std::string body(size, '#');
    if (!SteamHTTP()->GetHTTPResponseBodyData(request, reinterpret_cast<std::uint8_t*>(body.data()),
                                              size)) {
      return "no body";
    }
    return body;
  }

  // What comes for a request without a body, or "failed".
  static std::string Fetch(int method, const std::string& path) {
    const std::uint32_t request = Create(method, path);
    EXPECT_NE(request, 0u);
    const std::string body = Send(request) ? Body(request) : "failed";
    EXPECT_TRUE(SteamHTTP()->ReleaseHTTPRequest(request));
    return body;
  }
};

TEST_F(StandInHttp, HoldsWholeBodies) {
  const std::pair<const char*, std::string> cases[] = {
      {"/text", kText},
      {"/empty", ""},
      {"/no-content", ""},
      {"/unannounced", kText},
      {"/chunked", kText},
      {"/gzip", Repeat(kText, 100)},
      {"/nul", std::string("a\0b\0", 4)},
      {"/size/4096", std::string(4096, 'x')},
      {"/slow", kText},
      {"/status/400", "status 400"},
      {"/status/401", "status 401"},
      {"/status/404", "status 404"},
      {"/status/500", "status 500"},
      {"/path/a%20b?c=d&e=%2F#f", "/path/a%20b?c=d&e=%2F"},
      {"?nothing", "no such page"},
      {"/redirects/1", kText},
      {"/redirects/10", kText},
  };
  for (const auto& [path, body] : cases) {
    SCOPED_TRACE(path);
    EXPECT_EQ(Fetch(kGet, path), body);
  }
}

TEST_F(StandInHttp, FailsWithoutAWholeBody) {
  for (const char* const path :
       {"/cut", "/claims-4-gib", "/nothing", "/nonsense", "/size/4097", "/redirects/11",
        "/redirect/302?ftp://127.0.0.1/", "/redirect/302?file:///etc/hostname",
        "/redirect/302?http://user@127.0.0.1/"}) {
    SCOPED_TRACE(path);
    const std::uint32_t request = Create(kGet, path);
    std::uint64_t call = 99;
    EXPECT_FALSE(SteamHTTP()->SendHTTPRequest(request, &call));
    EXPECT_EQ(call, 99u);
    EXPECT_EQ(Body(request), "no size");
    std::uint8_t byte = 0;
    EXPECT_FALSE(SteamHTTP()->GetHTTPResponseBodyData(request, &byte, 0));
    EXPECT_TRUE(SteamHTTP()->ReleaseHTTPRequest(request));
  }
}

#if !defined(_WIN32)
// Wine's WinHTTP accepts a body without its last chunk, and cannot ask for compression.
TEST_F(StandInHttp, AsksForCompressionAndMissesTheLastChunk) {
  const std::uint32_t request = Create(kGet, "/gzip");
  ASSERT_TRUE(Send(request));
  std::uint32_t size = 0;
  EXPECT_TRUE(SteamHTTP()->GetHTTPResponseHeaderSize(request, "Content-Encoding", &size));
  EXPECT_EQ(size, 4u);
  EXPECT_FALSE(Send(Create(kGet, "/chunked-cut")));
}
#endif

TEST_F(StandInHttp, KeepsTheTimeLimit) {
  Start(R"({"httpRequestLimitMs": 300})");
  for (const char* const path : {"/slow", "/trickle", "/redirect/302?/trickle"}) {
    SCOPED_TRACE(path);
    // Without the limit each of them ends with a whole body, the last after 100 s.
    EXPECT_EQ(Fetch(kGet, path), "failed");
  }
}

TEST_F(StandInHttp, FailsWhereNobodyAnswers) {
  // The server's port was free on every address, and it listens on 127.0.0.1 alone.
  std::string url = Address("/text");
  url.replace(url.find("127.0.0.1"), 9, "127.0.0.2");
  const std::uint32_t request = SteamHTTP()->CreateHTTPRequest(kGet, url.c_str());
  EXPECT_FALSE(Send(request));
}

TEST_F(StandInHttp, VerifiesCertificates) {
  const char* const port = std::getenv("TEST_HTTPS_PORT");
  ASSERT_NE(port, nullptr);
  if (std::string(port) == "0") GTEST_SKIP() << "no certificate was made for the server";
  for (const std::string host : {"localhost", "127.0.0.1"}) {
    const std::string url = "https://" + host + ":" + port + "/text";
    const std::uint32_t request = SteamHTTP()->CreateHTTPRequest(kGet, url.c_str());
    ASSERT_NE(request, 0u);
    EXPECT_FALSE(Send(request));
  }
  EXPECT_EQ(Fetch(kGet, "/redirect/302?https://127.0.0.1:" + std::string(port) + "/text"),
            "failed");
}

TEST_F(StandInHttp, KnowsTheMethods) {
  const std::pair<int, const char*> cases[] = {
      {kGet, "GET - "},       {kHead, ""},
      {kPost, "POST - "},     {kPut, "PUT - "},
      {kDelete, "DELETE - "}, {kOptions, "OPTIONS - "},
      {kPatch, "PATCH - "},
  };
  for (const auto& [method, echo] : cases) EXPECT_EQ(Fetch(method, "/echo"), echo);
  for (const int method : {0, 8, -1, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(Create(method, "/echo"), 0u);
  }
}

TEST_F(StandInHttp, SendsBodies) {
  const std::string body("a\0b", 3);
  const std::pair<int, std::string> cases[] = {
      {kPost, "POST text/plain " + body},
      {kPut, "PUT text/plain " + body},
      {kPatch, "PATCH text/plain " + body},
      {kGet, "GET - "},
      {kDelete, "DELETE - "},
  };
  for (const auto& [method, told] : cases) {
    SCOPED_TRACE(told);
    const std::uint32_t request = Create(method, "/echo");
    EXPECT_EQ(SetBody(request, "text/plain", body), told.find(body) != std::string::npos);
    EXPECT_TRUE(Send(request));
    EXPECT_EQ(Body(request), told);
    EXPECT_FALSE(SetBody(request, "text/plain", body));
  }
}

TEST_F(StandInHttp, RefusesBodies) {
  const std::uint32_t request = Create(kPost, "/echo");
  std::uint8_t byte = 'x';
  EXPECT_FALSE(SteamHTTP()->SetHTTPRequestRawPostBody(request, nullptr, &byte, 1));
  EXPECT_FALSE(SteamHTTP()->SetHTTPRequestRawPostBody(request, "text/plain", nullptr, 1));
  for (const char* const type : {"", "a\r\nb: c", "a\nb", "\xC3\xA4"}) {
    EXPECT_FALSE(SetBody(request, type, "x"));
  }
  EXPECT_FALSE(SetBody(request, "text/plain", std::string(4097, 'x')));
  EXPECT_FALSE(SetBody(request + 1, "text/plain", "x"));
  EXPECT_TRUE(Send(request));
  EXPECT_EQ(Body(request), "POST - ");
}

TEST_F(StandInHttp, FollowsRedirectsAsBrowsersDo) {
  struct Case {
    int method;
    int status;
    const char* told;
  };
  const Case cases[] = {
      {kPost, 301, "GET - "},
      {kPost, 302, "GET - "},
      {kPost, 303, "GET - "},
      {kPost, 307, "POST text/plain body"},
      {kPost, 308, "POST text/plain body"},
      {kPut, 302, "PUT text/plain body"},
      {kPut, 303, "GET - "},
      {kPost, 304, ""},
      {kPost, 300, "not this"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.status);
    const std::uint32_t request =
        Create(each.method, "/redirect/" + std::to_string(each.status) + "?/echo");
    ASSERT_TRUE(SetBody(request, "text/plain", "body"));
    EXPECT_TRUE(Send(request));
    EXPECT_EQ(Body(request), each.told);
  }
  // Relative to the page, and absolute.
  EXPECT_EQ(Fetch(kGet, "/redirect/302?../text"), kText);
  EXPECT_EQ(Fetch(kGet, "/redirect/302?" + Address("/text")), kText);
  EXPECT_EQ(Fetch(kHead, "/redirect/302?/text"), "");
}

TEST_F(StandInHttp, TellsHeaders) {
  const std::uint32_t request = Create(kGet, "/text");
  std::uint32_t size = 99;
  EXPECT_FALSE(SteamHTTP()->GetHTTPResponseHeaderSize(request, "Content-Length", &size));
  ASSERT_TRUE(Send(request));
  EXPECT_FALSE(SteamHTTP()->GetHTTPResponseHeaderSize(request, "X-Absent", &size));
  EXPECT_FALSE(SteamHTTP()->GetHTTPResponseHeaderSize(request, "", &size));
  EXPECT_FALSE(SteamHTTP()->GetHTTPResponseHeaderSize(request, nullptr, &size));
  EXPECT_FALSE(SteamHTTP()->GetHTTPResponseHeaderSize(request, "X-Five", nullptr));
  EXPECT_EQ(size, 99u);
  for (const auto& [name, expected] :
       {std::pair{"X-Five", 5u}, std::pair{"x-five", 5u}, std::pair{"cOnTeNt-LeNgTh", 21u}}) {
    EXPECT_TRUE(SteamHTTP()->GetHTTPResponseHeaderSize(request, name, &size));
    EXPECT_EQ(size, expected);
  }
}

TEST_F(StandInHttp, GivesTheBodyForItsSizeAlone) {
  const std::uint32_t request = Create(kGet, "/text");
  ASSERT_TRUE(Send(request));
  for (const std::uint32_t size : {0u, 20u, 22u, 0xFFFFFFFFu}) {
    std::uint8_t buffer[32] = {7};
    EXPECT_FALSE(SteamHTTP()->GetHTTPResponseBodyData(request, buffer, size));
    EXPECT_EQ(buffer[0], 7);
  }
  EXPECT_FALSE(SteamHTTP()->GetHTTPResponseBodyData(request, nullptr, 21));

  const std::uint32_t empty = Create(kGet, "/empty");
  ASSERT_TRUE(Send(empty));
  EXPECT_TRUE(SteamHTTP()->GetHTTPResponseBodyData(empty, nullptr, 0));
}

TEST_F(StandInHttp, CountsItsHandles) {
  const std::uint32_t first = Create(kGet, "/text");
  EXPECT_EQ(Create(kGet, "/text"), first + 1);
  EXPECT_TRUE(SteamHTTP()->ReleaseHTTPRequest(first));
  EXPECT_EQ(Create(kGet, "/text"), first + 2);

  std::uint64_t call = 0;
  EXPECT_TRUE(SteamHTTP()->SendHTTPRequest(first + 1, nullptr));
  EXPECT_FALSE(SteamHTTP()->SendHTTPRequest(first + 1, &call));
  EXPECT_TRUE(SteamHTTP()->SendHTTPRequest(first + 2, &call));
  EXPECT_EQ(call, 2u);

  for (const std::uint32_t request : {0u, first, first + 3, 0xFFFFFFFFu}) {
    EXPECT_FALSE(Send(request));
    EXPECT_EQ(Body(request), "no size");
    EXPECT_FALSE(SteamHTTP()->ReleaseHTTPRequest(request));
  }
  EXPECT_EQ(SteamHTTP()->CreateHTTPRequest(kGet, nullptr), 0u);
  EXPECT_EQ(SteamHTTP()->CreateHTTPRequest(kGet, "ftp://127.0.0.1/"), 0u);
}

TEST_F(StandInHttp, HasAMostOfOpenRequests) {
  const std::uint32_t first = Create(kGet, "/text");
  for (std::uint32_t i = 1; i < 64; ++i) ASSERT_EQ(Create(kGet, "/text"), first + i);
  EXPECT_EQ(Create(kGet, "/text"), 0u);
  EXPECT_TRUE(SteamHTTP()->ReleaseHTTPRequest(first + 6));
  EXPECT_EQ(Create(kGet, "/text"), first + 64);
}

}  // namespace
}  // namespace launcher
