// The files in tests/data, and whole files in general.

#ifndef LAUNCHER_TESTS_SUPPORT_DATA_FILE_H_
#define LAUNCHER_TESTS_SUPPORT_DATA_FILE_H_

#include <string>
#include <vector>

namespace launcher::test {

// The bytes of a file; none if it does not exist.
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);

std::string ReadDataFile(const std::string& name);

// Makes config.json of the default settings with one text replaced by another.
void WriteSettings(const std::string& from, const std::string& to);

// The lines of a file in tests/data without comments and empty ones, each split at its first
// `columns` - 1 blanks.
std::vector<std::vector<std::string>> ReadDataLines(const std::string& name, std::size_t columns);

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_DATA_FILE_H_
