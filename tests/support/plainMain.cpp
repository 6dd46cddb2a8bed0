#include <gtest/gtest.h>

/// Runs tests that configure the library themselves.
int main(int count, char** words) {
  testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
