#include "support/data_file.h"

#include <fstream>
#include <iterator>
#include <sstream>

namespace launcher::test {

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

std::string ReadDataFile(const std::string& name) { return ReadFile(LAUNCHER_TEST_DATA + name); }

void WriteSettings(const std::string& from, const std::string& to) {
  std::string settings = ReadDataFile("default_config.json");
  settings.replace(settings.find(from), from.size(), to);
  WriteFile("config.json", settings);
}

std::vector<std::vector<std::string>> ReadDataLines(const std::string& name, std::size_t columns) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream file(ReadDataFile(name));
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> row;
    while (row.size() + 1 < columns) {
      const std::size_t blank = line.find(' ');
      row.push_back(line.substr(0, blank));
      line.erase(0, blank + 1);
    }
    row.push_back(line);
    rows.push_back(row);
  }
  return rows;
}

}  // namespace launcher::test
