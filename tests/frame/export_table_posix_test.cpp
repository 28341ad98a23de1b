// The native library's own symbol table against the list of exports.

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace launcher {
namespace {

std::set<std::string> ExportsOf(const std::string& library) {
  std::set<std::string> names;
  const std::string command = "nm --dynamic --defined-only --format=just-symbols '" + library + "'";
  std::FILE* const output = popen(command.c_str(), "r");
  for (char line[256]; output != nullptr && std::fgets(line, sizeof line, output) != nullptr;) {
    const std::string name(line);
    names.insert(name.substr(0, name.find('\n')));
  }
  pclose(output);
  return names;
}

TEST(ExportTable, HoldsWhatIsBuiltAndNothingElse) {
  const std::set<std::string> expected = {
#define EXPORT(ordinal, name, size) #name,
#include "export_table.inc"
#undef EXPORT
  };
  EXPECT_EQ(ExportsOf(LAUNCHER_LIBRARY), expected);
}

}  // namespace
}  // namespace launcher
