// Files that embed.cmake puts into the program.

#ifndef LAUNCHER_TOOLS_DOCTOR_EMBEDDED_FILES_H_
#define LAUNCHER_TOOLS_DOCTOR_EMBEDDED_FILES_H_

#include <string_view>

namespace launcher::doctor {

extern const std::string_view kExportList;        // src/frame/exports.json
extern const std::string_view kContainerVectors;  // docs/container-vectors.json

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_EMBEDDED_FILES_H_
