// Several blocks side by side. A round of one block waits for its table look-ups; blocks do not
// depend on each other, so meanwhile the processor looks up for the other blocks.
//
// The templates write out the blocks and the rounds. In loops the halves would stay in memory, and
// every step would compute their addresses.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "cipher/ecb.h"
#include "cipher/ecb_kernels.h"

namespace launcher {
namespace {

// Blocks at a time. Eight are the fastest in a 32-bit program like the callers of the DLL, six in a
// 64-bit one.
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
  // After the last round the halves have each other's places, so right goes to the lower address.
  const std::uint32_t forLeft = context.p[kBlowfishRounds];
  const std::uint32_t forRight = context.p[kBlowfishRounds + 1];
  (StoreLittleEndian(blocks + kLane * kBlockSize, right[kLane] ^ forRight), ...);
  (StoreLittleEndian(blocks + kLane * kBlockSize + 4, left[kLane] ^ forLeft), ...);
}

}  // namespace

void TransformSideBySide(const BlowfishP& p, const BlowfishS& s, std::uint8_t* region,
                         std::size_t size) {
  // A copy in this stack frame: its tables are at constant offsets from the frame, so they need no
  // register for an address. 32-bit x86 has none to spare.
  BlowfishContext own;
  std::memcpy(own.p, p, sizeof own.p);
  std::memcpy(own.s, s, sizeof own.s);

  // The last, incomplete stride is transformed in a buffer of its own: the blocks that are missing
  // there must not be read from, or written to, the bytes after the region.
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
