// By the Intel 64 and IA-32 Architectures Software Developer's Manual, volume 2:
// CPUID and XGETBV.

#include "platform/cpu_features.h"

#include <cpuid.h>

#include <atomic>
#include <cstdint>

namespace launcher {
namespace {

struct Registers {
  unsigned eax = 0;
  unsigned ebx = 0;
  unsigned ecx = 0;
  unsigned edx = 0;
};

// All zero for a leaf that the processor does not know.
Registers CpuId(unsigned leaf) {
  Registers found;
  __get_cpuid_count(leaf, 0, &found.eax, &found.ebx, &found.ecx, &found.edx);
  return found;
}

bool HasBit(unsigned word, int bit) { return ((word >> bit) & 1) != 0; }

// The register states that the operating system saves for a program.
std::uint32_t EnabledStates() {
  std::uint32_t low = 0;
  std::uint32_t high = 0;
  // Not by intrinsic: that would compile this file for processors that have the instruction.
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

bool KeepsAvx512Registers() {
  constexpr int kOsXsave = 27;
  // SSE, AVX, mask registers, the upper halves of the first 16 and the whole of the other
  // registers.
  constexpr std::uint32_t kNeeded = 0xE6;
  return HasBit(CpuId(1).ecx, kOsXsave) && (EnabledStates() & kNeeded) == kNeeded;
}

bool HasAvx512Vbmi() {
  const Registers extended = CpuId(7);
  const bool hasAvx512 = HasBit(extended.ebx, 16) && HasBit(extended.ebx, 17) &&  // F, DQ
                         HasBit(extended.ebx, 30);                                // BW
  const bool hasVbmi = HasBit(extended.ecx, 1);
  return hasAvx512 && hasVbmi && KeepsAvx512Registers();
}

}  // namespace

CpuFeatures ThisCpu() {
  enum State { kNotAsked, kPlain, kAvx512Vbmi };
  // Threads that ask at the same time get the same answer, so no order is needed.
  static std::atomic<State> state{kNotAsked};
  State known = state.load(std::memory_order_relaxed);
  if (known == kNotAsked) {
    known = HasAvx512Vbmi() ? kAvx512Vbmi : kPlain;
    state.store(known, std::memory_order_relaxed);
  }
  return {known == kAvx512Vbmi};
}

}  // namespace launcher
