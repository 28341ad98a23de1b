// A call of each export with good arguments, for tests that put all of them through the same.

#ifndef LAUNCHER_TESTS_FRAME_EVERY_EXPORT_H_
#define LAUNCHER_TESTS_FRAME_EVERY_EXPORT_H_

#include <cstdint>
#include <vector>

#include "host/scripted_d3d9.h"
#include "steam/scripted_steam.h"

namespace launcher::test {

// One of many callers in a directory: the files that it has to itself, by names that are made
// ahead, since a call may find no memory.
struct Caller {
  explicit Caller(int number);

  // Puts the files there that the calls need and that are missing.
  void Prepare() const;

  char file[24];
  char tree[24];
  char userFile[24];
};

// In place of a result whose outputs are others than those of a success.
inline constexpr std::int64_t kOtherOutput = 100;

struct ExportCall {
  const char* name;
  // Answers the export's result, and checks what it left in its outputs. Takes no memory itself.
  std::int64_t (*call)(const Caller& caller);
  std::int64_t success;
  std::vector<std::int64_t> failures;     // what else it may answer when what it calls fails
  std::vector<std::int64_t> outOfMemory;  // and when memory runs out
  bool usesFiles = false;                 // those of its caller
  bool isShared = true;                   // may run in several threads at once
};

const std::vector<ExportCall>& EveryExport();

// Loads the scripted Steam and Direct3D, which then answer every call, and note none. Steam is
// linked to.
SteamScript& UseScriptedSteam();
Direct3DScript& UseScriptedDirect3D();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_FRAME_EVERY_EXPORT_H_
