// JSON text.

#ifndef LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_
#define LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_

#include <nlohmann/json.hpp>
#include <string>

namespace launcher {

// Characters outside ASCII stay as they are. Bytes that are not UTF-8, as a file name can have on
// Linux, become U+FFFD, since JSON cannot hold them.
inline std::string JsonText(const nlohmann::json& value, int indent = -1) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_
