// Finds what the C++ wrapper itself can do wrong: an error that becomes no exception or has another
// text, a block that is not released, a marker that stays, a size that is cut. The header comes
// first and alone: it needs no other.
#include "launcher_dll.hpp"
//
#include <gtest/gtest.h>

#include <filesystem>

#include "launch/launch_child.h"
#include "support/bytes.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/known_containers.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace face = launcher_dll;
using face::Bytes;
using face::Marker;

using CppFace = test::ScratchTest;

Bytes BytesIn(face::ByteSpan span) { return Bytes(span.begin(), span.end()); }

TEST_F(CppFace, ThrowsWhatFailed) {
  static Bytes small(43);
  static std::uint8_t byte = 0;
  const std::pair<void (*)(), const char*> cases[] = {
      {[] { face::Block(0); }, "QX_Allocate answered -2: bad argument"},
      {[] { face::LoadText(1); }, "QX_LoadStringToMemory answered -4: not found"},
      {[] {
         face::EncodeTo(small, {&byte, 1});
       },
       "file_cipher_encode answered 7: the output is too small"},
      {[] { face::Encode({}); }, "file_cipher_encode answered 7"},
      {[] { face::ContainerSize(0x80000000); },
       "file_cipher_get_encode_size answered 0: the payload is too large"},
      {[] { face::DecodeInPlace(face::ByteSpan()); }, "QX_Decode answered -1005: size refused"},
      {[] {
         face::DecodeInPlace({&byte, 0x80000000u});
       },
       "launcher_dll: the size does not fit the export's argument"},
      {[] { face::Decode(small); }, "QX_Decode answered 0: no intact container"},
      {[] { face::Decode(small, Bytes(3)); },
       "file_cipher_decode answered 7: a key has 4 to 56 bytes"},
      {[] { face::Decode(small, Bytes(57)); },
       "file_cipher_decode answered 7: a key has 4 to 56 bytes"},
      {[] { face::Decode(small, Bytes(56)); },
       "file_cipher_decode answered 7: no intact container"},
      {[] { face::ReadLaunchLine("1234567"); }, "QX_RightAddress answered -1: it failed"},
      {[] { face::ReadLaunchLine("x00abcdef"); }, "QX_RightDWORD answered -1: it failed"},
      {[] { face::RightBytes("ff0", 2); }, "QX_RightBinary answered -1: it failed"},
      {[] { face::RunClient("no such client"); }, "QX_CreateProcess answered -1: it failed"},
      {[] { face::RemoveFile("none"); }, "QX_RemoveFile answered -1: it failed"},
      {[] { face::RemoveFolder("none"); }, "QX_RemoveDirectory answered -1: it failed"},
  };
  test::StandardOutputOf([&] {
    for (const auto& [call, message] : cases) {
      std::string thrown;
      try {
        call();
      } catch (const std::exception& error) {
        thrown = error.what();
      }
      EXPECT_EQ(thrown, message);
    }
  });
  EXPECT_EQ(small, Bytes(43));
  EXPECT_EQ(face::ContainerSize(0x7FFFFFFF), 0x8000002Cu);
  EXPECT_EQ(face::DecodeInPlace(face::ByteSpan(), Bytes(4)), std::nullopt);
}

TEST_F(CppFace, OwnsBlocksAndTexts) {
  face::Block block(1000);
  face::Block moved = std::move(block);
  EXPECT_EQ(BytesIn({moved.data(), moved.size()}), Bytes(1000, 0));
  QX_Deallocate(moved.Release());
  EXPECT_EQ(moved.data(), nullptr);
  EXPECT_EQ(moved.size(), 0u);
  test::StandardOutputOf([&] {
    EXPECT_STREQ(face::Text(2001).CString(), "Forbidden");
    const face::LibraryInformation information = face::ReadLibraryInformation();
    EXPECT_EQ(information.numbers, (std::array<std::uint32_t, 4>{0, 2, 5, 0}));
    EXPECT_EQ(information.buildName, face::LoadText(10));
    EXPECT_EQ(information.vendorName, face::LoadText(0));
    EXPECT_TRUE(face::SettingsLoad());
    EXPECT_TRUE(face::IsOwnServer("", face::LoadText(5000)));
    EXPECT_FALSE(face::IsOwnServer("other.example", "other.example"));
  });
}

TEST_F(CppFace, MakesAndReadsContainers) {
  for (const test::KnownContainer& known : test::KnownContainers()) {
    SCOPED_TRACE(known.name);
    if (known.isMadeByEncoding) {
      EXPECT_EQ(face::Encode(known.payload), known.container);
      // In place, and with room to spare.
      Bytes area(50 + known.container.size(), 0xEE);
      std::copy(known.payload.begin(), known.payload.end(), area.begin() + 40);
      EXPECT_EQ(
          BytesIn(face::EncodeTo(area, face::ConstByteSpan(area).Part(40, known.payload.size()))),
          known.container);
    }
    if (known.isIntact) {
      EXPECT_EQ(face::Decode(known.container, known.key), known.payload);
    }
  }
  const Bytes data = test::Pattern(100);
  const Bytes bare = face::Encode(data);
  const Bytes signedData = face::Sign(data);
  const Bytes container = face::Encode(signedData);
  test::StandardOutputOf([&] {
    const std::string key = face::LoadText(11000);
    const std::string marker = face::LoadText(11001);
    EXPECT_EQ(face::Sign({}), test::BytesOf(marker));
    EXPECT_EQ(face::Decode(container), signedData);
    EXPECT_EQ(face::Decode(container, face::BytesOf(key)), signedData);
    for (const Bytes& made : {container, bare}) {
      EXPECT_EQ(face::Decode(made, Marker::kSkip), data);
      EXPECT_EQ(face::Decode(made, face::BytesOf(key), marker.c_str()), data);
      Bytes one = made;
      Bytes other = made;
      EXPECT_EQ(face::DecodeInPlace(one, Marker::kSkip)->hadMarker, made == container);
      EXPECT_EQ(face::DecodeInPlace(other, face::BytesOf(key), marker.c_str())->hadMarker,
                made == container);
    }
  });
}

TEST_F(CppFace, HandsDataToAClientAndRemovesFiles) {
  face::LaunchLine line = face::ReadLaunchLine("\"C:\\client.exe\" 00001a2b00abcdef");
  EXPECT_EQ(line.program, "\"C:\\client.exe\" ");
  EXPECT_EQ(line.processId, 0x1A2Bu);
  EXPECT_EQ(line.dataAddress, 0xABCDEFu);
  EXPECT_EQ(face::RightBytes("xff0a", 2), (Bytes{0xFF, 0x0A}));
  EXPECT_EQ(face::RightBytes("", 0), Bytes());

  const std::string child = test::ProgramBeside("launch_child");
  const test::LaunchHeader header = {7, 0, 0};
  face::RunClient(child, {reinterpret_cast<const std::uint8_t*>(&header), sizeof header});
  line = face::ReadLaunchLine(test::ReadFile(test::kLineFile));
  EXPECT_EQ(line.program, '"' + child + "\" ");
  EXPECT_NE(line.dataAddress, 0u);

  std::filesystem::create_directories("folder/inner");
  test::WriteFile("folder/file", "x");
  face::RemoveFile("folder/file");
  EXPECT_FALSE(std::filesystem::exists("folder/file"));
  face::EmptyFolder("folder");
  EXPECT_TRUE(std::filesystem::is_empty("folder"));
  face::RemoveFolder("folder");
  EXPECT_FALSE(std::filesystem::exists("folder"));
}

}  // namespace
}  // namespace launcher
