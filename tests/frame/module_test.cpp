// The exports of src/frame, for wrong bounds of the two result tests and for memory that is not
// zero.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "launcher_dll.h"
#include "support/bytes.h"

namespace launcher {
namespace {

TEST(Result, IsSplitByItsSign) {
  for (const std::int32_t value : {0, 1, 7, std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(QX_IsSucceeded(value), 1) << value;
    EXPECT_EQ(QX_IsFailed(value), 0) << value;
  }
  for (const std::int32_t value : {-1, -1005, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(QX_IsSucceeded(value), 0) << value;
    EXPECT_EQ(QX_IsFailed(value), 1) << value;
  }
}

TEST(Memory, ComesFilledWithZeroBytes) {
  for (const std::uint32_t size : {1u, 2u, 4097u}) {
    void* block = nullptr;
    ASSERT_EQ(QX_Allocate(&block, size), QX_SUCCEEDED);
    const auto* const bytes = static_cast<const std::uint8_t*>(block);
    EXPECT_EQ(test::Bytes(bytes, bytes + size), test::Bytes(size, 0));
    EXPECT_EQ(QX_Deallocate(block), QX_SUCCEEDED);
  }
}

TEST(Memory, OfNoSizeIsRefusedAndThePointerKept) {
  int something = 0;
  void* block = &something;
  EXPECT_EQ(QX_Allocate(&block, 0), QX_BAD_ARGUMENT);
  EXPECT_EQ(block, &something);
}

TEST(Memory, OfNothingCanBeGivenBack) { EXPECT_EQ(QX_Deallocate(nullptr), QX_SUCCEEDED); }

}  // namespace
}  // namespace launcher
