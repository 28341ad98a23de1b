// Finds what the C++ wrapper itself can do wrong: an error that becomes no exception or has another
// text, a block that is not released, a marker that stays, a size that is cut. The header comes
// first and alone: it needs no other.
#include "launcher_dll.hpp"
//
#include <gtest/gtest.h>

#include <filesystem>

#include "launch/launch_child.h"
#include "platform/owners.h"
#include "platform/win32.h"
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
      {[] { face::Block(0); },
       "QX_Allocate failed: an argument is not valid, or a buffer is too small"},
      {[] { face::LoadText(1); }, "QX_LoadStringToMemory failed: not found"},
      {[] {
         face::EncodeTo(small, {&byte, 1});
       },
       "file_cipher_encode failed: the output is too small"},
      {[] { face::Encode({}); }, "file_cipher_encode failed: the payload is empty"},
      {[] { face::ContainerSize(0x80000000); },
       "file_cipher_get_encode_size failed: the payload is too large"},
      {[] { face::DecodeInPlace(face::ByteSpan()); },
       "QX_Decode failed: the size is not 1 to 1,048,575 bytes"},
      {[] {
         face::DecodeInPlace({&byte, 0x80000000u});
       },
       "launcher_dll: the size does not fit the export's argument"},
      {[] { face::Decode(small); }, "QX_Decode failed: no intact container"},
      {[] { face::Decode(small, Bytes(3)); }, "file_cipher_decode failed: a key has 4 to 56 bytes"},
      {[] { face::Decode(small, Bytes(57)); },
       "file_cipher_decode failed: a key has 4 to 56 bytes"},
      {[] { face::Decode(small, Bytes(56)); }, "file_cipher_decode failed: no intact container"},
      {[] { face::ReadLaunchLine("1234567"); }, "QX_RightAddress failed: the text is too short"},
      {[] { face::ReadLaunchLine("x00abcdef"); }, "QX_RightDWORD failed: the text is too short"},
      {[] { face::RightBytes("ff0", 2); }, "QX_RightBinary failed: the text is too short"},
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
    EXPECT_EQ(face::LoadText(face::Label::kForbidden), "Forbidden");
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
  face::RunClient(child, {reinterpret_cast<const std::uint8_t*>(&header), sizeof header},
                  face::DataForm::kRaw);
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

TEST_F(CppFace, ReportsTheSystemsErrorCode) {
  const std::tuple<void (*)(), const char*, bool> cases[] = {
      {[] { face::RunClient("no such client"); }, "QX_CreateProcess failed: ", true},
      {[] { face::RunClient(std::string(2029, 'x')); },
       "QX_CreateProcess failed: the client's path is too long", false},
      {[] { face::RemoveFile("none"); }, "QX_RemoveFile failed: ", true},
      {[] { face::RemoveFolder("none"); }, "QX_RemoveDirectory failed: ", true},
      {[] { face::RemoveFolder(""); }, "QX_RemoveDirectory failed: the path names no folder",
       false},
  };
  for (const auto& [call, message, hasCode] : cases) {
    try {
      call();
      ADD_FAILURE() << message;
    } catch (const face::Error& error) {
      EXPECT_EQ(error.SystemCode(), hasCode ? 2 : 0);  // "file not found" here and on Windows
      const std::string text = error.what();
      EXPECT_EQ(text.rfind(message, 0), 0u) << text;
      EXPECT_EQ(text.find("(system error 2)") != std::string::npos, hasCode) << text;
      EXPECT_EQ(error.Result(), QX_FAILED);
    }
  }
}

TEST_F(CppFace, HandsDataToAClientThatReadsThem) {
  const Bytes data = test::Pattern(face::kLargestClientData);
  face::RunClient(test::ProgramBeside("launch_child"), data);
  EXPECT_TRUE(test::BytesOf(test::ReadFile(test::kDataFile)) == data);
  EXPECT_THROW(face::RunClient("client", Bytes(data.size() + 1)), std::length_error);
  EXPECT_EQ(face::ReadClientData("client 0000000100000000"), Bytes());
}

// A command line can name any process and any address.
TEST_F(CppFace, RefusesForgedClientData) {
  const KernelHandle self(OpenProcess(0x1FFFFF, FALSE, GetCurrentProcessId()));
  void* const page =
      VirtualAllocEx(self.Get(), nullptr, 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(page));
  const auto readAt = [](std::uint32_t process, std::uint32_t from) -> std::string {
    char line[17];
    std::snprintf(line, sizeof line, "%08x%08x", process, from);
    try {
      face::ReadClientData(line);
    } catch (const face::Error& error) {
      return error.what();
    }
    return "";
  };
  const Bytes bare = face::Encode(Bytes(1));
  const std::pair<std::uint32_t, const char*> sizes[] = {
      {0xFFFFFFFF, "ReadClientData failed: the size is not 1 to 1,048,575 bytes"},
      {0x100000, "ReadClientData failed: the size is not 1 to 1,048,575 bytes"},
      {0, "QX_Decode failed: the size is not 1 to 1,048,575 bytes"},
      {43, "QX_Decode failed: no intact container"},
      {static_cast<std::uint32_t>(bare.size()), "ReadClientData failed: the data are not signed"}};
  std::memcpy(static_cast<char*>(page) + 4, bare.data(), bare.size());
  const std::string unreadable = "ReadClientData failed: the launcher's memory cannot be read: ";
  test::StandardOutputOf([&] {
    for (const auto& [size, message] : sizes) {
      std::memcpy(page, &size, sizeof size);
      EXPECT_EQ(readAt(GetCurrentProcessId(), address), message) << size;
    }
    EXPECT_EQ(readAt(GetCurrentProcessId(), 8).rfind(unreadable, 0), 0u);
    EXPECT_EQ(readAt(0x7FFFFFFF, address).rfind(unreadable, 0), 0u);
    EXPECT_THROW(face::ReadClientData(nullptr), face::Error);
  });
  VirtualFreeEx(self.Get(), page, 0, MEM_RELEASE);
}

}  // namespace
}  // namespace launcher
