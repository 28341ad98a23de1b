// Memory directly before a page that cannot be accessed.

#ifndef LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_
#define LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_

#include <cstddef>
#include <cstdint>

#include "support/bytes.h"

namespace launcher::test {

constexpr std::size_t kPageSize = 4096;

// `size` bytes at the end of a page, filled with kFill. A read or write after them ends the test
// program.
class GuardedBuffer {
 public:
  static constexpr std::uint8_t kFill = 0xCD;

  explicit GuardedBuffer(std::size_t size);
  explicit GuardedBuffer(const Bytes& content);
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;
  ~GuardedBuffer();

  std::uint8_t* Data() const { return data_; }
  char* Text() const { return reinterpret_cast<char*>(data_); }
  std::uint32_t Size() const { return static_cast<std::uint32_t>(size_); }
  Bytes Content() const { return Bytes(data_, data_ + size_); }
  bool IsUntouched() const { return Content() == Bytes(size_, kFill); }

 private:
  std::size_t size_;
  std::size_t mappedSize_;
  std::uint8_t* pages_;
  std::uint8_t* data_;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_
