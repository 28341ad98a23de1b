// The linker redirects the calls of malloc, calloc, free, fsync, Sleep and the runtime's streams to
// these functions (--wrap). Streams fail as the native layer's functions do.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "platform/posix/faults.h"
#include "support/faults.h"

namespace posix = launcher::posix;

namespace {

launcher::test::FailurePlan memory;
std::atomic<int> openBlocks{0};

}  // namespace

extern "C" {

void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* block);
std::FILE* __real_fopen(const char* path, const char* mode);
int __real_fclose(std::FILE* file);
int __real_fgetc(std::FILE* file);
std::size_t __real_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __real_fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* file);
void __real__Z5Sleepj(DWORD milliseconds);

// The compiler makes calloc of malloc and memset.
void* __wrap_calloc(std::size_t count, std::size_t size) {
  void* const block = memory.IsDue() ? nullptr : __real_calloc(count, size);
  if (block != nullptr) ++openBlocks;
  return block;
}
void* __wrap_malloc(std::size_t size) { return __wrap_calloc(1, size); }
void __wrap_free(void* block) {
  if (block != nullptr) --openBlocks;
  __real_free(block);
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  std::FILE* const file = __real_fopen(path, mode);
  if (file != nullptr) posix::CountObject(1);
  return file;
}
int __wrap_fclose(std::FILE* file) {
  posix::CountObject(-1);
  const int result = __real_fclose(file);  // closes even if it fails
  return posix::MustFail("fclose") ? EOF : result;
}
int __wrap_fgetc(std::FILE* file) { return posix::MustFail("fgetc") ? EOF : __real_fgetc(file); }
std::size_t __wrap_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* file) {
  return posix::MustFail("fread") ? 0 : __real_fread(buffer, size, count, file);
}
std::size_t __wrap_fwrite(const void* buffer, std::size_t size, std::size_t count,
                          std::FILE* file) {
  return posix::MustFail("fwrite") ? 0 : __real_fwrite(buffer, size, count, file);
}

// The order of calls is tested, not the disk, and nobody waits here for a client.
int __wrap_fsync(int /*descriptor*/) { return 0; }
void __wrap__Z5Sleepj(DWORD milliseconds) { __real__Z5Sleepj(std::min<DWORD>(milliseconds, 10)); }

}  // extern "C"

void* operator new(std::size_t size) {
  void* const block = __wrap_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { __wrap_free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { __wrap_free(block); }

namespace launcher::test {

std::vector<FaultKind> FaultKinds() {
  const auto start = [](int n, bool andAllAfter) { posix::FailCall(nullptr, n, andAllAfter); };
  return {{"calls", start, posix::StopFailing}, PlannedFaults("memory", memory)};
}

int OpenObjectCount() { return posix::OpenObjectCount() + openBlocks; }

}  // namespace launcher::test
