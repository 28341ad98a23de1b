// Removal of random trees with links out of them, names that lead elsewhere, and files that cannot
// be removed. A second tree, the witness, must stay as it is. For removals outside the tree, and
// for entries that stay or go wrongly.

#include <filesystem>
#include <set>

#include "fuzz/fuzzing.h"
#include "launcher_dll.h"
#include "support/data_file.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using fuzz::Require;

// No name leads further up than the folder that the fuzzer works in, whatever the library did.
std::string NameFrom(FuzzedDataProvider& input) {
  static const char* const names[] = {"a",    "b",  ".c", "d.e",   "f.", "g ", "...", "..\\witness",
                                      "a\\b", "\\", "x:", "h\xE9", "*",  "?",  "~1",  "NUL"};
  return names[input.ConsumeIntegral<std::uint8_t>() % 16];
}

void MakeTree(FuzzedDataProvider& input) {
  static const char* const targets[] = {
      ".", "..", "../witness", "../../witness", "a", "missing", "../witness/inner/file", ""};
  fs::create_directory("tree");
  std::vector<fs::path> directories = {"tree"};
  for (int i = input.ConsumeIntegralInRange<int>(0, 24); i > 0; --i) {
    const auto kind = input.ConsumeIntegral<std::uint8_t>();
    const fs::path parent = directories[input.ConsumeIntegral<std::uint8_t>() % directories.size()];
    const fs::path path = parent / NameFrom(input);
    std::error_code failed;
    if (fs::symlink_status(path).type() != fs::file_type::not_found) continue;
    if (kind < 0x60) {
      if (fs::create_directory(path, failed)) directories.push_back(path);
    } else if (kind < 0xB0) {
      test::WriteFile(path.string(), "content");
      if (kind % 4 == 0) fs::permissions(path, fs::perms::owner_read, failed);
    } else {
      const std::string target = targets[kind % 8];
      fs::create_symlink(target.empty() ? fs::absolute("witness") : fs::path(target), path, failed);
    }
  }
}

// Adds to `stays` the entries of `directory` that must stay: all, or those that the library does
// not reach or may not remove. Returns whether any entry stays.
bool NoteWhatStays(const fs::path& directory, bool all, std::set<std::string>& stays) {
  bool any = false;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    const std::string name = entry.path().filename().string();
    bool remains =
        all || name.back() == '.' || name.back() == ' ' || name.find('\\') != std::string::npos;
    if (!entry.is_symlink() && entry.is_directory()) {
      remains = NoteWhatStays(entry.path(), remains, stays) || remains;
    } else if (!entry.is_symlink()) {
      remains =
          remains || (entry.status().permissions() & fs::perms::owner_write) == fs::perms::none;
    }
    if (remains) stays.insert(entry.path().string());
    any = any || remains;
  }
  return any;
}

// The paths in a directory, and with `times` when each was changed.
std::set<std::string> Entries(const fs::path& directory, bool times) {
  std::set<std::string> entries;
  if (!fs::exists(directory)) return entries;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    const auto time = times ? entry.last_write_time().time_since_epoch().count() : 0;
    entries.insert(entry.path().string() + (times ? ' ' + std::to_string(time) : ""));
  }
  return entries;
}

}  // namespace
}  // namespace launcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  static const std::set<std::string> witness = [] {
    fs::create_directories("witness/inner/deep");
    for (const char* const file : {"witness/a", "witness/inner/file", "witness/inner/deep/b"}) {
      test::WriteFile(file, file);
    }
    fs::create_symlink("inner", "witness/link");
    return Entries("witness", true);
  }();
  FuzzedDataProvider input(data, size);
  const bool isLink = input.ConsumeIntegral<std::uint8_t>() % 7 == 6;
  const std::uint32_t keepDirectory =
      input.ConsumeBool() ? input.ConsumeIntegral<std::uint8_t>() : 0;
  fs::remove_all("tree");
  MakeTree(input);

  fs::remove("to tree");
  fs::create_directory_symlink("tree", "to tree");
  std::set<std::string> stays;
  NoteWhatStays("tree", false, stays);
  const ResultCode result = QX_RemoveDirectory(isLink ? "to tree" : "tree", keepDirectory);
  const bool goes = keepDirectory == 0 && (isLink || stays.empty());
  Require(result == (keepDirectory != 0 || goes ? QX_SUCCEEDED : QX_FAILED), "the result");
  Require(Entries("tree", false) == stays, "what goes and what stays");
  Require(fs::exists("tree") == (isLink || !goes), "the directory");
  Require(fs::is_symlink("to tree") == (!isLink || !goes), "the link to it");
  Require(Entries("witness", true) == witness, "nothing outside is touched");
  return 0;
}
