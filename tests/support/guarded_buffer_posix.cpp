#include <sys/mman.h>

#include <cstring>
#include <new>

#include "support/guarded_buffer.h"

namespace launcher::test {
namespace {

constexpr std::size_t kPageSize = 4096;

}  // namespace

GuardedBuffer::GuardedBuffer(std::size_t size) : size_(size) {
  mappedSize_ = (size + kPageSize - 1) / kPageSize * kPageSize + kPageSize;
  pages_ = mmap(nullptr, mappedSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages_ == MAP_FAILED) throw std::bad_alloc();
  mprotect(static_cast<std::uint8_t*>(pages_) + mappedSize_ - kPageSize, kPageSize, PROT_NONE);
  data_ = static_cast<std::uint8_t*>(pages_) + mappedSize_ - kPageSize - size;
  std::memset(data_, kFill, size);
}

GuardedBuffer::GuardedBuffer(const Bytes& content) : GuardedBuffer(content.size()) {
  if (!content.empty()) std::memcpy(data_, content.data(), content.size());
}

GuardedBuffer::~GuardedBuffer() { munmap(pages_, mappedSize_); }

}  // namespace launcher::test
