// What the processor can do beyond every x86, as far as the cipher has a use for it.

#ifndef LAUNCHER_PLATFORM_CPU_FEATURES_H_
#define LAUNCHER_PLATFORM_CPU_FEATURES_H_

namespace launcher {

struct CpuFeatures {
  // With F, BW and DQ, and an operating system that keeps its registers.
  bool hasAvx512Vbmi = false;
};

// Asks the processor at the first call only: in a virtual machine that can take tens of
// microseconds.
CpuFeatures ThisCpu();

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_CPU_FEATURES_H_
