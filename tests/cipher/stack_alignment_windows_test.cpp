// Callers of a 32-bit DLL keep the stack aligned to four bytes only, and the cipher's kernels keep
// vectors there.

#include <gtest/gtest.h>

#include "launcher_dll.h"
#include "support/bytes.h"

namespace launcher {
namespace {

struct Call {
  const std::uint8_t* payload;
  std::uint32_t size;
  std::uint8_t* output;
  CipherCode(QX_CALL* function)(const std::uint8_t*, std::uint32_t, std::uint8_t*);
  std::uint32_t offset;
};

// Calls with a stack that is `offset` bytes off an alignment to 64.
CipherCode Make(const Call& call) {
  CipherCode result = -1;
  asm volatile(
      "movl %%esp, %%ebx\n\t"
      "andl $-64, %%esp\n\t"
      "subl 16(%%esi), %%esp\n\t"
      "pushl 8(%%esi)\n\t"
      "pushl 4(%%esi)\n\t"
      "pushl (%%esi)\n\t"
      "call *12(%%esi)\n\t"
      "movl %%ebx, %%esp"
      : "=a"(result)
      : "S"(&call)
      : "ebx", "ecx", "edx", "memory", "cc");
  return result;
}

TEST(StackAlignment, IsNoConcernOfTheCaller) {
  const test::Bytes payload = test::Pattern(3000);
  test::Bytes expected(file_cipher_get_encode_size(3000));
  ASSERT_EQ(file_cipher_encode(payload.data(), 3000, expected.data()), QX_CIPHER_SUCCEEDED);
  for (std::uint32_t offset = 0; offset < 64; offset += 4) {
    test::Bytes output(expected.size());
    EXPECT_EQ(Make({payload.data(), 3000, output.data(), file_cipher_encode, offset}),
              QX_CIPHER_SUCCEEDED);
    EXPECT_EQ(output, expected) << offset;
  }
}

}  // namespace
}  // namespace launcher
