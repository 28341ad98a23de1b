// The cipher's exports are called from threads that a game gives little stack.

#include <gtest/gtest.h>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/system.h"

namespace launcher {
namespace {

using test::Bytes;

constexpr std::uintptr_t kLimit = 16 << 10;
constexpr std::uintptr_t kPainted = 48 << 10;
constexpr std::uint8_t kPaint = 0xA5;
constexpr std::uint32_t kPayloadSize = 2 * 2048 + 1024 + 512 + 40;  // every way through a kernel

Bytes g_block;
Bytes g_payload;
void (*g_body)() = nullptr;
std::uintptr_t g_used = 0;

volatile std::uint8_t& StackByte(std::uintptr_t address) {
  return *reinterpret_cast<volatile std::uint8_t*>(address);
}

// Paints the stack below its own frame, downwards as stacks grow, runs the body, and looks for the
// deepest byte that is no longer as painted.
void MeasureBody() {
  volatile std::uint8_t here = 0;
  // This frame, the caller's red zone and what the calls here push.
  const std::uintptr_t top = reinterpret_cast<std::uintptr_t>(&here) - 512;
  for (std::uintptr_t i = 1; i <= kPainted; ++i) {
    StackByte(top - i) = kPaint;
  }
  g_body();
  g_used = kPainted;
  while (StackByte(top - g_used) == kPaint) --g_used;
}

std::uintptr_t StackUsedBy(void (*body)()) {
  g_body = body;
  test::RunInThread(256 << 10, MeasureBody);
  return g_used;
}

void Encode() { file_cipher_encode(g_payload.data(), kPayloadSize, g_block.data()); }

void Decode() {
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  const Bytes& key = g_payload;
  file_cipher_decode(g_block.data(), static_cast<std::uint32_t>(g_block.size()), key.data(), 16,
                     &size, &offset, nullptr);
}

TEST(StackUse, OfTheCipherStaysBelow16KiB) {
  g_payload = test::Pattern(kPayloadSize);
  g_block.resize(file_cipher_get_encode_size(kPayloadSize));
  EXPECT_LT(StackUsedBy(Encode), kLimit);
  EXPECT_GT(g_used, 4u << 10);  // or nothing was measured
  EXPECT_LT(StackUsedBy(Decode), kLimit);
}

}  // namespace
}  // namespace launcher
