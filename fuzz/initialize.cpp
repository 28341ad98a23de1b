// How each fuzzer begins: without standard output, since many an export prints there, and in a
// folder of its own below that for temporary files. It goes when the program ends, but not when it
// crashes. Names of files given to a fuzzer have to be absolute.

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
