#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "quenwick/platform/FatalError.h"

namespace quenwick::tests {

/// What the program would be stopped with by the work; none where it goes on.
template <class Work>
std::string fatalMessage(const Work& work) {
  struct Stopped : std::runtime_error {
    using runtime_error::runtime_error;
  };
  platform::observeFatalErrors([](std::string_view said) { throw Stopped(std::string(said)); });
  std::string message;
  try {
    work();
  } catch (const Stopped& stopped) {
    message = stopped.what();
  }
  platform::observeFatalErrors(nullptr);
  return message;
}

}  // namespace quenwick::tests
