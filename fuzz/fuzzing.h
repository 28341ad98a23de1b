// What the fuzzers share.

#ifndef LAUNCHER_FUZZ_FUZZING_H_
#define LAUNCHER_FUZZ_FUZZING_H_

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

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

// Returns what `body` prints to `stream`, which is stdout or stderr: variables in this runtime.
template <class Body>
std::string PrintedTo(std::FILE*& stream, Body body) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const usual = std::exchange(stream, open_memstream(&text, &size));
  body();
  std::fclose(std::exchange(stream, usual));
  std::string printed(text, size);
  std::free(text);
  return printed;
}

}  // namespace launcher::fuzz

#endif  // LAUNCHER_FUZZ_FUZZING_H_
