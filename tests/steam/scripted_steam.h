// A Steam client library that answers what a test tells it to, and writes down what it is asked.
//
// It is a library of the true one's name, loaded by the test before the first call of the library
// under test, which then finds it there.

#ifndef LAUNCHER_TESTS_STEAM_SCRIPTED_STEAM_H_
#define LAUNCHER_TESTS_STEAM_SCRIPTED_STEAM_H_

#include <cstdint>
#include <string>
#include <vector>

#include "support/faults.h"

namespace launcher::test {

struct SteamScript {
  // Which interfaces there are.
  bool hasUser = true;
  bool hasFriends = true;
  bool hasApps = true;
  bool hasStorage = true;
  bool hasHttp = true;

  // What the yes-or-no functions answer.
  bool answer = true;

  std::uint64_t steamId = 0;
  const char* folder = "";       // null: Steam refuses; it is written as it is
  bool terminatesFolder = true;  // else the folder's buffer is filled to its capacity
  std::vector<std::uint8_t> ticket;
  std::uint32_t ticketHandle = 1;
  const char* personaName = "";
  const char* language = "";
  const char* languages = "";
  const char* fileName = "";
  std::int32_t number = 0;  // what is counted: bytes read, a size, files

  std::uint32_t request = 1;  // the handle, 0 on failure
  bool sends = true;
  bool hasContentLength = true;
  std::uint32_t contentLength = 0;
  bool hasBody = true;
  std::vector<std::uint8_t> body;

  // A call that fails answers 0, false or null.
  FailurePlan failures;

  // Where threads call at the same time, nothing below is kept.
  bool isShared = false;
  int openRequests = 0;

  // The calls, in order, each with its arguments. That takes memory.
  bool notesCalls = true;
  std::vector<std::string> calls;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_SCRIPTED_STEAM_H_
