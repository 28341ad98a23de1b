// The work on one file.

#ifndef LAUNCHER_TOOLS_BFBR_CONTAINER_FILE_H_
#define LAUNCHER_TOOLS_BFBR_CONTAINER_FILE_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bfbr/options.h"

namespace launcher {

using Key = std::vector<std::uint8_t>;

// The check that failed, or another reason; documented as `reason` of the JSON objects.
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

// The result of the work on one file.
struct Outcome {
  std::string file;
  Reason reason = Reason::kNone;
  std::string message;  // what is wrong: what to do
  std::string place;    // the file that this is about, if not `file`
  SystemError error = 0;
  std::vector<std::string> warnings;
  std::optional<std::uint64_t> containerSize;
  std::optional<std::uint64_t> payloadSize;
  std::optional<std::uint64_t> repeatedBlocks;
  std::optional<bool> hasMarker;
  std::optional<bool> isFillerZero;
  std::optional<std::string> sha256;  // in hexadecimal digits
  std::uint64_t readSize = 0;
  std::uint64_t writtenSize = 0;
};

inline constexpr char kExists[] = "exists already: name another, or replace it with --force";

// 1234567 as "1,234,567".
std::string Grouped(std::uint64_t number);

// The progress. A byte counts three times: when it is read, when the library has processed it, and
// when it is written.
using Steps = std::atomic<std::uint64_t>;

// Runs a command on one file after the other, and keeps its buffer for the next file.
class FileWorker {
 public:
  FileWorker(const Options& options, const Key& key, Steps* steps);

  Outcome Work(const Item& item);

 private:
  void Read(const std::string& name, std::size_t offset, std::uint64_t limit);
  void Reserve(std::uint64_t capacity);
  void Encode(Outcome* outcome);
  void Decode(Outcome* outcome);
  void Mark(Outcome* outcome);
  void Write(const Item& item);
  [[noreturn]] void FailForContent() const;
  bool HasMarkerAt(const std::uint8_t* payload, std::size_t size) const;

  struct Free {
    void operator()(std::uint8_t* block) const { std::free(block); }
  };

  const Options& options_;
  const Key& key_;
  Steps* const steps_;
  std::array<std::uint8_t, 22> marker_ = {};
  // Not a vector, which would set its memory to zero before the file is read into it.
  std::unique_ptr<std::uint8_t, Free> buffer_;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;  // of what has been read
  const std::uint8_t* result_ = nullptr;
  std::size_t resultSize_ = 0;
};

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_CONTAINER_FILE_H_
