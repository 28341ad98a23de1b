// The enciphered container.
//
//   offset  size  field                              enciphered
//   0       4     magic, "BFBR"                      no
//   4       4     payload length n, little-endian    yes
//   8       32    SHA-256 digest of the payload      yes
//   40      n     payload                            yes
//   40 + n  0-7   filler, zero bytes                 yes; readers do not look at it
//
// Blocks count from offset 4, the magic stays clear. A container's size is thus 4 more than a
// multiple of 8.

#ifndef LAUNCHER_CIPHER_CONTAINER_H_
#define LAUNCHER_CIPHER_CONTAINER_H_

#include <cstdint>
#include <optional>

#include "cipher/blowfish.h"

namespace launcher {

inline constexpr std::uint32_t kRegionOffset = 4;
inline constexpr std::uint32_t kPayloadOffset = 40;

// The size of the enciphered region for a payload of payloadSize bytes: length and digest too,
// rounded up to whole blocks. Wraps where the sum goes beyond 32 bits.
constexpr std::uint32_t RegionSize(std::uint32_t payloadSize) {
  constexpr std::uint32_t kHeaderSize = kPayloadOffset - kRegionOffset;
  return (payloadSize + kHeaderSize + 7) & ~std::uint32_t{7};
}

// The size of the whole container. Wraps likewise.
constexpr std::uint32_t ContainerSize(std::uint32_t payloadSize) {
  return RegionSize(payloadSize) + kRegionOffset;
}

// Whether blockSize bytes can be a container, by their size and magic alone.
bool LooksLikeContainer(const std::uint8_t* block, std::uint32_t blockSize);

// Deciphers all of a block behind its magic, in place, whatever comes out. For a block that
// LooksLikeContainer. Answers the payload's size where the length and the digest fit; the payload
// is at kPayloadOffset then.
std::optional<std::uint32_t> DecipherContainer(const BlowfishContext& context, std::uint8_t* block,
                                               std::uint32_t blockSize);

// Whether a payload begins with the `length` bytes at `prefix`.
bool BeginsWith(const std::uint8_t* payload, std::uint32_t payloadSize, const char* prefix,
                std::size_t length);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_CONTAINER_H_
