// Callers of a 32-bit DLL keep the stack aligned to four bytes only, and the cipher's kernels keep
// vectors there.

#include <gtest/gtest.h>

#include "launcher_dll.h"
#include "support/bytes.h"

namespace launcher {
namespace {

// Enciphers 3000 bytes with a stack that is `offset` bytes off an alignment to 64. The result
// replaces the offset.
CipherCode Encode(std::int32_t offset, const std::uint8_t* payload, std::uint8_t* output) {
  asm volatile(
      "movl %%esp, %%ebx\n\t"
      "andl $-64, %%esp\n\t"
      "subl %%eax, %%esp\n\t"
      "pushl %%edx\n\t"
      "pushl $3000\n\t"
      "pushl %%ecx\n\t"
      "call *%%esi\n\t"
      "movl %%ebx, %%esp"
      : "+a"(offset), "+c"(payload), "+d"(output)
      : "S"(&file_cipher_encode)
      : "ebx", "memory", "cc");
  return offset;
}

TEST(StackAlignment, IsNoConcernOfTheCaller) {
  const test::Bytes payload = test::Pattern(3000);
  test::Bytes expected(file_cipher_get_encode_size(3000));
  file_cipher_encode(payload.data(), 3000, expected.data());
  for (std::int32_t offset = 0; offset < 64; offset += 4) {
    test::Bytes output(expected.size());
    EXPECT_EQ(Encode(offset, payload.data(), output.data()), QX_CIPHER_SUCCEEDED);
    EXPECT_EQ(output, expected) << offset;
  }
}

}  // namespace
}  // namespace launcher
