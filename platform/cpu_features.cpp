// The leaves and bits are those of the Intel 64 and IA-32 Architectures Software Developer's
// Manual, volume 2, CPUID and XGETBV.

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

// Returns zeros for a leaf that the processor does not have. Subleaf 0 always.
Registers CpuId(unsigned leaf) {
  Registers found;
  __get_cpuid_count(leaf, 0, &found.eax, &found.ebx, &found.ecx, &found.edx);
  return found;
}

bool HasBit(unsigned word, int bit) { return ((word >> bit) & 1) != 0; }

// Returns the register states that the operating system saves for a program, a bit for each.
// Without OSXSAVE the instruction is illegal.
std::uint32_t EnabledStates() {
  std::uint32_t low = 0;
  std::uint32_t high = 0;
  // Not by the intrinsic, which exists only if this file is compiled for processors that have
  // XSAVE.
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

bool KeepsAvx512Registers() {
  constexpr int kOsXsave = 27;
  // SSE, AVX, the mask registers, the upper halves of the first 16 registers, and the other 16
  // registers as a whole. If one bit is missing, a thread switch can destroy a register.
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
  // Threads that ask at the same time store the same value, so relaxed order is enough.
  static std::atomic<State> state{kNotAsked};
  State known = state.load(std::memory_order_relaxed);
  if (known == kNotAsked) {
    known = HasAvx512Vbmi() ? kAvx512Vbmi : kPlain;
    state.store(known, std::memory_order_relaxed);
  }
  return {known == kAvx512Vbmi};
}

}  // namespace launcher
