// Where exceptions end: nothing is thrown across an export.

#ifndef LAUNCHER_FRAME_GUARD_H_
#define LAUNCHER_FRAME_GUARD_H_

#include <new>

#include "launcher_dll.h"

namespace launcher {

// Answers what `body` answers; QX_OUT_OF_MEMORY where it runs out of memory, and `otherwise` where
// it ends by any other exception.
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
