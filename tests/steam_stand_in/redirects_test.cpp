// Finds a redirect from https to http that is followed, and redirects that take more time than one
// request may. The exchanges are the test's, since no client trusts the https server of the tests.

#include <gtest/gtest.h>

#include "platform/win32.h"
#include "steam_stand_in/http_requests.h"

namespace launcher::stand_in {

static std::string target;
static int count = 0;
static HttpLimits last;

// In place of the stand-in's own: always a redirect.
std::optional<HttpResponse> Exchange(const HttpRequest& /*request*/, const HttpLimits& limits) {
  ++count;
  last = limits;
  Sleep(2);
  return HttpResponse{302, {}, "", target};
}

TEST(Redirects, KeepASecretAndTheTimeLimit) {
  const std::tuple<const char*, const char*, int> cases[] = {{"HTTPS://a/", "http://a/", 1},
                                                             {"https://a/", "https://b/", 11},
                                                             {"http://a/", "https://b/", 11}};
  for (const auto& [url, to, expected] : cases) {
    target = to;
    count = 0;
    EXPECT_FALSE(Fetch({"GET", ParseUrl(url).value(), "", ""}, {60'000, 60'000, 7}));
    EXPECT_EQ(count, expected);
  }
  EXPECT_LE(last.requestMs, 60'000u - 2 * 10);
  EXPECT_EQ(last.connectMs, last.requestMs);
  EXPECT_FALSE(Fetch({"GET", ParseUrl("http://a/").value(), "", ""}, {60'000, 0, 7}));
  EXPECT_EQ(count, 11) << "no time, no exchange";
}

}  // namespace launcher::stand_in
