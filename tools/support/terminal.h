// What the standard streams are connected to.

#ifndef LAUNCHER_TOOLS_SUPPORT_TERMINAL_H_
#define LAUNCHER_TOOLS_SUPPORT_TERMINAL_H_

namespace launcher {

enum class Stream { kInput = 0, kOutput = 1, kError = 2 };

bool IsTerminal(Stream stream);

// Makes each use of a standard stream fail if the process was started with that stream closed.
// Otherwise the next file that is opened would get its number, and messages would go into that
// file. Call this before any file is opened.
void KeepClosedStreamsClosed();

// True if the stream is a terminal that shows colours, and NO_COLOR is not set.
bool ShowsColour(Stream stream);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_TERMINAL_H_
