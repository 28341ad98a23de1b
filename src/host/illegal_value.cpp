// QX_GetIllegalValue and QX_ResetIllegalValue: a number that callers draw and share. Nothing in the
// library reads it.

#include <cstdint>
#include <cstdlib>

#include "launcher_dll.h"
#include "platform/win32.h"

namespace launcher {
namespace {

std::int32_t illegalValue = 0;

}  // namespace
}  // namespace launcher

std::int32_t QX_CALL QX_GetIllegalValue() { return launcher::illegalValue; }

std::int32_t QX_CALL QX_ResetIllegalValue() {
  std::srand(static_cast<std::uint32_t>(_time64(nullptr)));
  // Weak, but callers can know the runtime's sequence.
  launcher::illegalValue = std::rand();  // NOLINT(cert-msc30-c,cert-msc50-cpp)
  return launcher::illegalValue;
}
