#include "bfbr/container_file.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "bfbr/repeated_blocks.h"
#include "launcher_dll.h"
#include "support/interrupt.h"
#include "support/output_file.h"
#include "support/quiet_library.h"

namespace launcher {
namespace {

constexpr StringLabel kKeyLabel = 11000;

constexpr std::size_t kRegionOffset = 4;
constexpr std::size_t kDigestOffset = 8;
constexpr std::size_t kDigestSize = 32;
constexpr std::size_t kPayloadOffset = 40;
constexpr std::size_t kSmallestContainer = 44;

constexpr std::uint64_t kLargestPayload = 0x7FFFFFFF;
constexpr std::uint64_t kLargestContainer = 0x8000002C;
constexpr std::uint64_t kLargestForKeyedDecoder = 1048575;

// Between two of these an interrupt is noticed and the progress moves.
constexpr std::size_t kPiece = 8u << 20;

// Ends the work on a file.
struct Failure {
  Reason reason;
  std::string text;
  std::string place;  // the file that it is about, if not the one read
};

[[noreturn]] void Fail(Reason reason, const std::string& text) { throw Failure{reason, text, {}}; }

[[noreturn]] void FailForMemory(std::uint64_t size) {
  Fail(Reason::kMemory, "memory: " + Grouped(size) +
                            " bytes are not to be had: close other programs or lower --jobs");
}

void EndIfInterrupted() {
  if (Interrupted()) Fail(Reason::kInterrupted, "interrupted: run the command again");
}

// Adds the time it lives.
class Clock {
 public:
  explicit Clock(double* seconds) : seconds_(seconds) {}
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  ~Clock() {
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
    *seconds_ += time.count();
  }

