// Calls of the library that print or look into the current directory.
//
// Each lookup of a text prints a line to the standard output and reads config.json in the current
// directory, or makes it there. A program with an output of its own wants neither.

#ifndef LAUNCHER_TOOLS_SUPPORT_QUIET_LIBRARY_H_
#define LAUNCHER_TOOLS_SUPPORT_QUIET_LIBRARY_H_

#include <functional>

#include "support/output_file.h"

namespace launcher {

// Runs `call` with the standard output and error streams discarded and with a private, empty
// current directory, which is removed afterwards. Streams and directory belong to the whole
// process, so no other thread may run meanwhile. On failure `call` has not run. It must not throw.
SystemError RunQuietly(const std::function<void()>& call);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_QUIET_LIBRARY_H_
