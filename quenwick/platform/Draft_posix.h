#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace quenwick::platform {

/// Throws the error that `errno` stands for, as a `PlatformError` about the file.
[[noreturn]] void throwErrorOf(const std::filesystem::path& file);

/// A file (0600) beside the one that it is to become, whole and on disk; it goes unless it has
/// become that. Each function throws `PlatformError` of `kPOSIXErrorDomain`.
class Draft {
 public:
  explicit Draft(std::filesystem::path file);
  ~Draft();
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  void write(std::string_view bytes);

  /// In place of the file that is there.
  void become();

  /// Unless there is a file of that name.
  void becomeUnlessThere();

 private:
  void sync() const;

  const std::filesystem::path file_;
  std::string name_;
  int descriptor_;
};

}  // namespace quenwick::platform
