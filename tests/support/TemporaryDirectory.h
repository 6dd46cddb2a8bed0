#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace quenwick::tests {

/// A new folder that goes with its owner.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    auto name = (std::filesystem::temp_directory_path() / "quenwick-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~TemporaryDirectory() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  /// Removes what is in the folder.
  void clear() const {
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      std::filesystem::remove_all(entry.path());
    }
  }

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace quenwick::tests
