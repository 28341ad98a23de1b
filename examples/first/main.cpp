#include <cstdio>

#include "launcher_dll.h"

int main() {
  char server[256];
  if (QX_LoadString(1001, server, sizeof server) != QX_SUCCEEDED) return 1;
  std::printf("the game's server is %s\n", server);
}
