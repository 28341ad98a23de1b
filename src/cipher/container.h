// The enciphered container.
//
//   offset  size  field                              enciphered
//   0       4     magic, "BFBR"                      no
//   4       4     payload length n, little-endian    yes
//   8       32    SHA-256 digest of the payload      yes
//   40      n     payload                            yes
//   40 + n  0-7   filler, zero bytes                 yes; readers ignore it
//
// The first block is at offset 4, because the magic is not enciphered. So the size of a container
// is 4 more than a multiple of 8.

#ifndef LAUNCHER_CIPHER_CONTAINER_H_
#define LAUNCHER_CIPHER_CONTAINER_H_

#include <cstdint>
#include <optional>

#include "cipher/blowfish.h"

namespace launcher {

// Both in bytes from the start of the container.
inline constexpr std::uint32_t kRegionOffset = 4;
inline constexpr std::uint32_t kPayloadOffset = 40;

// The size in bytes of the enciphered region for a payload of payloadSize bytes: length, digest and
// payload, rounded up to whole blocks. Wraps if the sum exceeds 32 bits.
constexpr std::uint32_t RegionSize(std::uint32_t payloadSize) {
  constexpr std::uint32_t kHeaderSize = kPayloadOffset - kRegionOffset;
  return (payloadSize + kHeaderSize + 7) & ~std::uint32_t{7};
}

// The size of the whole container. Wraps too.
constexpr std::uint32_t ContainerSize(std::uint32_t payloadSize) {
  return RegionSize(payloadSize) + kRegionOffset;
}

// True if the size in bytes and the magic are those of a container. Reads at most the magic.
bool LooksLikeContainer(const std::uint8_t* block, std::uint32_t blockSize);

// Deciphers everything after the magic in place. The block must be one that LooksLikeContainer. If
// the length and the digest in it are right, returns the size of the payload, which is at
// kPayloadOffset. Otherwise, or if the system computes no digest, returns no value, and the bytes
// after the magic are useless.
std::optional<std::uint32_t> DecipherContainer(const BlowfishContext& context, std::uint8_t* block,
                                               std::uint32_t blockSize);

// True if a payload of payloadSize bytes begins with the `length` bytes at `prefix`.
bool BeginsWith(const std::uint8_t* payload, std::uint32_t payloadSize, const char* prefix,
                std::size_t length);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_CONTAINER_H_
