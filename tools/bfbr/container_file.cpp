#include "bfbr/container_file.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "launcher_dll.h"
#include "support/process.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRegionOffset = 4;
constexpr std::size_t kDigestOffset = 8;
constexpr std::size_t kDigestSize = 32;
constexpr std::size_t kPayloadOffset = 40;
constexpr std::size_t kSmallestContainer = 44;

constexpr std::uint64_t kLargestPayload = 0x7FFFFFFF;
constexpr std::uint64_t kLargestContainer = 0x8000002C;  // that of the largest payload
constexpr std::uint64_t kLargestForKeyedDecoder = 1048575;

// Files are read and written in pieces. Between two pieces the worker checks for an interrupt.
constexpr std::size_t kPiece = 8u << 20;

// Thrown to end the work on a file.
struct Failure {
  Reason reason;
  std::string text;
  std::string place;  // the file that it is about, if not the one read
  SystemError error = 0;
};

[[noreturn]] void Fail(Reason reason, const std::string& text) { throw Failure{reason, text, {}}; }

void EndIfInterrupted() {
  if (Interrupted()) Fail(Reason::kInterrupted, "interrupted: run the command again");
}

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

[[noreturn]] void FailToWrite(const std::string& path, SystemError error) {
  if (!path.empty() && MeansThatItExists(error)) throw Failure{Reason::kExists, kExists, path};
  const char* const advice = !MeansFullDisk(error) ? "check that you may write there"
                             : path.empty()        ? "make room; what was written is not whole"
                                                   : "make room; nothing of it was left";
  throw Failure{Reason::kWrite, "cannot be written: " + SystemErrorText(error) + ": " + advice,
                path.empty() ? "standard output" : path, error};
}

// Counts the 8-byte blocks that are equal to an earlier one, and sorts the blocks. Deciphered
// blocks give the same count as enciphered ones: equal blocks stay equal.
std::uint64_t CountRepeatedBlocks(std::uint8_t* bytes, std::size_t count) {
  using Block = std::array<std::uint8_t, 8>;
  const auto number = [](const Block& block) {
    std::uint64_t result = 0;
    std::memcpy(&result, block.data(), sizeof result);
    return result;
  };
  auto* const blocks = reinterpret_cast<Block*>(bytes);
  std::sort(blocks, blocks + count,
            [&](const Block& a, const Block& b) { return number(a) < number(b); });
  return count - static_cast<std::size_t>(std::unique(blocks, blocks + count) - blocks);
}

}  // namespace

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t place = text.size(); place > 3;) text.insert(place -= 3, ",");
  return text;
}

FileWorker::FileWorker(const Options& options, const Key& key, Steps* steps)
    : options_(options), key_(key), steps_(steps) {
  // Signing no data gives the marker alone.
  QX_SignSignature(marker_.data(), static_cast<std::uint32_t>(marker_.size()), marker_.data(), 0);
}

Outcome FileWorker::Work(const Item& item) {
  Outcome outcome;
  try {
    outcome.file = item.name;
    EndIfInterrupted();
    std::error_code ignored;
    if (!options_.isRecursive && item.name != "-" &&
        fs::is_directory(InputPath(item.name), ignored)) {
      Fail(Reason::kRead, "is a folder: add -r to take the files in it");
    }
    if (!item.output.empty() && !options_.replaces && HasFileAt(item.output)) {
      throw Failure{Reason::kExists, kExists, item.output};
    }
    switch (options_.command) {
      case Command::kEncode:
        Read(item.name, kPayloadOffset, kLargestPayload);
        Encode(&outcome);
        break;
      case Command::kMark:
        Read(item.name, marker_.size(), kLargestPayload - marker_.size());
        Mark(&outcome);
        break;
      default:
        Read(item.name, 0, kLargestContainer);
        Decode(&outcome);
        break;
    }
    *steps_ += size_;
    outcome.readSize = size_;
    if (!options_.MakesFiles()) return outcome;
    Write(item);
    outcome.writtenSize = resultSize_;
  } catch (const Failure& failure) {
    outcome.reason = failure.reason;
    outcome.message = failure.text;
    outcome.place = failure.place;
    outcome.error = failure.error;
  } catch (const std::bad_alloc&) {
    outcome.reason = Reason::kMemory;
    outcome.message = "memory: ran out: close other programs or lower --jobs";
  }
  return outcome;
}

