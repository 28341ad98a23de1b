// The features of the processor, beyond those of every x86, that the cipher can use.

#ifndef LAUNCHER_PLATFORM_CPU_FEATURES_H_
#define LAUNCHER_PLATFORM_CPU_FEATURES_H_

namespace launcher {

struct CpuFeatures {
  // AVX-512 VBMI together with AVX-512 F, BW and DQ, on an operating system that saves the
  // registers.
  bool hasAvx512Vbmi = false;
};

// Asks the processor at the first call only: in a virtual machine that can take tens of
// microseconds. May be called by several threads at once.
CpuFeatures ThisCpu();

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_CPU_FEATURES_H_
