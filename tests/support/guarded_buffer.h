// Memory directly before a page that cannot be accessed.

#ifndef LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_
#define LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_

#include <algorithm>

#include "support/bytes.h"
#include "support/system.h"

namespace launcher::test {

// Bytes at the end of a page, filled with kFill if only their number is given. A read or write
// after them ends the test program.
class GuardedBuffer {
 public:
  static constexpr std::uint8_t kFill = 0xCD;

  explicit GuardedBuffer(std::size_t size) : GuardedBuffer(Bytes(size, kFill)) {}
  explicit GuardedBuffer(const Bytes& content)
      : size_(content.size()), memory_(MapBeforeGuardPage(size_)) {
    std::copy(content.begin(), content.end(), Data());
  }

  std::uint8_t* Data() const { return memory_.get(); }
  char* Text() const { return reinterpret_cast<char*>(Data()); }
  std::uint32_t Size() const { return static_cast<std::uint32_t>(size_); }
  Bytes Content() const { return Bytes(Data(), Data() + size_); }
  bool IsUntouched() const { return Content() == Bytes(size_, kFill); }

 private:
  std::size_t size_;
  std::shared_ptr<std::uint8_t> memory_;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_GUARDED_BUFFER_H_
