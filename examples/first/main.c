/* The shortest program with the library: where is the game's server? */

#include <stdio.h>

#include "launcher_dll.h"

int main(void) {
  char server[256];
  if (QX_LoadString(1001, server, sizeof server) != QX_SUCCEEDED) return 1;
  printf("the game's server is %s\n", server);
  return 0;
}
