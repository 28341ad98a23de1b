// QX_IsStaging: whether the settings load, and why not.

#include <cstdint>
#include <cstdio>
#include <exception>

#include "config/launcher_config.h"
#include "launcher_dll.h"

std::int32_t QX_CALL QX_IsStaging() {
  // Catches for itself instead of by Guarded, since it prints the text.
  try {
    launcher::LoadLauncherConfig(launcher::kConfigPath);
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "Error: %s\n", error.what());
    std::fflush(stderr);
    return 0;
  }
}
