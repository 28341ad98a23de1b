// The system's own Direct3D, or none.

#include <gtest/gtest.h>

#include <cstdio>

#include "launcher_dll.h"
#include "support/system.h"

namespace launcher {
namespace {

TEST(SystemDirect3D, GivesModesThatCheckOut) {
  char text[65536] = "";
  const std::uint32_t length = QX_EnumDisplayMode(0, 0, text, sizeof text);
  int width = 0;
  int height = 0;
  unsigned refreshRate = 0;
  const bool hasMode =
      std::sscanf(text, "{ \"DisplayMode\": [ {\"Width\": %d, \"Height\": %d, \"Hz\": %u}", &width,
                  &height, &refreshRate) == 3;
  EXPECT_EQ(hasMode, test::kHasDirect3D) << text;
  EXPECT_EQ(length > 22, test::kHasDirect3D);
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, width, height, refreshRate),
            test::kHasDirect3D ? QX_SUCCEEDED : QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, 1, 1, 1), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_EnumDisplayMode(1000, 0, text, sizeof text), 0u) << "no such adapter";
}

}  // namespace
}  // namespace launcher
