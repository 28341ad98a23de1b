// Direct3DCreate9, which calls the function of the system's Direct3D 9. If that is missing, it
// fails: it returns null.

#include "platform/direct3d.h"
#include "platform/late_library.h"

namespace {

#if defined(_WIN32)
constexpr char kLibrary[] = "d3d9.dll";
#else
constexpr char kLibrary[] = "libd3d9.so";
#endif

}  // namespace

IDirect3D9* WINAPI Direct3DCreate9(UINT sdkVersion) {
  using Function = decltype(&Direct3DCreate9);
  const auto function = reinterpret_cast<Function>(launcher::FindLateFunction(
      kLibrary, "Direct3DCreate9", launcher::LateFolders::kProgramAndSystem));
  return function != nullptr ? function(sdkVersion) : nullptr;
}
