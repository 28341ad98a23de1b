// For a buffer too many on the stack: games call the cipher from threads that have little of it.

#include <gtest/gtest.h>

#include "launcher_dll.h"
#include "support/bytes.h"

namespace launcher {
namespace {

constexpr std::uintptr_t kPainted = 48 << 10;
constexpr std::uint8_t kPaint = 0xA5;
constexpr std::uint32_t kPayloadSize = 2 * 2048 + 1024 + 512 + 40;  // every way through a kernel

volatile std::uint8_t& StackByte(std::uintptr_t address) {
  return *reinterpret_cast<volatile std::uint8_t*>(address);
}

std::uintptr_t StackUse() {
  const test::Bytes payload = test::Pattern(kPayloadSize);
  test::Bytes block(file_cipher_get_encode_size(kPayloadSize));
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  const std::uint8_t here = 0;
  // Below this function's own frame and those of the loops here.
  const std::uintptr_t top = reinterpret_cast<std::uintptr_t>(&here) - 512;
  for (std::uintptr_t i = 1; i <= kPainted; ++i) StackByte(top - i) = kPaint;
  file_cipher_encode(payload.data(), kPayloadSize, block.data());
  file_cipher_decode(block.data(), static_cast<std::uint32_t>(block.size()), payload.data(), 16,
                     &size, &offset, nullptr);
  std::uintptr_t used = kPainted;
  while (StackByte(top - used) == kPaint) --used;
  return used;
}

TEST(StackUse, OfTheCipherStaysBelow16KiB) {
  const std::uintptr_t used = StackUse();
  EXPECT_LT(used, 16u << 10);
  EXPECT_GT(used, 4u << 10);  // or nothing was measured
}

}  // namespace
}  // namespace launcher
