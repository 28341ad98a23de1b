// The kernels that transform a region. Their results are the same, their speeds differ.

#ifndef LAUNCHER_CIPHER_ECB_KERNELS_H_
#define LAUNCHER_CIPHER_ECB_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include "cipher/blowfish.h"
#include "platform/cpu_features.h"

namespace launcher {

// Transforms `size` bytes in place, a multiple of 8, at any alignment. `p` holds the subkeys in the
// order of their use; the two directions differ in nothing else.
using EcbTransform = void(const BlowfishP& p, const BlowfishS& s, std::uint8_t* region,
                          std::size_t size);

// Eight blocks side by side, on any processor.
EcbTransform TransformSideBySide;

// 256 blocks at once, with AVX-512 VBMI. Passes few blocks to TransformSideBySide.
EcbTransform TransformByBytePlanes;

struct EcbKernel {
  const char* name;
  bool (*runsOn)(const CpuFeatures& cpu);
  EcbTransform* transform;
};

// The fastest first. The last runs on every processor.
inline constexpr EcbKernel kEcbKernels[] = {
    {"byte planes", [](const CpuFeatures& cpu) { return cpu.hasAvx512Vbmi; },
     TransformByBytePlanes},
    {"side by side", [](const CpuFeatures&) { return true; }, TransformSideBySide},
};

constexpr const EcbKernel& FastestEcbKernel(const CpuFeatures& cpu) {
  const EcbKernel* kernel = kEcbKernels;
  while (!kernel->runsOn(cpu)) ++kernel;
  return *kernel;
}

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_ECB_KERNELS_H_
