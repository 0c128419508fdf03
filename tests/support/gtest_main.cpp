#include <gtest/gtest.h>

#include <filesystem>

#include "support/test_support.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Every test starts in the build directory, where the simulated transport lies.
  std::filesystem::current_path(molra::test::BuildDir());
  return RUN_ALL_TESTS();
}
