// Finds arguments that are lost, and a header that does not compile after <windows.h>: both declare
// LocalFree.
#include <windows.h>
//
#include <gtest/gtest.h>

#include "launcher_dll.hpp"

namespace launcher {
namespace {

TEST(CppFaceArguments, BeginWithTheProgram) {
  const std::vector<std::string> arguments = launcher_dll::Arguments();
  ASSERT_FALSE(arguments.empty());
  EXPECT_NE(arguments.front().find("export_tests"), std::string::npos) << arguments.front();
}

}  // namespace
}  // namespace launcher
