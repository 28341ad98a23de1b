// For a constant that changes, and for a number that is drawn anew or by another seed.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "launcher_dll.h"

namespace launcher {
namespace {

TEST(FixedAnswers, AreFixed) {
  EXPECT_EQ(QX_ExistClient(), 1);
  EXPECT_EQ(QX_SteamAPI_GetMirvelURL(1, 2, 3), 0);
  EXPECT_EQ(QX_Unzip(0, 1, 1, 1), QX_SUCCEEDED);
  EXPECT_EQ(QX_Unzip(1, 0, 1, 1), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_Unzip(1, 1, 0, 1), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_Unzip(1, 1, 1, 0), QX_BAD_ARGUMENT);
}

// Before any call draws one.
const std::int32_t valueAtStart = QX_GetIllegalValue();

TEST(FixedAnswers, IllegalValueIsDrawnByTheSecond) {
  EXPECT_EQ(valueAtStart, 0);
  std::time_t before = 0;
  std::int32_t drawn = 0;
  do {  // within one second, most likely at once
    before = std::time(nullptr);
    drawn = QX_ResetIllegalValue();
    EXPECT_EQ(QX_GetIllegalValue(), drawn);
  } while (std::time(nullptr) != before);
  // This program and the library share the runtime, natively and on Windows.
  std::srand(static_cast<unsigned>(before));
  EXPECT_EQ(drawn, std::rand());
}

}  // namespace
}  // namespace launcher
