// Several blocks side by side: a round waits for its table look-ups, and blocks do not depend on
// each other, so the processor looks up for other blocks meanwhile.
//
// The compiler writes out the blocks and the rounds: in loops the halves would stay in memory, and
// every step would compute their addresses.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "cipher/ecb.h"
#include "cipher/ecb_kernels.h"

namespace launcher {
namespace {

constexpr std::size_t kLanes = 8;
constexpr std::size_t kStride = kLanes * kBlockSize;

template <std::size_t... kLane>
inline void TransformStride(const BlowfishContext& context, std::uint8_t* blocks,
                            std::index_sequence<kLane...> /*lanes*/) {
  std::uint32_t left[] = {LoadLittleEndian(blocks + kLane * kBlockSize)...};
  std::uint32_t right[] = {LoadLittleEndian(blocks + kLane * kBlockSize + 4)...};
#pragma GCC unroll 8
  for (std::size_t round = 0; round < kBlowfishRounds; round += 2) {
    const std::uint32_t even = context.p[round];
    const std::uint32_t odd = context.p[round + 1];
    ((left[kLane] ^= even, right[kLane] ^= BlowfishF(context.s, left[kLane])), ...);
    ((right[kLane] ^= odd, left[kLane] ^= BlowfishF(context.s, right[kLane])), ...);
  }
  const std::uint32_t forLeft = context.p[kBlowfishRounds];
  const std::uint32_t forRight = context.p[kBlowfishRounds + 1];
  (StoreLittleEndian(blocks + kLane * kBlockSize, right[kLane] ^ forRight), ...);
  (StoreLittleEndian(blocks + kLane * kBlockSize + 4, left[kLane] ^ forLeft), ...);
}

}  // namespace

void TransformSideBySide(const BlowfishP& p, const BlowfishS& s, std::uint8_t* region,
                         std::size_t size) {
  // Tables in this stack frame are at constant offsets, so their address needs no register.
  // 32-bit x86 has none to spare.
  BlowfishContext own;
  std::memcpy(own.p, p, sizeof own.p);
  std::memcpy(own.s, s, sizeof own.s);

  std::uint8_t last[kStride] = {};
  while (size != 0) {
    const std::size_t count = std::min(size, kStride);
    const bool isWhole = count == kStride;
    if (!isWhole) std::memcpy(last, region, count);
    TransformStride(own, isWhole ? region : last, std::make_index_sequence<kLanes>());
    if (!isWhole) std::memcpy(region, last, count);
    region += count;
    size -= count;
  }
}

}  // namespace launcher
