// What a launcher does on its machine: lists the display modes, checks if a server is one of the
// game's own, and clears the folder of its downloads.
//
//   example_host
//
// Works in the current directory. Exit status: 0 if all results are as expected. A machine without
// Direct3D has no display modes; that is reported and is not a failure.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "launcher_dll.h"

namespace {

namespace fs = std::filesystem;

void Say(const std::string& text) {
  std::printf("host: %s\n", text.c_str());
  std::fflush(stdout);
}

int Fail(const char* step) {
  std::fprintf(stderr, "host: failed: %s\n", step);
  return 1;
}

bool ShowDisplayModes() {
  std::vector<char> text(64 << 10);
  if (QX_EnumDisplayMode(0, 0, text.data(), static_cast<std::uint32_t>(text.size())) == 0) {
    Say("no Direct3D here, so no display modes");
    return QX_CheckDisplayMode(0, 0, 1280, 1024, 60) == QX_BAD_ARGUMENT;
  }
  Say("display modes of the first adapter:");
  std::printf("%s\n", text.data());

  const auto number = [&](const char* key) {
    const char* const found = std::strstr(text.data(), key);
    return found != nullptr ? std::strtol(found + std::strlen(key), nullptr, 10) : 0;
  };
  const auto width = static_cast<std::int32_t>(number("\"Width\": "));
  const auto height = static_cast<std::int32_t>(number("\"Height\": "));
  const auto refreshRate = static_cast<std::uint32_t>(number("\"Hz\": "));
  Say("the first of them exists, 1 x 1 does not");
  return QX_CheckDisplayMode(0, 0, width, height, refreshRate) == QX_SUCCEEDED &&
         QX_CheckDisplayMode(0, 0, 1, 1, 60) == QX_BAD_ARGUMENT;
}

bool CheckServers() {
  char qaHost[256];
  if (QX_LoadString(5000, qaHost, sizeof qaHost) != QX_SUCCEEDED) return false;
  const bool trustsOwn = QX_CheckCert("any", qaHost) != 0;
  const bool trustsOther = QX_CheckCert("any", "elsewhere.example") != 0;
  Say(std::string(qaHost) + (trustsOwn ? " is trusted" : " is not trusted"));
  Say(std::string("elsewhere.example") + (trustsOther ? " is trusted" : " is not trusted"));
  return trustsOwn && !trustsOther;
}

void WriteFile(const fs::path& path) { std::ofstream(path) << "content\n"; }

bool ClearDownloads() {
  fs::create_directories("downloads/pack/inner");
  for (const char* const path :
       {"downloads/a.part", "downloads/pack/b.part", "downloads/pack/inner/c.part", "save.dat"}) {
    WriteFile(path);
  }
  if (QX_RemoveFile("downloads\\a.part") != QX_SUCCEEDED) return false;
  if (QX_RemoveDirectory("downloads", 1) != QX_SUCCEEDED) return false;
  if (!fs::is_empty("downloads")) return false;
  Say("emptied the folder downloads");
  if (QX_RemoveDirectory("downloads", 0) != QX_SUCCEEDED) return false;
  if (fs::exists("downloads")) return false;
  Say("removed it; save.dat beside it is still there");
  return fs::exists("save.dat");
}

}  // namespace

int main() {
  if (!ShowDisplayModes()) return Fail("display modes");
  if (!CheckServers()) return Fail("checking servers");
  if (!ClearDownloads()) return Fail("clearing the downloads");
  return 0;
}
