// Finds a redirect that leads from https to http, keeps a body that it must drop, or never ends,
// and a URL that the system's client reads otherwise. The exchanges are the test's: a redirect from
// https needs a trusted server.

#include <gtest/gtest.h>

#include <chrono>
#include <deque>

#include "steam_stand_in/http_requests.h"

namespace launcher::stand_in {
namespace {

std::deque<HttpResponse> responses;  // the last one is given again and again
std::vector<std::string> requests;
std::vector<HttpLimits> limitsGiven;

}  // namespace

// In place of the one in the stand-in. Takes three milliseconds.
std::optional<HttpResponse> Exchange(const HttpRequest& request, const HttpLimits& limits) {
  requests.push_back(request.method + (' ' + request.url.text) + ' ' + request.contentType +
                     request.body);
  limitsGiven.push_back(limits);
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(3);
  while (Clock::now() < end) continue;
  HttpResponse response = responses.front();
  if (responses.size() > 1) responses.pop_front();
  return response;
}

namespace {

constexpr HttpLimits kLimits = {50'000, 60'000, 7};

// The requests that follow from a first one, and "none" if there is no response.
std::vector<std::string> Sent(const char* method, const char* url, int status,
                              const std::string& target) {
  responses = {{status, {}, "", target}, {200, {}, "", "http://unused.example/"}};
  requests.clear();
  limitsGiven.clear();
  const bool hasBody = AlwaysHasBody(method);
  if (!Fetch({method, ParseUrl(url).value(), hasBody ? "type " : "", hasBody ? "body" : ""},
             kLimits)) {
    requests.push_back("none");
  }
  return requests;
}

TEST(Redirects, ChangeTheMethodAsBrowsersDoAndKeepASecret) {
  struct Case {
    const char* method;
    const char* url;
    int status;
    const char* target;
    const char* second;
  };
  const char* const plain = "http://a/";
  const char* const secure = "https://a/";
  const Case cases[] = {
      {"GET", plain, 301, secure, "GET https://a/ "},
      {"GET", secure, 308, secure, "GET https://a/ "},
      {"GET", secure, 302, plain, "none"},
      {"GET", plain, 302, "ftp://a/", "none"},
      {"GET", plain, 302, "http://user@a/", "none"},
      {"GET", plain, 302, "", ""},
      {"POST", plain, 300, plain, ""},
      {"POST", plain, 304, plain, ""},
      {"POST", plain, 301, plain, "GET http://a/ "},
      {"POST", plain, 302, plain, "GET http://a/ "},
      {"POST", plain, 303, plain, "GET http://a/ "},
      {"POST", plain, 307, plain, "POST http://a/ type body"},
      {"POST", plain, 308, plain, "POST http://a/ type body"},
      {"PUT", plain, 301, plain, "PUT http://a/ type body"},
      {"PUT", plain, 302, plain, "PUT http://a/ type body"},
      {"PUT", plain, 303, plain, "GET http://a/ "},
      {"DELETE", plain, 303, plain, "GET http://a/ "},
      {"HEAD", plain, 303, plain, "HEAD http://a/ "},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.method) + each.url + std::to_string(each.status) + each.target);
    std::vector<std::string> sent = Sent(each.method, each.url, each.status, each.target);
    sent.erase(sent.begin());
    const std::vector<std::string> none;
    EXPECT_EQ(sent, *each.second == '\0' ? none : std::vector<std::string>{each.second});
  }
}

TEST(Redirects, AreTenAtMostWithinOneTimeLimit) {
  Sent("GET", "http://a/", 302, "http://a/");
  ASSERT_EQ(limitsGiven.size(), 2u);
  EXPECT_LE(limitsGiven[0].requestMs, 60'000u);
  EXPECT_EQ(limitsGiven[0].connectMs, 50'000u);
  EXPECT_LT(limitsGiven[1].requestMs, limitsGiven[0].requestMs);
  EXPECT_EQ(limitsGiven[1].bodySize, 7u);

  const HttpResponse redirect = {302, {}, "", "http://a/"};
  const HttpRequest request = {"GET", ParseUrl("http://a/").value(), "", ""};
  for (const std::size_t count : {10u, 11u}) {
    responses.assign(count, redirect);
    responses.push_back({200, {}, "", ""});
    requests.clear();
    EXPECT_EQ(Fetch(request, kLimits).has_value(), count == 10);
    EXPECT_EQ(requests.size(), 11u);
  }
  // The limit ends what the number does not.
  responses.assign(20, redirect);
  requests.clear();
  limitsGiven.clear();
  EXPECT_FALSE(Fetch(request, {50'000, 10, 7}).has_value());
  EXPECT_LT(requests.size(), 11u);
  EXPECT_LE(limitsGiven[0].connectMs, 10u);
  EXPECT_FALSE(Fetch(request, {1, 0, 7}).has_value());
}

TEST(ParseUrl, TakesHttpAndHttps) {
  struct Case {
    const char* text;
    const char* sent;
    bool isSecure;
    bool isLoopback;
  };
  const Case cases[] = {
      {"http://a.example?b/c@d", "http://a.example?b/c@d", false, false},
      {"HTTPS://a.example:8443/b~?c=d#e f", "HTTPS://a.example:8443/b~?c=d", true, false},
      {"http://LocalHost:80/", "http://LocalHost:80/", false, true},
      {"http://127.8.8.8", "http://127.8.8.8", false, true},
      {"http://[::1]:80/", "http://[::1]:80/", false, true},
      {"http://[::2]/", "http://[::2]/", false, false},
      {"http://1278.0.0.1/", "http://1278.0.0.1/", false, false},
      {"http://127.a.example/", "http://127.a.example/", false, false},
      {"http://localhost.example/", "http://localhost.example/", false, false},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.text);
    const std::optional<Url> url = ParseUrl(each.text);
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->text, each.sent);
    EXPECT_EQ(url->isSecure, each.isSecure);
    EXPECT_EQ(url->isLoopback, each.isLoopback);
  }
  for (const char* const text :
       {"", "a.example", "//a.example", "ftp://a.example", "http:/a.example", "xhttp://a.example",
        "http://", "http:///a", "http://:80/", "http://?a", "http://#a", "http://user@a.example/",
        " http://a.example", "http://a.example/b c", "http://a.example/\r\nHost: b",
        "http://a.example\\b", "http://a.example/\x7F", "http://a.example/\xC3\xA4"}) {
    EXPECT_FALSE(ParseUrl(text).has_value()) << text;
  }
}

}  // namespace
}  // namespace launcher::stand_in
