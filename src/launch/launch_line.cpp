#include "launch/launch_line.h"

#include <cstdio>
#include <cstring>

#include "launcher_dll.h"

namespace launcher {

// Both follow from the sizes in the header. The first is promised to callers.
static_assert(kMaxClientPathLength == 2028);
static_assert(kEncipheredLineSize == 2092);

void FormatLaunchLine(char (&line)[kLaunchLineCapacity], const char* clientPath,
                      std::uint32_t processId, std::uint32_t dataAddress) {
  // Cast to a type that has a format: which type uint32_t is depends on the compiler.
  std::snprintf(line, sizeof line, "\"%s\" %08lx%08lx", clientPath,
                static_cast<unsigned long>(processId), static_cast<unsigned long>(dataAddress));
}

bool EncipherLaunchLine(std::uint8_t (&block)[kEncipheredLineSize], const char* line) {
  // If the line does not fit after the marker, QX_SignSignature writes nothing, and zeros remain.
  // The payload has the same size in each case, so the container does too.
  std::uint8_t signedArea[kSignedAreaSize] = {};
  QX_SignSignature(signedArea, sizeof signedArea, reinterpret_cast<const std::uint8_t*>(line),
                   static_cast<std::uint32_t>(std::strlen(line)));
  return file_cipher_encode(signedArea, sizeof signedArea, block) == QX_CIPHER_SUCCEEDED;
}

}  // namespace launcher
