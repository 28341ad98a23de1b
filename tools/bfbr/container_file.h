// The work on one file.

#ifndef LAUNCHER_TOOLS_BFBR_CONTAINER_FILE_H_
#define LAUNCHER_TOOLS_BFBR_CONTAINER_FILE_H_

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "bfbr/buffer.h"
#include "bfbr/options.h"
#include "bfbr/outcome.h"
#include "support/input_file.h"

namespace launcher {

using Key = std::string;

// The text of label 11000, by a lookup that nobody sees. Not beside other threads.
SystemError BuiltInKey(Key* key);

// How far the work is. A byte counts three times: when read, when the library is through with it
// and when written or looked at.
struct Advance {
  std::atomic<std::uint64_t> steps{0};
  static constexpr std::uint64_t kStepsPerByte = 3;
};

// Seconds spent, of one worker or of all.
struct Times {
  double reading = 0;
  double library = 0;
  double writing = 0;
  double counting = 0;
};

// Does a command with one file after the other, in memory that it keeps for the next.
class FileWorker {
 public:
  FileWorker(const Options& options, const Key& key, Advance* advance);

  Outcome Work(const std::string& file);

  const Times& TimesSpent() const { return times_; }
  std::uint64_t BytesRead() const { return bytesRead_; }

 private:
  void WorkOn(const std::string& file, Outcome* outcome);
  void Open(InputFile* input, const std::string& file);
  void Read(InputFile* input, const std::string& file, std::size_t offset, std::uint64_t limit);
  void Encode(Outcome* outcome);
  void Decode(Outcome* outcome);
  void Mark(Outcome* outcome);
  void Write(const std::string& file);
  std::string OutputPath(const std::string& file) const;
  bool HasMarkerAt(const std::uint8_t* payload, std::size_t size) const;

  const Options& options_;
  const Key& key_;
  Advance* const advance_;
  std::array<std::uint8_t, 22> marker_ = {};
  Buffer buffer_;
  std::size_t size_ = 0;  // what has been read
  const std::uint8_t* result_ = nullptr;
  std::size_t resultSize_ = 0;
  Times times_;
  std::uint64_t bytesRead_ = 0;
};

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_CONTAINER_FILE_H_
