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
  // Callers may rely on the runtime's own sequence, so a weak generator it is.
  std::srand(static_cast<std::uint32_t>(_time64(nullptr)));
  launcher::illegalValue = std::rand();
  return launcher::illegalValue;
}
