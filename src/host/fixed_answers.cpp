// The exports that hardly do anything: constants that older launchers ask for, a number that
// callers share, and a check that the settings load.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "config/launcher_config.h"
#include "launcher_dll.h"
#include "platform/win32.h"

namespace launcher {
namespace {

// Nothing in the library reads it except QX_GetIllegalValue. It has no lock: callers must not use
// it from several threads at once.
std::int32_t illegalValue = 0;

}  // namespace
}  // namespace launcher

std::uint8_t QX_CALL QX_ExistClient() { return 1; }

ResultCode QX_CALL QX_Unzip(std::uint32_t /*first*/, std::uint32_t second, std::uint32_t third,
                            std::uint32_t fourth) {
  return second != 0 && third != 0 && fourth != 0 ? QX_SUCCEEDED : QX_BAD_ARGUMENT;
}

std::int32_t QX_CALL QX_SteamAPI_GetMirvelURL(std::uint32_t /*first*/, std::uint32_t /*second*/,
                                              std::uint32_t /*third*/) {
  return 0;
}

std::int32_t QX_CALL QX_GetIllegalValue() { return launcher::illegalValue; }

// The seed changes once a second, so two calls within a second give the same value.
std::int32_t QX_CALL QX_ResetIllegalValue() {
  std::srand(static_cast<std::uint32_t>(_time64(nullptr)));
  // rand is weak, but callers may rely on the runtime's sequence.
  launcher::illegalValue = std::rand();  // NOLINT(cert-msc30-c,cert-msc50-cpp)
  return launcher::illegalValue;
}

// In spite of its name it reads no setting: it returns 1 if the settings load.
std::int32_t QX_CALL QX_IsStaging() {
  // Not by Guarded, which drops the exception's text: this export prints it.
  try {
    launcher::LoadLauncherConfig(launcher::kConfigPath);
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "Error: %s\n", error.what());
    std::fflush(stderr);
    return 0;
  }
}
