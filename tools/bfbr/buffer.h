// Memory for one file, which is not filled with anything first.

#ifndef LAUNCHER_TOOLS_BFBR_BUFFER_H_
#define LAUNCHER_TOOLS_BFBR_BUFFER_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "support/large_memory.h"

namespace launcher {

class Buffer {
 public:
  std::uint8_t* Data() { return block_ ? block_.get() + kLead : nullptr; }
  std::size_t Capacity() const { return capacity_; }

  // Makes room for `capacity` bytes; those there stay. False where memory runs out, with all as it
  // was.
  bool Reserve(std::size_t capacity) {
    if (capacity <= capacity_) return true;
    if (capacity > SIZE_MAX - kLead) return false;
    auto* const block = static_cast<std::uint8_t*>(std::realloc(block_.get(), capacity + kLead));
    if (block == nullptr) return false;
    constexpr std::size_t kLarge = 4u << 20;
    if (capacity >= kLarge) PreferLargePages(block, capacity + kLead);
    static_cast<void>(block_.release());
    block_.reset(block);
    capacity_ = capacity;
    return true;
  }

  void Release() {
    block_.reset();
    capacity_ = 0;
  }

 private:
  // Has a container's blocks, from its offset 4 on, lie at multiples of 8.
  static constexpr std::size_t kLead = 12;
  struct Free {
    void operator()(std::uint8_t* block) const { std::free(block); }
  };
  std::unique_ptr<std::uint8_t, Free> block_;
  std::size_t capacity_ = 0;
};

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_BUFFER_H_
