// JSON for people and programs.

#ifndef LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_
#define LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_

#include <nlohmann/json.hpp>
#include <string>

namespace launcher {

// Other characters than ASCII stay as they are. Names of files are bytes: those that are no UTF-8,
// which JSON cannot hold, become U+FFFD.
inline std::string JsonText(const nlohmann::json& value, int indent = -1) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_
