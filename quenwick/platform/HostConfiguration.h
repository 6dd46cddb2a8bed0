#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quenwick::platform {

/// Where an install keeps its secrets: with the desktop's keyring, or in an encrypted file.
enum class SecItemBackendKind { secretService, sealedFile };

/// What a host says of itself where the platform cannot see it. Everything is optional.
struct HostConfiguration {
  /// Stand before what the information property list says.
  std::optional<std::string> bundleIdentifier = std::nullopt;
  std::optional<std::string> bundleVersion = std::nullopt;
  /// Where the application's Info.plist lies.
  std::optional<std::filesystem::path> infoPlist = std::nullopt;
  /// Everything kept lies below this folder, instead of in the user's XDG folders.
  std::optional<std::filesystem::path> home = std::nullopt;
  /// Where an install that has kept no secret yet is to keep them. Without it the keyring is taken
  /// where one answers and is unlocked, else the file; below a `home` always the file.
  std::optional<SecItemBackendKind> keychain = std::nullopt;
};

/// Sets the configuration for the process. Taken once, and before the first use of the main
/// bundle or of anything kept; false, and nothing changed, after that.
bool configureHost(HostConfiguration configuration);

/// The configuration in force; from now on it cannot be set any more.
const HostConfiguration& hostConfiguration();

/// The application's folders for settings, for stores, and for what can be had again; made with
/// mode 0700 where missing.
std::filesystem::path settingsDirectory();
std::filesystem::path storesDirectory();
std::filesystem::path cachesDirectory();

/// Makes the folder, and those above it that are missing, for the user alone.
void makePrivateDirectory(const std::filesystem::path& directory);

/// Makes the folder (0700) and, in it, the empty file (0600) where they are missing. Whether the
/// file is there afterwards.
bool makePrivateFile(const std::filesystem::path& file);

/// Held by one process at a time for a folder, also among the threads of one process.
class DirectoryLock {
 public:
  explicit DirectoryLock(const std::filesystem::path& directory);
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

 private:
  int descriptor_;
};

/// Renames a damaged SQLite file and its companions out of the way, with one error line.
void setAside(const std::filesystem::path& file, const std::string& reason);

}  // namespace quenwick::platform
