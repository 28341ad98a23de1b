#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/scripted_d3d9.h"
#include "launcher_dll.h"
#include "launcher_dll.hpp"
#include "support/guarded_buffer.h"
#include "support/scripted_library.h"

namespace launcher {
namespace {

using test::GuardedBuffer;

class DisplayModes : public testing::Test {
 protected:
  DisplayModes() { script_ = test::Direct3DScript(); }
  ~DisplayModes() override { EXPECT_EQ(script_.openObjects, 0); }

  test::Direct3DScript& script_ = Script();

 private:
  static test::Direct3DScript& Script() {
    static auto& script =
        test::LoadScript<test::Direct3DScript>(SCRIPTED_D3D9, "GetDirect3DScript");
    return script;
  }
};

TEST_F(DisplayModes, AreListedAsJson) {
  struct Case {
    std::vector<test::Direct3DScript::Mode> modes;
    const char* text;
  };
  const Case cases[] = {
      {{{800, 600, 60}, {1024, 768, 75}},
       "{\n\"DisplayMode\": [\n"
       "  {\"Width\": 800, \"Height\": 600, \"Hz\": 60},\n"
       "  {\"Width\": 1024, \"Height\": 768, \"Hz\": 75}\n"
       "]\n}"},
      {{{0xFFFFFFFF, 0x80000000, 4000000000}, {1, 1, 1}},
       "{\n\"DisplayMode\": [\n"
       "  {\"Width\": 4294967295, \"Height\": 2147483648, \"Hz\": 4000000000},\n"
       "  {\"Width\": 1, \"Height\": 1, \"Hz\": 1}\n"
       "]\n}"},
      // What does not answer is left out, and the comma goes by the index.
      {{{1, 1, 1, false}, {2, 2, 2}, {3, 3, 3, false}},
       "{\n\"DisplayMode\": [\n"
       "  {\"Width\": 2, \"Height\": 2, \"Hz\": 2},\n"
       "]\n}"},
      {{{1, 1, 1, false}}, "{\n\"DisplayMode\": [\n]\n}"},
  };
  for (const Case& tried : cases) {
    SCOPED_TRACE(tried.text);
    script_.modes = tried.modes;
    const auto length = static_cast<std::uint32_t>(std::strlen(tried.text));
    // Every capacity up to the one that is enough, and more than the buffer has.
    for (std::uint32_t capacity = 1; capacity <= length; ++capacity) {
      const GuardedBuffer buffer(capacity);
      EXPECT_EQ(QX_EnumDisplayMode(7, 1, buffer.Text(), capacity), 0u) << capacity;
      // The writes before the one that does not fit, and its beginning.
      EXPECT_EQ(buffer.Text(), std::string(tried.text, capacity - 1));
    }
    for (const std::uint32_t capacity : {length + 1, length + 100, 0xFFFFFFFF}) {
      const GuardedBuffer buffer(length + 1);
      EXPECT_EQ(QX_EnumDisplayMode(7, 1, buffer.Text(), capacity), length) << capacity;
      EXPECT_STREQ(buffer.Text(), tried.text);
    }
    EXPECT_EQ(script_.sdkVersion, 32u);
    EXPECT_EQ(script_.adapter, 7u);
    EXPECT_EQ(script_.format, 22u);
  }
}

TEST_F(DisplayModes, AreNotListedWhereThereAreNone) {
  const GuardedBuffer buffer(100);
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, buffer.Text(), 100), 0u) << "no modes";
  script_.modes = {{800, 600, 60}};
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, nullptr, 100), 0u);
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, buffer.Text(), 0), 0u);
  script_.isCreated = false;
  EXPECT_EQ(QX_EnumDisplayMode(0, 0, buffer.Text(), 100), 0u) << "no Direct3D";
  EXPECT_TRUE(buffer.IsUntouched());
}

TEST_F(DisplayModes, AreChecked) {
  script_.modes = {{640, 480, 60, false},
                   {800, 600, 60},
                   {40000, 40000, 60},
                   {32767, 1, 60},
                   {1024, 768, 65596}};
  struct Case {
    std::int32_t width;
    std::int32_t height;
    std::uint32_t refreshRate;
    ResultCode result;
  };
  const Case cases[] = {
      {800, 600, 60, QX_SUCCEEDED},
      {801, 600, 60, QX_BAD_ARGUMENT},
      {800, 601, 60, QX_BAD_ARGUMENT},
      {800, 600, 61, QX_BAD_ARGUMENT},
      {640, 480, 60, QX_BAD_ARGUMENT},                  // does not answer
      {40000, 40000, 60, QX_BAD_ARGUMENT},              // negative in 16 bits
      {0x10000 + 800, -65536 + 600, 60, QX_SUCCEEDED},  // the upper 16 bits do not count
      {32767, 1, 60, QX_SUCCEEDED},
      {1024, 768, 60, QX_BAD_ARGUMENT},  // the rate has 32 bits
      {1024, 768, 65596, QX_SUCCEEDED},
  };
  for (const Case& tried : cases) {
    EXPECT_EQ(QX_CheckDisplayMode(3, 1, tried.width, tried.height, tried.refreshRate), tried.result)
        << tried.width << " x " << tried.height << ", " << tried.refreshRate;
    EXPECT_EQ(script_.adapter, 3u);
  }
  script_.isCreated = false;
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, 800, 600, 60), QX_BAD_ARGUMENT);
  script_.isCreated = true;
  script_.modes.clear();
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, 0, 0, 0), QX_BAD_ARGUMENT);
}

TEST_F(DisplayModes, OfTheCppFaceFitWhateverTheirNumber) {
  for (const std::size_t count : {1u, 100u, 5000u}) {
    script_.modes.assign(count, {800, 600, 60});
    std::vector<char> text(65 * count + 23);
    const std::uint32_t length =
        QX_EnumDisplayMode(0, 0, text.data(), static_cast<std::uint32_t>(text.size()));
    EXPECT_EQ(launcher_dll::DisplayModes(), std::string(text.data(), length));
  }
  EXPECT_TRUE(launcher_dll::HasDisplayMode(800, 600, 60));
  EXPECT_FALSE(launcher_dll::HasDisplayMode(0x10000 + 800, 600, 60));
  script_.modes.clear();
  EXPECT_EQ(launcher_dll::DisplayModes(), "");
  EXPECT_FALSE(launcher_dll::HasDisplayMode(800, 600, 60));
}

}  // namespace
}  // namespace launcher
