// Memory: blocks in this process, and reads and writes across processes.

#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <mutex>

#include "platform/posix/faults.h"
#include "platform/posix/process_handle.h"

namespace launcher::posix {
namespace {

// VirtualFreeEx gets only the address of a block, but munmap needs its size too.
std::mutex blocksMutex;
std::map<void*, std::size_t> blocks;

enum class Direction { kRead, kWrite };

// Copies between this process and `process`. The kernel decides whether that is permitted. A part
// is a failure, as on Windows.
BOOL Transfer(Direction direction, HANDLE process, void* remote, void* local, std::size_t size,
              std::size_t* done) {
  const pid_t pid = ProcessIdOf(process);
  if (pid == 0) return Fail(kErrorInvalidHandle);
  const iovec here = {local, size};
  const iovec there = {remote, size};
  const ssize_t count = direction == Direction::kRead
                            ? process_vm_readv(pid, &here, 1, &there, 1, 0)
                            : process_vm_writev(pid, &here, 1, &there, 1, 0);
  if (done != nullptr) *done = count < 0 ? 0 : static_cast<std::size_t>(count);
  if (count < 0 || static_cast<std::size_t>(count) != size) return Fail(kErrorNoAccess);
  return TRUE;
}

}  // namespace
}  // namespace launcher::posix

void* VirtualAllocEx(HANDLE process, void* address, SIZE_T size, DWORD type, DWORD protection) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return nullptr;
  if (ProcessIdOf(process) != getpid() || address != nullptr || size == 0 ||
      type != (MEM_RESERVE | MEM_COMMIT) || protection != PAGE_READWRITE) {
    Fail(kErrorInvalidParameter);
    return nullptr;
  }
  // MAP_32BIT: an address in the first 2 GiB.
  void* const block =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0);
  if (block == MAP_FAILED) {
    Fail(kErrorNotEnoughMemory);
    return nullptr;
  }
  const bool isNoted = WithoutThrowing(false, [=] {
    const std::lock_guard<std::mutex> lock(blocksMutex);
    blocks[block] = size;
    return true;
  });
  if (!isNoted) {
    munmap(block, size);
    return nullptr;
  }
  CountObject(1);
  return block;
}

BOOL VirtualFreeEx(HANDLE process, void* address, SIZE_T size, DWORD type) {
  using namespace launcher::posix;
  const std::lock_guard<std::mutex> lock(blocksMutex);
  const auto block = blocks.find(address);
  if (ProcessIdOf(process) != getpid() || block == blocks.end() || size != 0 ||
      type != MEM_RELEASE) {
    return Fail(kErrorInvalidParameter);
  }
  munmap(block->first, block->second);
  blocks.erase(block);
  CountObject(-1);
  return MustFail(__func__) ? FALSE : TRUE;
}

BOOL WriteProcessMemory(HANDLE process, void* address, const void* data, SIZE_T size,
                        SIZE_T* written) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  return Transfer(Direction::kWrite, process, address, const_cast<void*>(data), size, written);
}

BOOL ReadProcessMemory(HANDLE process, const void* address, void* buffer, SIZE_T size,
                       SIZE_T* read) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  return Transfer(Direction::kRead, process, const_cast<void*>(address), buffer, size, read);
}

HLOCAL LocalAlloc(UINT flags, SIZE_T size) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return nullptr;
  if (flags != LMEM_FIXED) {
    Fail(kErrorInvalidParameter);
    return nullptr;
  }
  // For 0 bytes Windows returns a block too, which malloc may not do.
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    Fail(kErrorNotEnoughMemory);
  } else {
    CountObject(1);
  }
  return block;
}

HLOCAL LocalFree(HLOCAL block) {
  if (block != nullptr) launcher::posix::CountObject(-1);
  std::free(block);
  return nullptr;
}
