// Quiet calls of the library.
//
// Each lookup of a text prints a line to the standard output, and reads or creates config.json in
// the current directory. Neither may happen in a program with its own output.

#ifndef LAUNCHER_TOOLS_SUPPORT_QUIET_LIBRARY_H_
#define LAUNCHER_TOOLS_SUPPORT_QUIET_LIBRARY_H_

#include <functional>

#include "support/output_file.h"

namespace launcher {

// Runs `call` with the standard output and error streams discarded and with a private, empty
// current directory, which is removed afterwards. Streams and directory belong to the whole
// process, so no other thread may run meanwhile. `call` must not throw. Returns an error if `call`
// was not run, or if the current directory could not be restored.
SystemError RunQuietly(const std::function<void()>& call);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_QUIET_LIBRARY_H_
