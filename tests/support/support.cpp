// What support/*.h declare and every system does in the same way.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "platform/owners.h"
#include "platform/win32.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher::test {

namespace fs = std::filesystem;

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
    std::vector<std::string>& row = rows.emplace_back(columns);
    std::istringstream words(line);
    for (std::string& word : row) std::getline(words, word, &word == &row.back() ? '\n' : ' ');
  }
  return rows;
}

ScratchDirectory::ScratchDirectory() : previous_(fs::current_path()) {
  // On Windows a directory stays as long as a process works in it, and a client's console may for a
  // while: each gets a name that is free.
  const std::string name = "scratch-" + std::to_string(GetCurrentProcessId()) + '-';
  int number = 0;
  do own_ = previous_ / (name + std::to_string(++number));
  while (!fs::create_directory(own_));
  fs::current_path(own_);
}

ScratchDirectory::~ScratchDirectory() {
  fs::current_path(previous_);
  std::error_code ignored;
  fs::remove_all(own_, ignored);
}

std::size_t ScratchDirectory::FileCount() {
  const auto count = std::distance(fs::directory_iterator("."), fs::directory_iterator());
  return static_cast<std::size_t>(count);
}

int RunProgram(std::string commandLine) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  if (!CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &started)) {
    return -1;
  }
  const KernelHandle process(started.hProcess);
  const KernelHandle thread(started.hThread);
  while (WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT) Sleep(10);
  DWORD exitCode = 0;
  GetExitCodeProcess(process.Get(), &exitCode);
  return static_cast<int>(exitCode);
}

}  // namespace launcher::test
