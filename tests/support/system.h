// What differs between the systems that the tests run on.

#ifndef LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
#define LAUNCHER_TESTS_SUPPORT_SYSTEM_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace launcher::test {

// How a line ends in a text file.
extern const char* const kLineEnd;

// False if some thousand exceptions and processes take minutes, as they do in an emulator.
extern const bool kTriesEverything;

// True if the system has Direct3D 9, with a display.
extern const bool kHasDirect3D;

// The files of a wide directory.
extern const int kManyFiles;

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

// Create a symbolic link, or remove one if there is one. Throw if that fails.
void MakeLink(const std::string& target, const std::string& link);
void RemoveLink(const std::string& link);

// True if the system's functions can remove a link to a directory. Those of Wine cannot.
bool SystemRemovesLinks();

// Runs `body` in `count` threads at the same time, each with its number from 0 on, and waits for
// all. A stack size of 0 is the system's.
void RunInThreads(int count, const std::function<void(int number)>& body,
                  std::size_t stackSize = 0);

// Runs `body` in one thread with this stack, and waits.
inline void RunInThread(std::size_t stackSize, const std::function<void()>& body) {
  RunInThreads(
      1, [&](int /*number*/) { body(); }, stackSize);
}

// Returns new memory of whole pages, of which the last cannot be accessed. Throws if there is none.
std::uint8_t* MapWithGuardPage(std::size_t size);
void UnmapPages(std::uint8_t* pages, std::size_t size);

// Keeps the provider of CryptoAPI loaded. Otherwise each digest loads it again, which takes Wine in
// an emulator a second.
void KeepDigestLoaded();

// The handles of this process, as the system counts them. Wine counts none.
int OpenHandleCount();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
