// Memory that ends where it says it ends.

#ifndef LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_
#define LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_

#include <cstddef>
#include <cstdint>

#include "support/bytes.h"

namespace launcher::test {

// `size` bytes directly ahead of a page that must not be touched, filled with kFill. Whatever
// writes behind them, or reads there, ends the test program.
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
  std::size_t mappedSize_ = 0;
  void* pages_ = nullptr;
  std::uint8_t* data_ = nullptr;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_
