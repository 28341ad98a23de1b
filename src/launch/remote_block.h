// A block of memory in a process, for another process to read.

#ifndef LAUNCHER_LAUNCH_REMOTE_BLOCK_H_
#define LAUNCHER_LAUNCH_REMOTE_BLOCK_H_

#include <cstdint>

#include "platform/win32.h"

namespace launcher {

// Owns at most one block in `process`, whose handle it borrows and must outlive it.
class RemoteBlock {
 public:
  explicit RemoteBlock(HANDLE process) : process_(process) {}
  RemoteBlock(const RemoteBlock&) = delete;
  RemoteBlock& operator=(const RemoteBlock&) = delete;
  ~RemoteBlock() { Reset(); }

  // Takes a block of `size` bytes, not 0, and copies `data` there. To be called once.
  bool Fill(const void* data, std::uint32_t size);

  // 0 where there is no block.
  std::uint32_t Address() const;

  void Reset();

 private:
  HANDLE process_;
  void* block_ = nullptr;
};

}  // namespace launcher

#endif  // LAUNCHER_LAUNCH_REMOTE_BLOCK_H_
