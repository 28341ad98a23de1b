// For a lookup's line that is not printed with one call of the runtime: MinGW's own printf and the
// runtime's fwrite write each character by itself if the output is a console.

#include <gtest/gtest.h>

#include "launcher_dll.h"
#include "support/import_patch_windows.h"

namespace launcher {
namespace {

int calls = 0;

int CountCall(const char* /*format*/, ...) { return ++calls; }

TEST(CallLine, IsPrintedWithOneCall) {
  const test::ImportPatch patch("printf_s", reinterpret_cast<void*>(CountCall));
  EXPECT_EQ(QX_LoadStringToMemory(1, nullptr), QX_BAD_ARGUMENT);
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace launcher
