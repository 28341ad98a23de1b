// Guarded catches every exception, so that none leaves an export.

#ifndef LAUNCHER_FRAME_GUARD_H_
#define LAUNCHER_FRAME_GUARD_H_

#include <new>

#include "launcher_dll.h"

namespace launcher {

// Returns the result of `body`, QX_OUT_OF_MEMORY if it throws std::bad_alloc, and `otherwise` if it
// throws anything else.
template <class Body>
ResultCode Guarded(ResultCode otherwise, Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return QX_OUT_OF_MEMORY;
  } catch (...) {
    return otherwise;
  }
}

}  // namespace launcher

#endif  // LAUNCHER_FRAME_GUARD_H_
