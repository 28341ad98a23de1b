#include "steam_stand_in/files.h"

namespace launcher::stand_in {

std::optional<std::string> ReadWhole(const Path& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error) return std::nullopt;
  std::string content(static_cast<std::size_t>(size), '\0');
  const std::optional<std::size_t> count = ReadStart(path, content.data(), content.size());
  if (!count) return std::nullopt;
  content.resize(*count);
  return content;
}

}  // namespace launcher::stand_in
