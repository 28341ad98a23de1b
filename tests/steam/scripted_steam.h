// A Steam client library that returns what a test's script says, and notes its calls.
//
// It has the name of the real library. The test loads it before the first call of the library under
// test, which then finds it loaded.

#ifndef LAUNCHER_TESTS_STEAM_SCRIPTED_STEAM_H_
#define LAUNCHER_TESTS_STEAM_SCRIPTED_STEAM_H_

#include <cstdint>
#include <string>
#include <vector>

#include "support/faults.h"

namespace launcher::test {

struct SteamScript {
  bool hasInterfaces = true;
  bool succeeds = true;  // the result of each function that returns yes or no

  std::uint64_t steamId = 0;
  const char* folder = "";       // null: the call fails
  bool terminatesFolder = true;  // otherwise the whole buffer is filled
  std::vector<std::uint8_t> ticket;
  const char* personaName = "";
  const char* language = "";
  const char* languages = "";
  const char* fileName = "";
  std::int32_t number = 0;  // the bytes read, the size of a file, the count of files

  std::uint32_t contentLength = 0;
  std::vector<std::uint8_t> body;

  // A call that fails returns 0, false or null: those of this name, and those of the plan.
  const char* failing = "";
  FailurePlan failures;

  // True if threads call at the same time: then nothing below is kept.
  bool isShared = false;
  int openRequests = 0;

  // The calls in order, each with its arguments. Noting them takes memory.
  bool notesCalls = true;
  std::vector<std::string> calls;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_SCRIPTED_STEAM_H_
