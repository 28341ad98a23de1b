// For faults of the display modes: a buffer filled past its end or reported full one byte too
// early, a mode of a query that failed, half of a mode compared, an object that is not released.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "host/scripted_d3d9.h"
#include "launcher_dll.h"
#include "launcher_dll.hpp"
#include "support/guarded_buffer.h"

namespace launcher {
namespace {

using test::Direct3DScript;
using test::GuardedBuffer;

class DisplayModes : public testing::Test {
 protected:
  DisplayModes() { script_ = Direct3DScript(); }
  ~DisplayModes() override { EXPECT_EQ(script_.openObjects, 0); }

  Direct3DScript& script_ = test::LoadScript<Direct3DScript>(SCRIPTED_D3D9, "GetDirect3DScript");
};

TEST_F(DisplayModes, AreListedAsJson) {
  const std::pair<std::vector<Direct3DScript::Mode>, std::string> cases[] = {
      {{{0xFFFFFFFF, 0x80000000, 4000000000}, {1, 1, 1}},
       "  {\"Width\": 4294967295, \"Height\": 2147483648, \"Hz\": 4000000000},\n"
       "  {\"Width\": 1, \"Height\": 1, \"Hz\": 1}\n"},
      // A mode whose query fails is left out, and the comma depends on the index.
      {{{1, 1, 1, false}, {800, 600, 60}, {3, 3, 3, false}},
       "  {\"Width\": 800, \"Height\": 600, \"Hz\": 60},\n"},
      {{{1, 1, 1, false}}, ""},
  };
  script_.adapter = 7;
  for (const auto& [modes, lines] : cases) {
    const std::string text = "{\n\"DisplayMode\": [\n" + lines + "]\n}";
    SCOPED_TRACE(text);
    script_.modes = modes;
    const auto length = static_cast<std::uint32_t>(text.size());
    // A buffer that is too small holds the beginning of the text.
    for (std::uint32_t capacity = 0xFFFFFFFF; capacity != 0;
         capacity = std::min(capacity, length + 3) - 1) {
      const GuardedBuffer buffer(std::min(capacity, length + 1));
      EXPECT_EQ(QX_EnumDisplayMode(7, 1, buffer.Text(), capacity), capacity > length ? length : 0);
      EXPECT_EQ(buffer.Text(), text.substr(0, capacity - 1)) << capacity;
    }
    EXPECT_EQ(launcher_dll::DisplayModes(7), text);
  }
}

TEST_F(DisplayModes, LeaveTheBufferIfNothingIsListed) {
  const GuardedBuffer buffer(100);
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, buffer.Text(), 100), 0u);
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, 0, 0, 0), QX_BAD_ARGUMENT);
  script_.modes = {{800, 600, 60}};
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, nullptr, 100), 0u);
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, buffer.Text(), 0), 0u);
  script_.failures.Start(1, true);
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, buffer.Text(), 100), 0u);
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, 800, 600, 60), QX_BAD_ARGUMENT);
  EXPECT_EQ(launcher_dll::DisplayModes(), "");
  EXPECT_TRUE(buffer.IsUntouched());
}

TEST_F(DisplayModes, AreChecked) {
  script_.adapter = 3;
  script_.modes = {{640, 480, 60, false}, {800, 600, 60}, {0x8000 + 800, 600, 60}, {1, 768, 65596}};
  const std::tuple<std::int32_t, std::int32_t, std::uint32_t, ResultCode> cases[] = {
      {800, 600, 60, QX_SUCCEEDED},
      {801, 600, 60, QX_BAD_ARGUMENT},
      {800, 601, 60, QX_BAD_ARGUMENT},
      {800, 600, 0, QX_BAD_ARGUMENT},
      {640, 480, 60, QX_BAD_ARGUMENT},                  // its query fails
      {0x8000 + 800, 600, 60, QX_BAD_ARGUMENT},         // negative in 16 bits
      {0x10000 + 800, -65536 + 600, 60, QX_SUCCEEDED},  // the upper 16 bits do not count
      {1, 768, 60, QX_BAD_ARGUMENT},                    // the rate has 32 bits
      {1, 768, 65596, QX_SUCCEEDED},                    // the last mode
  };
  for (const auto& [width, height, rate, result] : cases) {
    EXPECT_EQ(QX_CheckDisplayMode(3, 1, width, height, rate), result) << width << ", " << rate;
  }
}

TEST_F(DisplayModes, AllFitInTheCppWrapper) {
  script_.modes.assign(5000, {800, 600, 60});
  // The head, the lines, without the last comma, and the tail.
  EXPECT_EQ(launcher_dll::DisplayModes().size(), 19u + 43 * 5000 - 1 + 3);
  EXPECT_TRUE(launcher_dll::HasDisplayMode(800, 600, 60));
  EXPECT_FALSE(launcher_dll::HasDisplayMode(0x10000 + 800, 600, 60));
  EXPECT_FALSE(launcher_dll::HasDisplayMode(800, 0x10000 + 600, 60));
}

}  // namespace
}  // namespace launcher
