// QX_IsFailed and QX_IsSucceeded: the sign of a result code, for callers without this header.

#include <cstdint>

#include "launcher_dll.h"

std::int32_t QX_CALL QX_IsFailed(std::int32_t value) { return value < 0 ? 1 : 0; }

std::int32_t QX_CALL QX_IsSucceeded(std::int32_t value) { return value >= 0 ? 1 : 0; }
