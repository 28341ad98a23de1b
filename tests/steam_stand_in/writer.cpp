// Writes one cloud file again and again, and ends in the middle of that.
//
//   steam_stand_in_writer MILLISECONDS

#include <atomic>
#include <cstdlib>
#include <string>

#include "platform/steam_api.h"
#include "platform/win32.h"
#include "support/system.h"

namespace {

constexpr int kKilled = 9;

std::atomic<int> filesWritten{0};
unsigned timeLeft = 0;

void WriteOrKill(int number) {
  if (number == 0) {
    while (filesWritten < 2) Sleep(1);
    Sleep(timeLeft);
    std::_Exit(kKilled);
  }
  for (;; ++filesWritten) {
    const std::string content(300'000, static_cast<char>('a' + filesWritten % 26));
    if (!SteamRemoteStorage()->FileWrite("save", content.data(), 300'000)) std::_Exit(1);
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || !SteamAPI_Init()) return 1;
  timeLeft = static_cast<unsigned>(std::atoi(arguments[1]));
  launcher::test::RunInThreads(2, WriteOrKill);
}
