// The container and the exports that write and read it, the file_cipher_ family. They work in the
// caller's buffer and allocate nothing.

#include "cipher/container.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "cipher/built_in_key.h"
#include "cipher/ecb.h"
#include "cipher/sha256.h"
#include "launcher_dll.h"

namespace launcher {
namespace {

constexpr std::uint8_t kMagic[kRegionOffset] = {'B', 'F', 'B', 'R'};
constexpr std::uint32_t kLengthOffset = kRegionOffset;
constexpr std::uint32_t kDigestOffset = 8;
// The first payload size that the file_cipher_ family refuses. Below it no sum of sizes wraps.
constexpr std::uint32_t kSizeLimit = 0x80000000;

static_assert(kDigestOffset + kDigestSize == kPayloadOffset);

// A region is processed in stretches of this many bytes, a multiple of the block size. What one
// step copies or deciphers is then still in the processor's cache when the next step enciphers or
// digests it.
constexpr std::uint32_t kStretchSize = 64 << 10;

// Counts the payload bytes in the first regionSize bytes of the region. The first 36 bytes, length
// and digest, must be among them.
std::uint32_t PayloadWithin(std::uint32_t regionSize, std::uint32_t payloadSize) {
  return std::min(payloadSize, regionSize - (kPayloadOffset - kRegionOffset));
}

// Compares the distance of the two starts, since a start plus a size can wrap.
bool Overlap(const std::uint8_t* a, std::uint32_t aSize, const std::uint8_t* b,
             std::uint32_t bSize) {
  const auto aStart = reinterpret_cast<std::uintptr_t>(a);
  const auto bStart = reinterpret_cast<std::uintptr_t>(b);
  return aStart < bStart ? bStart - aStart < aSize : aStart - bStart < bSize;
}

// Assembles a container and enciphers it, stretch by stretch. A payload that overlaps the container
// is one stretch, however large: an earlier stretch could overwrite bytes that have not moved yet.
// The header is written before the payload moves. If it overwrites payload bytes, they are lost,
// and the payload does not match its digest.
void WriteContainer(std::uint8_t* output, const std::uint8_t* payload, std::uint32_t size,
                    const std::uint8_t (&digest)[kDigestSize]) {
  const std::uint32_t regionSize = RegionSize(size);
  const bool overlap = Overlap(output, ContainerSize(size), payload, size);
  const std::uint32_t stretchSize = overlap ? regionSize : kStretchSize;

  std::memcpy(output, kMagic, sizeof kMagic);
  StoreLittleEndian(output + kLengthOffset, size);
  std::memcpy(output + kDigestOffset, digest, kDigestSize);
  std::uint32_t moved = 0;
  for (std::uint32_t done = 0; done < regionSize;) {
    const std::uint32_t count = std::min(stretchSize, regionSize - done);
    const std::uint32_t ready = PayloadWithin(done + count, size);
    // memmove: the payload may overlap its place in the container.
    std::memmove(output + kPayloadOffset + moved, payload + moved, ready - moved);
    moved = ready;
    if (done + count == regionSize) {
      // The filler up to the end of the last block, which can be empty.
      std::memset(output + kPayloadOffset + size, 0, ContainerSize(size) - (kPayloadOffset + size));
    }
    EncipherRegion(kBuiltInKeyContext, output + kRegionOffset + done, count);
    done += count;
  }
}

}  // namespace

bool LooksLikeContainer(const std::uint8_t* block, std::uint32_t blockSize) {
  // The size first: a smaller block may have no byte to compare with the magic.
  return blockSize >= kPayloadOffset && std::memcmp(block, kMagic, sizeof kMagic) == 0 &&
         blockSize % kBlockSize == kRegionOffset;
}

std::optional<std::uint32_t> DecipherContainer(const BlowfishContext& context, std::uint8_t* block,
                                               std::uint32_t blockSize) {
  std::uint8_t* const region = block + kRegionOffset;
  const std::uint32_t regionSize = blockSize - kRegionOffset;
  // The first stretch contains the length and the digest, since the region has at least 40 bytes.
  std::uint32_t done = std::min(kStretchSize, regionSize);
  DecipherRegion(context, region, done);

  const std::uint32_t payloadSize = LoadLittleEndian(block + kLengthOffset);
  // Both tests are necessary: for a length near 2^32 the sum in ContainerSize wraps and can match.
  bool isIntact =
      payloadSize <= blockSize - kPayloadOffset && ContainerSize(payloadSize) == blockSize;
  Sha256 sha256;
  std::uint32_t digested = 0;
  // The whole region is deciphered even if the block is already known to be damaged: the interface
  // promises it. At least one Update is made, of 0 bytes for an empty payload.
  while (true) {
    if (isIntact) {
      const std::uint32_t ready = PayloadWithin(done, payloadSize);
      isIntact = sha256.Update(block + kPayloadOffset + digested, ready - digested);
      digested = ready;
    }
    if (done == regionSize) break;
    const std::uint32_t count = std::min(kStretchSize, regionSize - done);
    DecipherRegion(context, region + done, count);
    done += count;
  }

  std::uint8_t digest[kDigestSize];
  if (!isIntact || !sha256.Finish(digest)) return std::nullopt;
  if (std::memcmp(block + kDigestOffset, digest, kDigestSize) != 0) return std::nullopt;
  return payloadSize;
}

bool BeginsWith(const std::uint8_t* payload, std::uint32_t payloadSize, const char* prefix,
                std::size_t length) {
  // A prefix longer than the payload must not be compared: that would read past the block.
  return payloadSize >= length && std::memcmp(payload, prefix, length) == 0;
}

}  // namespace launcher

