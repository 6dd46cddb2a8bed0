#include <gtest/gtest.h>

#include "quenwick/platform/HostConfiguration.h"
#include "tests/support/TemporaryDirectory.h"

/// Runs the tests as an application of its own, whose state lies in a folder that goes with it.
int main(int count, char** words) {
  testing::InitGoogleTest(&count, words);
  quenwick::tests::TemporaryDirectory home;
  quenwick::platform::configureHost(
      {.bundleIdentifier = "com.example.tests", .bundleVersion = "2.5.0", .home = home.path()});
  return RUN_ALL_TESTS();
}
