// ZIP files in memory.

#ifndef LAUNCHER_TOOLS_DOCTOR_ZIP_FILE_H_
#define LAUNCHER_TOOLS_DOCTOR_ZIP_FILE_H_

#include <string>
#include <utility>
#include <vector>

namespace launcher::doctor {

// Names and contents, in the order in which they are to be. Throws std::runtime_error where memory
// runs out, and std::length_error for files beyond the format's 4 GiB.
std::string MakeZip(const std::vector<std::pair<std::string, std::string>>& files);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_ZIP_FILE_H_
