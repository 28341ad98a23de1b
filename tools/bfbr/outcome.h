// What became of one file.

#ifndef LAUNCHER_TOOLS_BFBR_OUTCOME_H_
#define LAUNCHER_TOOLS_BFBR_OUTCOME_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bfbr/options.h"

namespace launcher {

// The test that failed, or what else went wrong; documented as `reason` of the JSON objects.
enum class Reason {
  kNone,
  kSize,
  kMagic,
  kLength,
  kDigest,
  kMarker,
  kRead,
  kWrite,
  kExists,
  kMemory,
  kInternal,
  kInterrupted,
};

const char* ReasonText(Reason reason);
int ExitCodeFor(Reason reason);

struct Outcome {
  std::string file;
  Reason reason = Reason::kNone;
  std::string message;  // what is wrong: what to do
  std::string place;    // the file that this is about, if not `file`
  std::vector<std::string> warnings;
  std::optional<std::uint64_t> containerSize;
  std::optional<std::uint64_t> payloadSize;
  std::optional<std::uint64_t> repeatedBlocks;
  std::optional<bool> hasMarker;
  std::optional<bool> isFillerZero;
  std::string sha256;  // in hexadecimal digits
};

inline constexpr char kIsThere[] = "is there already: name another, or replace it with --force";

// What texts for people call the file.
std::string ShownName(const Outcome& outcome);

// One line, without its end.
std::string JsonOf(const Outcome& outcome);

// What `verify` and `inspect` print of a file that is fine, with line ends.
std::string TextOf(const Outcome& outcome, Command command);

// 1234567 as "1,234,567".
std::string Grouped(std::uint64_t number);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_OUTCOME_H_
