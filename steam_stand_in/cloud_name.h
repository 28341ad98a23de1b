// Which names a cloud file may have. The rules are Windows' on every system, so that a file which
// one can write the other can too.

#ifndef LAUNCHER_STEAM_STAND_IN_CLOUD_NAME_H_
#define LAUNCHER_STEAM_STAND_IN_CLOUD_NAME_H_

#include <cstddef>
#include <optional>
#include <string>

namespace launcher::stand_in {

constexpr std::size_t kLongestCloudName = 259;

// The name with "/" between its folders; none for a name that is refused, null included.
std::optional<std::string> CloudName(const char* name);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_CLOUD_NAME_H_
