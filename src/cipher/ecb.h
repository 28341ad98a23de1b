// Blowfish over a region of bytes in electronic-codebook mode: each block of 8 bytes alone.
//
// A block's halves are little-endian words, the left one at the lower address. Other Blowfish
// libraries read them most significant byte first and give other bytes.

#ifndef LAUNCHER_CIPHER_ECB_H_
#define LAUNCHER_CIPHER_ECB_H_

#include <cstdint>

#include "cipher/blowfish.h"

namespace launcher {

inline constexpr std::uint32_t kBlockSize = 8;

// Encipher and decipher `size` bytes in place, a multiple of kBlockSize, at any alignment. Nothing
// is allocated; up to 10 KiB of stack.
void EncipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size);
void DecipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_ECB_H_
