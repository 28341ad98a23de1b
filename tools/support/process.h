// Functions that differ between systems: interrupts, threads and others.

#ifndef LAUNCHER_TOOLS_SUPPORT_PROCESS_H_
#define LAUNCHER_TOOLS_SUPPORT_PROCESS_H_

#include <filesystem>
#include <functional>

#include "platform/new_file.h"

namespace launcher {

// After this call an interrupt (Ctrl-C, a request to end, a terminal that closes) sets a flag and
// does not end the process, and writing to a pipe that nobody reads fails as other writing does.
void WatchForInterrupts();

bool Interrupted();

// The exit code of a program that was interrupted.
inline constexpr int kInterruptedExitCode = 130;

// The number of threads that this machine runs at the same time.
int ProcessorCount();

// Runs `work` in up to `count` threads and waits until all have returned, with a call of `watch` in
// this thread about every 50 ms. If no thread can be started, `work` runs once in this one.
// Neither may throw.
void RunInThreads(int count, const std::function<void()>& work, const std::function<void()>& watch);

// Ends the process at once, whatever its threads are doing. Flush streams before.
[[noreturn]] void EndAtOnce(int exitCode);

// Makes the standard input and output binary, so that line ends are not changed.
void UseBinaryStreams();

extern const char* const kNullDevice;

// Creates an empty folder that only this user may enter.
SystemError MakePrivateFolder(std::filesystem::path* folder);

// Does nothing on Windows: there the folder's permissions count.
void SetPermissions(const std::filesystem::path& file, std::filesystem::perms permissions);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_PROCESS_H_
