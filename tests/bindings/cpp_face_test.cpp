// First and alone: the header needs no other.
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

class CppFace : public test::ScratchTest {
 protected:
  // What an Error that `body` throws tells; empty where it throws none.
  template <class Body>
  static std::string ErrorOf(Body body) {
    try {
      body();
    } catch (const face::Error& error) {
      const std::string start =
          std::string(error.ExportName()) + " answered " + std::to_string(error.Result());
      EXPECT_EQ(std::string(error.what()).substr(0, start.size()), start);
      return error.what();
    }
    return "";
  }
};

TEST_F(CppFace, OwnsBlocksAndTexts) {
  face::Block block(1000);
  face::Block moved = std::move(block);
  EXPECT_EQ(Bytes(moved.data(), moved.data() + moved.size()), Bytes(1000, 0));
  QX_Deallocate(moved.Release());
  EXPECT_EQ(moved.data(), nullptr);
  EXPECT_EQ(ErrorOf([] { face::Block(0); }), "QX_Allocate answered -2: bad argument");

  test::StandardOutputOf([&] {
    const face::Text text(2001);
    EXPECT_STREQ(text.CString(), "Forbidden");
    EXPECT_EQ(face::LoadText(10196), "Please start Steam.");
    EXPECT_EQ(ErrorOf([] { face::LoadText(1); }), "QX_LoadStringToMemory answered -4: not found");
    EXPECT_EQ(face::ReadLibraryInformation().numbers, (std::array<std::uint32_t, 4>{0, 2, 5, 0}));
    EXPECT_EQ(face::ReadLibraryInformation().buildName, face::LoadText(10));
    EXPECT_EQ(face::ReadLibraryInformation().vendorName, face::LoadText(0));
    EXPECT_TRUE(face::SettingsLoad());
    EXPECT_TRUE(face::IsOwnServer("", face::LoadText(5000)));
    EXPECT_FALSE(face::IsOwnServer("other.example", "other.example"));
    test::WriteFile("config.json", "{}");
    EXPECT_EQ(ErrorOf([] { face::LoadText(2001); }),
              "QX_LoadStringToMemory answered -1: it failed");
  });
}

TEST_F(CppFace, MakesKnownContainersAndReadsThem) {
  for (const test::KnownContainer& known : test::KnownContainers()) {
    SCOPED_TRACE(known.name);
    if (known.isMadeByEncoding) {
      EXPECT_EQ(face::Encode(known.payload), known.container);
      // In place, and with room to spare.
      Bytes area(50 + known.container.size(), 0xEE);
      std::copy(known.payload.begin(), known.payload.end(), area.begin() + 40);
      const face::ByteSpan made =
          face::EncodeTo(area, face::ConstByteSpan(area).Part(40, known.payload.size()));
      EXPECT_EQ(Bytes(made.begin(), made.end()), known.container);
    }
    if (known.isIntact) {
      EXPECT_EQ(face::Decode(known.container, known.key), known.payload);
    } else {
      const bool isKey = known.key.size() >= 4 && known.key.size() <= 56;
      EXPECT_EQ(ErrorOf([&] { face::Decode(known.container, known.key); }),
                std::string("file_cipher_decode answered 7: ") +
                    (isKey ? "no intact container" : "a key has 4 to 56 bytes"));
    }
    // QX_Decode agrees, except that it refuses an empty block.
    if (!known.keyedDecoding[0] || known.container.empty()) continue;
    test::StandardOutputOf([&] {
      Bytes block = known.container;
      const auto decoded = face::DecodeInPlace(block);
      EXPECT_EQ(decoded.has_value(), known.isIntact);
      if (decoded) {
        EXPECT_EQ(Bytes(decoded->payload.begin(), decoded->payload.end()), known.payload);
      }
    });
  }
}

