// Calls of a library that was loaded at run time, by the types of the public header.

#ifndef LAUNCHER_TOOLS_DOCTOR_LIBRARY_CALLS_H_
#define LAUNCHER_TOOLS_DOCTOR_LIBRARY_CALLS_H_

#include <string>

#include "doctor/export_list.h"
#include "doctor/machine.h"
#include "launcher_dll.h"

namespace launcher::doctor {

// The name under which an export is to be found on this system.
inline const std::string& NameHere(const Export& entry) {
  return kNamesAreDecorated ? entry.decorated : entry.name;
}

// CallOf<decltype(&QX_Allocate)>(library, "QX_Allocate"): only for exports that are known to be
// there.
template <class Function>
Function CallOf(const LoadedLibrary& library, const char* name) {
  return reinterpret_cast<Function>(library.Find(NameHere(*FindExport(name))));
}

// The export of this name in `library`, for a call. A macro, since it is both a type and a text.
#define QX_IN(library, name) (::launcher::doctor::CallOf<decltype(&(name))>(library, #name))

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_LIBRARY_CALLS_H_
