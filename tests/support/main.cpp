#include <gtest/gtest.h>

#include "support/system.h"

int main(int argumentCount, char** arguments) {
  launcher::test::KeepDigestLoaded();
  testing::InitGoogleTest(&argumentCount, arguments);
  return RUN_ALL_TESTS();
}
