// What a test must know of the system it runs on.

#ifndef LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
#define LAUNCHER_TESTS_SUPPORT_SYSTEM_H_

#include <cstddef>
#include <string>

namespace launcher::test {

// How a line ends in a text file.
extern const char* const kLineEnd;

// Has programs started from now on look into this folder for libraries ahead of where they would;
// an empty one ends that. Nothing on Windows, where a program looks into its own folder first.
void SetLibraryPath(const std::string& folder);

// The path of a program that lies beside this one, by its name without an ending.
std::string ProgramBeside(const std::string& name);

// A function of the library file `path`, which is loaded and stays so. Throws where there is none.
void* LoadFunction(const std::string& path, const char* name);

// The path of a file that lies beside this program, by its whole name.
std::string PathBeside(const std::string& name);

// Makes a symbolic link, or removes one; nothing for a link that is not there. Throws where it
// cannot.
void MakeLink(const std::string& target, const std::string& link);
void RemoveLink(const std::string& link);

// Whether the system's functions can remove a link to a directory. Those of Wine cannot.
bool SystemRemovesLinks();

// Runs `body` in a thread with `stackSize` bytes of stack, and waits.
void RunInThread(std::size_t stackSize, void (*body)());

// Runs `body` in `count` threads at once, each with its number from 0 on, and waits for all.
void RunInThreads(int count, void (*body)(int number));

// Whether some thousand exceptions and starts of processes take seconds.
extern const bool kTriesEverything;

// Whether the system has Direct3D 9, with a display to ask about.
extern const bool kHasDirect3D;

// A wide directory's worth.
extern const int kManyFiles;

// Keeps the provider of CryptoAPI loaded. Otherwise each digest loads it again: a second for Wine
// in an emulator.
void KeepDigestLoaded();

// The handles that this process has open, as the system counts them.
int OpenHandleCount();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
