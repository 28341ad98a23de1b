#include "host/scripted_d3d9.h"

#include "platform/direct3d.h"

namespace launcher::test {
namespace {

Direct3DScript script;

constexpr UINT kSdkVersion = 32;
constexpr auto kFormat = static_cast<D3DFORMAT>(22);

// Only what the library calls works.
class ScriptedDirect3D final : public IDirect3D9 {
 public:
  ULONG WINAPI Release() override {
    if (!script.isShared) --script.openObjects;
    return 0;
  }
  UINT WINAPI GetAdapterModeCount(UINT adapter, D3DFORMAT format) override {
    const bool isKnown = adapter == script.adapter && format == kFormat;
    return isKnown && !script.failures.IsDue() ? static_cast<UINT>(script.modes.size()) : 0;
  }
  HRESULT WINAPI EnumAdapterModes(UINT adapter, D3DFORMAT format, UINT index,
                                  D3DDISPLAYMODE* found) override {
    if (adapter != script.adapter || format != kFormat) return D3DERR_NOTAVAILABLE;
    // Succeeds past the last one, so that a test sees a query too many.
    Direct3DScript::Mode mode = {};
    if (index < script.modes.size()) mode = script.modes[index];
    // A query that fails writes a mode too, which must not count.
    *found = {mode.width, mode.height, mode.refreshRate, format};
    return mode.succeeds && !script.failures.IsDue() ? D3D_OK : D3DERR_NOTAVAILABLE;
  }

  ULONG WINAPI AddRef() override { return 0; }
  UINT WINAPI GetAdapterCount() override { return 0; }
  HMONITOR WINAPI GetAdapterMonitor(UINT) override { return nullptr; }

// A method that the library does not call.
#define UNUSED(name, ...) \
  HRESULT WINAPI name(__VA_ARGS__) override { return D3DERR_NOTAVAILABLE; }
  UNUSED(QueryInterface, REFIID, void**)
  UNUSED(RegisterSoftwareDevice, void*)
  UNUSED(GetAdapterIdentifier, UINT, DWORD, D3DADAPTER_IDENTIFIER9*)
  UNUSED(GetAdapterDisplayMode, UINT, D3DDISPLAYMODE*)
  UNUSED(CheckDeviceType, UINT, D3DDEVTYPE, D3DFORMAT, D3DFORMAT, BOOL)
  UNUSED(CheckDeviceFormat, UINT, D3DDEVTYPE, D3DFORMAT, DWORD, D3DRESOURCETYPE, D3DFORMAT)
  UNUSED(CheckDeviceMultiSampleType, UINT, D3DDEVTYPE, D3DFORMAT, BOOL, D3DMULTISAMPLE_TYPE, DWORD*)
  UNUSED(CheckDepthStencilMatch, UINT, D3DDEVTYPE, D3DFORMAT, D3DFORMAT, D3DFORMAT)
  UNUSED(CheckDeviceFormatConversion, UINT, D3DDEVTYPE, D3DFORMAT, D3DFORMAT)
  UNUSED(GetDeviceCaps, UINT, D3DDEVTYPE, D3DCAPS9*)
  UNUSED(CreateDevice, UINT, D3DDEVTYPE, HWND, DWORD, D3DPRESENT_PARAMETERS*, IDirect3DDevice9**)
#undef UNUSED
};

ScriptedDirect3D direct3D;

}  // namespace
}  // namespace launcher::test

IDirect3D9* WINAPI Direct3DCreate9(UINT sdkVersion) {
  using launcher::test::script;
  if (sdkVersion != launcher::test::kSdkVersion || script.failures.IsDue()) return nullptr;
  if (!script.isShared) ++script.openObjects;
  return &launcher::test::direct3D;
}

extern "C" launcher::test::Direct3DScript* GetDirect3DScript() { return &launcher::test::script; }
