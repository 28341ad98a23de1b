#include "bfbr/rates.h"

#include <chrono>
#include <cstdio>
#include <cstring>

#include "bfbr/buffer.h"
#include "launcher_dll.h"
#include "support/input_file.h"
#include "support/interrupt.h"

namespace launcher {
namespace {

// Megabytes of payload a second, of calls of `once` for `seconds`. Negative where one fails.
template <class Once>
double RateOf(std::uint32_t size, double seconds, Once once) {
  using SteadyClock = std::chrono::steady_clock;
  double spent = 0;
  double bytes = 0;
  if (!once(nullptr)) return -1;  // warms up
  while (spent < seconds && !Interrupted()) {
    const auto begin = SteadyClock::now();
    SteadyClock::duration idle{};
    if (!once(&idle)) return -1;
    spent += std::chrono::duration<double>(SteadyClock::now() - begin - idle).count();
    bytes += size;
  }
  return spent > 0 ? bytes / spent / 1e6 : 0;
}

SystemError Print(const std::string& line) {
  return WriteToStandardOutput(line.data(), line.size());
}

}  // namespace

int MeasureRates(const Options& options, const Key& key) {
  SystemError error = 0;
  if (!options.isJson) error = Print("payload bytes   encode MB/s   decode MB/s\n");
  for (const std::uint32_t size : {1u << 10, 1u << 14, 1u << 18, 1u << 22, 1u << 26}) {
    const std::uint32_t containerSize = file_cipher_get_encode_size(size);
    Buffer payload;
    Buffer container;
    Buffer work;
    if (!payload.Reserve(size) || !container.Reserve(containerSize) ||
        !work.Reserve(containerSize)) {
      PrintMessage("memory: ran out: close other programs");
      return kNoMemory;
    }
    for (std::uint32_t i = 0; i < size; ++i) {
      payload.Data()[i] = static_cast<std::uint8_t>((i * 2654435761u) >> 24);
    }
    const double encodeRate =
        RateOf(size, options.seconds, [&](std::chrono::steady_clock::duration*) {
          return file_cipher_encode(payload.Data(), size, container.Data()) == QX_CIPHER_SUCCEEDED;
        });
    // Decoding works in place, so each time takes a copy, which does not count.
    const double decodeRate =
        RateOf(size, options.seconds, [&](std::chrono::steady_clock::duration* idle) {
          const auto begin = std::chrono::steady_clock::now();
          std::memcpy(work.Data(), container.Data(), containerSize);
          if (idle != nullptr) *idle = std::chrono::steady_clock::now() - begin;
          std::uint32_t payloadSize = 0;
          std::uint32_t payloadOffset = 0;
          return file_cipher_decode(work.Data(), containerSize,
                                    reinterpret_cast<const std::uint8_t*>(key.data()),
                                    static_cast<std::int32_t>(key.size()), &payloadSize,
                                    &payloadOffset, nullptr) == QX_CIPHER_SUCCEEDED &&
                 payloadSize == size;
        });
    if (Interrupted()) {
      PrintMessage("interrupted: run the command again");
      return kInterruptedExitCode;
    }
    if (encodeRate < 0 || decodeRate < 0) {
      PrintMessage("internal: the library does not decode what it has encoded: report it");
      return kNoMemory;
    }
    char line[160];
    std::snprintf(line, sizeof line,
                  options.isJson ? "{\"payloadSize\":%u,\"encodeRate\":%.1f,\"decodeRate\":%.1f}\n"
                                 : "%13u   %11.0f   %11.0f\n",
                  size, encodeRate, decodeRate);
    if (error == 0) error = Print(line);
  }
  if (error == 0) return kFine;
  PrintMessage("standard output: cannot be written: " + SystemErrorText(error) + ": make room");
  return kBadFile;
}

}  // namespace launcher
