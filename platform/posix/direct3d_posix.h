// Direct3D 9 as the library uses it. Linux has none, but a program can have a library with this
// interface beside it, as the tests do.

#ifndef LAUNCHER_PLATFORM_POSIX_DIRECT3D_POSIX_H_
#define LAUNCHER_PLATFORM_POSIX_DIRECT3D_POSIX_H_

#include <cstdint>

#include "platform/posix/win32_posix.h"

using HRESULT = std::int32_t;
using ULONG = std::uint32_t;
using HMONITOR = void*;
using HWND = void*;
struct GUID;
using REFIID = const GUID&;

inline constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }

enum D3DFORMAT : std::uint32_t { D3DFMT_X8R8G8B8 = 22 };
enum D3DDEVTYPE : std::uint32_t {};
enum D3DMULTISAMPLE_TYPE : std::uint32_t {};
enum D3DRESOURCETYPE : std::uint32_t {};
struct D3DADAPTER_IDENTIFIER9;
struct D3DCAPS9;
struct D3DPRESENT_PARAMETERS;
struct IDirect3DDevice9;

inline constexpr HRESULT D3D_OK = 0;
inline constexpr HRESULT D3DERR_NOTAVAILABLE = -2005530518;  // 0x8876086A

struct D3DDISPLAYMODE {
  UINT Width;
  UINT Height;
  UINT RefreshRate;
  D3DFORMAT Format;
};

// All of its functions in their order, so that the source of such a library also builds for
// Windows.
struct IDirect3D9 {
  virtual HRESULT WINAPI QueryInterface(REFIID interfaceId, void** object) = 0;
  virtual ULONG WINAPI AddRef() = 0;
  virtual ULONG WINAPI Release() = 0;
  virtual HRESULT WINAPI RegisterSoftwareDevice(void* initialize) = 0;
  virtual UINT WINAPI GetAdapterCount() = 0;
  virtual HRESULT WINAPI GetAdapterIdentifier(UINT adapter, DWORD flags,
                                              D3DADAPTER_IDENTIFIER9* identifier) = 0;
  virtual UINT WINAPI GetAdapterModeCount(UINT adapter, D3DFORMAT format) = 0;
  virtual HRESULT WINAPI EnumAdapterModes(UINT adapter, D3DFORMAT format, UINT mode,
                                          D3DDISPLAYMODE* found) = 0;
  virtual HRESULT WINAPI GetAdapterDisplayMode(UINT adapter, D3DDISPLAYMODE* mode) = 0;
  virtual HRESULT WINAPI CheckDeviceType(UINT adapter, D3DDEVTYPE type, D3DFORMAT display,
                                         D3DFORMAT backBuffer, BOOL isWindowed) = 0;
  virtual HRESULT WINAPI CheckDeviceFormat(UINT adapter, D3DDEVTYPE type, D3DFORMAT display,
                                           DWORD usage, D3DRESOURCETYPE resource,
                                           D3DFORMAT checked) = 0;
  virtual HRESULT WINAPI CheckDeviceMultiSampleType(UINT adapter, D3DDEVTYPE type,
                                                    D3DFORMAT surface, BOOL isWindowed,
                                                    D3DMULTISAMPLE_TYPE samples,
                                                    DWORD* qualityLevels) = 0;
  virtual HRESULT WINAPI CheckDepthStencilMatch(UINT adapter, D3DDEVTYPE type, D3DFORMAT display,
                                                D3DFORMAT target, D3DFORMAT depth) = 0;
  virtual HRESULT WINAPI CheckDeviceFormatConversion(UINT adapter, D3DDEVTYPE type, D3DFORMAT from,
                                                     D3DFORMAT to) = 0;
  virtual HRESULT WINAPI GetDeviceCaps(UINT adapter, D3DDEVTYPE type, D3DCAPS9* caps) = 0;
  virtual HMONITOR WINAPI GetAdapterMonitor(UINT adapter) = 0;
  virtual HRESULT WINAPI CreateDevice(UINT adapter, D3DDEVTYPE type, HWND window, DWORD behaviour,
                                      D3DPRESENT_PARAMETERS* presentation,
                                      IDirect3DDevice9** device) = 0;

 protected:
  ~IDirect3D9() = default;  // released, not deleted
};

extern "C" IDirect3D9* WINAPI Direct3DCreate9(UINT sdkVersion);

#endif  // LAUNCHER_PLATFORM_POSIX_DIRECT3D_POSIX_H_
