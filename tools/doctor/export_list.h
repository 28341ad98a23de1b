// The list of the library's exports, with what each result means.

#ifndef LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_
#define LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_

#include <nlohmann/json.hpp>
#include <string>

#include "doctor/machine.h"

namespace launcher::doctor {

// The array in src/frame/exports.json.
const nlohmann::json& Exports();

// By its plain or its decorated name, in any case; null for none.
const nlohmann::json* FindExport(const std::string& name);

// The text of `doctor explain`. `word` is the name of an export, or a result, which is then
// explained for every export that returns it. With an empty `result` all results of the export are
// explained. Throws std::invalid_argument, with a sentence, for an unknown export or a wrong
// result.
std::string Explain(const std::string& word, const std::string& result);

// Null if `library` does not have the export.
inline void* FindIn(const LoadedLibrary& library, const nlohmann::json& entry) {
  return library.Find(entry.at(kIsWindows ? "decorated" : "name").get<std::string>());
}

// The export of this name in `library`, which must have it, for a call. A macro, since the name is
// both a type and a text.
#define QX_IN(library, name)            \
  (reinterpret_cast<decltype(&(name))>( \
      ::launcher::doctor::FindIn(library, *::launcher::doctor::FindExport(#name))))

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_