 private:
  double* seconds_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

std::uint32_t LittleEndian32(const std::uint8_t* bytes) {
  return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

std::string HexDigits(const std::uint8_t* bytes, std::size_t size) {
  std::string digits;
  for (std::size_t i = 0; i < size; ++i) {
    digits += "0123456789abcdef"[bytes[i] >> 4];
    digits += "0123456789abcdef"[bytes[i] & 15];
  }
  return digits;
}

[[noreturn]] void FailToWrite(const std::string& place, SystemError error) {
  if (MeansThatItExists(error)) throw Failure{Reason::kExists, kIsThere, place};
  throw Failure{Reason::kWrite,
                "cannot be written: " + SystemErrorText(error) +
                    (MeansThatTheDiskIsFull(error) ? ": make room; nothing of it was left behind"
                                                   : ": check that it may be written there"),
                place};
}

// Tells which of the library's tests a deciphered container failed.
[[noreturn]] void FailForContent(const std::uint8_t* container, std::size_t size) {
  const std::uint64_t length = LittleEndian32(container + kRegionOffset);
  const std::uint64_t most = size - kPayloadOffset;
  const std::uint64_t least = most > 7 ? most - 7 : 0;
  if (length < least || length > most) {
    Fail(Reason::kLength, "length field: says " + Grouped(length) + " bytes where " +
                              Grouped(least) + " to " + Grouped(most) +
                              " fit: the key is another one, or the file is damaged or cut short; "
                              "check the key, or get the file again");
  }
  Fail(
      Reason::kDigest,
      "digest: the payload is not what went into the container: the file is damaged; get it again");
}

}  // namespace

SystemError BuiltInKey(Key* key) {
  char text[57] = "";
  ResultCode result = QX_FAILED;
  const SystemError error =
      RunQuietly([&] { result = QX_LoadString(kKeyLabel, text, sizeof text); });
  if (error == 0 && result == QX_SUCCEEDED) *key = text;
  return error;
}

FileWorker::FileWorker(const Options& options, const Key& key, Advance* advance)
    : options_(options), key_(key), advance_(advance) {
  // Without data behind it, the marker itself.
  QX_SignSignature(marker_.data(), static_cast<std::uint32_t>(marker_.size()), marker_.data(), 0);
}

Outcome FileWorker::Work(const std::string& file) {
  Outcome outcome;
  try {
    outcome.file = file;
    WorkOn(file, &outcome);
  } catch (const Failure& failure) {
    outcome.reason = failure.reason;
    outcome.message = failure.text;
    outcome.place = failure.place;
  } catch (const std::bad_alloc&) {
    outcome.reason = Reason::kMemory;
    outcome.message = "memory: ran out: close other programs or lower --jobs";
  }
  return outcome;
}

void FileWorker::WorkOn(const std::string& file, Outcome* outcome) {
  EndIfInterrupted();
  const std::string path = OutputPath(file);
  if (!path.empty() && !options_.replaces && HasFileAt(path)) {
    throw Failure{Reason::kExists, kIsThere, path};
  }

  InputFile input;
  Open(&input, file);

  switch (options_.command) {
    case Command::kEncode:
      Read(&input, file, kPayloadOffset, kLargestPayload);
      Encode(outcome);
      break;
    case Command::kMark:
      Read(&input, file, marker_.size(), kLargestPayload - marker_.size());
      Mark(outcome);
      break;
    default:
      Read(&input, file, 0, kLargestContainer);
      Decode(outcome);
      break;
  }
  advance_->steps += size_;
  if (options_.MakesFiles()) Write(path);
}

void FileWorker::Open(InputFile* input, const std::string& file) {
  const Clock clock(&times_.reading);
  if (file == "-") {
    input->OpenStandardInput();
  } else if (const SystemError error = input->Open(file); error != 0) {
    Fail(Reason::kRead, "cannot be opened: " + SystemErrorText(error) +
                            ": check the name and that you may read it");
  }
  if (input->IsDirectory()) Fail(Reason::kRead, "is a directory: name the files in it");
}

void FileWorker::Read(InputFile* input, const std::string& file, std::size_t offset,
                      std::uint64_t limit) {
  const Clock clock(&times_.reading);
  const std::uint64_t expected = input->Size().value_or(0);
  const auto failForSize = [&] {
    Fail(Reason::kSize, "size: more than " + Grouped(limit) +
                            " bytes, the most that the format allows here: split the data");
  };
  if (expected > limit) failForSize();
  // Room for the filler too, and for one byte more than expected, which tells the end.
  constexpr std::size_t kBehind = 16;
  constexpr std::size_t kLeast = 1u << 16;
  const std::uint64_t wanted = std::max<std::uint64_t>(offset + expected + kBehind, kLeast);
  // A large one's memory goes before the next takes its own.
  constexpr std::size_t kLarge = 64u << 20;
  if (wanted > buffer_.Capacity() && buffer_.Capacity() > kLarge) buffer_.Release();
  if (wanted > SIZE_MAX / 2 + kLeast * 2 || !buffer_.Reserve(static_cast<std::size_t>(wanted))) {
    FailForMemory(wanted);
  }
  size_ = 0;
  for (;;) {
    EndIfInterrupted();
    std::size_t room = buffer_.Capacity() - offset - size_ - (kBehind - 1);
    if (room == 0) {
      // A pipe, or a file that grows.
      const std::uint64_t larger =
          std::min<std::uint64_t>(std::uint64_t{buffer_.Capacity()} * 2, offset + limit + kBehind);
      if (larger <= buffer_.Capacity()) failForSize();
      if (!buffer_.Reserve(static_cast<std::size_t>(larger))) FailForMemory(larger);
      continue;
    }
    room = std::min(room, kPiece);
    std::size_t count = 0;
    const SystemError error = input->Read(buffer_.Data() + offset + size_, room, &count);
    if (error != 0) {
      Fail(Reason::kRead, "cannot be read: " + SystemErrorText(error) +
                              (file == "-" ? ": check what the input comes from"
                                           : ": check the disk, or get the file again"));
    }
    if (count == 0) break;
    size_ += count;
    if (size_ > limit) failForSize();
    bytesRead_ += count;
    advance_->steps += count;
  }
}

void FileWorker::Encode(Outcome* outcome) {
  if (size_ == 0) {
    Fail(Reason::kSize, "size: it is empty: a container needs at least one byte");
  }
  const auto payloadSize = static_cast<std::uint32_t>(size_);
  const std::uint32_t containerSize = file_cipher_get_encode_size(payloadSize);
  std::uint8_t* const container = buffer_.Data();
  outcome->payloadSize = size_;
  outcome->containerSize = containerSize;
  outcome->hasMarker = HasMarkerAt(container + kPayloadOffset, size_);
  {
    const Clock clock(&times_.library);
    if (file_cipher_encode(container + kPayloadOffset, payloadSize, container) !=
        QX_CIPHER_SUCCEEDED) {
      Fail(Reason::kInternal,
           "internal: the library made no container: run bfbr bench, and report it");
    }
  }
  if (containerSize > kLargestForKeyedDecoder) {
    outcome->warnings.push_back("warning: the container has " + Grouped(containerSize) +
                                " bytes, and QX_Decode refuses more than " +
                                Grouped(kLargestForKeyedDecoder) +
                                ": have it read by file_cipher_decode");
  }
  if (!key_.empty()) {
    // The digest, out of the head alone: deciphering a part gives that part.
    std::uint8_t head[kSmallestContainer];
    std::memcpy(head, container, sizeof head);
    std::uint32_t ignored = 0;
    file_cipher_decode(head, sizeof head, reinterpret_cast<const std::uint8_t*>(key_.data()),
                       static_cast<std::int32_t>(key_.size()), &ignored, &ignored, nullptr);
    outcome->sha256 = HexDigits(head + kDigestOffset, kDigestSize);
  }
  result_ = container;
  resultSize_ = containerSize;
}

void FileWorker::Decode(Outcome* outcome) {
  std::uint8_t* const container = buffer_.Data();
  outcome->containerSize = size_;
  const bool hasMagic = size_ >= 4 && std::memcmp(container, "BFBR", 4) == 0;
  const std::string noMagic =
      "it does not begin with BFBR: it is no container; check that it is the right file";
  if (size_ < kSmallestContainer || size_ % 8 != 4) {
    Fail(Reason::kSize,
         "size: " + Grouped(size_) +
             " bytes are no container's size, which is 44 or more and leaves 4 when divided by 8" +
             (hasMagic ? ": it may be cut short; get the file again" : ", and " + noMagic));
  }
  if (!hasMagic) Fail(Reason::kMagic, "magic: " + noMagic);
  std::uint32_t payloadSize = 0;
  std::uint32_t payloadOffset = 0;
  {
    const Clock clock(&times_.library);
    if (file_cipher_decode(container, static_cast<std::uint32_t>(size_),
                           reinterpret_cast<const std::uint8_t*>(key_.data()),
                           static_cast<std::int32_t>(key_.size()), &payloadSize, &payloadOffset,
                           nullptr) != QX_CIPHER_SUCCEEDED) {
      FailForContent(container, size_);
    }
  }
  const std::uint8_t* const payload = container + payloadOffset;
  outcome->payloadSize = payloadSize;
  outcome->sha256 = HexDigits(container + kDigestOffset, kDigestSize);
  outcome->hasMarker = HasMarkerAt(payload, payloadSize);
  outcome->isFillerZero = std::all_of(payload + payloadSize, payload + (size_ - payloadOffset),
                                      [](std::uint8_t byte) { return byte == 0; });
  if (options_.marker == Marker::kRequire && !*outcome->hasMarker) {
    Fail(Reason::kMarker,
         "marker: the payload does not begin with the signature marker: mark the data before they "
         "are encoded, or take --marker=keep");
  }
  const bool drops = options_.marker != Marker::kKeep && *outcome->hasMarker;
  const std::size_t skipped = drops ? marker_.size() : 0;
  result_ = payload + skipped;
  resultSize_ = payloadSize - skipped;
  if (options_.command == Command::kInspect) {
    const Clock clock(&times_.counting);
    outcome->repeatedBlocks = CountRepeatedBlocks(container + kRegionOffset, size_ / 8);
  }
}

void FileWorker::Mark(Outcome* outcome) {
  std::uint8_t* const marked = buffer_.Data();
  std::uint8_t* const data = marked + marker_.size();
  if (HasMarkerAt(data, size_)) {
    outcome->warnings.emplace_back(
        "warning: the data have the marker already and now have two: check the step before");
  }
  const auto dataSize = static_cast<std::uint32_t>(size_);
  const auto markedSize = static_cast<std::uint32_t>(size_ + marker_.size());
  const Clock clock(&times_.library);
  if ((QX_SignSignature(marked, markedSize, data, dataSize) & 0xFF) != 1) {
    Fail(Reason::kInternal, "internal: the library set no marker: run bfbr bench, and report it");
  }
  outcome->payloadSize = markedSize;
  outcome->hasMarker = true;
  result_ = marked;
  resultSize_ = markedSize;
}

void FileWorker::Write(const std::string& path) {
  const Clock clock(&times_.writing);
  OutputFile output;
  if (!path.empty()) {
    if (const SystemError error = output.Open(path); error != 0) FailToWrite(path, error);
  }
  for (std::size_t done = 0; done < resultSize_;) {
    EndIfInterrupted();
    const std::size_t size = std::min(kPiece, resultSize_ - done);
    const SystemError error = path.empty() ? WriteToStandardOutput(result_ + done, size)
                                           : output.Write(result_ + done, size);
    if (error != 0) FailToWrite(path.empty() ? "standard output" : path, error);
    done += size;
    advance_->steps += size;
  }
  if (path.empty()) return;
  EndIfInterrupted();
  const auto existing =
      options_.replaces ? NewFile::Existing::kReplaced : NewFile::Existing::kStays;
  if (const SystemError error = output.Commit(existing, options_.isSafe); error != 0) {
    FailToWrite(path, error);
  }
}

// Empty for the standard output, and where no file is made.
std::string FileWorker::OutputPath(const std::string& file) const {
  if (!options_.MakesFiles() || options_.WritesDataToOutput()) return "";
  return options_.outputDirectory.empty() ? options_.output
                                          : PathIn(options_.outputDirectory, FileNameOf(file));
}

bool FileWorker::HasMarkerAt(const std::uint8_t* payload, std::size_t size) const {
  return size >= marker_.size() && std::equal(marker_.begin(), marker_.end(), payload);
}

}  // namespace launcher
