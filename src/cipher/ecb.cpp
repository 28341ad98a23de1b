// Runs both directions on the fastest kernel that the processor supports.

#include "cipher/ecb.h"

#include <cstddef>

#include "cipher/ecb_kernels.h"

namespace launcher {

void EncipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size) {
  FastestEcbKernel(ThisCpu()).transform(context.p, context.s, region, size);
}

void DecipherRegion(const BlowfishContext& context, std::uint8_t* region, std::uint32_t size) {
  // Deciphering is the same rounds with the subkeys in reverse order.
  constexpr std::size_t kCount = kBlowfishRounds + 2;
  std::uint32_t reversed[kCount];
  for (std::size_t i = 0; i < kCount; ++i) reversed[i] = context.p[kCount - 1 - i];
  FastestEcbKernel(ThisCpu()).transform(reversed, context.s, region, size);
}

}  // namespace launcher
