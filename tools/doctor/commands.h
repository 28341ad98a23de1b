// The commands that write a file. All return the exit status.

#ifndef LAUNCHER_TOOLS_DOCTOR_COMMANDS_H_
#define LAUNCHER_TOOLS_DOCTOR_COMMANDS_H_

#include <filesystem>
#include <string>

#include "doctor/checkup.h"

namespace launcher::doctor {

// Prints why a command writes nothing. Returns the exit status.
int Refuse(const std::string& why);

// `doctor config repair`: replaces the broken settings file and keeps it under another name.
int RepairConfigFile(const Subject& subject, bool isDryRun);

struct BundleOptions {
  std::filesystem::path output;
  bool isAgreed = false;  // do not ask
  bool replaces = false;  // an existing file
};

// `doctor bundle`: shows a text with the report and the settings, to send to a support desk, asks,
// and writes it.
int WriteBundle(const Subject& subject, const BundleOptions& options);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_COMMANDS_H_
