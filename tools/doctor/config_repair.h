// `doctor config repair`: the new settings file takes the broken one's place, which is kept.

#ifndef LAUNCHER_TOOLS_DOCTOR_CONFIG_REPAIR_H_
#define LAUNCHER_TOOLS_DOCTOR_CONFIG_REPAIR_H_

#include "doctor/checkup.h"

namespace launcher::doctor {

// Prints what it does, line by line, and returns the exit status.
int RepairConfig(const Subject& subject, bool isDryRun);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_CONFIG_REPAIR_H_