TEST_F(CppFace, TakesASignatureOff) {
  const Bytes data = test::Pattern(100);
  const Bytes container = face::Encode(face::Sign(data));
  const Bytes bare = face::Encode(data);
  test::StandardOutputOf([&] {
    const std::string key = face::LoadText(11000);
    const std::string marker = face::LoadText(11001);
    EXPECT_EQ(face::Sign({}), test::BytesOf(marker));
    EXPECT_EQ(face::Decode(container), face::Sign(data));
    EXPECT_EQ(face::Decode(container, Marker::kSkip), data);
    EXPECT_EQ(face::Decode(container, face::BytesOf(key), marker.c_str()), data);
    EXPECT_EQ(face::Decode(bare, Marker::kSkip), data);
    EXPECT_EQ(face::Decode(bare, face::BytesOf(key), marker.c_str()), data) << "as the one above";
    for (const Bytes& made : {container, bare}) {
      Bytes one = made;
      Bytes other = made;
      EXPECT_EQ(face::DecodeInPlace(one, Marker::kSkip)->hadMarker, made == container);
      EXPECT_EQ(face::DecodeInPlace(other, face::BytesOf(key), marker.c_str())->hadMarker,
                made == container);
    }
  });
}

TEST_F(CppFace, RefusesWhatNoContainerCanBe) {
  Bytes small(43);
  const Bytes payload(1);
  EXPECT_EQ(ErrorOf([&] { face::EncodeTo(small, payload); }),
            "file_cipher_encode answered 7: the output is too small");
  EXPECT_EQ(small, Bytes(43));
  EXPECT_EQ(ErrorOf([] { face::Encode({}); }), "file_cipher_encode answered 7");
  EXPECT_EQ(face::ContainerSize(0x7FFFFFFF), 0x8000002Cu);
  EXPECT_NE(ErrorOf([] { face::ContainerSize(0x80000000); }), "");
  EXPECT_EQ(face::DecodeInPlace(face::ByteSpan(), Bytes(16)), std::nullopt);
  EXPECT_EQ(ErrorOf([] { face::DecodeInPlace(face::ByteSpan()); }),
            "QX_Decode answered -1005: size refused");
}

TEST_F(CppFace, HandsDataToAClient) {
  face::LaunchLine line = face::ReadLaunchLine("\"C:\\client.exe\" 00001a2b00abcdef");
  EXPECT_EQ(line.program, "\"C:\\client.exe\" ");
  EXPECT_EQ(line.processId, 0x1A2Bu);
  EXPECT_EQ(line.dataAddress, 0xABCDEFu);
  EXPECT_EQ(ErrorOf([] { face::ReadLaunchLine("too short: 1234"); }),
            "QX_RightDWORD answered -1: it failed");
  EXPECT_EQ(face::RightBytes("xff0a", 2), (Bytes{0xFF, 0x0A}));
  EXPECT_EQ(face::RightBytes("", 0), Bytes());

  const std::string child = test::ProgramBeside("launch_child");
  const test::LaunchHeader header = {7, 0, 0};
  face::RunClient(child, {reinterpret_cast<const std::uint8_t*>(&header), sizeof header});
  line = face::ReadLaunchLine(test::ReadFile(test::kLineFile));
  EXPECT_EQ(line.program, '"' + child + "\" ");
  EXPECT_NE(line.dataAddress, 0u);
  face::RunClient(child);
  EXPECT_EQ(face::ReadLaunchLine(test::ReadFile(test::kLineFile)).dataAddress, 0u);
  EXPECT_NE(ErrorOf([] { face::RunClient("no such client"); }), "");
}

TEST_F(CppFace, RemovesFilesAndFolders) {
  std::filesystem::create_directories("folder/inner");
  test::WriteFile("folder/inner/file", "x");
  face::RemoveFile("folder/inner/file");
  EXPECT_EQ(ErrorOf([] { face::RemoveFile("folder/inner/file"); }),
            "QX_RemoveFile answered -1: it failed");
  face::EmptyFolder("folder");
  EXPECT_TRUE(std::filesystem::is_empty("folder"));
  face::RemoveFolder("folder");
  EXPECT_FALSE(std::filesystem::exists("folder"));
  EXPECT_NE(ErrorOf([] { face::RemoveFolder("folder"); }), "");
}

// A size that the export's argument would cut is refused ahead of the call.
TEST_F(CppFace, PassesNoSizeThatDoesNotFit) {
  std::uint8_t byte = 0;
  EXPECT_THROW(face::DecodeInPlace({&byte, 0x80000000u}), std::length_error);
  EXPECT_THROW(face::steam::WriteCloudFile("name", {&byte, 0x80000000u}), std::length_error);
}

}  // namespace
}  // namespace launcher
