// The container, and the exports of the file_cipher_ family that write and read it.

#include "cipher/container.h"

#include <cstddef>
#include <cstring>

#include "cipher/ecb.h"
#include "cipher/little_endian.h"
#include "cipher/sha256.h"
#include "config/cipher_texts.h"
#include "launcher_dll.h"

namespace launcher {
namespace {

constexpr std::uint8_t kMagic[kRegionOffset] = {'B', 'F', 'B', 'R'};
constexpr std::uint32_t kLengthOffset = kRegionOffset;
constexpr std::uint32_t kDigestOffset = 8;
constexpr std::uint32_t kSizeLimit = 0x80000000;

static_assert(kDigestOffset + kDigestSize == kPayloadOffset);

void SetBuiltInKey(BlowfishContext& context) {
  constexpr std::uint32_t kLength = sizeof kBuiltInKey - 1;
  BlowfishSetKey(context, reinterpret_cast<const std::uint8_t*>(kBuiltInKey), kLength);
}

// The order matters to a caller whose output overlaps the payload: what the header overwrites is
// lost before the payload moves.
void WriteClearContainer(std::uint8_t* output, const std::uint8_t* payload, std::uint32_t size,
                         const std::uint8_t (&digest)[kDigestSize]) {
  std::memcpy(output, kMagic, sizeof kMagic);
  StoreLittleEndian(output + kLengthOffset, size);
  std::memcpy(output + kDigestOffset, digest, kDigestSize);
  std::memmove(output + kPayloadOffset, payload, size);
  std::memset(output + kPayloadOffset + size, 0, ContainerSize(size) - (kPayloadOffset + size));
}

}  // namespace

bool LooksLikeContainer(const std::uint8_t* block, std::uint32_t blockSize) {
  return blockSize >= kPayloadOffset && std::memcmp(block, kMagic, sizeof kMagic) == 0 &&
         blockSize % kBlockSize == kRegionOffset;
}

void DecipherContainer(const BlowfishContext& context, std::uint8_t* block,
                       std::uint32_t blockSize) {
  DecipherRegion(context, block + kRegionOffset, blockSize - kRegionOffset);
}

std::optional<std::uint32_t> IntactPayloadSize(const std::uint8_t* block, std::uint32_t blockSize) {
  const std::uint32_t payloadSize = LoadLittleEndian(block + kLengthOffset);
  // The first test is not idle: near 2^32 the sum in RegionSize wraps and could fit.
  if (payloadSize > blockSize - kPayloadOffset) return std::nullopt;
  if (ContainerSize(payloadSize) != blockSize) return std::nullopt;

  std::uint8_t digest[kDigestSize];
  if (!Sha256Digest(block + kPayloadOffset, payloadSize, digest)) return std::nullopt;
  if (std::memcmp(block + kDigestOffset, digest, kDigestSize) != 0) return std::nullopt;
  return payloadSize;
}

bool BeginsWith(const std::uint8_t* payload, std::uint32_t payloadSize, const char* prefix,
                std::size_t length) {
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
  // Ahead of the digest, which would read 2 GiB that no caller of a 32-bit library has.
  if (size >= kSizeLimit) return QX_CIPHER_FAILED;

  BlowfishContext context;
  SetBuiltInKey(context);
  std::uint8_t digest[kDigestSize];
  if (!Sha256Digest(payload, size, digest)) return QX_CIPHER_FAILED;

  WriteClearContainer(output, payload, size, digest);
  EncipherRegion(context, output + kRegionOffset, RegionSize(size));
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
  // A negative length is a large one here, and refused as well.
  const auto keySize = static_cast<std::uint32_t>(keyLength);
  if (!IsBlowfishKeyLength(keySize)) return QX_CIPHER_FAILED;

  BlowfishContext context;
  BlowfishSetKey(context, key, keySize);
  DecipherContainer(context, block, blockSize);
  const std::optional<std::uint32_t> intactSize = IntactPayloadSize(block, blockSize);
  if (!intactSize) return QX_CIPHER_FAILED;

  *payloadOffset = kPayloadOffset;
  *payloadSize = *intactSize;
  if (prefix == nullptr) return QX_CIPHER_SUCCEEDED;

  const std::size_t length = std::strlen(prefix);
  if (!BeginsWith(block + kPayloadOffset, *intactSize, prefix, length)) return QX_CIPHER_FAILED;

  *payloadOffset += static_cast<std::uint32_t>(length);
  *payloadSize -= static_cast<std::uint32_t>(length);
  return QX_CIPHER_SUCCEEDED;
}
