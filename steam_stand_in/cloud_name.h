// Which names a cloud file may have. The rules of Windows hold on every system, so that all systems
// accept the same names.

#ifndef LAUNCHER_STEAM_STAND_IN_CLOUD_NAME_H_
#define LAUNCHER_STEAM_STAND_IN_CLOUD_NAME_H_

#include <cstddef>
#include <optional>
#include <string>

namespace launcher::stand_in {

constexpr std::size_t kLongestCloudName = 259;

// Returns the name with "/" between its folders, or none if the name is null or refused.
std::optional<std::string> CloudName(const char* name);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_CLOUD_NAME_H_
