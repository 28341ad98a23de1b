// JSON for people and programs.

#ifndef LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_
#define LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_

#include <nlohmann/json.hpp>
#include <string>

namespace launcher {

// What is not ASCII stays. Names of files are bytes, and what is no UTF-8 in them cannot stand in
// JSON: it becomes U+FFFD.
inline std::string JsonText(const nlohmann::json& value, int indent = -1) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_JSON_TEXT_H_
