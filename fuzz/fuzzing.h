// What the fuzzers share.

#ifndef LAUNCHER_FUZZ_FUZZING_H_
#define LAUNCHER_FUZZ_FUZZING_H_

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "support/bytes.h"

namespace launcher::fuzz {

using test::Bytes;

// Ends the program if a property that every input must have does not hold. libFuzzer keeps the
// input.
inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", property);
  std::abort();
}

}  // namespace launcher::fuzz

#endif  // LAUNCHER_FUZZ_FUZZING_H_
