// The DLL where there is no memory at all, also not for the exception that says so. A new thread is
// the worst case: the runtime makes what it needs for exceptions at a thread's first one.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <functional>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/import_patch_windows.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

void* __cdecl NoMalloc(std::size_t /*size*/) { return nullptr; }
void* __cdecl NoCalloc(std::size_t /*count*/, std::size_t /*size*/) { return nullptr; }
void* __cdecl NoRealloc(void* /*block*/, std::size_t /*size*/) { return nullptr; }

template <class Function>
void* AddressOf(Function* function) {
  return reinterpret_cast<void*>(function);
}

DWORD WINAPI Run(void* body) {
  (*static_cast<std::function<void()>*>(body))();
  return 0;
}

void RunInNewThread(std::function<void()> body) {
  const HANDLE thread = CreateThread(nullptr, 0, Run, &body, 0, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}

using ExhaustedMemory = test::ScratchTest;

TEST_F(ExhaustedMemory, IsAResultAndNotTheEndOfTheProcess) {
  for (const char* const settings : {"", "{}", "not JSON"}) {
    SCOPED_TRACE(settings);
    if (*settings != '\0') test::WriteFile("config.json", settings);
    ResultCode loaded = 1;
    std::int32_t isStaging = 1;
    ResultCode allocated = 1;
    char untouched = 0;
    char* text = &untouched;
    test::StandardErrorOf([&] {
      const test::ImportPatch noMalloc("malloc", AddressOf(NoMalloc));
      const test::ImportPatch noCalloc("calloc", AddressOf(NoCalloc));
      const test::ImportPatch noRealloc("realloc", AddressOf(NoRealloc));
      RunInNewThread([&] {
        void* block = nullptr;
        allocated = QX_Allocate(&block, 16);
        loaded = QX_LoadStringToMemory(1001, &text);
        isStaging = QX_IsStaging();
      });
    });
    EXPECT_EQ(allocated, QX_OUT_OF_MEMORY);
    EXPECT_EQ(loaded, QX_OUT_OF_MEMORY);
    EXPECT_EQ(text, &untouched);
    EXPECT_EQ(isStaging, 0);
  }
}

}  // namespace
}  // namespace launcher
