// The 32-bit build: the cipher's kernels beside one block at a time, and whole calls of the DLL.
//
//   dll_benchmark
//
// Medians of interleaved repetitions. The kernels are timed without the digest, which is the
// system's and under Wine takes most of a call. Exit status: 0, or 1 where the DLL is not there.

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "cipher/blowfish.h"
#include "cipher/built_in_key.h"
#include "cipher/ecb_kernels.h"
#include "one_block.h"

namespace {

using namespace launcher;

constexpr int kRepetitions = 15;

struct Timed {
  std::string name;
  double bytes;  // of one run; 0 where only the time counts
  std::function<void()> run;
  std::vector<double> seconds;
};

double Seconds() {
  LARGE_INTEGER count;
  LARGE_INTEGER frequency;
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// As many runs as take a few milliseconds, timed together.
void Repeat(Timed& timed) {
  int runs = 1;
  while (true) {
    const double start = Seconds();
    for (int i = 0; i < runs; ++i) timed.run();
    const double taken = Seconds() - start;
    if (taken > 0.005 || runs > 1 << 20) {
      timed.seconds.push_back(taken / runs);
      return;
    }
    runs *= 2;
  }
}

void Report(std::vector<Timed>& all) {
  for (int i = 0; i < kRepetitions; ++i) {
    for (Timed& timed : all) Repeat(timed);
  }
  for (Timed& timed : all) {
    std::sort(timed.seconds.begin(), timed.seconds.end());
    const double median = timed.seconds[kRepetitions / 2];
    std::printf("%-40s %12.2f us", timed.name.c_str(), median * 1e6);
    if (timed.bytes > 0) std::printf(" %8.0f MB/s", timed.bytes / median / 1e6);
    std::printf("\n");
  }
}

}  // namespace

int main() {
  using Encode = std::int32_t(__stdcall*)(const std::uint8_t*, std::uint32_t, std::uint8_t*);
  const HMODULE library = LoadLibraryA("LauncherDll.dll");
  const auto encode = reinterpret_cast<Encode>(reinterpret_cast<void*>(
      library ? GetProcAddress(library, "_file_cipher_encode@12") : nullptr));
  if (encode == nullptr) {
    std::fprintf(stderr, "dll_benchmark: no LauncherDll.dll beside the program\n");
    return 1;
  }

  static std::vector<std::uint8_t> region(65536);
  static std::vector<std::uint8_t> output(region.size() + 64);
  std::vector<Timed> all;
  for (const EcbKernel& kernel : kEcbKernels) {
    if (!kernel.runsOn(ThisCpu())) {
      std::printf("%-40s not on this processor\n", kernel.name);
      continue;
    }
    all.push_back({std::string("64 KiB, ") + kernel.name,
                   65536,
                   [&kernel] {
                     kernel.transform(kBuiltInKeyContext.p, kBuiltInKeyContext.s, region.data(),
                                      region.size());
                   },
                   {}});
  }
  all.push_back(
      {"64 KiB, one block at a time",
       65536,
       [] { bench::EncipherOneBlockAtATime(kBuiltInKeyContext, region.data(), region.size()); },
       {}});
  all.push_back({"key setup",
                 0,
                 [] {
                   const std::uint8_t key[16] = {1};
                   BlowfishContext own;
                   ContextForKey(key, sizeof key, own);
                 },
                 {}});
  for (const std::uint32_t size : {64u, 2048u, 65536u}) {
    all.push_back({"file_cipher_encode, " + std::to_string(size) + " bytes",
                   static_cast<double>(size),
                   [=] { encode(region.data(), size, output.data()); },
                   {}});
  }
  Report(all);
  return 0;
}
