// How each fuzzer begins: without standard output, since many an export prints there, and in a
// folder of its own below that for temporary files. It goes when the program ends, but not when it
// crashes. Names of files given to a fuzzer have to be absolute.

#include <cstdio>
#include <filesystem>

#include "support/data_file.h"
#include "support/scratch_directory.h"

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  std::filesystem::current_path(std::filesystem::temp_directory_path());
  static const launcher::test::ScratchDirectory scratch;
  // The shortest settings, since QX_Decode reads them three times.
  launcher::test::WriteFile(
      "config.json",
      R"({"Orvane":{"Api_server":"","Orvane_server":"","Purchase_server":"","Telemetry_server":"",)"
      R"("Download_url":"","Orvane_qa_api_url":"","Orvane_ci_api_url":"","Game_url":""},)"
      R"("Settings":{"game_version":"","ssl_check":"","Is_Staging":"","Is_Shipping":""}})");
  return 0;
}
