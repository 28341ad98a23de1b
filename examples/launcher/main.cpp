// An example launcher: reads its texts and settings, signs and enciphers the data of a session,
// starts the client with it, waits, and checks that the client received exactly these data.
//
//   example_launcher CLIENT
//
// Exit status: 0 if the client received the data, 1 for a failure, 2 for a wrong call.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "launch_data.h"
#include "launcher_dll.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

void Say(const std::string& text) {
  std::printf("launcher: %s\n", text.c_str());
  std::fflush(stdout);
}

bool ReadTextsAndSettings() {
  SystemInformation library;
  if (QX_GetSystemInformation(&library, sizeof library) != QX_SUCCEEDED) return false;
  char apiServer[256];
  char startSteam[256];
  if (QX_LoadString(1001, apiServer, sizeof apiServer) != QX_SUCCEEDED) return false;
  if (QX_LoadString(10196, startSteam, sizeof startSteam) != QX_SUCCEEDED) return false;

  Say(std::string("library by \"") + library.vendorName + "\", build \"" + library.buildName + '"');
  Say(std::string("setting Api_server is ") + apiServer);
  Say(std::string("text 10196 is \"") + startSteam + '"');
  return true;
}

// A session's data: some text, then every value of a byte, including 0.
Bytes SessionData() {
  const std::string text = "player=Ada;server=3;";
  Bytes data(text.begin(), text.end());
  for (int value = 0; value < 256; ++value) data.push_back(static_cast<std::uint8_t>(value));
  return data;
}

// Signs and enciphers the data, and puts the container's size in front. Returns an empty block on
// failure.
Bytes MakeBlock(const Bytes& data) {
  Bytes payload(QX_GetSignatureSize() + data.size());
  const auto payloadSize = static_cast<std::uint32_t>(payload.size());
  if (QX_SignSignature(payload.data(), payloadSize, data.data(),
                       static_cast<std::uint32_t>(data.size())) == 0) {
    return {};
  }

  const BlockHeader header = {QX_GetEncodeDataSize(payloadSize)};
  Bytes block(sizeof header + header.containerSize);
  std::memcpy(block.data(), &header, sizeof header);
  if (QX_Encode(block.data() + sizeof header, payload.data(),
                static_cast<std::int32_t>(payloadSize)) != QX_SUCCEEDED) {
    return {};
  }
  Say("signed and enciphered " + std::to_string(data.size()) + " bytes of data: a container of " +
      std::to_string(header.containerSize) + " bytes");
  return block;
}

void ShowClientLog() {
  std::ifstream log(kClientLogPath);
  for (std::string line; std::getline(log, line);) std::printf("client:   %s\n", line.c_str());
}

int Fail(const char* step) {
  std::fprintf(stderr, "launcher: failed: %s\n", step);
  return 1;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fprintf(stderr, "usage: example_launcher CLIENT\n");
    return 2;
  }
  // Files of an earlier run must not look like those of this run.
  std::remove(kReceivedPath);
  std::remove(kClientLogPath);

  if (!ReadTextsAndSettings()) {
    QX_IsStaging();  // prints why the settings do not load
    return Fail("reading texts and settings");
  }
  const Bytes data = SessionData();
  const Bytes block = MakeBlock(data);
  if (block.empty()) return Fail("signing and enciphering");

  Say(std::string("starting ") + arguments[1]);
  if (QX_CreateProcess(arguments[1], block.data(), static_cast<std::uint32_t>(block.size())) !=
      QX_SUCCEEDED) {
    return Fail("starting the client");
  }
  ShowClientLog();
  Say("the client has ended");

  std::ifstream file(kReceivedPath, std::ios::binary);
  const Bytes received{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (received != data) return Fail("the client got other data");
  Say("the client got the same " + std::to_string(received.size()) + " bytes");
  return 0;
}
