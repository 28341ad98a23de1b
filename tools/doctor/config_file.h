// The settings file config.json: what is wrong with its text, and the text that a repair makes.

#ifndef LAUNCHER_TOOLS_DOCTOR_CONFIG_FILE_H_
#define LAUNCHER_TOOLS_DOCTOR_CONFIG_FILE_H_

#include <optional>
#include <string>
#include <vector>

#include "doctor/finding.h"

namespace launcher::doctor {

constexpr std::size_t kLargestConfig = std::size_t{4} << 20;

// Returns the JSON library's message if LauncherDll cannot load the file, else an empty text.
std::string ErrorOfConfig(const std::string& bytes);

// Checks the settings in `bytes`, the content of the file `name`. `loads` is true if the library
// loaded them, false if it did not, and nothing if it was not asked.
void CheckConfigText(const std::string& bytes, const std::string& name, std::optional<bool> loads,
                     Report& report);

// The text in UTF-8, without a byte order mark. Adds a line for each change.
std::string Utf8Text(const std::string& bytes, std::vector<std::string>& changes);

struct Repair {
  std::string text;                  // the new file
  std::vector<std::string> changes;  // one line for each
};

// Repairs the text of a file that does not load. `defaults` is the text of a file that the library
// wrote.
Repair RepairConfigText(const std::string& bytes, const std::string& defaults);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_CONFIG_FILE_H_