// Enlarges the buffer to `capacity` bytes and keeps its content.
void FileWorker::Reserve(std::uint64_t capacity) {
  if (capacity <= capacity_) return;
  auto* const block = static_cast<std::uint8_t*>(
      capacity > SIZE_MAX ? nullptr
                          : std::realloc(buffer_.get(), static_cast<std::size_t>(capacity)));
  if (block == nullptr) {
    Fail(Reason::kMemory, "memory: " + Grouped(capacity) +
                              " bytes are not available: close other programs or lower --jobs");
  }
  static_cast<void>(buffer_.release());
  buffer_.reset(block);
  capacity_ = static_cast<std::size_t>(capacity);
}

void FileWorker::Read(const std::string& name, std::size_t offset, std::uint64_t limit) {
  const OwnedStream file = OpenInput(name);
  if (!file) {
    Fail(Reason::kRead, "cannot be opened: " + SystemErrorText(LastFileError()) +
                            ": check the name and that you may read it");
  }
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  const std::uint64_t expected = SizeOf(name).value_or(0);
  // Room for the filler, and for one byte more than expected: reading it shows where the file ends.
  constexpr std::size_t kRest = 16;
  constexpr std::size_t kLeast = 1u << 16;
  const auto capacityFor = [&](std::uint64_t size) {
    if (size > limit) {
      Fail(Reason::kSize, "size: more than " + Grouped(limit) +
                              " bytes, the most that the format allows here: split the data");
    }
    return std::max<std::uint64_t>(offset + size + kRest, kLeast);
  };
  // Frees a large buffer before it allocates a larger one, since realloc can need both at once.
  constexpr std::size_t kLarge = 64u << 20;
  if (capacityFor(expected) > capacity_ && capacity_ > kLarge) {
    buffer_.reset();
    capacity_ = 0;
  }
  Reserve(capacityFor(expected));
  for (size_ = 0;;) {
    EndIfInterrupted();
    if (capacity_ - offset - size_ < kRest) {
      // A pipe, or a file that grows.
      Reserve(capacityFor(std::min<std::uint64_t>(std::uint64_t{size_} * 2, limit)));
    }
    const std::size_t room = std::min(capacity_ - offset - size_ - (kRest - 1), kPiece);
    const std::size_t count = std::fread(buffer_.get() + offset + size_, 1, room, file.get());
    if (count < room && std::ferror(file.get()) != 0) {
      Fail(Reason::kRead, "cannot be read: " + SystemErrorText(LastFileError()) +
                              (name == "-" ? ": check what the input comes from"
                                           : ": check the disk, or get the file again"));
    }
    size_ += count;
    *steps_ += count;
    capacityFor(size_);  // fails if the file has become too large
    if (count < room) return;
  }
}

void FileWorker::Encode(Outcome* outcome) {
  if (size_ == 0) {
    Fail(Reason::kSize, "size: it is empty: a container needs at least one byte");
  }
  const auto payloadSize = static_cast<std::uint32_t>(size_);
  const std::uint32_t containerSize = file_cipher_get_encode_size(payloadSize);
  std::uint8_t* const container = buffer_.get();
  outcome->payloadSize = size_;
  outcome->containerSize = containerSize;
  outcome->hasMarker = HasMarkerAt(container + kPayloadOffset, size_);
  if (file_cipher_encode(container + kPayloadOffset, payloadSize, container) !=
      QX_CIPHER_SUCCEEDED) {
    Fail(Reason::kInternal, "internal: the library made no container: run doctor, and report it");
  }
  if (containerSize > kLargestForKeyedDecoder) {
    outcome->warnings.push_back("warning: the container has " + Grouped(containerSize) +
                                " bytes, and QX_Decode refuses more than " +
                                Grouped(kLargestForKeyedDecoder) +
                                ": have it read by file_cipher_decode");
  }
  if (!key_.empty()) {
    // Deciphers a copy of the head only, which has the digest. The call can fail, since the payload
    // is cut off, but it deciphers what it gets: each block is enciphered by itself.
    std::uint8_t head[kSmallestContainer];
    std::memcpy(head, container, sizeof head);
    std::uint32_t ignored = 0;
    file_cipher_decode(head, sizeof head, key_.data(), static_cast<std::int32_t>(key_.size()),
                       &ignored, &ignored, nullptr);
    outcome->sha256 = HexDigits(head + kDigestOffset, kDigestSize);
  }
  result_ = container;
  resultSize_ = containerSize;
}

