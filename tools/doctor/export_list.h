// The list of the library's exports, with what each result means.

#ifndef LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_
#define LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_

#include <nlohmann/json.hpp>
#include <string>

#include "doctor/machine.h"

namespace launcher::doctor {

// The array in src/frame/exports.json.
const nlohmann::json& Exports();

// Finds an export by its plain or decorated name, in upper or lower case. Null if there is none.
const nlohmann::json* FindExport(const std::string& name);

// Returns the text of `doctor explain`. If `word` is the name of an export, explains its `result`,
// or all its results if `result` is empty. If `word` is a result, explains it for every export that
// returns it. Throws std::invalid_argument with the reason for an unknown export or a wrong result.
std::string Explain(const std::string& word, const std::string& result);

// Null if `library` does not have the export.
inline void* FindIn(const LoadedLibrary& library, const nlohmann::json& entry) {
  return library.Find(entry.at(kIsWindows ? "decorated" : "name").get<std::string>());
}

// The export of this name in `library`, which must have it, as a function to call. A macro, since
// the name is needed as a text and for the function's type.
#define QX_IN(library, name)            \
  (reinterpret_cast<decltype(&(name))>( \
      ::launcher::doctor::FindIn(library, *::launcher::doctor::FindExport(#name))))

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_
