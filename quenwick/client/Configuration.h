#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/client/PublicTypes.h"
#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// Connections to `host` and `port` go to `toAddress` and `toPort` instead; requests and the check
/// of certificates stay as they are. An empty host stands for every host.
struct ConnectTo {
  /// Which host is meant, as a URL names it; empty for every host.
  std::string host = {};
  /// Which port of it.
  std::uint16_t port = 443;
  /// The address (of IPv6 too, with brackets or without) or the name to connect to; must be given.
  std::string toAddress = {};
  /// The port there.
  std::uint16_t toPort = 443;
};

/// Where an install keeps its secrets.
enum class KeychainKind {
  automatic,  ///< below `Configuration::home` in the file; else in the keyring where one answers
              ///< and is unlocked
  keyring,    ///< with the desktop's keyring; while that is away or locked there are none
  sealedFile  ///< in an encrypted file beside the settings
};

/// What a host may say before it uses the library for the first time. Everything is optional.
struct Configuration {
  /// The service's base URL, in place of the production one.
  std::optional<std::string> serviceURL = {};
  /// Certificates (PEM text) trusted as issuers beside the system's.
  std::string trustAnchors = {};
  /// Where connections go instead, as for the sandbox; the first that fits counts.
  std::vector<ConnectTo> connectTo = {};
  /// Stand before what the application's Info.plist says. An interpreter must set them: its
  /// executable is not the application.
  std::optional<std::string> bundleIdentifier = {};
  /// The application's version, as text.
  std::optional<std::string> bundleVersion = {};
  /// Where Info.plist lies, if neither beside the executable nor in its share folder.
  std::optional<std::filesystem::path> infoPlist = {};
  /// Everything kept lies below this folder, in place of the user's own folders. A relative path,
  /// here and of Info.plist, starts at the folder that the process is in now.
  std::optional<std::filesystem::path> home = {};
  /// For an install that has kept no secret yet; one that has stays with what it chose.
  KeychainKind keychain = KeychainKind::automatic;
  /// Runs work later, in order and one at a time, on the thread on which the host's handlers are to
  /// be called: its main loop. Without one the library has a thread of its own for that.
  std::function<void(std::function<void()> work)> mainExecutor = {};
  /// Takes what is logged, from any thread, several calls at once. It may call the library, but not
  /// wait for it (`flush`, a future); what is logged meanwhile goes to standard error.
  std::function<void(LogLevel level, std::string_view message)> logHook = {};
};

/// Sets the configuration of the process, before the first use of `QWClient`. Called twice before
/// that, the second replaces the first. False, and an error line, where it is too late or a value
/// is no use; then nothing has changed. Nothing of it is read from the environment.
QUENWICK_EXPORT bool configure(Configuration configuration);

}  // namespace quenwick::inline v0
