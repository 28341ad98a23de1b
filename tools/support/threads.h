// Work in several threads. A header of its own, since not every compiler for Windows has <thread>.

#ifndef LAUNCHER_TOOLS_SUPPORT_THREADS_H_
#define LAUNCHER_TOOLS_SUPPORT_THREADS_H_

#include <functional>

namespace launcher {

// The threads that this machine runs at once.
int ProcessorCount();

// Runs `work` in up to `count` threads and waits until all have returned, with a call of `watch` in
// this thread about every 50 ms. Where no thread is to be had, `work` runs once in this one.
// Neither may throw.
void RunInThreads(int count, const std::function<void()>& work, const std::function<void()>& watch);

// Ends the process at once, with whatever its threads are at. Flush streams before.
[[noreturn]] void EndAtOnce(int exitCode);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_THREADS_H_
