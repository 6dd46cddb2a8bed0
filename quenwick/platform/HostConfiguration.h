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

/// Sets the configuration for the process; called again, the last one holds. False, and nothing
/// changed, after the first use of the main bundle or of anything kept.
bool configureHost(HostConfiguration configuration);

/// The configuration in force; from now on it cannot be set any more.
const HostConfiguration& hostConfiguration();

/// The application's folders for settings, for stores, and for what can be had again; made with
/// mode 0700 where missing.
std::filesystem::path settingsDirectory();
std::filesystem::path storesDirectory();
std::filesystem::path cachesDirectory();

}  // namespace quenwick::platform
