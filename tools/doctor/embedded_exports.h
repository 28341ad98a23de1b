// src/frame/exports.json, put into the program by embed.cmake.

#ifndef LAUNCHER_TOOLS_DOCTOR_EMBEDDED_EXPORTS_H_
#define LAUNCHER_TOOLS_DOCTOR_EMBEDDED_EXPORTS_H_

#include <cstddef>

namespace launcher::doctor {

extern const unsigned char kEmbeddedExports[];
extern const std::size_t kEmbeddedExportsSize;

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_EMBEDDED_EXPORTS_H_
