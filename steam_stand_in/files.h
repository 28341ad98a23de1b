// What the stand-in asks of the system's files, and of its processes.

#ifndef LAUNCHER_STEAM_STAND_IN_FILES_H_
#define LAUNCHER_STEAM_STAND_IN_FILES_H_

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace launcher::stand_in {

using Path = std::filesystem::path;

// The absolute folder that STEAM_STAND_IN names, or steam_stand_in beside the program.
Path StandInFolder();

// A path as the system's narrow functions take it; none if their encoding has no such text.
std::optional<std::string> NarrowText(const Path& path);

// Fills the buffer with random bytes from the system.
bool FillRandom(void* buffer, std::size_t size);

// A symbolic link, or whatever else leads to another place.
bool IsLink(const Path& path);

// The file's first bytes, `capacity` at most. Returns how many.
std::optional<std::size_t> ReadStart(const Path& path, void* buffer, std::size_t capacity);

std::optional<std::string> ReadWhole(const Path& path);

unsigned long OwnProcessId();
bool IsProcessRunning(unsigned long id);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_FILES_H_
