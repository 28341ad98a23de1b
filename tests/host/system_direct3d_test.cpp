// For a Direct3D of the system that is not found, or whose modes are read wrongly.

#include <gtest/gtest.h>

#include <cstdio>

#include "launcher_dll.h"
#include "support/system.h"

TEST(SystemDirect3D, GivesModesThatCheckOut) {
  char text[65536] = "";
  QX_EnumDisplayMode(0, 0, text, sizeof text);
  int width = 0;
  int height = 0;
  unsigned rate = 0;
  std::sscanf(text, "{ \"DisplayMode\": [ {\"Width\": %d, \"Height\": %d, \"Hz\": %u}", &width,
              &height, &rate);
  EXPECT_EQ(rate != 0, launcher::test::kHasDirect3D) << text;
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, width, height, rate),
            launcher::test::kHasDirect3D ? QX_SUCCEEDED : QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_EnumDisplayMode(1000, 0, text, sizeof text), 0u) << "no such adapter";
}
