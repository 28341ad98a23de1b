// What the build puts into the program: three files, and the digest of the library.

#ifndef LAUNCHER_TOOLS_DOCTOR_BUILT_IN_H_
#define LAUNCHER_TOOLS_DOCTOR_BUILT_IN_H_

#include <string_view>

namespace launcher::doctor {

extern const std::string_view kExportList;        // src/frame/exports.json
extern const std::string_view kContainerVectors;  // docs/container-vectors.json
extern const std::string_view kTexts;             // tools/doctor/texts.json
extern const std::string_view kLibraryDigest;     // the library's SHA-256, 32 bytes

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_BUILT_IN_H_
