#include "support/imitated_cpu.h"

#if defined(__clang__)
// The names are the linker's; no C code calls them.
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

// The linker's --wrap redirects calls of launcher::ThisCpu to the second of these; the first one is
// the original.
extern "C" launcher::CpuFeatures __real__ZN8launcher7ThisCpuEv();
extern "C" launcher::CpuFeatures __wrap__ZN8launcher7ThisCpuEv() {
  const auto& imitated = launcher::test::ImitatedCpu::features;
  return imitated ? *imitated : __real__ZN8launcher7ThisCpuEv();
}