// Reports which of the library's checks the deciphered container failed.
void FileWorker::FailForContent() const {
  const std::uint64_t length = LittleEndian32(buffer_.get() + kRegionOffset);
  const std::uint64_t most = size_ - kPayloadOffset;
  const std::uint64_t least = most > 7 ? most - 7 : 0;
  if (length >= least && length <= most) {
    Fail(Reason::kDigest,
         "digest: the payload is not what went into the container: the file is damaged; get it "
         "again");
  }
  const bool endsInLineEnd = !options_.keyFile.empty() && key_.back() == '\n';
  Fail(Reason::kLength,
       "length field: says " + Grouped(length) + " bytes where " + Grouped(least) + " to " +
           Grouped(most) + " fit: the key is another one, or the file is damaged or cut short; " +
           (endsInLineEnd ? "the key file ends in a line end, which counts as a part of the key: "
                            "remove it if it is not"
                          : "check the key, or get the file again"));
}

void FileWorker::Decode(Outcome* outcome) {
  std::uint8_t* const container = buffer_.get();
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
  if (file_cipher_decode(container, static_cast<std::uint32_t>(size_), key_.data(),
                         static_cast<std::int32_t>(key_.size()), &payloadSize, &payloadOffset,
                         nullptr) != QX_CIPHER_SUCCEEDED) {
    FailForContent();
  }
  const std::uint8_t* const payload = container + payloadOffset;
  outcome->payloadSize = payloadSize;
  outcome->sha256 = HexDigits(container + kDigestOffset, kDigestSize);
  outcome->hasMarker = HasMarkerAt(payload, payloadSize);
  outcome->isFillerZero = std::all_of(payload + payloadSize, payload + (size_ - payloadOffset),
                                      [](std::uint8_t byte) { return byte == 0; });
  if (options_.marker == "require" && !*outcome->hasMarker) {
    Fail(Reason::kMarker,
         "marker: the payload does not begin with the signature marker: mark the data before they "
         "are encoded, or take --marker=keep");
  }
  const bool drops = options_.marker != "keep" && *outcome->hasMarker;
  const std::size_t skipped = drops ? marker_.size() : 0;
  result_ = payload + skipped;
  resultSize_ = payloadSize - skipped;
  if (options_.command == Command::kInspect) {
    outcome->repeatedBlocks = CountRepeatedBlocks(container + kRegionOffset, size_ / 8);
  }
}

void FileWorker::Mark(Outcome* outcome) {
  std::uint8_t* const marked = buffer_.get();
  std::uint8_t* const data = marked + marker_.size();
  if (HasMarkerAt(data, size_)) {
    outcome->warnings.emplace_back(
        "warning: the data have the marker already and now have two: check the step before");
  }
  const auto dataSize = static_cast<std::uint32_t>(size_);
  const auto markedSize = static_cast<std::uint32_t>(size_ + marker_.size());
  if ((QX_SignSignature(marked, markedSize, data, dataSize) & 0xFF) != 1) {
    Fail(Reason::kInternal, "internal: the library set no marker: run doctor, and report it");
  }
  outcome->payloadSize = markedSize;
  outcome->hasMarker = true;
  result_ = marked;
  resultSize_ = markedSize;
}

void FileWorker::Write(const Item& item) {
  const std::string& path = item.output;
  OutputFile output;
  if (!path.empty()) {
    std::error_code error;
    if (options_.isRecursive) fs::create_directories(InputPath(path).parent_path(), error);
    // For other errors Open gives a better message.
    if (error == std::errc::no_space_on_device) FailToWrite(path, LastFileError());
    if (const SystemError failed = output.Open(path); failed != 0) FailToWrite(path, failed);
    if (item.name != "-") output.TakeAfter(InputPath(item.name));
  }
  for (std::size_t done = 0; done < resultSize_;) {
    EndIfInterrupted();
    const std::size_t size = std::min(kPiece, resultSize_ - done);
    const SystemError error = path.empty() ? WriteToStream(stdout, result_ + done, size)
                                           : output.Write(result_ + done, size);
    if (error != 0) FailToWrite(path, error);
    done += size;
    *steps_ += size;
  }
  if (path.empty()) return;
  EndIfInterrupted();
  const SystemError error = output.Commit(options_.Existing(), options_.isSafe);
  if (error != 0) FailToWrite(path, error);
}

bool FileWorker::HasMarkerAt(const std::uint8_t* payload, std::size_t size) const {
  return size >= marker_.size() && std::equal(marker_.begin(), marker_.end(), payload);
}

}  // namespace launcher
