// The settings file config.json: whether the library loads it, what is wrong with it, and how it
// looks when it is repaired.

#ifndef LAUNCHER_TOOLS_DOCTOR_CONFIG_FILE_H_
#define LAUNCHER_TOOLS_DOCTOR_CONFIG_FILE_H_

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "doctor/finding.h"

namespace launcher::doctor {

constexpr std::size_t kLargestConfig = std::size_t{4} << 20;

// What the library itself said of a file.
struct LibraryVerdict {
  bool loads;
  std::string error;  // the JSON library's words
};

// The JSON library's words for a file that the library would not load, empty for one that it
// would.
std::string ErrorOfConfig(const std::string& bytes);

// Adds what there is to say of the settings in `bytes`, whose file is called `name`.
void CheckConfig(const std::string& bytes, const std::string& name,
                 const std::optional<LibraryVerdict>& verdict, Report& report);

struct Repair {
  std::string text;                  // the new file
  std::vector<std::string> changes;  // a line each
};

// The settings of a file that does not load, with everything in it that can be understood.
// `defaults` is the text of a file that the library wrote. Throws std::runtime_error if the
// defaults are none.
Repair RepairConfig(const std::string& bytes, const std::string& defaults);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_CONFIG_FILE_H_
