// What the fuzzers share.

#ifndef LAUNCHER_FUZZ_FUZZING_H_
#define LAUNCHER_FUZZ_FUZZING_H_

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "support/bytes.h"

namespace launcher::fuzz {

using test::Bytes;

// What buffers hold before a call. They are blocks of the heap as large as the library is told, so
// that the address sanitizer sees whatever goes beyond.
inline constexpr std::uint8_t kFill = 0xCD;

// A property that holds whatever the input: where it does not, the program ends, and libFuzzer
// keeps the input.
inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", property);
  std::abort();
}

// Whether nothing was written from `offset` on.
inline bool IsUntouched(const Bytes& buffer, std::size_t offset = 0) {
  return std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(offset), buffer.end(),
                     [](std::uint8_t byte) { return byte == kFill; });
}

inline char* TextAt(Bytes& buffer) { return reinterpret_cast<char*>(buffer.data()); }

// Whether a buffer holds `text`, its terminator, and nothing else new.
inline bool HoldsText(const Bytes& buffer, const std::string& text) {
  return buffer.size() > text.size() &&
         std::memcmp(buffer.data(), text.c_str(), text.size() + 1) == 0 &&
         IsUntouched(buffer, text.size() + 1);
}

// A number that is often near `center`, where most goes wrong.
inline std::uint32_t NumberNear(FuzzedDataProvider& input, std::uint32_t center) {
  const auto choice = input.ConsumeIntegral<std::uint8_t>();
  if (choice < 200) return center + choice % 8 - 4;
  if (choice < 210) return 0x80000000 + center - choice % 8;  // what doubling makes small
  return choice < 250 ? input.ConsumeIntegral<std::uint8_t>()
                      : input.ConsumeIntegral<std::uint32_t>();
}

// A text without NUL.
inline std::string ConsumeText(FuzzedDataProvider& input, std::size_t maxLength) {
  const std::string text = input.ConsumeRandomLengthString(maxLength);
  return text.substr(0, text.find('\0'));
}

// What `body` prints to `stream`, which is stdout or stderr: variables, in this system's runtime.
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
