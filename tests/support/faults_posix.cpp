// The linker leads the calls of malloc and of the runtime's streams here (--wrap); the native
// layer's functions fail by its own means.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "platform/posix/faults.h"
#include "support/failure_plan.h"
#include "support/faults.h"

namespace {

launcher::test::FailurePlan memory;
launcher::test::FailurePlan streams;
std::atomic<int> openStreams{0};

}  // namespace

extern "C" {

void* __real_malloc(std::size_t size);
std::FILE* __real_fopen(const char* path, const char* mode);
int __real_fclose(std::FILE* file);
int __real_fgetc(std::FILE* file);
std::size_t __real_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __real_fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* file);

void* __wrap_malloc(std::size_t size) { return memory.IsDue() ? nullptr : __real_malloc(size); }

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  std::FILE* const file = __real_fopen(path, mode);
  if (file != nullptr) ++openStreams;
  return file;
}
int __wrap_fclose(std::FILE* file) {
  --openStreams;
  const int result = __real_fclose(file);  // also one that fails closes
  return streams.IsDue() ? EOF : result;
}
int __wrap_fgetc(std::FILE* file) { return streams.IsDue() ? EOF : __real_fgetc(file); }
std::size_t __wrap_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* file) {
  return streams.IsDue() ? 0 : __real_fread(buffer, size, count, file);
}
std::size_t __wrap_fwrite(const void* buffer, std::size_t size, std::size_t count,
                          std::FILE* file) {
  return streams.IsDue() ? 0 : __real_fwrite(buffer, size, count, file);
}

// Sleep: waiting is not what these tests are about.
void __real__Z5Sleepj(DWORD milliseconds);
void __wrap__Z5Sleepj(DWORD milliseconds) { __real__Z5Sleepj(std::min<DWORD>(milliseconds, 10)); }

}  // extern "C"

void* operator new(std::size_t size) {
  void* const block = __wrap_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

namespace launcher::test {

const std::vector<FaultKind>& FaultKinds() {
  static const std::vector<FaultKind> kinds = {
      {"the platform", false, false,
       [](int n, bool andAllAfter) { posix::FailCall(nullptr, n, andAllAfter); },
       posix::StopFailing},
      {"the platform without CNG", false, true,
       [](int n, bool andAllAfter) {
         posix::FailCall(nullptr, n, andAllAfter);
         posix::FailEveryCall("BCryptCreateHash");
       },
       posix::StopFailing},
      {"streams", false, false, [](int n, bool andAllAfter) { streams.Start(n, andAllAfter); },
       [] { return streams.Stop(); }},
      {"memory", true, false, [](int n, bool andAllAfter) { memory.Start(n, andAllAfter); },
       [] { return memory.Stop(); }},
  };
  return kinds;
}

std::set<std::string> FailedCalls() { return posix::FailedCalls(); }

int OpenObjectCount() { return posix::OpenObjectCount() + openStreams; }

}  // namespace launcher::test
