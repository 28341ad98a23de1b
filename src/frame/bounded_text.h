// Copies of text into buffers of a given capacity.

#ifndef LAUNCHER_FRAME_BOUNDED_TEXT_H_
#define LAUNCHER_FRAME_BOUNDED_TEXT_H_

#include <cstddef>
#include <cstring>

namespace launcher {

// Copies `source` with its terminator and answers true; where that takes more than `capacity`
// bytes, leaves an empty text and answers false. The runtime's strcpy_s does the same but then
// stops the process, unless the caller of the library has installed a handler of its own.
inline bool CopyText(char* destination, std::size_t capacity, const char* source) {
  const std::size_t length = std::strlen(source);
  if (length >= capacity) {
    if (capacity != 0) destination[0] = '\0';
    return false;
  }
  std::memcpy(destination, source, length + 1);
  return true;
}

}  // namespace launcher

#endif  // LAUNCHER_FRAME_BOUNDED_TEXT_H_
