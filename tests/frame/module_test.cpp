// The exports of src/frame/. Finds a block that is not zeroed to its end, a size of 0 that changes
// the pointer, and a sign that is tested wrong.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "launcher_dll.h"
#include "support/bytes.h"

namespace launcher {
namespace {

TEST(Result, FailsIfNegative) {
  for (const std::int32_t value : {INT32_MIN, -1, 0, 1, INT32_MAX}) {
    EXPECT_EQ(QX_IsFailed(value), value < 0 ? 1 : 0) << value;
    EXPECT_EQ(QX_IsSucceeded(value), value < 0 ? 0 : 1) << value;
  }
}

TEST(Memory, IsZeroedAndGivenBack) {
  for (const std::uint32_t size : {1u, 2u, 4097u}) {
    // A block that was used before has other bytes.
    void* block = nullptr;
    for (int i = 0; i < 2; ++i) {
      ASSERT_EQ(QX_Allocate(&block, size), QX_SUCCEEDED);
      auto* const bytes = static_cast<std::uint8_t*>(block);
      EXPECT_EQ(test::Bytes(bytes, bytes + size), test::Bytes(size, 0));
      std::fill_n(bytes, size, std::uint8_t{0xCD});
      EXPECT_EQ(QX_Deallocate(block), QX_SUCCEEDED);
    }
  }
  int something = 0;
  void* block = &something;
  EXPECT_EQ(QX_Allocate(&block, 0), QX_BAD_ARGUMENT);
  EXPECT_EQ(block, &something);
  EXPECT_EQ(QX_Deallocate(nullptr), QX_SUCCEEDED);
}

}  // namespace
}  // namespace launcher
