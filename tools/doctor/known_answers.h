// Calls of the library whose answers are known.

#ifndef LAUNCHER_TOOLS_DOCTOR_KNOWN_ANSWERS_H_
#define LAUNCHER_TOOLS_DOCTOR_KNOWN_ANSWERS_H_

#include "doctor/finding.h"
#include "doctor/machine.h"

namespace launcher::doctor {

void CheckKnownAnswers(const LoadedLibrary& library, Report& report);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_KNOWN_ANSWERS_H_
