// Direct3D 9, loaded on first use, and the owner of its object.

#ifndef LAUNCHER_PLATFORM_DIRECT3D_H_
#define LAUNCHER_PLATFORM_DIRECT3D_H_

#include "platform/owners.h"

#if defined(_WIN32)
#include <d3d9.h>
#else
#include "platform/posix/direct3d_posix.h"
#endif

namespace launcher {

// Releases its own reference only; the object lives as long as others have one.
struct Direct3DKind {
  using Handle = IDirect3D9*;
  static constexpr Handle kNone = nullptr;
  static void Release(Handle handle) { handle->Release(); }
};
using Direct3D = Owner<Direct3DKind>;

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_DIRECT3D_H_
