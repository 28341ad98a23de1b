// Text in buffers of a given capacity.

#ifndef LAUNCHER_FRAME_BOUNDED_TEXT_H_
#define LAUNCHER_FRAME_BOUNDED_TEXT_H_

#include <cstddef>
#include <cstring>

namespace launcher {

// These replace the runtime's strcpy_s and strcat_s, which end the process if a text does not fit
// and no handler is installed. If a text does not fit, they return false and leave an empty text at
// the destination, never a part of it.

// Copies `source` with its terminator into the `capacity` bytes at `destination`. A null source
// does not fit.
inline bool CopyText(char* destination, std::size_t capacity, const char* source) {
  const std::size_t length = source != nullptr ? std::strlen(source) : capacity;
  if (length >= capacity) {
    if (capacity != 0) destination[0] = '\0';
    return false;
  }
  std::memcpy(destination, source, length + 1);
  return true;
}

// Appends `source` to the text at `destination`, which has `capacity` bytes in all, at least 1. If
// that text has no terminator, nothing fits.
inline bool AppendText(char* destination, std::size_t capacity, const char* source) {
  const void* const end = std::memchr(destination, '\0', capacity);
  const std::size_t used =
      end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - destination)
                     : capacity;
  // If it fails, CopyText has left an empty text in the appended place only.
  if (CopyText(destination + used, capacity - used, source)) return true;
  destination[0] = '\0';
  return false;
}

}  // namespace launcher

#endif  // LAUNCHER_FRAME_BOUNDED_TEXT_H_
