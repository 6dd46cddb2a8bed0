#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

/// A person's desktop without a bus, in a folder of its own: nothing of this machine's settings is
/// seen, and URLs that are opened outside are written down by a program of the test.
class Desktop {
 public:
  Desktop();

  const std::filesystem::path& folder() const { return folder_.path(); }

  /// That of a program whose windows lie on the display.
  std::map<std::string, std::optional<std::string>> environment(const std::string& display) const;

  /// The URLs that were opened outside since the last call.
  std::vector<std::string> opened();

 private:
  TemporaryDirectory folder_;
  std::size_t openedSize_ = 0;  // of their file, as far as it was read
};

}  // namespace quenwick::tests
