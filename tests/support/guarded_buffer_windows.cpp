#include <windows.h>

#include <cstring>
#include <new>

#include "support/guarded_buffer.h"

namespace launcher::test {
namespace {

constexpr std::size_t kPageSize = 4096;

}  // namespace

GuardedBuffer::GuardedBuffer(std::size_t size) : size_(size) {
  mappedSize_ = (size + kPageSize - 1) / kPageSize * kPageSize + kPageSize;
  pages_ = VirtualAlloc(nullptr, mappedSize_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (pages_ == nullptr) throw std::bad_alloc();
  DWORD previous = 0;
  VirtualProtect(static_cast<std::uint8_t*>(pages_) + mappedSize_ - kPageSize, kPageSize,
                 PAGE_NOACCESS, &previous);
  data_ = static_cast<std::uint8_t*>(pages_) + mappedSize_ - kPageSize - size;
  std::memset(data_, kFill, size);
}

GuardedBuffer::GuardedBuffer(const Bytes& content) : GuardedBuffer(content.size()) {
  if (!content.empty()) std::memcpy(data_, content.data(), content.size());
}

GuardedBuffer::~GuardedBuffer() { VirtualFree(pages_, 0, MEM_RELEASE); }

}  // namespace launcher::test
