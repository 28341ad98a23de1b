// What the standard streams are connected to.

#ifndef LAUNCHER_TOOLS_SUPPORT_TERMINAL_H_
#define LAUNCHER_TOOLS_SUPPORT_TERMINAL_H_

namespace launcher {

enum class Stream { kInput = 0, kOutput = 1, kError = 2 };

bool IsTerminal(Stream stream);

// Has a standard stream that came closed fail for good. Else the next file that opens takes its
// place, and messages go into that file. Call it before any file is opened.
void KeepClosedStreamsClosed();

// Whether the user wants no colour (NO_COLOR is set), or the stream shows none.
bool ShowsColour(Stream stream);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_TERMINAL_H_
