// A little memory that only the compiler's runtime gets, when there is none left.
//
// Throwing std::bad_alloc takes memory itself: for the exception, and at a thread's first one for
// the runtime's own record of it, for want of which the runtime ends the process. So the linker
// leads the runtime's calls of malloc, calloc, realloc and free here (--wrap), and where the heap
// has nothing they get one of these slots. What the library wants goes past it, by operator new and
// AllocateBlock, and fails honestly.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

// The linker's names for the true functions.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

namespace {

constexpr std::size_t kSlotSize = 512;
constexpr std::size_t kSlotCount = 32;

alignas(16) char slots[kSlotCount][kSlotSize];
std::atomic<std::uint32_t> slotsInUse{0};  // a bit for each

void* TakeSlot(std::size_t size) {
  if (size > kSlotSize) return nullptr;
  for (std::size_t i = 0; i < kSlotCount; ++i) {
    const std::uint32_t bit = std::uint32_t{1} << i;
    if ((slotsInUse.fetch_or(bit) & bit) == 0) return slots[i];
  }
  return nullptr;
}

bool IsSlot(const void* block) {
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  const auto first = reinterpret_cast<std::uintptr_t>(slots);
  return address - first < sizeof slots;
}

void FreeSlot(const void* block) {
  const auto offset =
      reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(slots);
  slotsInUse.fetch_and(~(std::uint32_t{1} << (offset / kSlotSize)));
}

}  // namespace

extern "C" {

void* __wrap_malloc(std::size_t size) {
  void* const block = __real_malloc(size);
  return block != nullptr ? block : TakeSlot(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  void* const block = __real_calloc(count, size);
  if (block != nullptr || (size != 0 && count > kSlotSize / size)) return block;
  void* const slot = TakeSlot(count * size);
  return slot != nullptr ? std::memset(slot, 0, kSlotSize) : nullptr;
}

void __wrap_free(void* block) {
  if (IsSlot(block)) {
    FreeSlot(block);
  } else {
    __real_free(block);
  }
}

void* __wrap_realloc(void* block, std::size_t size) {
  if (!IsSlot(block)) {
    void* const moved = __real_realloc(block, size);
    // A new block may be a slot; an old one of the heap has a size that only the heap knows.
    return moved == nullptr && block == nullptr ? TakeSlot(size) : moved;
  }
  if (size <= kSlotSize) return block;
  void* const moved = __real_malloc(size);
  if (moved != nullptr) {
    std::memcpy(moved, block, kSlotSize);
    FreeSlot(block);
  }
  return moved;
}

}  // extern "C"

void* operator new(std::size_t size) {
  void* const block = __real_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
