// The start of each fuzzer: without standard output, because exports print there, and in a
// directory of its own, which is removed at the end but not after a crash. So names of files that
// are given to a fuzzer must be absolute.

#include <cstdio>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "support/data_file.h"
#include "support/scratch_directory.h"

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  std::filesystem::current_path(std::filesystem::temp_directory_path());
  static const launcher::test::ScratchDirectory scratch;
  // Settings as short as possible, since QX_Decode reads them three times.
  std::map<std::string, std::map<std::string, std::string>> settings;
#define SETTING(section, key, field, defaultText) settings[#section][#key] = "";
#include "settings.inc"
  launcher::test::WriteFile("config.json", nlohmann::json(settings).dump());
  return 0;
}
