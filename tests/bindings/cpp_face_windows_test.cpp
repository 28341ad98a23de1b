// Finds arguments that are lost, and a header that does not compile after <windows.h>: both declare
// LocalFree.
#include <windows.h>
//
#include <gtest/gtest.h>

#include "launcher_dll.hpp"

namespace launcher {
namespace {

TEST(CppFaceArguments, BeginWithTheProgram) {
  EXPECT_NE(launcher_dll::Arguments().at(0).find("export_tests"), std::string::npos);
}

}  // namespace
}  // namespace launcher
