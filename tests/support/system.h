// What differs between the systems that the tests run on.

#ifndef LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
#define LAUNCHER_TESTS_SUPPORT_SYSTEM_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace launcher::test {

#if defined(_WIN32)
inline constexpr bool kIsWindows = true;
#else
inline constexpr bool kIsWindows = false;
#endif

// False if some thousand exceptions and processes take minutes, as they do in an emulator.
inline constexpr bool kTriesEverything = !kIsWindows;

// The path of a file beside this program, by its whole name, and of a program by its name without
// extension.
std::string PathBeside(const std::string& name);
std::string ProgramBeside(const std::string& name);

// Programs started from now on search this folder for libraries first; an empty one ends that. On
// Windows a program searches its own folder before it.
void SetLibraryPath(const std::string& folder);

// Returns a function of the library file `path`, which is loaded and stays so. Throws if there is
// none.
void* LoadFunction(const std::string& path, const char* name);

// Loads a library that does what a test's script says, from the folder of the program. Returns the
// script, which the function `getter` returns. Call it before the library under test, which then
// finds the scripted one.
template <class Script>
Script& LoadScript(const char* name, const char* getter) {
  return *reinterpret_cast<Script* (*)()>(LoadFunction(PathBeside(name), getter))();
}

// Runs a command line in the current directory to its end. Returns the exit code, or -1 if it could
// not be started.
int RunProgram(std::string commandLine);

// Create a symbolic link, or remove one if there is one. Throw if that fails. For Windows they need
// Wine.
void MakeLink(const std::string& target, const std::string& link);
void RemoveLink(const std::string& link);

// Runs `body` in a new thread and `meanwhile` in this one, and waits. A stack size of 0 is the
// system's.
void RunInThread(
    std::size_t stackSize, std::function<void()> body,
    const std::function<void()>& meanwhile = [] {});

// Runs `body` in `count` threads at the same time, each with its number from 0 on, and waits for
// all.
inline void RunInThreads(int count, const std::function<void(int number)>& body) {
  if (count == 0) return;
  RunInThread(
      0, [&] { body(count - 1); }, [&] { RunInThreads(count - 1, body); });
}

// Returns memory directly before a page that cannot be accessed.
std::shared_ptr<std::uint8_t> MapBeforeGuardPage(std::size_t size);

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
