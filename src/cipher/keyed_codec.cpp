// The container for callers that have no key, and the signature marker.

#include <cstdint>
#include <cstring>

#include "cipher/built_in_key.h"
#include "cipher/container.h"
#include "config/string_table.h"
#include "frame/bounded_text.h"
#include "launcher_dll.h"

namespace launcher {
namespace {

// The largest blockSize that QX_Decode accepts. QX_Encode has no such limit.
constexpr std::int32_t kMaxBlockSize = 0xFFFFF;
constexpr std::uint32_t kMarkerLength = sizeof kSignatureMarker - 1;

// Copies a text of the table into an area of zero bytes. Returns false if the lookup fails or the
// text and its terminator do not fit.
template <std::size_t kCapacity>
bool CopyTableText(StringLabel label, char (&area)[kCapacity]) {
  const OwnedText text = LookUpText(label);
  return text && CopyText(area, kCapacity, text.get());
}

// The key and the marker as the string table has them at the time of the call.
class TableTexts {
 public:
  bool LoadKey() { return CopyTableText(kCipherKeyLabel, key_); }
  bool LoadMarker() { return CopyTableText(kSignatureMarkerLabel, marker_); }

  // Looks the key up again: each lookup prints a line, and callers can see how many there are.
  bool LoadKeyLength() {
    keyLength_ = QX_GetLengthOfRString(kCipherKeyLabel);
    return IsBlowfishKeyLength(keyLength_);
  }

  // Returns the key's context, which may be `own`.
  const BlowfishContext& Context(BlowfishContext& own) const {
    return ContextForKey(reinterpret_cast<const std::uint8_t*>(key_), keyLength_, own);
  }

  // Returns an empty text if LoadMarker was not called. Every payload begins with that text.
  const char* Marker() const { return marker_; }

 private:
  // The areas include the terminator, so a key has at most 55 characters.
  char key_[kBlowfishMaxKeySize] = {};
  char marker_[256] = {};
  std::uint32_t keyLength_ = 0;
};

// The size of a block's payload and its offset in the block, in bytes. Both are 0 if the block is
// not an intact container; an intact one has an offset of 40 or more, even if its payload is empty.
struct Delivery {
  std::uint32_t payloadSize;
  std::uint32_t payloadOffset;
};

// Deciphers the block in place if it looks like a container.
Delivery Deliver(const TableTexts& texts, std::uint8_t* block, std::uint32_t blockSize) {
  if (!LooksLikeContainer(block, blockSize)) return {0, 0};

  BlowfishContext own;
  const std::optional<std::uint32_t> intactSize =
      DecipherContainer(texts.Context(own), block, blockSize);
  if (!intactSize) return {0, 0};

  const std::size_t length = std::strlen(texts.Marker());
  // Here a payload without the marker is no failure, unlike in file_cipher_decode.
  if (!BeginsWith(block + kPayloadOffset, *intactSize, texts.Marker(), length)) {
    return {*intactSize, kPayloadOffset};
  }
  const auto skipped = static_cast<std::uint32_t>(length);
  return {*intactSize - skipped, kPayloadOffset + skipped};
}

}  // namespace
}  // namespace launcher

std::uint32_t QX_CALL QX_GetEncodeDataSize(std::uint32_t size) {
  return launcher::ContainerSize(size);
}

ResultCode QX_CALL QX_Encode(std::uint8_t* output, const std::uint8_t* payload, std::int32_t size) {
  // file_cipher_encode refuses null pointers and a size of 0, and a negative one as too large.
  return file_cipher_encode(payload, static_cast<std::uint32_t>(size), output) == 0 ? QX_SUCCEEDED
                                                                                    : QX_FAILED;
}

ResultCode QX_CALL QX_Decode(std::uint8_t* block, std::int32_t blockSize,
                             std::uint32_t* payloadSize, std::uint32_t* payloadOffset,
                             std::uint32_t checkMarker) {
  using namespace launcher;
  if (block == nullptr || payloadSize == nullptr || payloadOffset == nullptr) return QX_FAILED;
  if (blockSize < 1 || blockSize > kMaxBlockSize) return QX_SIZE_REFUSED;

  // The argument is one byte; the caller may leave anything in the other three.
  const bool wantsMarker = (checkMarker & 0xFF) != 0;
  // The lookups come before any look at the block. They print lines and load the settings, also for
  // a block that turns out to be no container.
  TableTexts texts;
  if (!texts.LoadKey()) return QX_FAILED;
  if (wantsMarker && !texts.LoadMarker()) return QX_FAILED;
  if (!texts.LoadKeyLength()) return QX_FAILED;

  const Delivery delivery = Deliver(texts, block, static_cast<std::uint32_t>(blockSize));
  *payloadSize = delivery.payloadSize;
  *payloadOffset = delivery.payloadOffset;
  return QX_SUCCEEDED;
}

std::uint32_t QX_CALL QX_GetSignatureSize() { return launcher::kMarkerLength; }

std::uint8_t QX_CALL QX_SignSignature(std::uint8_t* destination, std::uint32_t capacity,
                                      const std::uint8_t* data, std::uint32_t dataSize) {
  using namespace launcher;
  if (destination == nullptr || data == nullptr) return 0;
  // Compares with the capacity that is left, since dataSize + kMarkerLength can wrap.
  if (capacity < kMarkerLength || dataSize > capacity - kMarkerLength) return 0;

  std::memcpy(destination, kSignatureMarker, kMarkerLength);
  // memmove, since the data may already be in its place or overlap it.
  std::memmove(destination + kMarkerLength, data, dataSize);
  return 1;
}
