// Blowfish in electronic-codebook mode over a region of bytes: each block of 8 bytes on its own.
//
// The halves of a block are little-endian words, the left half at the lower address. Other Blowfish
// libraries read them most significant byte first, so their results differ.

#ifndef LAUNCHER_CIPHER_ECB_H_
#define LAUNCHER_CIPHER_ECB_H_

#include <cstdint>

#include "cipher/blowfish.h"

namespace launcher {

inline constexpr std::uint32_t kBlockSize = 8;

// Encipher and decipher `size` bytes in place, a multiple of kBlockSize, at any alignment. They
// allocate nothing and use up to 10 KiB of stack.
void EncipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size);
void DecipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size);

// Read and write the words of blocks, and the length in the container's header. Byte by byte, so
// that neither the alignment nor the processor's byte order matters.
inline std::uint32_t LoadLittleEndian(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

inline void StoreLittleEndian(std::uint8_t* bytes, std::uint32_t word) {
  bytes[0] = static_cast<std::uint8_t>(word);
  bytes[1] = static_cast<std::uint8_t>(word >> 8);
  bytes[2] = static_cast<std::uint8_t>(word >> 16);
  bytes[3] = static_cast<std::uint8_t>(word >> 24);
}

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_ECB_H_
