// Writes one cloud file again and again, until it is killed.
//
//   steam_stand_in_writer VERSION

#include <cstdlib>

#include "platform/steam_api.h"
#include "steam_stand_in/versions.h"

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || !SteamAPI_Init()) return 1;
  for (auto number = static_cast<unsigned>(std::atoi(arguments[1]));; ++number) {
    const std::string content = launcher::test::Version(number);
    if (!SteamRemoteStorage()->FileWrite("save", content.data(),
                                         static_cast<std::int32_t>(content.size()))) {
      return 1;
    }
  }
}
