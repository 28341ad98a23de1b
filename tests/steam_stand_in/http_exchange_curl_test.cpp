// What libcurl does and not every WinHTTP can.

#include <cstdlib>
#include <string>

#include "steam_stand_in/stand_in_test.h"

namespace launcher {
namespace {

class StandInLibcurl : public test::StandInTest {
 protected:
  StandInLibcurl() { Start("{}"); }

  static std::uint32_t Get(const std::string& path) {
    const char* const port = std::getenv("TEST_HTTP_PORT");
    if (port == nullptr) ADD_FAILURE() << "no server: run this program by with_http_server.sh";
    const std::string url =
        std::string("http://127.0.0.1:") + (port == nullptr ? "1" : port) + path;
    return SteamHTTP()->CreateHTTPRequest(1, url.c_str());
  }
};

// The server compresses for those who ask for it; that the body is right is told in
// http_requests_test.cpp.
TEST_F(StandInLibcurl, AsksForCompressedBodies) {
  const std::uint32_t request = Get("/gzip");
  ASSERT_TRUE(SteamHTTP()->SendHTTPRequest(request, nullptr));
  std::uint32_t size = 0;
  EXPECT_TRUE(SteamHTTP()->GetHTTPResponseHeaderSize(request, "Content-Encoding", &size));
  EXPECT_EQ(size, 4u);
}

// Wine's WinHTTP takes such a body for whole.
TEST_F(StandInLibcurl, MissesTheLastChunk) {
  EXPECT_FALSE(SteamHTTP()->SendHTTPRequest(Get("/chunked-cut"), nullptr));
}

}  // namespace
}  // namespace launcher
