// QX_EnumDisplayMode and QX_CheckDisplayMode: the display modes of an adapter.
//
// Each call queries Direct3D again, and only for the modes of the game's pixel format.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "launcher_dll.h"
#include "platform/direct3d.h"

namespace launcher {
namespace {

constexpr UINT kSdkVersion = 32;  // D3D_SDK_VERSION of d3d9.h without its debug bit

// Callers parse this text, so its blanks and line ends are part of the interface.
constexpr char kHead[] = "{\n\"DisplayMode\": [\n";
constexpr char kModeLine[] = "  {\"Width\": %u, \"Height\": %u, \"Hz\": %u}%s\n";
constexpr char kTail[] = "]\n}";
// The format and room for three numbers of ten digits.
constexpr std::size_t kModeLineCapacity = sizeof kModeLine + 3 * sizeof "4294967295";

// The modes of one adapter, by index. The query of each may fail. Borrows the Direct3D object.
class AdapterModes {
 public:
  AdapterModes(IDirect3D9* direct3D, UINT adapter)
      : direct3D_(direct3D),
        adapter_(adapter),
        count_(direct3D->GetAdapterModeCount(adapter, D3DFMT_X8R8G8B8)) {}

  UINT Count() const { return count_; }
  bool Get(UINT index, D3DDISPLAYMODE* mode) const {
    return SUCCEEDED(direct3D_->EnumAdapterModes(adapter_, D3DFMT_X8R8G8B8, index, mode));
  }

 private:
  IDirect3D9* direct3D_;
  UINT adapter_;
  UINT count_;
};

// Appends texts to a buffer of at least one byte. After each call the text in it has a terminator,
// whose byte remains part of the capacity that is left.
class TextWriter {
 public:
  TextWriter(char* buffer, std::uint32_t capacity) : next_(buffer), capacityLeft_(capacity) {}

  // Returns false if the text does not fit, after it has written as much as fits.
  bool Write(const char* text) {
    const auto length = static_cast<std::uint32_t>(std::strlen(text));
    const std::uint32_t written = std::min(length, capacityLeft_ - 1);
    std::memcpy(next_, text, written);
    next_[written] = '\0';
    next_ += written;
    capacityLeft_ -= written;
    return written == length;
  }

  std::uint32_t CapacityLeft() const { return capacityLeft_; }

 private:
  char* next_;
  std::uint32_t capacityLeft_;
};

bool WriteModes(TextWriter* text, const AdapterModes& modes) {
  if (!text->Write(kHead)) return false;
  for (UINT i = 0; i < modes.Count(); ++i) {
    D3DDISPLAYMODE mode = {};
    if (!modes.Get(i, &mode)) continue;
    // The index alone decides: if the query of the last mode fails, a comma remains at the end.
    const char* const separator = i == modes.Count() - 1 ? "" : ",";
    char line[kModeLineCapacity];
    std::snprintf(line, sizeof line, kModeLine, mode.Width, mode.Height, mode.RefreshRate,
                  separator);
    if (!text->Write(line)) return false;
  }
  return text->Write(kTail);
}

// Sign-extends the low 16 bits of an argument. Values from 32768 on become negative, and as
// unsigned numbers they are larger than any mode, so they never match.
std::uint32_t Widened(std::int32_t argument) {
  return static_cast<std::uint32_t>(static_cast<std::int16_t>(argument & 0xFFFF));
}

}  // namespace
}  // namespace launcher

std::uint32_t QX_CALL QX_EnumDisplayMode(std::uint32_t adapter, std::uint32_t /*reserved*/,
                                         char* buffer, std::uint32_t capacity) {
  if (buffer == nullptr || capacity == 0) return 0;

  const launcher::Direct3D direct3D(Direct3DCreate9(launcher::kSdkVersion));
  if (!direct3D) return 0;
  const launcher::AdapterModes modes(direct3D.Get(), adapter);
  if (modes.Count() == 0) return 0;  // before the first write: the buffer stays as it is

  launcher::TextWriter text(buffer, capacity);
  if (!launcher::WriteModes(&text, modes)) return 0;
  return capacity - text.CapacityLeft();
}

ResultCode QX_CALL QX_CheckDisplayMode(std::uint32_t adapter, std::uint32_t /*reserved*/,
                                       std::int32_t width, std::int32_t height,
                                       std::uint32_t refreshRate) {
  const launcher::Direct3D direct3D(Direct3DCreate9(launcher::kSdkVersion));
  if (!direct3D) return QX_BAD_ARGUMENT;

  const launcher::AdapterModes modes(direct3D.Get(), adapter);
  for (UINT i = 0; i < modes.Count(); ++i) {
    D3DDISPLAYMODE mode = {};
    if (modes.Get(i, &mode) && mode.Width == launcher::Widened(width) &&
        mode.Height == launcher::Widened(height) && mode.RefreshRate == refreshRate) {
      return QX_SUCCEEDED;
    }
  }
  return QX_BAD_ARGUMENT;
}
