#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quenwick::platform {

/// What the operating system says of itself and of its user.
struct System {
  /// "debian"; "linux" where the system does not say.
  static std::string name();
  /// "12"; "0" where the system does not say.
  static std::string version();
  /// The kind of machine, "x86_64".
  static std::string deviceType();
  /// The user's languages, the preferred one first, as "de-AT"; empty where none is set.
  static std::vector<std::string> preferredLanguages();
};

/// Whether the platform offers what the named release brought: the unified log (14), newer clocks
/// and URL accessors (16). Always so on this platform, unless a test says otherwise.
bool systemAtLeast(int version);

/// Lets a test see the platform as that release; none restores the truth.
void setSystemVersion(std::optional<int> version);

}  // namespace quenwick::platform
