// Several blocks side by side: a round waits for its table look-ups, and the blocks do not depend
// on one another, so the look-ups of one fill the waits of the others.

#include "cipher/ecb.h"

#include <cstddef>

#include "cipher/little_endian.h"

namespace launcher {
namespace {

constexpr std::size_t kLanes = 6;

// `context.p` holds the subkeys in the order of their use, which is all that tells one direction
// from the other.
template <std::size_t kCount>
inline void TransformBlocks(const BlowfishContext& context, std::uint8_t* blocks) {
  std::uint32_t left[kCount];
  std::uint32_t right[kCount];
  for (std::size_t i = 0; i < kCount; ++i) {
    left[i] = LoadLittleEndian(blocks + i * kBlockSize);
    right[i] = LoadLittleEndian(blocks + i * kBlockSize + 4);
  }
  for (std::size_t round = 0; round < kBlowfishRounds; round += 2) {
    for (std::size_t i = 0; i < kCount; ++i) {
      left[i] ^= context.p[round];
      right[i] ^= BlowfishF(context.s, left[i]);
    }
    for (std::size_t i = 0; i < kCount; ++i) {
      right[i] ^= context.p[round + 1];
      left[i] ^= BlowfishF(context.s, right[i]);
    }
  }
  for (std::size_t i = 0; i < kCount; ++i) {
    StoreLittleEndian(blocks + i * kBlockSize, right[i] ^ context.p[kBlowfishRounds + 1]);
    StoreLittleEndian(blocks + i * kBlockSize + 4, left[i] ^ context.p[kBlowfishRounds]);
  }
}

// The context comes by value: in this frame its tables are at known distances, and 32-bit x86 has
// no register to spare for their address.
void TransformRegion(const BlowfishContext context, std::uint8_t* region, std::uint32_t size) {
  std::size_t offset = 0;
  for (; size - offset >= kLanes * kBlockSize; offset += kLanes * kBlockSize) {
    TransformBlocks<kLanes>(context, region + offset);
  }
  for (; size - offset >= kBlockSize; offset += kBlockSize) {
    TransformBlocks<1>(context, region + offset);
  }
}

}  // namespace

void EncipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size) {
  TransformRegion(context, region, size);
}

void DecipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size) {
  BlowfishContext reversed = context;
  for (std::size_t i = 0; i < kBlowfishRounds + 2; ++i) {
    reversed.p[i] = context.p[kBlowfishRounds + 1 - i];
  }
  TransformRegion(reversed, region, size);
}

}  // namespace launcher
