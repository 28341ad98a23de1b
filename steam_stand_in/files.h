// Functions of the system for files and processes.

#ifndef LAUNCHER_STEAM_STAND_IN_FILES_H_
#define LAUNCHER_STEAM_STAND_IN_FILES_H_

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace launcher::stand_in {

using Path = std::filesystem::path;

// The folder that the environment variable STEAM_STAND_IN names, as an absolute path. If it is not
// set: steam_stand_in beside the program.
Path StandInFolder();

// A path in the encoding of the system's narrow functions; none if a character is not in it.
std::optional<std::string> NarrowText(const Path& path);

// Fills the buffer with random bytes from the system.
bool FillRandom(void* buffer, std::size_t size);

// True for a symbolic link, and on Windows for a junction or another reparse point.
bool IsLink(const Path& path);

// Reads up to `capacity` bytes from the start of the file. Returns how many.
std::optional<std::size_t> ReadStart(const Path& path, void* buffer, std::size_t capacity);

std::optional<std::string> ReadWhole(const Path& path);

unsigned long OwnProcessId();
bool IsProcessRunning(unsigned long id);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_FILES_H_
