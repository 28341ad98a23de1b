// Text files that appear whole or not at all.

#ifndef LAUNCHER_CONFIG_NEW_TEXT_FILE_H_
#define LAUNCHER_CONFIG_NEW_TEXT_FILE_H_

#include <string>

namespace launcher {

// Makes the file `path` with `text` in it, line ends as the platform writes them. Whoever opens
// `path` meanwhile finds no file or the whole one. Answers false where something is at `path`
// already, which stays as it is, or where the file cannot be made; nothing is left behind then.
bool CreateTextFile(const char* path, const std::string& text);

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_NEW_TEXT_FILE_H_
