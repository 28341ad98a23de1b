// The list of an adapter's display modes, whatever the adapter says, against a list put together
// here.

#include <cstring>

#include "fuzz/fuzzing.h"
#include "host/scripted_d3d9.h"
#include "launcher_dll.h"
#include "support/scripted_library.h"

namespace launcher {
namespace {

using fuzz::Bytes;
using fuzz::Require;
using test::Direct3DScript;

Direct3DScript& Script() {
  static auto& script = test::LoadScript<Direct3DScript>(SCRIPTED_D3D9, "GetDirect3DScript");
  return script;
}

std::string Listed(const Direct3DScript& script) {
  std::string text = "{\n\"DisplayMode\": [\n";
  for (const Direct3DScript::Mode& mode : script.modes) {
    if (!mode.answers) continue;
    text += "  {\"Width\": " + std::to_string(mode.width);
    text += ", \"Height\": " + std::to_string(mode.height);
    text += ", \"Hz\": " + std::to_string(mode.refreshRate);
    text += &mode == &script.modes.back() ? "}\n" : "},\n";
  }
  return text + "]\n}";
}

void CheckList(const Direct3DScript& script, std::uint32_t adapter, std::uint32_t capacity) {
  const bool hasModes = script.isCreated && !script.modes.empty();
  const std::string text = hasModes ? Listed(script) : "";
  const bool fits = hasModes && text.size() < capacity;
  // 65 bytes a mode and 23 more are enough, so no text here is beyond the buffer.
  Bytes buffer(std::min<std::size_t>(capacity, 65 * script.modes.size() + 23), fuzz::kFill);
  std::uint8_t none = 0;
  const std::uint32_t length = QX_EnumDisplayMode(
      adapter, 0, buffer.empty() ? reinterpret_cast<char*>(&none) : fuzz::TextAt(buffer), capacity);
  Require(length == (fits ? text.size() : 0), "the length of the list");
  if (!hasModes || capacity == 0) {
    Require(fuzz::IsUntouched(buffer), "nothing written where there is nothing to list");
  } else {
    Require(fuzz::HoldsText(buffer, text.substr(0, capacity - 1)), "the list, or its beginning");
  }
}

void CheckMode(const Direct3DScript& script, std::uint32_t adapter, std::int32_t width,
               std::int32_t height, std::uint32_t refreshRate) {
  const auto widened = [](std::int32_t argument) {
    return static_cast<std::uint32_t>(static_cast<std::int16_t>(argument));
  };
  const bool hasMode =
      std::any_of(script.modes.begin(), script.modes.end(), [&](const Direct3DScript::Mode& mode) {
        return mode.answers && mode.width == widened(width) && mode.height == widened(height) &&
               mode.refreshRate == refreshRate;
      });
  Require(QX_CheckDisplayMode(adapter, 0, width, height, refreshRate) ==
              (script.isCreated && hasMode ? QX_SUCCEEDED : QX_BAD_ARGUMENT),
          "whether there is a mode");
}

}  // namespace
}  // namespace launcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  FuzzedDataProvider input(data, size);
  const auto number = [&] {
    return input.ConsumeBool() ? input.ConsumeIntegral<std::uint32_t>()
                               : input.ConsumeIntegral<std::uint16_t>();
  };
  Direct3DScript& script = Script();
  script = Direct3DScript();
  script.isCreated = input.ConsumeIntegral<std::uint8_t>() != 0;
  const auto adapter = input.ConsumeIntegral<std::uint32_t>();
  const auto count = input.ConsumeIntegral<std::uint8_t>() % 16;
  for (int i = 0; i < count; ++i) {
    const bool answers = input.ConsumeIntegral<std::uint8_t>() % 8 != 7;
    script.modes.push_back({number(), number(), number(), answers});
  }
  const auto length = static_cast<std::uint32_t>(Listed(script).size());
  CheckList(script, adapter, fuzz::NumberNear(input, length));
  CheckList(script, adapter, length + 1);

  // A mode that is there, changed or not, or any.
  Direct3DScript::Mode asked = {number(), number(), number()};
  if (count != 0 && input.ConsumeIntegral<std::uint8_t>() % 4 != 0) {
    asked = script.modes[input.ConsumeIntegralInRange<std::size_t>(
        0, static_cast<std::size_t>(count) - 1)];
    if (input.ConsumeBool()) asked.width += 0x10000;
    if (input.ConsumeBool()) asked.height ^= 0x80000000;
    if (input.ConsumeIntegral<std::uint8_t>() % 4 == 0) asked.refreshRate ^= 0x10000;
  }
  CheckMode(script, adapter, static_cast<std::int32_t>(asked.width),
            static_cast<std::int32_t>(asked.height), asked.refreshRate);
  const bool isAskedRight = !script.isCreated || (script.adapter == adapter &&
                                                  script.format == 22 && script.sdkVersion == 32);
  Require(isAskedRight, "what the adapter is asked");
  Require(script.openObjects == 0, "nothing stays open");
  return 0;
}
