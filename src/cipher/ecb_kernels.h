// The kernels that transform a region. Their results are the same, their speeds differ.

#ifndef LAUNCHER_CIPHER_ECB_KERNELS_H_
#define LAUNCHER_CIPHER_ECB_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include "cipher/blowfish.h"
#include "platform/cpu_features.h"

namespace launcher {

// Transforms `size` bytes in place, a multiple of kBlockSize, at any alignment. `p` holds the
// subkeys in the order of their use. The two directions differ only in that order, so one function
// does both.
using EcbTransform = void(const BlowfishP& p, const BlowfishS& s, std::uint8_t* region,
                          std::size_t size);

// Eight blocks at a time, on any processor. Its table look-ups depend on the data, so cache timing
// can reveal something of key and text.
EcbTransform TransformSideBySide;

// 256 blocks at a time, only on processors with AVX-512 VBMI. Leaves a small rest to
// TransformSideBySide.
EcbTransform TransformByBytePlanes;

struct EcbKernel {
  const char* name;
  bool (*runsOn)(const CpuFeatures& cpu);
  EcbTransform* transform;
};

// The fastest first. The last one runs on every processor, so a search always ends.
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
