#include "host/scripted_d3d9.h"

#include "platform/direct3d.h"

namespace launcher::test {
namespace {

Direct3DScript script;

// Only what the library has a use for works.
class ScriptedDirect3D final : public IDirect3D9 {
 public:
  ULONG WINAPI Release() override {
    if (!script.isShared) --script.openObjects;
    return 0;
  }
  UINT WINAPI GetAdapterModeCount(UINT adapter, D3DFORMAT format) override {
    if (!script.isShared) {
      script.adapter = adapter;
      script.format = format;
    }
    return script.failures.IsDue() ? 0 : static_cast<UINT>(script.modes.size());
  }
  HRESULT WINAPI EnumAdapterModes(UINT adapter, D3DFORMAT format, UINT index,
                                  D3DDISPLAYMODE* found) override {
    const bool isAsked = script.isShared || (adapter == script.adapter &&
                                             static_cast<std::uint32_t>(format) == script.format);
    if (!isAsked) {
      return D3DERR_NOTAVAILABLE;
    }
    // Past the last one, so that a test sees whoever asks too far.
    if (index >= script.modes.size()) {
      *found = {};
      return D3D_OK;
    }
    // Written also by a query that fails: it must not count.
    const Direct3DScript::Mode& mode = script.modes[index];
    *found = {mode.width, mode.height, mode.refreshRate, format};
    return mode.answers && !script.failures.IsDue() ? D3D_OK : D3DERR_NOTAVAILABLE;
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
  if (!script.isCreated || script.failures.IsDue()) return nullptr;
  if (!script.isShared) {
    script.sdkVersion = sdkVersion;
    ++script.openObjects;
  }
  return &launcher::test::direct3D;
}

extern "C" launcher::test::Direct3DScript* GetDirect3DScript() { return &launcher::test::script; }
