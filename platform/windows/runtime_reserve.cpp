// A little memory that only the compiler's runtime gets if there is no other left.
//
// To throw std::bad_alloc, the runtime needs memory itself: for the exception and, for the first
// one in a thread, for its record of that thread's exceptions. If it gets none for the record, it
// ends the process. So the linker redirects calls of malloc, calloc, realloc and free to this file
// (its option --wrap), and if the heap has nothing, they get one of these slots. The library's own
// requests do not use the slots: operator new and AllocateBlock call the real malloc and fail.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

// The linker's names for the real functions.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

namespace {

// In bytes; 16 KiB in all.
constexpr std::size_t kSlotSize = 512;
constexpr std::size_t kSlotCount = 32;

// Static and without a lock, since any thread can need one when nothing can be allocated.
alignas(16) char slots[kSlotCount][kSlotSize];
std::atomic<std::uint32_t> slotsInUse{0};  // a bit for each slot

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
  // An address below the slots makes the difference wrap to a large number.
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
  // Compares with a quotient, since count * size can wrap.
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
    // A new block can be a slot. An existing block of the heap cannot move to one, since only the
    // heap knows how many bytes to copy.
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

// Past the slots. Without a new-handler, which nothing here installs.
void* operator new(std::size_t size) {
  void* const block = __real_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