std::uint32_t QX_CALL file_cipher_get_encode_size(std::uint32_t size) {
  return size >= launcher::kSizeLimit ? 0 : launcher::ContainerSize(size);
}

CipherCode QX_CALL file_cipher_encode(const std::uint8_t* payload, std::uint32_t size,
                                      std::uint8_t* output) {
  using namespace launcher;
  if (payload == nullptr || output == nullptr || size == 0) return QX_CIPHER_FAILED;
  // Before the digest, which would read at least 2 GiB.
  if (size >= kSizeLimit) return QX_CIPHER_FAILED;

  // Before any write: if the digest fails, `output` must stay unwritten. Also, the container may
  // overwrite the payload.
  std::uint8_t digest[kDigestSize];
  if (!Sha256Digest(payload, size, digest)) return QX_CIPHER_FAILED;
  WriteContainer(output, payload, size, digest);
  return QX_CIPHER_SUCCEEDED;
}

CipherCode QX_CALL file_cipher_decode(std::uint8_t* block, std::uint32_t blockSize,
                                      const std::uint8_t* key, std::int32_t keyLength,
                                      std::uint32_t* payloadSize, std::uint32_t* payloadOffset,
                                      const char* prefix) {
  using namespace launcher;
  if (block == nullptr || key == nullptr) return QX_CIPHER_FAILED;
  if (payloadSize == nullptr || payloadOffset == nullptr) return QX_CIPHER_FAILED;
  if (!LooksLikeContainer(block, blockSize)) return QX_CIPHER_FAILED;
  // A negative length becomes a large one and is refused too. Without this check BlowfishSetKey
  // would do nothing, and `own` would stay uninitialised.
  const auto keySize = static_cast<std::uint32_t>(keyLength);
  if (!IsBlowfishKeyLength(keySize)) return QX_CIPHER_FAILED;

  BlowfishContext own;
  const BlowfishContext& context = ContextForKey(key, keySize, own);
  const std::optional<std::uint32_t> intactSize = DecipherContainer(context, block, blockSize);
  if (!intactSize) return QX_CIPHER_FAILED;

  // Written before the prefix is compared: without the prefix the call fails, but the outputs
  // describe the whole payload.
  *payloadOffset = kPayloadOffset;
  *payloadSize = *intactSize;
  if (prefix == nullptr) return QX_CIPHER_SUCCEEDED;

  const std::size_t length = std::strlen(prefix);
  if (!BeginsWith(block + kPayloadOffset, *intactSize, prefix, length)) return QX_CIPHER_FAILED;

  *payloadOffset += static_cast<std::uint32_t>(length);
  *payloadSize -= static_cast<std::uint32_t>(length);
  return QX_CIPHER_SUCCEEDED;
}
