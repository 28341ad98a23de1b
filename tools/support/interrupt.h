// Ctrl-C and its like.

#ifndef LAUNCHER_TOOLS_SUPPORT_INTERRUPT_H_
#define LAUNCHER_TOOLS_SUPPORT_INTERRUPT_H_

namespace launcher {

// From here on an interrupt (Ctrl-C, a request to end, a terminal that closes) sets a flag instead
// of ending the process, and writing to a pipe that nobody reads fails as other writing does.
void WatchForInterrupts();

bool Interrupted();

// The exit code of a program that was interrupted.
inline constexpr int kInterruptedExitCode = 130;

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_INTERRUPT_H_
