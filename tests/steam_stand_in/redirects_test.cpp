// Finds a redirect from https to http that is followed, and redirects that take more time than one
// request may. The exchanges are the test's, since no client trusts the https server of the tests.

#include <gtest/gtest.h>

#include "platform/win32.h"
#include "steam_stand_in/http_requests.h"

namespace launcher::stand_in {

static std::string target;
static std::vector<HttpLimits> limitsGiven;

// In place of the stand-in's own: always a redirect.
std::optional<HttpResponse> Exchange(const HttpRequest& /*request*/, const HttpLimits& limits) {
  limitsGiven.push_back(limits);
  Sleep(2);
  return HttpResponse{302, {}, "", target};
}

TEST(Redirects, KeepASecretAndTheTimeLimit) {
  constexpr std::uint64_t kShortMs = 10;  // less than eleven exchanges take
  const std::tuple<const char*, const char*, std::uint64_t, std::size_t> cases[] = {
      {"HTTPS://a/", "http://a/", 60'000, 1},
      {"https://a/", "https://b/", 60'000, 11},
      {"http://a/", "https://b/", 60'000, 11},
      {"http://a/", "http://b/", kShortMs, 5},
      {"http://a/", "http://b/", 0, 0}};
  for (const auto& [url, to, limitMs, count] : cases) {
    target = to;
    limitsGiven.clear();
    EXPECT_FALSE(Fetch({"GET", ParseUrl(url).value(), "", ""}, {59'990, limitMs, 7}));
    EXPECT_TRUE(limitMs == kShortMs ? limitsGiven.size() <= count : limitsGiven.size() == count);
    for (std::size_t i = 0; i < limitsGiven.size(); ++i) {
      EXPECT_LE(limitsGiven[i].requestMs, limitMs - 2 * i);
      EXPECT_EQ(limitsGiven[i].connectMs,
                std::min<std::uint64_t>(59'990, limitsGiven[i].requestMs));
      EXPECT_EQ(limitsGiven[i].bodySize, 7u);
    }
  }
}

}  // namespace launcher::stand_in
