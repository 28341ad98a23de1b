// Finds a request that is not released, a body that is sent or read with another size, and a
// failure of Steam that counts as success.

#include "steam/scripted_test.h"
#include "support/captured_output.h"

#if defined(__linux__)
#include <stdio_ext.h>
#endif

namespace launcher {
namespace {

class HttpRequest : public test::ScriptedTest {
 protected:
  HttpRequest() { Respond("hello"); }

  void Respond(const std::string& body) {
    script_.body = test::BytesOf(body);
    script_.contentLength = static_cast<std::uint32_t>(body.size());
  }

  // What the request prints, or "result N" if the result is not 0.
  std::string Printed(std::int32_t method = 1, const char* contentType = nullptr,
                      const char* body = nullptr, std::uint32_t bodyLength = 0) {
    script_.calls.clear();
    ResultCode result = 1;
    const std::string printed = test::StandardOutputOf([&] {
      result = QX_SteamAPI_HTTPRequest("http://host/", method, contentType,
                                       reinterpret_cast<const std::uint8_t*>(body), bodyLength);
#if defined(__linux__)
      EXPECT_EQ(__fpending(stdout), 0u) << "not flushed";
#endif
    });
    EXPECT_EQ(script_.openRequests, 0);
    return result == 0 ? printed : printed + "result " + std::to_string(result);
  }
};

TEST_F(HttpRequest, PrintsTheResponse) {
  EXPECT_EQ(Printed(), "Response: hello\n");
  EXPECT_EQ(script_.calls, (Calls{"Create 1 http://host/", "Send 1 1",
                                  "GetHeaderSize 1 Content-Length", "GetBody 1 5", "Release 1"}));
  Respond("");
  EXPECT_EQ(Printed(), "Response: \n");
  Respond(std::string("%s\0after the NUL", 16));
  EXPECT_EQ(Printed(), "Response: %s\n");
}

TEST_F(HttpRequest, SendsABodyWithACompletePostOnly) {
  const std::tuple<std::int32_t, const char*, const char*, std::uint32_t, bool> cases[] = {
      {3, "text/plain", "data", 4, true},
      {3, nullptr, "data", 4, false},
      {3, "text/plain", nullptr, 4, false},
      {3, "text/plain", "data", 0, false},
      {4, "text/plain", "data", 4, false}};
  for (const auto& [method, contentType, body, bodyLength, isSent] : cases) {
    Printed(method, contentType, body, bodyLength);
    EXPECT_EQ(script_.calls[0], "Create " + std::to_string(method) + " http://host/");
    EXPECT_EQ(script_.calls[1] == "SetBody 1 text/plain data", isSent);
    EXPECT_EQ(script_.calls.size(), isSent ? 6u : 5u);
  }
}

TEST_F(HttpRequest, IsReleasedWhateverFails) {
  script_.succeeds = false;  // the results of setting a body and of a release are ignored
  EXPECT_EQ(Printed(3, "text/plain", "data", 4), "Response: hello\n");
  const std::pair<const char*, std::size_t> cases[] = {
      {"Create", 1}, {"Send", 3}, {"GetHeaderSize", 4}, {"GetBody", 5}};
  for (const auto& [failing, callCount] : cases) {
    script_.failing = failing;
    EXPECT_EQ(Printed(), "result -3");
    EXPECT_EQ(script_.calls.size(), callCount) << failing;
  }
  script_.failing = "";
  script_.contentLength = 0xFFFFFFFF;  // with the terminator more than 32 bits
  EXPECT_EQ(Printed(), "result -5");
}

TEST_F(HttpRequest, NeedsSteamAndThenAUrl) {
  EXPECT_EQ(QX_SteamAPI_HTTPRequest(nullptr, 1, nullptr, nullptr, 0), QX_BAD_ARGUMENT);
  script_.hasInterfaces = false;
  EXPECT_EQ(QX_SteamAPI_HTTPRequest(nullptr, 1, nullptr, nullptr, 0), QX_NO_STEAM);
  EXPECT_EQ(script_.calls, Calls{});
}

}  // namespace
}  // namespace launcher
