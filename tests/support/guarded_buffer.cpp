#include "support/guarded_buffer.h"

#include <algorithm>
#include <cstring>

#include "support/system.h"

namespace launcher::test {

GuardedBuffer::GuardedBuffer(std::size_t size)
    : size_(size),
      mappedSize_((size + kPageSize - 1) / kPageSize * kPageSize + kPageSize),
      pages_(MapWithGuardPage(mappedSize_)),
      data_(pages_ + mappedSize_ - kPageSize - size) {
  std::memset(data_, kFill, size);
}

GuardedBuffer::GuardedBuffer(const Bytes& content) : GuardedBuffer(content.size()) {
  std::copy(content.begin(), content.end(), data_);
}

GuardedBuffer::~GuardedBuffer() { UnmapPages(pages_, mappedSize_); }

}  // namespace launcher::test
