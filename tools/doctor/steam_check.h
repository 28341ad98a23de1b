// What there is to say of Steam: its library, its client, the user's session.

#ifndef LAUNCHER_TOOLS_DOCTOR_STEAM_CHECK_H_
#define LAUNCHER_TOOLS_DOCTOR_STEAM_CHECK_H_

#include "doctor/finding.h"
#include "doctor/machine.h"

namespace launcher::doctor {

// Who the user is, and tickets, are never asked for.
void CheckSteam(const LoadedLibrary& library, Report& report);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_STEAM_CHECK_H_
