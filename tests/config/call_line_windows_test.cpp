// How many writes a lookup's line takes. A pipe of messages has one message for each write.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <string>

#include "launcher_dll.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

const char* const kPipe = "\\\\.\\pipe\\launcher_call_line_test";

using CallLine = test::ScratchTest;

TEST_F(CallLine, IsPrintedWithOneWrite) {
  const HANDLE reader =
      CreateNamedPipeA(kPipe, PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0,
                       4096, 0, nullptr);
  ASSERT_NE(reader, INVALID_HANDLE_VALUE);
  const HANDLE writer = CreateFileA(kPipe, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(writer, INVALID_HANDLE_VALUE);

  // This program and the DLL share the runtime and so the stream.
  std::fflush(stdout);
  const int before = _dup(1);
  const int pipe = _open_osfhandle(reinterpret_cast<intptr_t>(writer), _O_TEXT);
  _dup2(pipe, 1);
  _close(pipe);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  EXPECT_EQ(QX_LoadStringToMemory(-2147483647, nullptr), QX_BAD_ARGUMENT);
  _dup2(before, 1);
  _close(before);
  std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);

  char message[128];
  DWORD size = 0;
  EXPECT_TRUE(ReadFile(reader, message, sizeof message, &size, nullptr));
  EXPECT_EQ(std::string(message, size), "QX_LoadStringToMemory called with label: -2147483647\r\n");
  CloseHandle(reader);
}

}  // namespace
}  // namespace launcher
