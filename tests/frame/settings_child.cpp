// settings_child LOADS: loads the settings that many times, and removes their file before each time
// but the first. Exit code: 0 if they were always right.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "launcher_dll.h"

int main(int argumentCount, char** arguments) {
  const int loads = argumentCount == 2 ? std::atoi(arguments[1]) : 0;
  if (loads <= 0) return 2;
  if (std::freopen("settings_child.txt", "a", stdout) == nullptr) return 2;
  for (int i = 0; i < loads; ++i) {
    if (i != 0) std::remove("config.json");
    char text[128] = "";
    if (QX_LoadString(5001, text, sizeof text) != QX_SUCCEEDED) return 1;
    if (std::strcmp(text, "ci-api.orvane.example") != 0) return 1;
  }
  return 0;
}
