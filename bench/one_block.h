// Enciphers without a kernel, for comparison with the kernels.

#ifndef LAUNCHER_BENCH_ONE_BLOCK_H_
#define LAUNCHER_BENCH_ONE_BLOCK_H_

#include <cstddef>
#include <cstdint>

#include "cipher/blowfish.h"
#include "cipher/ecb.h"

namespace launcher::bench {

inline void EncipherOneBlockAtATime(const BlowfishContext& context, std::uint8_t* region,
                                    std::size_t size) {
  for (std::size_t i = 0; i < size; i += 8) {
    std::uint32_t left = LoadLittleEndian(region + i);
    std::uint32_t right = LoadLittleEndian(region + i + 4);
    BlowfishEncipherBlock(context, left, right);
    StoreLittleEndian(region + i, left);
    StoreLittleEndian(region + i + 4, right);
  }
}

}  // namespace launcher::bench

#endif  // LAUNCHER_BENCH_ONE_BLOCK_H_
