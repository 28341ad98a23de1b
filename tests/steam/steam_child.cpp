// A game whose exit code is 1 if the library finds Steam.

#include "launcher_dll.h"

int main() {
  QX_SteamAPI_Init();
  return QX_SteamAPI_IsSteamRunning();
}
