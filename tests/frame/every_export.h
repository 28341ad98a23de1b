// Calls of the exports that can fail for reasons other than their arguments, with all their
// outcomes.

#ifndef LAUNCHER_TESTS_FRAME_EVERY_EXPORT_H_
#define LAUNCHER_TESTS_FRAME_EVERY_EXPORT_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "host/scripted_d3d9.h"
#include "steam/scripted_steam.h"

namespace launcher::test {

// The files of one of many callers in a directory.
struct Caller {
  explicit Caller(int number);

  // Creates the missing files.
  void Prepare() const;

  std::string file;
  std::string tree;
  std::string userFile;
};

// A result, and the contents of the outputs as text.
struct Outcome {
  std::int64_t result;
  char output[80] = "untouched";
};
bool operator==(const Outcome& one, const Outcome& other);
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

struct ExportCall {
  Outcome (*call)(const Caller& caller);  // takes no memory itself
  std::string name;
  Outcome success;
  std::vector<Outcome> failures;     // the other outcomes if a function fails
  std::vector<Outcome> outOfMemory;  // and if memory runs out
};

extern const std::vector<ExportCall> kEveryExport;

// Load the scripted Steam and Direct3D, which return successes and note no calls.
SteamScript& UseScriptedSteam();
Direct3DScript& UseScriptedDirect3D();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_FRAME_EVERY_EXPORT_H_
