#include "launch/remote_block.h"

namespace launcher {

bool RemoteBlock::Fill(const void* data, std::uint32_t size) {
  block_ = VirtualAllocEx(process_, nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  return block_ != nullptr && WriteProcessMemory(process_, block_, data, size, nullptr);
}

std::uint32_t RemoteBlock::Address() const {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(block_));
}

void RemoteBlock::Reset() {
  constexpr SIZE_T kWholeBlock = 0;
  if (block_ != nullptr) VirtualFreeEx(process_, block_, kWholeBlock, MEM_RELEASE);
  block_ = nullptr;
}

}  // namespace launcher
