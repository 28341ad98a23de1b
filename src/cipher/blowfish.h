// Blowfish, B. Schneier, "Description of a New Variable-Length Key, 64-Bit Block Cipher", 1993:
// 16 rounds, blocks of two 32-bit halves. The caller decides how bytes become halves.

#ifndef LAUNCHER_CIPHER_BLOWFISH_H_
#define LAUNCHER_CIPHER_BLOWFISH_H_

#include <cstddef>
#include <cstdint>

namespace launcher {

inline constexpr std::size_t kBlowfishRounds = 16;
inline constexpr std::uint32_t kBlowfishMinKeySize = 4;
inline constexpr std::uint32_t kBlowfishMaxKeySize = 56;

using BlowfishP = std::uint32_t[kBlowfishRounds + 2];
using BlowfishBox = std::uint32_t[256];
using BlowfishS = BlowfishBox[4];

// What key set-up makes of a key: the subkeys and the S-boxes, 4168 bytes. It is a local variable
// of the operation that uses it, so threads share nothing.
struct BlowfishContext {
  BlowfishP p;
  BlowfishS s;
};

// True for the key lengths, in bytes, that BlowfishSetKey accepts.
constexpr bool IsBlowfishKeyLength(std::uint32_t keyLength) {
  return keyLength >= kBlowfishMinKeySize && keyLength <= kBlowfishMaxKeySize;
}

// The round function. Unsigned addition gives the sums modulo 2^32 that the cipher requires.
constexpr std::uint32_t BlowfishF(const BlowfishS& s, std::uint32_t x) {
  return ((s[0][x >> 24] + s[1][(x >> 16) & 0xFF]) ^ s[2][(x >> 8) & 0xFF]) + s[3][x & 0xFF];
}

// Key set-up: fills `context` for a key of keyLength bytes. Does nothing if the key is null or its
// length is not an IsBlowfishKeyLength.
void BlowfishSetKey(BlowfishContext& context, const std::uint8_t* key, std::uint32_t keyLength);

// Encipher and decipher one block in place, given as two numbers. For whole regions of bytes see
// ecb.h.
void BlowfishEncipherBlock(const BlowfishContext& context, std::uint32_t& left,
                           std::uint32_t& right);
void BlowfishDecipherBlock(const BlowfishContext& context, std::uint32_t& left,
                           std::uint32_t& right);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_BLOWFISH_H_
