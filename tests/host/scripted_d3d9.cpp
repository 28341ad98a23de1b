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

  HRESULT WINAPI QueryInterface(REFIID, void**) override { return D3DERR_NOTAVAILABLE; }
  ULONG WINAPI AddRef() override { return 0; }
  HRESULT WINAPI RegisterSoftwareDevice(void*) override { return D3DERR_NOTAVAILABLE; }
  UINT WINAPI GetAdapterCount() override { return 0; }
  HRESULT WINAPI GetAdapterIdentifier(UINT, DWORD, D3DADAPTER_IDENTIFIER9*) override {
    return D3DERR_NOTAVAILABLE;
  }
  HRESULT WINAPI GetAdapterDisplayMode(UINT, D3DDISPLAYMODE*) override {
    return D3DERR_NOTAVAILABLE;
  }
  HRESULT WINAPI CheckDeviceType(UINT, D3DDEVTYPE, D3DFORMAT, D3DFORMAT, BOOL) override {
    return D3DERR_NOTAVAILABLE;
  }
  HRESULT WINAPI CheckDeviceFormat(UINT, D3DDEVTYPE, D3DFORMAT, DWORD, D3DRESOURCETYPE,
                                   D3DFORMAT) override {
    return D3DERR_NOTAVAILABLE;
  }
  HRESULT WINAPI CheckDeviceMultiSampleType(UINT, D3DDEVTYPE, D3DFORMAT, BOOL, D3DMULTISAMPLE_TYPE,
                                            DWORD*) override {
    return D3DERR_NOTAVAILABLE;
  }
  HRESULT WINAPI CheckDepthStencilMatch(UINT, D3DDEVTYPE, D3DFORMAT, D3DFORMAT,
                                        D3DFORMAT) override {
    return D3DERR_NOTAVAILABLE;
  }
  HRESULT WINAPI CheckDeviceFormatConversion(UINT, D3DDEVTYPE, D3DFORMAT, D3DFORMAT) override {
    return D3DERR_NOTAVAILABLE;
  }
  HRESULT WINAPI GetDeviceCaps(UINT, D3DDEVTYPE, D3DCAPS9*) override { return D3DERR_NOTAVAILABLE; }
  HMONITOR WINAPI GetAdapterMonitor(UINT) override { return nullptr; }
  HRESULT WINAPI CreateDevice(UINT, D3DDEVTYPE, HWND, DWORD, D3DPRESENT_PARAMETERS*,
                              IDirect3DDevice9**) override {
    return D3DERR_NOTAVAILABLE;
  }
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
